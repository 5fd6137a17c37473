#include "ios/photo_manager.h"

// Albums can not be edited yet: every edit is refused.

int photo_manager::addPhoto2Album(photoItem *, const quint64 &)
{
    return -1;
}

int photo_manager::addPhoto2Album(photoItem *, albumItem *)
{
    return -1;
}

int photo_manager::addAlbum(albumItem *)
{
    return -1;
}

int photo_manager::rmAlbum(const quint64 &)
{
    return -1;
}

int photo_manager::updateAlbum(albumItem *)
{
    return -1;
}
