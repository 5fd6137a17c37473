#include "base/log_output.h"

#include "base/printable.h"

#include <atomic>
#include <unistd.h>

namespace {

// The tag of the plug-in's own lines.
constexpr char pluginTag[] = "PHOTOLIB";

std::atomic<LogDetail> shownDetail{LogDetail::Failures};
thread_local LogCapture *innermost = nullptr;

} // namespace

void setLogDetail(LogDetail detail)
{
    shownDetail = detail;
}

LogDetail logDetail()
{
    return shownDetail;
}

void writeErrorLine(const QByteArray &line)
{
    const QByteArray text = printable(line) + '\n';
    // One call, so that the lines of two threads do not mix.
    if (::write(STDERR_FILENO, text.constData(), static_cast<size_t>(text.size())) < 0)
        return;
}

LogCapture::LogCapture() : m_outer(innermost)
{
    innermost = this;
}

LogCapture::~LogCapture()
{
    innermost = m_outer;
}

bool isLogged(int level)
{
    return shownDetail == LogDetail::Everything || level >= failureLevel;
}

void logLine(const QByteArray &tag, int level, const QByteArray &text)
{
    const bool isFailure = level >= failureLevel && tag != pluginTag;
    LogCapture *const capture = isFailure ? innermost : nullptr;
    if (capture)
        capture->m_failures.append(text);
    const LogDetail detail = shownDetail;
    if (detail == LogDetail::Everything || (detail == LogDetail::Failures && isFailure && !capture))
        writeErrorLine(tag + ": " + text);
}
