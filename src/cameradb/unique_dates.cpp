#include "cameradb/unique_dates.h"

#include <iterator>
#include <limits>

qint32 unique_dates::take(qint32 date)
{
    qint32 taken = date;
    if (m_isAscending && takeAscending(date, &taken))
        return taken;
    leaveAscending();
    taken = firstFree(date);
    markTaken(taken);
    return taken;
}

// Serves a date that lies in the last run or behind it; only the last run changes.
bool unique_dates::takeAscending(qint32 date, qint32 *taken)
{
    if (m_ascending.empty() || date > m_ascending.back().last) {
        if (!m_ascending.empty() && m_ascending.back().last == date - 1)
            m_ascending.back().last = date;
        else
            m_ascending.push_back(run{date, date});
        return true;
    }
    run &last = m_ascending.back();
    if (date < last.first || last.last == std::numeric_limits<qint32>::max())
        return false;
    *taken = ++last.last;
    return true;
}

void unique_dates::leaveAscending()
{
    for (const run &each : m_ascending)
        m_runs.emplace_hint(m_runs.end(), each.first, each.last);
    m_ascending.clear();
    m_isAscending = false;
}

qint32 unique_dates::firstFree(qint32 date) const
{
    const run_map::const_iterator after = m_runs.upper_bound(date);
    if (after == m_runs.begin() || std::prev(after)->second < date)
        return date;
    const qint32 last = std::prev(after)->second;
    if (last != std::numeric_limits<qint32>::max())
        return last + 1;
    return firstFree(std::numeric_limits<qint32>::min());
}

void unique_dates::markTaken(qint32 date)
{
    run_map::iterator after = m_runs.upper_bound(date);
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
