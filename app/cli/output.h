#ifndef PHOTOLIB_CLI_OUTPUT_H
#define PHOTOLIB_CLI_OUTPUT_H

#include <QByteArray>
#include <QString>

#include <functional>

/// Thrown when nobody reads standard output any more: the reader of a pipe, `head` for instance,
/// has seen enough. That is no failure of the program, which ends without a word.
struct ReaderGone {
};

/// Buffered standard output that notices when it cannot be written: then it throws Error, or
/// ReaderGone.
class Output
{
public:
    /// Calls `beforeFirst` once, before anything reaches standard output.
    explicit Output(std::function<void()> beforeFirst = [] {})
        : m_beforeFirst(std::move(beforeFirst))
    {
    }

    /// Whether a person sees it as it is written.
    static bool isTerminal();

    void write(const QByteArray &text);
    void writeLine(const QString &line) { write(line.toUtf8() + '\n'); }

    /// Has `check` called again and again while a reader keeps standard output waiting; what it
    /// throws ends the writing. Null for nothing, as it is at first: then a writing lasts as long
    /// as the reader wants.
    void whileWaiting(std::function<void()> check) { m_whileWaiting = std::move(check); }

    /// Writes what is buffered. To be called at the end: the destructor drops it, for it
    /// could tell nobody of a failure.
    void flush();

private:
    int writeSome(int from);

    std::function<void()> m_beforeFirst;
    std::function<void()> m_whileWaiting;
    QByteArray m_buffer;
};

#endif // PHOTOLIB_CLI_OUTPUT_H
