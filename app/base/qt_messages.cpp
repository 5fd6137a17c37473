#include "base/qt_messages.h"

#include "base/log_output.h"

#include <mutex>
#include <utility>

namespace {

thread_local QtMessages *innermost = nullptr;

// Qt has one handler for the process, and objects on several threads end in any order.
struct SharedHandler {
    std::mutex mutex;
    int users = 0;
    QtMessageHandler before = nullptr; // valid while there are users
};

SharedHandler &sharedHandler()
{
    static SharedHandler handler;
    return handler;
}

} // namespace

QtMessages::QtMessages() : m_outer(std::exchange(innermost, this))
{
    SharedHandler &shared = sharedHandler();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    if (++shared.users == 1)
        shared.before = qInstallMessageHandler(hear);
}

QtMessages::~QtMessages()
{
    innermost = m_outer;
    SharedHandler &shared = sharedHandler();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    if (--shared.users == 0)
        qInstallMessageHandler(shared.before);
}

void QtMessages::hear(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg)
        writeErrorLine(text.toUtf8());
    else
        logLine("Qt", 1, text.toUtf8());
    if (innermost && innermost->m_first.isEmpty())
        innermost->m_first = text;
}
