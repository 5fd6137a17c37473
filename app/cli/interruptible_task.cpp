#include "cli/interruptible_task.h"

#include "base/log_output.h"
#include "cli/interruptible_run.h"

namespace {

struct Interrupted {
};

} // namespace

InterruptibleTask::InterruptibleTask(bool showsProgress, const QString &name, int steps)
    : m_steps(steps), m_bar(showsProgress, name)
{
}

bool InterruptibleTask::run(const std::function<void()> &work)
{
    const auto endingWork = [&work] {
        try {
            work();
        } catch (const Interrupted &) {
            return;
        }
    };
    const bool isInterrupted = runInterruptible(
        endingWork, [this] { m_isInterrupted = true; }, [this] { update(); });
    m_bar.hide();
    return isInterrupted;
}

void InterruptibleTask::setDone(int done)
{
    m_done = done;
    if (m_isInterrupted)
        throw Interrupted();
}

void InterruptibleTask::tell(const QByteArray &line)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.append(line);
}

void InterruptibleTask::update()
{
    writeLines();
    const int done = m_done;
    m_bar.show(done, m_steps, QStringLiteral("%1 of %2").arg(done).arg(m_steps));
}

void InterruptibleTask::writeLines()
{
    QList<QByteArray> lines;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        lines.swap(m_lines);
    }
    for (const QByteArray &line : lines) {
        m_bar.hide();
        writeErrorLine(line);
    }
}
