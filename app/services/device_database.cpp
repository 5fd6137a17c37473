#pragma GCC visibility push(default)
#include "host/device_database.h"
#pragma GCC visibility pop

#include "host/host_log.h"

// Classic iPods: their photo database has no reader yet, so the plug-in is told that
// there is none.

iitdb *getPhotoDBInt(IIPod *)
{
    Log("PHOTOLIB-HOST", 2, "The photo database of a classic iPod can not be read yet");
    return nullptr;
}

void releaseITunesDBInt(iitdb **db)
{
    if (db)
        *db = nullptr;
}

int unpackiThmb(IIPod *, QByteArray &, const itdb_photo &photo, QByteArray &)
{
    Log("PHOTOLIB-HOST", 2, "A thumbnail of the format %d can not be decoded yet", photo.formatId);
    return -1;
}
