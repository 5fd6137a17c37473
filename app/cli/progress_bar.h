#ifndef PHOTOLIB_CLI_PROGRESS_BAR_H
#define PHOTOLIB_CLI_PROGRESS_BAR_H

#include <QByteArray>
#include <QString>
#include <QtGlobal>

/// "3.0 MiB" for a number of bytes.
QString byteCountText(qint64 bytes);

/// One line on stderr that shows how many bytes of a total are copied.
class ProgressBar
{
public:
    /// Shows nothing at all unless `isShown`. `total` is in bytes and only an estimate.
    ProgressBar(bool isShown, qint64 total);

    /// Takes the bar off the line again.
    ~ProgressBar();

    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void show(qint64 bytes);

private:
    void draw(const QByteArray &text);

    const bool m_isShown;
    const qint64 m_total;
    QByteArray m_drawn;
};

#endif // PHOTOLIB_CLI_PROGRESS_BAR_H
