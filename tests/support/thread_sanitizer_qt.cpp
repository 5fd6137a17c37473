// The thread sanitizer knows the locks of the C library, but not those of the installed
// Qt, which is built without it: it would report every access that a QMutex or a
// QSemaphore orders. These definitions stand before Qt's in the test program and tell it.
//
// Nor does it see how lists that threads share are ordered: who appends in place has read
// that no other thread holds the list any more, but with a relaxed load.

#if defined(__SANITIZE_THREAD__)

#include <QList>
#include <QMutex>
#include <QSemaphore>

#include <sanitizer/tsan_interface.h>

#include <dlfcn.h>

namespace {

// Qt's own definition of the operation with this linker name.
template <class Operation>
Operation qtOperation(const char *name)
{
    return reinterpret_cast<Operation>(dlsym(RTLD_NEXT, name));
}

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto qtLock = qtOperation<void (*)(QMutex *)>("_ZN6QMutex4lockEv");
    qtLock(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto qtTryLock = qtOperation<bool (*)(QMutex *, int)>("_ZN6QMutex7tryLockEi");
    const bool isLocked = qtTryLock(this, timeout);
    if (isLocked)
        __tsan_acquire(this);
    return isLocked;
}

void QMutex::unlock() noexcept
{
    static const auto qtUnlock = qtOperation<void (*)(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    qtUnlock(this);
}

void QSemaphore::acquire(int n)
{
    static const auto qtAcquire =
        qtOperation<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7acquireEi");
    qtAcquire(this, n);
    __tsan_acquire(this);
}

void QSemaphore::release(int n)
{
    static const auto qtRelease =
        qtOperation<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7releaseEi");
    __tsan_release(this);
    qtRelease(this, n);
}

void **QListData::append()
{
    static const auto qtAppend = qtOperation<void **(*)(QListData *)>("_ZN9QListData6appendEv");
    __tsan_acquire(&d->ref);
    return qtAppend(this);
}

#endif
