#include "engine/album_list.h"

#include "base/printable.h"
#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "engine/photo_ids.h"
#include "engine/type_codes.h"

// Unlike the names of files, titles arrive as they were written: there is no encoding to
// undo.
QString albumNameText(const QString &name)
{
    return printable(name);
}

QString albumKindText(qint32 type)
{
    switch (type) {
    case cameraRollAlbum:
        return QStringLiteral("camera roll");
    case panoramaAlbum:
        return QStringLiteral("panoramas");
    case videoAlbum:
        return QStringLiteral("videos");
    case deviceAlbum:
        return QStringLiteral("album");
    case photoLibraryAlbum:
        return QStringLiteral("photo library");
    case userAlbum:
        return QStringLiteral("user album");
    default:
        return QStringLiteral("unknown");
    }
}

ListedAlbum listedAlbum(photo_manager_int &library, quint64 id, const QSet<quint64> &photos)
{
    albumItem item;
    ListedAlbum album;
    album.id = id;
    album.isShown = library.getAlbum(id, &item);
    album.name = albumNameText(item.name);
    album.kind = albumKindText(item.type);
    album.photos = listedPhotoIds(item, photos).size();
    return album;
}

QVector<ListedAlbum> listedAlbums(photo_manager_int &library)
{
    const QSet<quint64> photos = allPhotoIds(library);
    QVector<ListedAlbum> albums;
    for (const quint64 id : library.albumIDs())
        albums.append(listedAlbum(library, id, photos));
    return albums;
}
