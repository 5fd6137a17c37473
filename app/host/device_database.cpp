#pragma GCC visibility push(default)
#include "host/device_database.h"
#pragma GCC visibility pop

#include "classic/image_unpacker.h"
#include "host/classic_ipod.h"
#include "host/device.h"
#include "host/exception_barrier.h"
#include "host/host_log.h"
#include "host/transfer_monitor.h"

namespace {

StoredPicture pictureOf(const itdb_photo &record)
{
    StoredPicture picture;
    picture.offset = record.offset;
    picture.size = record.size;
    picture.fileName = record.fileName;
    picture.formatId = record.formatId;
    picture.width = record.width;
    picture.height = record.height;
    picture.horizontalPadding = record.horizontalPadding;
    picture.verticalPadding = record.verticalPadding;
    return picture;
}

} // namespace

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
        if (unpackImage(raw, pictureOf(photo), &out, &error))
            return 0;
        transferObserver().failed(photo.fileName.toUtf8(), {FileError::Damaged, error});
        Log("PHOTOLIB-HOST", 2, "%s", error.toUtf8().constData());
        return failed;
    });
}
