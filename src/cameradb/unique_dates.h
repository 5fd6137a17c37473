#ifndef PHOTOLIB_CAMERADB_UNIQUE_DATES_H
#define PHOTOLIB_CAMERADB_UNIQUE_DATES_H

#include <QtGlobal>

#include <map>
#include <vector>

/// Hands out pairwise distinct dates: photos stamped in the same second get consecutive
/// seconds in the order in which they ask. For one thread.
///
/// Dates handed out are kept as runs of consecutive seconds. Asking in ascending order,
/// as the photo query does, takes constant time, any other order logarithmic time,
/// whatever the dates are: a device cannot make it slow.
class unique_dates
{
public:
    /// The first of `date`, `date` + 1, ... (going on at the lowest date after the
    /// highest) that has not been handed out yet.
    qint32 take(qint32 date);

private:
    struct run {
        qint32 first;
        qint32 last;
    };
    typedef std::map<qint32, qint32> run_map; // first date of a run to its last one

    bool takeAscending(qint32 date, qint32 *taken);
    void leaveAscending();
    qint32 firstFree(qint32 date) const;
    void markTaken(qint32 date);

    std::vector<run> m_ascending; // the runs, ascending, until a date breaks the order
    bool m_isAscending = true;
    run_map m_runs; // the runs from then on
};

#endif // PHOTOLIB_CAMERADB_UNIQUE_DATES_H
