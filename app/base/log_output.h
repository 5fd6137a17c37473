#ifndef PHOTOLIB_BASE_LOG_OUTPUT_H
#define PHOTOLIB_BASE_LOG_OUTPUT_H

#include <QByteArray>
#include <QList>

/// Which lines of the host log reach stderr.
enum class LogDetail {
    Nothing,
    Failures,  ///< the host's own failures; the plug-in's lines are for its developers
    Everything ///< all lines
};

/// Sets it for the process; Failures until then. Any thread.
void setLogDetail(LogDetail detail);
LogDetail logDetail();

/// Writes `line` and a line break to stderr in one piece, whatever the detail is, with
/// unprintable bytes escaped. Any thread; an error is ignored, for there is no better
/// place to tell of it.
void writeErrorLine(const QByteArray &line);

/// Keeps the host's own failures that its thread logs during its lifetime, so that they can be
/// told as one; they reach stderr as they come only where everything does. Objects may be nested,
/// and the innermost one hears a failure.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// The failures so far, without their tag, in the order in which they were logged.
    const QList<QByteArray> &failures() const { return m_failures; }

private:
    friend void logLine(const QByteArray &tag, int level, const QByteArray &text);

    LogCapture *const m_outer;
    QList<QByteArray> m_failures;
};

/// The level of what went wrong; 1 is for progress and notices.
constexpr int failureLevel = 2;

/// One line of the log, at level 1 or 2, to where it belongs.
void logLine(const QByteArray &tag, int level, const QByteArray &text);

/// Whether a line at `level` may go anywhere: a cheap test before formatting it.
bool isLogged(int level);

#endif // PHOTOLIB_BASE_LOG_OUTPUT_H
