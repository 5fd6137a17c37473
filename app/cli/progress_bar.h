#ifndef PHOTOLIB_CLI_PROGRESS_BAR_H
#define PHOTOLIB_CLI_PROGRESS_BAR_H

#include <QByteArray>
#include <QString>
#include <QtGlobal>

/// Whether progress is to be shown: on a terminal, unless it would stand among log lines or nobody
/// wants any.
bool showsProgress();

/// One line on stderr that shows how much of a task is done.
class ProgressBar
{
public:
    /// Shows nothing at all unless `isShown`. `task` says what is being done.
    ProgressBar(bool isShown, const QString &task);

    /// Takes the bar off the line again.
    ~ProgressBar();

    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    /// Fills the bar by `done` of `total`, in whatever unit; `amounts` tells a person.
    void show(qint64 done, qint64 total, const QString &amounts);

    /// Takes the bar off the line until it is shown the next time, so that another line
    /// can be written.
    void hide();

private:
    QString fitted(qint64 done, qint64 total, const QString &amounts) const;
    void draw(const QByteArray &text);

    const bool m_isShown;
    const QString m_task;
    QByteArray m_drawn;
};

#endif // PHOTOLIB_CLI_PROGRESS_BAR_H
