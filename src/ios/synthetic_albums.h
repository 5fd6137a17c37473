#ifndef PHOTOLIB_IOS_SYNTHETIC_ALBUMS_H
#define PHOTOLIB_IOS_SYNTHETIC_ALBUMS_H

#include <QtGlobal>

/// Keys of the albums that exist only in the manager.
const quint64 cameraRollKey = 1000;        ///< only when the device has no Camera Roll album
const quint64 videoAlbumKey = 0xfffffd;    ///< all videos
const quint64 panoramaAlbumKey = 0xfffffe; ///< all panoramas
const quint64 photoLibraryKey = 0xffffff;  ///< album photos outside the Camera Roll, and the rest

/// Kinds of album in the device's database.
const qint32 userAlbumKind = 2;
const qint32 cameraRollKind = 1000;
const qint32 customAlbumKind = 1550; ///< also every album made in memory

#endif // PHOTOLIB_IOS_SYNTHETIC_ALBUMS_H
