#include "cli/progress_bar.h"

#include <QLocale>

#include <unistd.h>

namespace {

constexpr int barWidth = 30;

QByteArray barText(qint64 bytes, qint64 total)
{
    const double part = total > 0 ? qBound(0.0, double(bytes) / double(total), 1.0) : 1.0;
    const int filled = static_cast<int>(part * barWidth);
    const QString text =
        QStringLiteral("Copying the database [%1%2] %3 of %4")
            .arg(QString(filled, QLatin1Char('#')), QString(barWidth - filled, QLatin1Char('.')),
                 byteCountText(bytes), byteCountText(total));
    return text.toUtf8();
}

} // namespace

QString byteCountText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, bytes < 1024 ? 0 : 1);
}

ProgressBar::ProgressBar(bool isShown, qint64 total) : m_isShown(isShown), m_total(total) {}

ProgressBar::~ProgressBar()
{
    if (!m_drawn.isEmpty())
        draw(QByteArray());
}

void ProgressBar::show(qint64 bytes)
{
    if (!m_isShown)
        return;
    // The files may have grown since they were measured.
    const QByteArray text = barText(bytes, qMax(bytes, m_total));
    if (text != m_drawn)
        draw(text);
    m_drawn = text;
}

void ProgressBar::draw(const QByteArray &text)
{
    // To the start of the line, and clear what follows.
    const QByteArray line = '\r' + text + "\x1b[K";
    if (::write(STDERR_FILENO, line.constData(), static_cast<size_t>(line.size())) < 0)
        return;
}
