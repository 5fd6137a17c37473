#include "classic/frame_crop.h"

namespace {

QString sizeText(int width, int height)
{
    return QStringLiteral("%1 x %2").arg(width).arg(height);
}

// Empty for a picture of at least a pixel inside of the frame.
QString causeAgainst(const QSize &frame, const StoredPicture &photo)
{
    const QString size = sizeText(photo.width, photo.height);
    if (photo.width <= 0 || photo.height <= 0)
        return QStringLiteral("a picture of %1 pixels").arg(size);
    if (photo.width > frame.width() || photo.height > frame.height()) {
        return QStringLiteral("a picture of %1 pixels in a frame of %2")
            .arg(size, sizeText(frame.width(), frame.height()));
    }
    const int left = photo.horizontalPadding;
    const int top = photo.verticalPadding;
    if (left < 0 || top < 0 || left >= photo.width || top >= photo.height) {
        return QStringLiteral("a padding of %1 pixels in a picture of %2")
            .arg(sizeText(left, top), size);
    }
    return QString();
}

// By how many pixels the paddings on both sides of a picture within the frame differ.
int imbalance(const QSize &frame, const StoredPicture &photo)
{
    return qAbs(frame.width() - photo.width - photo.horizontalPadding) +
           qAbs(frame.height() - photo.height - photo.verticalPadding);
}

bool isInRotatedFrame(const QSize &upright, const StoredPicture &photo)
{
    const QSize rotated = upright.transposed();
    if (!causeAgainst(rotated, photo).isEmpty())
        return false;
    return !causeAgainst(upright, photo).isEmpty() ||
           imbalance(rotated, photo) < imbalance(upright, photo);
}

} // namespace

bool findFrameCrop(const PixelFormat &format, const StoredPicture &photo, FrameCrop *crop,
                   QString *cause)
{
    const bool isRotated =
        format.rotation != PixelRotation::None && isInRotatedFrame(format.frame(), photo);
    const QString found = isRotated ? QString() : causeAgainst(format.frame(), photo);
    if (!found.isEmpty()) {
        *cause = found;
        return false;
    }
    crop->isInRotatedFrame = isRotated;
    crop->rectangle = QRect(QPoint(photo.horizontalPadding, photo.verticalPadding),
                            QPoint(photo.width - 1, photo.height - 1));
    return true;
}
