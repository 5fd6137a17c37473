#include "catalog/read_members.h"

#include "catalog/links.h"
#include "catalog/table_scan.h"
#include "catalog/text_order.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

// A photo or video in an album.
struct Member {
    quint32 album; // their positions
    quint32 asset;
    qint64 place; // in the album's own order
    bool hasPlace;
};

Member member(quint32 album, quint32 asset, std::optional<qint64> place)
{
    return {album, asset, place.value_or(0), place.has_value()};
}

// By hand; those without a place come last. Assets lie by id.
bool isPlacedBefore(const Member &member, const Member &other)
{
    return std::make_tuple(!member.hasPlace, member.place, member.asset) <
           std::make_tuple(!other.hasPlace, other.place, other.asset);
}

// Each photo tells its import itself, which is what counts, and folders hold albums.
bool isInJoinTable(AlbumKind kind)
{
    return kind != AlbumKind::Import && kind != AlbumKind::Folder;
}

void appendMembers(const AssetRows &rows, const std::vector<MemberRow> &found,
                   std::vector<Member> &members)
{
    members.reserve(found.size());
    for (const MemberRow &row : found) {
        if (const std::optional<IdIndex::Position> held = rows.byId.find(row.asset))
            members.push_back({row.album, *held, row.place, row.hasPlace});
    }
}

void appendImports(const AssetRows &rows, const std::vector<Album> &albums,
                   std::vector<Member> &members)
{
    const IdIndex albumsById = indexOf(albums);
    for (std::size_t asset = 0; asset < rows.assets.size(); ++asset) {
        const AssetReferences &references = rows.references[asset];
        const std::optional<IdIndex::Position> album = albumsById.find(references.importSession);
        if (album && albums[*album].kind == AlbumKind::Import)
            members.push_back(member(*album, static_cast<quint32>(asset), references.importPlace));
    }
}

// The members of each album together, in linear time.
std::vector<std::vector<Member>> byAlbum(const std::vector<Member> &members, std::size_t albums)
{
    std::vector<std::size_t> counts(albums);
    for (const Member &member : members)
        ++counts[member.album];
    std::vector<std::vector<Member>> lists(albums);
    for (std::size_t album = 0; album < albums; ++album)
        lists[album].reserve(counts[album]);
    for (const Member &member : members)
        lists[member.album].push_back(member);
    return lists;
}

struct DatedMember {
    LibraryDate key; // nothing compares as less than any date
    Member member;

    static LibraryDate keyOf(const Asset &asset) { return asset.taken; }
    static bool isKeyBefore(const LibraryDate &key, const LibraryDate &other)
    {
        return key < other;
    }
};

struct TitledMember {
    QByteArray key; // null compares as less than any text
    Member member;

    static QByteArray keyOf(const Asset &asset) { return asset.title; }
    static bool isKeyBefore(const QByteArray &key, const QByteArray &other)
    {
        return isBefore(key, other);
    }
};

template <typename KeyedMember>
void sortByKey(std::vector<Member> &members, const std::vector<Asset> &assets, bool isDescending)
{
    std::vector<KeyedMember> keyed;
    keyed.reserve(members.size());
    for (const Member &member : members)
        keyed.push_back({KeyedMember::keyOf(assets[member.asset]), member});
    std::sort(keyed.begin(), keyed.end(), [&](const KeyedMember &one, const KeyedMember &other) {
        if (KeyedMember::isKeyBefore(one.key, other.key))
            return !isDescending;
        if (KeyedMember::isKeyBefore(other.key, one.key))
            return isDescending;
        return isPlacedBefore(one.member, other.member);
    });
    std::transform(keyed.begin(), keyed.end(), members.begin(),
                   [](const KeyedMember &one) { return one.member; });
}

void sortMembers(std::vector<Member> &members, AlbumSort sort, const std::vector<Asset> &assets)
{
    switch (sort.key) {
    case AlbumSortKey::Date:
        sortByKey<DatedMember>(members, assets, sort.isDescending);
        break;
    case AlbumSortKey::Title:
        sortByKey<TitledMember>(members, assets, sort.isDescending);
        break;
    case AlbumSortKey::Manual:
        if (!std::is_sorted(members.begin(), members.end(), isPlacedBefore))
            std::sort(members.begin(), members.end(), isPlacedBefore);
        break;
    }
}

// Albums' photos in their orders, and the albums that hold a photo.
class Holdings
{
public:
    explicit Holdings(AssetRows &rows) : m_rows(rows), m_lastAlbums(rows.assets.size(), none) {}

    // The positions of albums ascend from one call to the next. Of a photo that is in the album
    // several times the first place counts.
    void add(quint32 position, Album &album, const std::vector<Member> &members)
    {
        album.assets.reserve(members.size());
        for (const Member &member : members) {
            if (m_lastAlbums[member.asset] == position)
                continue;
            m_lastAlbums[member.asset] = position;
            album.assets.push_back(m_rows.ids[member.asset]);
            m_albums.emplace_back(member.asset, position);
        }
    }

    void tellAssets(const std::vector<Album> &albums)
    {
        Links albumsOfAssets(m_rows.assets.size(), m_albums);
        for (std::size_t asset = 0; asset < m_rows.assets.size(); ++asset) {
            const Links::Numbers positions = albumsOfAssets.of(asset);
            if (positions.isEmpty())
                continue;
            m_rows.assets[asset].albums.reserve(positions.size());
            for (const quint32 position : positions)
                m_rows.assets[asset].albums.push_back(albums[position].id);
        }
    }

private:
    static constexpr quint32 none = 0xffffffff;

    AssetRows &m_rows;
    std::vector<quint32> m_lastAlbums; // to which each photo was added, by position
    std::vector<Links::Link> m_albums;
};

} // namespace

std::vector<MemberRow> readMembers(LibraryTables &tables, const EntityNumbers &numbers,
                                   const std::vector<Album> &albums)
{
    std::vector<MemberRow> members;
    const FoundJoin join = albumJoinTable(tables, numbers);
    if (join.table.isEmpty())
        return members;
    const IdIndex albumsById = indexOf(albums);
    TableScan scan(tables, join.table);
    const int album = scan.require(join.owner);
    const int asset = scan.require(join.item);
    const int place = scan.want("Z_FOK_" + join.item.mid(2)); // without its "Z_"
    while (scan.next()) {
        const std::optional<IdIndex::Position> holder = albumsById.find(scan.integer(album));
        if (!holder || !isInJoinTable(albums[*holder].kind))
            continue;
        const std::optional<qint64> held = scan.integer(asset);
        const std::optional<qint64> rank = scan.integer(place);
        if (held)
            members.push_back({*holder, rank.has_value(), *held, rank.value_or(0)});
    }
    return members;
}

std::vector<Album> setMembers(AssetRows &rows, AlbumRows albums,
                              const std::vector<MemberRow> &found)
{
    std::vector<Member> members;
    appendMembers(rows, found, members);
    appendImports(rows, albums.albums, members);
    std::vector<std::vector<Member>> lists = byAlbum(members, albums.albums.size());
    Holdings holdings(rows);
    for (std::size_t position = 0; position < lists.size(); ++position) {
        Album &album = albums.albums[position];
        const bool isImport = album.kind == AlbumKind::Import;
        sortMembers(lists[position], isImport ? AlbumSort() : albums.sorts[position], rows.assets);
        holdings.add(static_cast<quint32>(position), album, lists[position]);
    }
    holdings.tellAssets(albums.albums);
    return std::move(albums.albums);
}
