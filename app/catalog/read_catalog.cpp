#include "catalog/catalog.h"

#include "catalog/read_albums.h"
#include "catalog/read_assets.h"
#include "catalog/read_attributes.h"
#include "catalog/read_keywords.h"
#include "catalog/read_members.h"
#include "catalog/read_people.h"

#include <future>

namespace {

// What can be read before the photos and videos are known.
struct OtherRows {
    std::vector<StoredAttributes> attributes;
    std::vector<DescriptionRow> descriptions;
    KeywordRows keywords;
    PeopleRows people;
    AlbumRows albums;
    std::vector<MemberRow> members;
    Catalog told; // what is missing and unread
};

// Of each photo or video there are attributes.
OtherRows readOthers(const QString &database, CancelToken &cancel, const EntityNumbers &numbers,
                     qint64 expectedAssets)
{
    OtherRows rows;
    LibraryTables tables(database, cancel, rows.told);
    rows.attributes = readAttributes(tables, expectedAssets);
    rows.descriptions = readDescriptions(tables);
    rows.keywords = readKeywords(tables, numbers);
    rows.people = readPeople(tables);
    rows.albums = readAlbums(tables);
    rows.members = readMembers(tables, numbers, rows.albums.albums);
    return rows;
}

void append(Catalog &catalog, const Catalog &told)
{
    catalog.missing.insert(catalog.missing.end(), told.missing.begin(), told.missing.end());
    catalog.unread.insert(catalog.unread.end(), told.unread.begin(), told.unread.end());
}

void join(Catalog &catalog, AssetRows assets, OtherRows others)
{
    setAttributes(assets, std::move(others.attributes));
    // Each thread sets fields of its own.
    std::future<std::vector<Album>> albums = std::async([&] {
        setCaptions(assets, others.descriptions);
        return setMembers(assets, std::move(others.albums), others.members);
    });
    setKeywords(assets, others.keywords);
    catalog.people = setPeople(assets, std::move(others.people));
    catalog.albums = albums.get();
    catalog.assets = std::move(assets.assets);
}

} // namespace

Catalog readCatalog(const QString &database, CancelToken &cancel)
{
    CancelToken assetsCancel, othersCancel;
    const CancelHook hook(cancel, [&] {
        assetsCancel.cancel();
        othersCancel.cancel();
    });
    Catalog catalog;
    LibraryTables tables(database, assetsCancel, catalog);
    const QByteArray table = assetTable(tables);
    const EntityNumbers numbers(tables);
    const qint64 expected = numbers.highestId(table == "ZASSET" ? "Asset" : "GenericAsset");
    // Where no thread can be started, they are read when they are waited for.
    std::future<OtherRows> others =
        std::async([&] { return readOthers(database, othersCancel, numbers, expected); });
    AssetRows assets = readAssets(tables, table, expected);
    OtherRows otherRows = others.get();
    append(catalog, otherRows.told);
    join(catalog, std::move(assets), std::move(otherRows));
    return catalog;
}
