#include "engine/classic_catalog.h"

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "classic/device_clock.h"
#include "classic/image_unpacker.h"
#include "engine/classic_variants.h"
#include "host/classic_ipod.h"

#include <QMap>
#include <QSize>

#include <algorithm>

namespace {

constexpr double from1970To2001 = 978307200.0; // seconds

// The parts of a colon-separated name, below the folder of the iPod's photos.
QList<QByteArray> pathParts(const QString &name)
{
    QList<QByteArray> parts;
    const QStringList names = name.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString &part : names)
        parts.append(part.toUtf8());
    if (!parts.isEmpty())
        parts.prepend(QByteArrayLiteral("Photos"));
    return parts;
}

Asset assetOf(const ClassicPhoto &photo)
{
    Asset asset;
    asset.id = photo.id;
    QList<QByteArray> parts = pathParts(photo.originalName);
    if (!parts.isEmpty()) {
        asset.fileName = parts.takeLast();
        asset.directory = parts.join('/');
    }
    const quint32 taken = clockSecondsSince1970(photo.taken);
    if (taken != 0)
        asset.taken = taken - from1970To2001;
    asset.size = storedBytes(photo);
    const StoredPicture *const largest = largestVariant(photo);
    const QSize size = largest ? unpackedSize(*largest) : QSize();
    if (!size.isEmpty()) {
        asset.width = size.width();
        asset.height = size.height();
    }
    return asset;
}

// Its photos that the library lists, each where it comes first.
Album albumOf(const albumItem &item, const QMap<quint64, Asset *> &assets)
{
    Album album;
    album.id = static_cast<qint64>(item.id);
    album.title = item.name.isEmpty() ? QByteArray() : item.name.toUtf8();
    for (const quint64 id : item.photoIDs) {
        Asset *const asset = assets.value(id);
        if (!asset || (!asset->albums.empty() && asset->albums.back() == album.id))
            continue;
        album.assets.push_back(asset->id);
        asset->albums.push_back(album.id);
    }
    return album;
}

template <typename Item>
void sortById(std::vector<Item> &items)
{
    std::sort(items.begin(), items.end(),
              [](const Item &left, const Item &right) { return left.id < right.id; });
}

void addAlbums(Catalog &catalog, photo_manager_int &library)
{
    QMap<quint64, Asset *> assets;
    for (Asset &asset : catalog.assets)
        assets.insert(static_cast<quint64>(asset.id), &asset);
    for (const quint64 id : library.albumIDs()) {
        albumItem item;
        if (library.getAlbum(id, &item))
            catalog.albums.push_back(albumOf(item, assets));
    }
    sortById(catalog.albums);
    for (Asset &asset : catalog.assets)
        std::sort(asset.albums.begin(), asset.albums.end());
}

} // namespace

Catalog classicCatalog(photo_manager_int &library, const ClassicIpod &iPod)
{
    Catalog catalog;
    for (const quint64 id : library.photoIDs()) {
        if (const ClassicPhoto *const photo = iPod.photo(id))
            catalog.assets.push_back(assetOf(*photo));
    }
    sortById(catalog.assets);
    addAlbums(catalog, library);
    return catalog;
}
