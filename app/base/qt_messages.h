#ifndef PHOTOLIB_BASE_QT_MESSAGES_H
#define PHOTOLIB_BASE_QT_MESSAGES_H

#include <QString>

/// Keeps what Qt warns of during its lifetime off stderr, on the thread that makes the
/// object; objects may be nested, and the innermost one hears a warning. Any number of threads
/// may have such objects at a time. Fatal messages are shown all the same.
class QtMessages
{
public:
    QtMessages();
    ~QtMessages();

    QtMessages(const QtMessages &) = delete;
    QtMessages &operator=(const QtMessages &) = delete;

    /// The first warning so far; empty when there was none.
    const QString &first() const { return m_first; }

private:
    static void hear(QtMsgType type, const QMessageLogContext &context, const QString &text);

    QtMessages *const m_outer;
    QString m_first;
};

#endif // PHOTOLIB_BASE_QT_MESSAGES_H
