#ifndef PHOTOLIB_CLASSIC_NEW_IMAGE_H
#define PHOTOLIB_CLASSIC_NEW_IMAGE_H

#include <QImage>

#include <new>

/// An image whose pixels are still to be written. Throws std::bad_alloc where QImage would be
/// null for want of memory.
inline QImage newImage(const QSize &size, QImage::Format format)
{
    QImage image(size, format);
    if (image.isNull())
        throw std::bad_alloc();
    return image;
}

#endif // PHOTOLIB_CLASSIC_NEW_IMAGE_H
