#include "engine/name_values.h"

#include "engine/album_choice.h"
#include "engine/library_session.h"

#include <algorithm>

namespace {

// The name of the folder that the device is, or the device's own.
QByteArray lastName(QByteArray name)
{
    while (name.size() > 1 && name.endsWith('/'))
        name.chop(1);
    return name.mid(name.lastIndexOf('/') + 1);
}

// "/" stands between titles.
QByteArray withoutSlash(QByteArray title)
{
    return title.replace('/', '_');
}

bool holds(const Asset &asset, const Album &album)
{
    return std::binary_search(asset.albums.begin(), asset.albums.end(), album.id);
}

} // namespace

NameValuesOf::NameValuesOf(LibrarySession &session, const PhotoFilter &filter)
    : m_catalog(session.catalog()), m_tree(m_catalog), m_device(lastName(session.files().name()))
{
    if (filter.album)
        m_chosen = &chosenAlbum(m_catalog, *filter.album, session.deviceName());
}

// A person's own albums come before those that other programs and people have made.
const Album *NameValuesOf::albumOf(const Asset &asset) const
{
    if (m_chosen && holds(asset, *m_chosen))
        return m_chosen;
    const Album *first = nullptr;
    for (const qint64 id : asset.albums) {
        const Album *const album = m_catalog.album(id);
        if (album && album->kind == AlbumKind::Album)
            return album;
        if (!first)
            first = album;
    }
    return first;
}

NameValues NameValuesOf::operator()(const Asset &asset, const QByteArray &fileName) const
{
    NameValues values;
    values.asset = &asset;
    values.fileName = fileName;
    values.device = m_device;
    const Album *const album = albumOf(asset);
    if (!album)
        return values;
    values.album = album->title;
    for (const Album *each : m_tree.lineTo(*album)) {
        if (each != album)
            values.folder += (values.folder.isEmpty() ? "" : "/") + withoutSlash(each->title);
    }
    return values;
}
