#ifndef PHOTOLIB_CLASSIC_STORED_PICTURE_H
#define PHOTOLIB_CLASSIC_STORED_PICTURE_H

#include <QString>
#include <QtGlobal>

/// One of the pictures of fixed sizes that a classic iPod stores of a photo, as its database
/// describes it.
struct StoredPicture {
    qint32 offset = 0; ///< first byte of the picture in its file
    qint32 size = 0;   ///< bytes of the picture
    QString fileName;  ///< colon-separated, below the Photos folder: ":Thumbs:F1019_1.ithmb"

    qint32 formatId = 0;          ///< names the pixel format
    qint32 width = 0;             ///< pixels, left padding included
    qint32 height = 0;            ///< pixels, top padding included
    qint32 horizontalPadding = 0; ///< pixels
    qint32 verticalPadding = 0;   ///< pixels
};

#endif // PHOTOLIB_CLASSIC_STORED_PICTURE_H
