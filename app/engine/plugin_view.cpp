#include "engine/plugin_view.h"

#include "engine/library_session.h"

namespace {

// Without a date of its own a photo has the one that the device counts from.
QDateTime dateWithout(const LibrarySession &session)
{
    return session.classicIpod() ? QDateTime::fromSecsSinceEpoch(0, Qt::UTC)
                                 : QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
}

PluginPhoto::Filled filledOf(const photoItem &record, bool isGiven)
{
    if (isGiven)
        return PluginPhoto::Everything;
    // A path is set for every photo that is known.
    return record.path.isNull() ? PluginPhoto::Nothing : PluginPhoto::Identity;
}

} // namespace

PluginPhoto pluginPhoto(LibrarySession &session, quint64 id)
{
    PluginPhoto photo;
    const bool isGiven = session.library().getPhoto(id, &photo.record);
    photo.filled = filledOf(photo.record, isGiven);
    // Asked in any case, for an unreadable file is noted.
    const bool isThere = session.fileState(photo.record) == FileState::There;
    photo.isUsable = isGiven && isThere;
    if (photo.record.createDate != dateWithout(session))
        photo.createDate = photo.record.createDate;
    photo.modifyDate = photo.record.modifyDate;
    return photo;
}

PluginThumbnail pluginThumbnail(LibrarySession &session, quint64 id)
{
    PluginThumbnail thumbnail;
    thumbnail.result = session.library().getPhotoThumbnail(id, thumbnail.bytes);
    if (thumbnail.bytes.isEmpty())
        session.requireDevice();
    return thumbnail;
}
