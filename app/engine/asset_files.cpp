#include "engine/asset_files.h"

#include "base/file_names.h"
#include "catalog/catalog.h"
#include "engine/device_listing.h"

#include <QByteArrayList>

#include <algorithm>
#include <optional>
#include <tuple>

namespace {

// A path below the device's root, each folder in one way of writing it.
struct Place {
    QByteArray folder;
    QByteArray name;
};

// Whether there is but one way to write `folder`, which holds for nearly all.
bool isPlain(const QByteArray &folder)
{
    char previous = '/';
    for (const char letter : folder) {
        if (previous == '/' && (letter == '/' || letter == '.'))
            return false;
        previous = letter;
    }
    return folder.isEmpty() || previous != '/';
}

std::optional<QByteArray> plainFolder(const QByteArray &folder)
{
    if (isPlain(folder))
        return folder;
    QByteArrayList names;
    for (const QByteArray &name : folder.split('/')) {
        if (name == "..")
            return std::nullopt;
        if (!name.isEmpty() && name != ".")
            names.append(name);
    }
    return names.join('/');
}

std::optional<Place> placeOf(const Asset &asset)
{
    const QByteArray path = asset.path();
    const int slash = path.lastIndexOf('/');
    const QByteArray name = path.mid(slash + 1);
    const std::optional<QByteArray> folder = plainFolder(path.left(qMax(slash, 0)));
    if (!folder || asset.fileName.isEmpty() || name.isEmpty() || name == "." || name == "..")
        return std::nullopt;
    return Place{*folder, name};
}

// "PhotoData/OWN/FOLDER/NAME": where the library keeps what it makes of the photos of a folder.
QByteArray inLibrary(const char *own, const QByteArray &folder, const QByteArray &name)
{
    QByteArrayList names = {"PhotoData", own, folder, name};
    names.removeAll(QByteArray());
    return names.join('/');
}

void putInOrder(std::vector<AssetFile> *files)
{
    std::sort(files->begin(), files->end(), [](const AssetFile &file, const AssetFile &other) {
        return std::tie(file.role, file.path) < std::tie(other.role, other.path);
    });
}

} // namespace

AssetFiles::AssetFiles(const Catalog &catalog, DeviceListing &listing) : m_listing(listing)
{
    for (const Asset &asset : catalog.assets) {
        if (const std::optional<Place> place = placeOf(asset))
            m_assets[place->folder].push_back({&asset, place->name});
    }
}

std::vector<AssetFile> AssetFiles::of(const Asset &asset)
{
    const std::optional<Place> place = placeOf(asset);
    if (!place)
        return {};
    std::vector<AssetFile> files = folder(place->folder).beside(asset.id);
    FileError error;
    if (m_listing.has(asset.path(), &error))
        files.push_back({AssetFileRole::Original, asset.path()});
    addEdits(place->folder, {&asset, place->name}, &files);
    putInOrder(&files);
    return files;
}

std::vector<AssetFile> AssetFiles::madeByDevice(const Asset &asset)
{
    const std::optional<Place> place = placeOf(asset);
    if (!place)
        return {};
    std::vector<AssetFile> files;
    FileError error;
    const QByteArray still = inLibrary("Metadata", place->folder, nameStem(place->name) + ".JPG");
    const QByteArray stills = inLibrary("Metadata", place->folder, QByteArray());
    namesIn(stills); // to know when it cannot be listed
    if (!hasOriginals(stills) && m_listing.has(still, &error))
        files.push_back({AssetFileRole::Still, still});
    const QByteArray thumbnails = inLibrary("Thumbnails/V2", place->folder, place->name);
    if (hasOriginals(thumbnails))
        return files;
    for (const QByteArray &name : namesIn(thumbnails))
        files.push_back({AssetFileRole::Thumbnail, thumbnails + '/' + name});
    return files;
}

const QList<QByteArray> &AssetFiles::namesIn(const QByteArray &folderPath)
{
    const DeviceListing::Folder &listed = m_listing.folder(folderPath);
    if (listed.error.kind != FileError::None && !listed.error.isMissing())
        m_unlisted[folderPath] = listed.error;
    return listed.names;
}

const AssetFolder &AssetFiles::folder(const QByteArray &path)
{
    const auto known = m_folders.find(path);
    if (known != m_folders.end())
        return known->second;
    const QByteArray edits = inLibrary("Mutations", path, QByteArray());
    const auto assets = m_assets.find(path);
    AssetFolder folder(path, assets == m_assets.end() ? std::vector<AssetName>() : assets->second,
                       namesIn(path), namesIn(edits));
    return m_folders.emplace(path, std::move(folder)).first->second;
}

void AssetFiles::addEdits(const QByteArray &folderPath, const AssetName &asset,
                          std::vector<AssetFile> *files)
{
    const AssetFolder &assetFolder = folder(folderPath);
    const QByteArray edits = assetFolder.editsOf(asset);
    if (edits.isEmpty())
        return;
    const QByteArray path = adjustmentsIn(inLibrary("Mutations", folderPath, edits));
    if (hasOriginals(path))
        return;
    for (const QByteArray &name : namesIn(path)) {
        if (const std::optional<AssetFileRole> role = assetFolder.editRole(edits, name, asset))
            files->push_back({*role, path + '/' + name});
    }
}

// The folder "Adjustments" in `path`, whatever its case.
QByteArray AssetFiles::adjustmentsIn(const QByteArray &path)
{
    QByteArray usual = path + "/Adjustments";
    if (m_listing.folder(usual).error.kind != FileError::NotFound)
        return usual;
    for (const QByteArray &name : namesIn(path)) {
        if (name.toLower() == "adjustments")
            return path + '/' + name;
    }
    return usual;
}

// What is in such a folder belongs to the photos there.
bool AssetFiles::hasOriginals(const QByteArray &folderPath) const
{
    return m_assets.count(folderPath) != 0;
}
