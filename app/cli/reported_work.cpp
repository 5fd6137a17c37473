#include "cli/reported_work.h"

#include "base/log_output.h"
#include "cli/interruptible_run.h"

ReportedWork::ReportedWork(bool showsProgress) : m_showsProgress(showsProgress) {}

bool ReportedWork::run(const std::function<void(const CancelToken &cancel)> &work)
{
    const bool isInterrupted = runInterruptible(
        [&] { work(m_cancel); }, [this] { m_cancel.cancel(); }, [this] { update(); });
    m_bar.reset();
    return isInterrupted;
}

void ReportedWork::show(const WorkProgress &progress)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_progress = progress;
}

void ReportedWork::tell(const QString &line)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.append("photolib: " + line.toUtf8());
}

void ReportedWork::update()
{
    writeLines();
    showBar();
}

void ReportedWork::writeLines()
{
    QList<QByteArray> lines;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        lines.swap(m_lines);
    }
    if (m_bar && !lines.isEmpty())
        m_bar->hide();
    for (const QByteArray &line : lines)
        writeErrorLine(line);
}

void ReportedWork::showBar()
{
    WorkProgress progress;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        progress = m_progress;
    }
    if (progress.task.isEmpty())
        return;
    if (!m_bar || progress.task != m_shownTask)
        m_bar.emplace(m_showsProgress, progress.task);
    m_shownTask = progress.task;
    m_bar->show(progress.done, progress.total, progress.amounts);
}
