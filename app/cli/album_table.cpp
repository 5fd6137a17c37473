#include "cli/album_table.h"

#include "cli/text_table.h"
#include "engine/album_list.h"

void writeAlbumTable(photo_manager_int &library, Output &output)
{
    TextTable table({QStringLiteral("ID"), QStringLiteral("NAME"), QStringLiteral("KIND"),
                     QStringLiteral("PHOTOS")});
    constexpr int idColumn = 0;
    constexpr int countColumn = 3;
    table.alignRight(idColumn);
    table.alignRight(countColumn);
    for (const ListedAlbum &album : listedAlbums(library)) {
        const QString kind = album.isShown ? album.kind : QStringLiteral("not shown");
        const QString photos = album.isShown ? QString::number(album.photos) : QString();
        table.addRow({QString::number(album.id), album.name, kind, photos});
    }
    table.write(output);
}
