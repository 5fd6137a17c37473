#include "cli/interruptible_task.h"

namespace {

struct Interrupted {
};

} // namespace

InterruptibleTask::InterruptibleTask(bool showsProgress, const QString &name, int steps)
    : m_name(name), m_steps(steps), m_work(showsProgress)
{
}

bool InterruptibleTask::run(const std::function<void()> &work)
{
    return m_work.run([&](const CancelToken &cancel) {
        m_cancel = &cancel;
        try {
            work();
        } catch (const Interrupted &) {
            return;
        }
    });
}

void InterruptibleTask::setDone(int done)
{
    m_work.show({m_name, done, m_steps, QStringLiteral("%1 of %2").arg(done).arg(m_steps)});
    if (m_cancel->isCancelled())
        throw Interrupted();
}
