#include "catalog/catalog.h"

#include "catalog/read_albums.h"
#include "catalog/read_assets.h"
#include "catalog/read_attributes.h"
#include "catalog/read_keywords.h"
#include "catalog/read_members.h"
#include "catalog/read_people.h"

Catalog readCatalog(const QString &database, CancelToken &cancel)
{
    Catalog catalog;
    LibraryTables tables(database, cancel, catalog);
    const QByteArray assets = assetTable(tables);
    const EntityNumbers numbers(tables);
    const char *const entity = assets == "ZASSET" ? "Asset" : "GenericAsset";
    AssetRows rows = readAssets(tables, assets, numbers.highestId(entity));
    readAttributes(tables, rows);
    readDescriptions(tables, rows);
    readKeywords(tables, numbers, rows);
    catalog.people = readPeople(tables, rows);
    AlbumRows albums = readAlbums(tables);
    readMembers(tables, numbers, rows, albums);
    catalog.assets = std::move(rows.assets);
    catalog.albums = std::move(albums.albums);
    return catalog;
}
