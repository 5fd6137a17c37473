#ifndef PHOTOLIB_ENGINE_ITEM_WORK_H
#define PHOTOLIB_ENGINE_ITEM_WORK_H

#include <QString>

#include <functional>

class CancelToken;

/// Why one of many things could not be done, which keeps none of the others from being done.
struct ItemFailure {
    QString label; ///< names the thing in messages
    QString cause;

    /// "LABEL: CAUSE".
    QString text() const { return label + QLatin1String(": ") + cause; }
};

/// Hears of failures as they come, on the thread that does the work.
class ItemObserver
{
public:
    virtual ~ItemObserver() {}

    virtual void failed(const ItemFailure &failure) = 0;
};

/// Calls `work` for 0, 1 and so on to `count` - 1, until `cancel` is cancelled. Where it throws an
/// ItemFailure, `observer` hears of that and the next one is worked on; anything else that it
/// throws ends the loop and is thrown to the caller. Returns how many failed.
int workOnEach(int count, ItemObserver &observer, const CancelToken &cancel,
               const std::function<void(int)> &work);

#endif // PHOTOLIB_ENGINE_ITEM_WORK_H
