#include "catalog/read_albums.h"

#include "catalog/id_index.h"
#include "catalog/rows_by_id.h"
#include "catalog/table_scan.h"

namespace {

// Of memory, in proportion to what a row takes of the files.
const qint64 bytesPerAlbum = 64;

// An album and how it is sorted, until it is put in its place.
struct AlbumRow {
    qint64 id = 0;
    Album album;
    AlbumSort sort;
};

std::optional<AlbumKind> kindOf(std::optional<qint64> stored)
{
    switch (stored.value_or(0)) {
    case 2:
        return AlbumKind::Album;
    case 1505:
        return AlbumKind::Shared;
    case 1506:
        return AlbumKind::Import;
    case 1507:
        return AlbumKind::Smart;
    case 1508:
        return AlbumKind::Project;
    case 4000:
        return AlbumKind::Folder;
    default:
        return std::nullopt;
    }
}

AlbumSortKey sortKeyOf(std::optional<qint64> stored)
{
    switch (stored.value_or(0)) {
    case 1:
        return AlbumSortKey::Date;
    case 5:
        return AlbumSortKey::Title;
    default:
        return AlbumSortKey::Manual;
    }
}

class AlbumReader
{
public:
    explicit AlbumReader(LibraryTables &tables)
        : m_scan(tables, "ZGENERICALBUM"), m_id(m_scan.require("Z_PK")),
          m_kind(m_scan.require("ZKIND")), m_uuid(m_scan.want("ZUUID")),
          m_title(m_scan.want("ZTITLE")), m_parent(m_scan.want("ZPARENTFOLDER")),
          m_created(m_scan.want("ZCREATIONDATE")), m_trashedState(m_scan.want("ZTRASHEDSTATE")),
          m_sortKey(m_scan.want("ZCUSTOMSORTKEY")),
          m_sortAscending(m_scan.want("ZCUSTOMSORTASCENDING"))
    {
        m_scan.setRowBytes(bytesPerAlbum);
    }

    std::vector<AlbumRow> read();

private:
    AlbumRow row(qint64 id, AlbumKind kind);

    TableScan m_scan;
    const int m_id, m_kind, m_uuid, m_title, m_parent, m_created, m_trashedState;
    const int m_sortKey, m_sortAscending;
};

std::vector<AlbumRow> AlbumReader::read()
{
    std::vector<AlbumRow> rows;
    while (m_scan.next()) {
        const std::optional<qint64> id = m_scan.integer(m_id);
        const std::optional<AlbumKind> kind = kindOf(m_scan.integer(m_kind));
        if (id && kind && m_scan.code(m_trashedState) == 0)
            rows.push_back(row(*id, *kind));
    }
    putInOrderOfIds(rows);
    return rows;
}

AlbumRow AlbumReader::row(qint64 id, AlbumKind kind)
{
    AlbumRow row;
    row.id = id;
    row.album.id = id;
    row.album.kind = kind;
    row.album.uuid = m_scan.uuid(m_uuid);
    toUpperCase(row.album.uuid);
    row.album.title = m_scan.text(m_title);
    row.album.parent = m_scan.integer(m_parent);
    row.album.created = m_scan.number(m_created);
    row.sort.key = sortKeyOf(m_scan.integer(m_sortKey));
    row.sort.isDescending = m_scan.integer(m_sortAscending) == 0;
    return row;
}

std::optional<IdIndex::Position> listedFolder(const std::vector<Album> &albums, const IdIndex &byId,
                                              std::optional<qint64> id)
{
    const std::optional<IdIndex::Position> found = byId.find(id);
    return found && albums[*found].kind == AlbumKind::Folder ? found : std::nullopt;
}

// Folders that lie in each other are left beside each other: who follows the parents must come to
// an end. Each album is passed once, on the way up from one that was not passed before.
void breakCircles(std::vector<Album> &albums, const IdIndex &byId)
{
    std::vector<std::size_t> passedFrom(albums.size(), albums.size());
    for (std::size_t start = 0; start < albums.size(); ++start) {
        std::optional<IdIndex::Position> at = static_cast<IdIndex::Position>(start);
        while (at && passedFrom[*at] == albums.size()) {
            passedFrom[*at] = start;
            at = byId.find(albums[*at].parent);
        }
        if (!at || passedFrom[*at] != start)
            continue;
        while (at && albums[*at].parent) {
            const std::optional<IdIndex::Position> above = byId.find(albums[*at].parent);
            albums[*at].parent.reset();
            at = above;
        }
    }
}

void settleParents(std::vector<Album> &albums)
{
    const IdIndex byId = indexOf(albums);
    for (Album &album : albums) {
        if (!listedFolder(albums, byId, album.parent))
            album.parent.reset();
    }
    breakCircles(albums, byId);
}

} // namespace

AlbumRows readAlbums(LibraryTables &tables)
{
    AlbumRows rows;
    for (AlbumRow &row : AlbumReader(tables).read()) {
        rows.albums.push_back(std::move(row.album));
        rows.sorts.push_back(row.sort);
    }
    settleParents(rows.albums);
    return rows;
}
