#include "boundary/photolib.h"

#include "classic/ipod_photo_manager.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/iipod.h"
#include "ios/photo_manager.h"

photo_manager_int *getPhotolib(IIPod *iPod)
{
    photo_manager_int *manager =
        withoutThrowing<photo_manager_int *>(nullptr, [&]() -> photo_manager_int * {
            if (iPod->isIOSDevice())
                return new photo_manager(iPod);
            return new iPodPhotoManager(iPod);
        });
    if (!manager)
        Log("PHOTOLIB", 2, "Can not malloc photo manager");
    return manager;
}

void releasePhotolib(photo_manager_int **pp)
{
    if (!pp || !*pp)
        return;
    // Storage only: a destructor here would close handles that hosts still use.
    ::operator delete(static_cast<void *>(*pp));
    *pp = nullptr;
}
