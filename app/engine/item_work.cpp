#include "engine/item_work.h"

#include "base/cancel_token.h"

int workOnEach(int count, ItemObserver &observer, const CancelToken &cancel,
               const std::function<void(int)> &work)
{
    int failures = 0;
    for (int i = 0; i < count && !cancel.isCancelled(); ++i) {
        try {
            work(i);
        } catch (const ItemFailure &failure) {
            ++failures;
            observer.failed(failure);
        }
    }
    return failures;
}
