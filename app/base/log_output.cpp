#include "base/log_output.h"

#include "base/printable.h"

#include <mutex>
#include <unistd.h>

namespace {

std::atomic<LogDetail> shownDetail{LogDetail::Failures};
std::atomic<bool> isCapturing{false};

// The failures of the current capture.
struct CapturedLines {
    std::mutex mutex;
    QList<QByteArray> lines;
};

CapturedLines &captured()
{
    static CapturedLines instance;
    return instance;
}

bool isShown(int level)
{
    const LogDetail detail = shownDetail;
    if (detail == LogDetail::Everything)
        return true;
    return detail == LogDetail::Failures && level >= failureLevel && !isCapturing;
}

} // namespace

void setLogDetail(LogDetail detail)
{
    shownDetail = detail;
}

void writeErrorLine(const QByteArray &line)
{
    const QByteArray text = printable(line) + '\n';
    // One call, so that the lines of two threads do not mix.
    if (::write(STDERR_FILENO, text.constData(), static_cast<size_t>(text.size())) < 0)
        return;
}

LogCapture::LogCapture()
{
    isCapturing = true;
}

LogCapture::~LogCapture()
{
    isCapturing = false;
    const std::lock_guard<std::mutex> lock(captured().mutex);
    captured().lines.clear();
}

QList<QByteArray> LogCapture::failures() const
{
    const std::lock_guard<std::mutex> lock(captured().mutex);
    return captured().lines;
}

bool isLogged(int level)
{
    return isShown(level) || (isCapturing && level >= failureLevel);
}

void logLine(const QByteArray &tag, int level, const QByteArray &text)
{
    if (isShown(level))
        writeErrorLine(tag + ": " + text);
    if (isCapturing && level >= failureLevel) {
        const std::lock_guard<std::mutex> lock(captured().mutex);
        captured().lines.append(text);
    }
}
