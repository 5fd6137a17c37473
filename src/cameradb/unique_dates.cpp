#include "cameradb/unique_dates.h"

#include <iterator>
#include <limits>

qint32 unique_dates::take(qint32 date)
{
    const qint32 free = firstFree(date);
    markTaken(free);
    return free;
}

unique_dates::run_map::iterator unique_dates::runAfter(qint32 date)
{
    // Ascending dates always land here, without a search.
    if (!m_runs.empty() && m_runs.rbegin()->first <= date)
        return m_runs.end();
    return m_runs.upper_bound(date);
}

qint32 unique_dates::firstFree(qint32 date)
{
    const run_map::iterator after = runAfter(date);
    if (after == m_runs.begin() || std::prev(after)->second < date)
        return date;
    const qint32 last = std::prev(after)->second;
    if (last != std::numeric_limits<qint32>::max())
        return last + 1;
    return firstFree(std::numeric_limits<qint32>::min());
}

void unique_dates::markTaken(qint32 date)
{
    run_map::iterator after = runAfter(date);
    qint32 last = date;
    // Neighbouring runs never touch: they are one run from the moment they meet.
    if (after != m_runs.end() && after->first - 1 == date) {
        last = after->second;
        after = m_runs.erase(after);
    }
    if (after != m_runs.begin() && std::prev(after)->second == date - 1)
        std::prev(after)->second = last;
    else
        m_runs.emplace_hint(after, date, last);
}
