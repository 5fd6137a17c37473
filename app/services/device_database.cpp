#pragma GCC visibility push(default)
#include "host/device_database.h"
#pragma GCC visibility pop

#include "classic/classic_ipod.h"
#include "classic/image_unpacker.h"
#include "devices/device.h"
#include "host/host_log.h"
#include "services/no_throw.h"

iitdb *getPhotoDBInt(IIPod *iPod)
{
    auto *const device = dynamic_cast<Device *>(iPod);
    ClassicIpod *const classicIpod = device ? device->classicIpod() : nullptr;
    if (!classicIpod)
        return nullptr;
    return withoutThrowing<iitdb *>(nullptr, [classicIpod] { return classicIpod->newDatabase(); });
}

void releaseITunesDBInt(iitdb **db)
{
    if (!db)
        return;
    ClassicIpod::release(*db);
    *db = nullptr;
}

int unpackiThmb(IIPod *, QByteArray &raw, const itdb_photo &photo, QByteArray &out)
{
    constexpr int failed = -1;
    return withoutThrowing(failed, [&raw, &photo, &out] {
        QString error;
        if (unpackImage(raw, photo, &out, &error))
            return 0;
        Log("PHOTOLIB-HOST", 2, "%s", error.toUtf8().constData());
        return failed;
    });
}
