#include "base/qt_messages.h"

#include "base/log_output.h"

namespace {

thread_local QtMessages *innermost = nullptr;

} // namespace

QtMessages::QtMessages()
    : m_outer(std::exchange(innermost, this)), m_handlerBefore(qInstallMessageHandler(hear))
{
}

QtMessages::~QtMessages()
{
    qInstallMessageHandler(m_handlerBefore);
    innermost = m_outer;
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
