#include "ios/photo_manager.h"

// Thumbnails are not read yet: every request fails.
int photo_manager::getPhotoThumbnail(const quint64 &, QByteArray &)
{
    return -1;
}

// The host reads source files itself, by `photoItem::path`.
int photo_manager::getSourcePhoto(const quint64 &, QByteArray &)
{
    return 0;
}
