#ifndef PHOTOLIB_CLI_OUTPUT_H
#define PHOTOLIB_CLI_OUTPUT_H

#include <QByteArray>
#include <QString>

#include <functional>

/// Buffered standard output that notices when it can not be written: then it throws
/// Error. A reader that went away (a closed pipe) ends the program silently.
class Output
{
public:
    /// Calls `beforeFirst` once, before anything reaches standard output.
    explicit Output(std::function<void()> beforeFirst = [] {})
        : m_beforeFirst(std::move(beforeFirst))
    {
    }

    void write(const QByteArray &text);
    void writeLine(const QString &line) { write(line.toUtf8() + '\n'); }

    /// Writes what is buffered. To be called at the end: the destructor drops it, for it
    /// could tell nobody of a failure.
    void flush();

private:
    std::function<void()> m_beforeFirst;
    QByteArray m_buffer;
};

#endif // PHOTOLIB_CLI_OUTPUT_H
