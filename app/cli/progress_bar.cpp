#include "cli/progress_bar.h"

#include "base/log_output.h"

#include <limits>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int widestBar = 20;
constexpr int narrowestBar = 5; // a shorter one tells nothing

QString filledBar(qint64 done, qint64 total, int width)
{
    const double part = total > 0 ? qBound(0.0, double(done) / double(total), 1.0) : 1.0;
    const int filled = static_cast<int>(part * width);
    return QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.'));
}

// How much fits on one line of the terminal: a line that is broken cannot be drawn over.
int lineWidth()
{
    winsize size = {};
    const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? size.ws_col - 1 : std::numeric_limits<int>::max();
}

} // namespace

bool showsProgress()
{
    return logDetail() == LogDetail::Failures && ::isatty(STDERR_FILENO);
}

ProgressBar::ProgressBar(bool isShown, const QString &task) : m_isShown(isShown), m_task(task) {}

ProgressBar::~ProgressBar()
{
    hide();
}

void ProgressBar::show(qint64 done, qint64 total, const QString &amounts)
{
    if (!m_isShown)
        return;
    const QByteArray bytes = fitted(done, total, amounts).toUtf8();
    if (bytes != m_drawn)
        draw(bytes);
    m_drawn = bytes;
}

// Where there is little room, the bar gets shorter and then goes before the task does, and
// the amounts stay longest.
QString ProgressBar::fitted(qint64 done, qint64 total, const QString &amounts) const
{
    const int width = lineWidth();
    const int bar = qMin(widestBar, width - m_task.size() - amounts.size() - 4);
    if (bar >= narrowestBar)
        return QStringLiteral("%1 [%2] %3").arg(m_task, filledBar(done, total, bar), amounts);
    const QString text = m_task + QLatin1Char(' ') + amounts;
    return text.size() <= width ? text : amounts.left(width);
}

void ProgressBar::hide()
{
    if (!m_drawn.isEmpty())
        draw(QByteArray());
    m_drawn.clear();
}

void ProgressBar::draw(const QByteArray &text)
{
    // To the start of the line, and clear what follows.
    const QByteArray line = '\r' + text + "\x1b[K";
    if (::write(STDERR_FILENO, line.constData(), static_cast<size_t>(line.size())) < 0)
        return;
}
