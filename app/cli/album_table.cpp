#include "cli/album_table.h"

#include "base/printable.h"
#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "cli/text_table.h"
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

QStringList albumRow(photo_manager_int &library, quint64 id, const QSet<quint64> &photos)
{
    albumItem item;
    const bool isShown = library.getAlbum(id, &item);
    if (!isShown)
        return {QString::number(id), albumNameText(item.name), QStringLiteral("not shown"),
                QString()};
    return {QString::number(id), albumNameText(item.name), albumKindText(item.type),
            QString::number(listedPhotoIds(item, photos).size())};
}

void writeAlbumTable(photo_manager_int &library, Output &output)
{
    TextTable table({QStringLiteral("ID"), QStringLiteral("NAME"), QStringLiteral("KIND"),
                     QStringLiteral("PHOTOS")});
    constexpr int idColumn = 0;
    constexpr int countColumn = 3;
    table.alignRight(idColumn);
    table.alignRight(countColumn);
    const QSet<quint64> photos = allPhotoIds(library);
    for (const quint64 id : library.albumIDs())
        table.addRow(albumRow(library, id, photos));
    table.write(output);
}
