#ifndef PHOTOLIB_IOS_THUMBNAIL_TRAILER_H
#define PHOTOLIB_IOS_THUMBNAIL_TRAILER_H

#include "ios/photo_manager.h"

#include <QByteArray>
#include <QtGlobal>

const int trailerBytes = sizeof PhotoThumb().info;

/// The size of the picture that the trailer at `info` describes, as the device says.
qint32 pictureWidth(const unsigned char *info);
qint32 pictureHeight(const unsigned char *info);

/// What the trailer of a record tells of an asset, the stronger evidence the higher.
enum trailer_claim {
    ForeignTrailer, ///< bears another uuid, or is none: its picture has no size or too large a one
    UnnamedTrailer, ///< describes a picture, but does not tell whose
    OwnTrailer      ///< bears the asset's uuid
};

/// What the trailer at `info`, which belongs to a record of the layout `type`, tells of the
/// asset `uuid`, a text of 36 letters or 16 bytes. An asset with any other uuid has no trailer
/// of its own.
trailer_claim trailerClaim(const unsigned char *info, const ThumbType &type,
                           const QByteArray &uuid);

#endif // PHOTOLIB_IOS_THUMBNAIL_TRAILER_H
