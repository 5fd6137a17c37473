#ifndef PHOTOLIB_BASE_LOG_OUTPUT_H
#define PHOTOLIB_BASE_LOG_OUTPUT_H

#include <QByteArray>
#include <QList>

#include <atomic>

/// Which lines of the host log reach stderr.
enum class LogDetail {
    Nothing,
    Failures,  ///< level 2
    Everything ///< level 1 too
};

/// Sets it for the process; Failures until then. Any thread.
void setLogDetail(LogDetail detail);

/// Writes `line` and a line break to stderr in one piece, whatever the detail is, with
/// unprintable bytes escaped. Any thread; an error is ignored, for there is no better
/// place to tell of it.
void writeErrorLine(const QByteArray &line);

/// Keeps the failures that are logged during its lifetime, so that they can be told as
/// one; they reach stderr as they come only where everything does. One at a time; the log
/// may be in use on other threads meanwhile.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// The failures so far, without their tag, in the order in which they were logged.
    QList<QByteArray> failures() const;
};

/// The level of what went wrong; 1 is for progress and notices.
constexpr int failureLevel = 2;

/// One line of the log, at level 1 or 2, to where it belongs.
void logLine(const QByteArray &tag, int level, const QByteArray &text);

/// Whether a line at `level` goes anywhere: a cheap test before formatting it.
bool isLogged(int level);

#endif // PHOTOLIB_BASE_LOG_OUTPUT_H
