#include "engine/asset_files.h"

#include "base/file_names.h"
#include "engine/device_listing.h"

namespace {

// "DIRECTORY/NAME" in a folder of the library's own.
QByteArray inLibrary(const char *folder, const Asset &asset, const QByteArray &name)
{
    const QByteArray directory = QByteArray("PhotoData/") + folder + '/' + asset.directory;
    return (asset.directory.isEmpty() ? QByteArray("PhotoData/") + folder : directory) + '/' + name;
}

class FilesOfAsset
{
public:
    FilesOfAsset(const Asset &asset, DeviceListing &listing)
        : m_asset(asset), m_listing(listing), m_stem(nameStem(asset.fileName))
    {
    }

    std::vector<AssetFile> find()
    {
        addIfThere(AssetFileRole::Original, m_asset.path());
        if (m_asset.types.testFlag(AssetType::Live))
            addCompanion(AssetFileRole::LiveVideo, ".mov");
        addCompanion(AssetFileRole::Sidecar, ".aae");
        addAllIn(AssetFileRole::Edit, inLibrary("Mutations", m_asset, m_stem) + "/Adjustments");
        addIfThere(AssetFileRole::Still, inLibrary("Metadata", m_asset, m_stem + ".JPG"));
        addAllIn(AssetFileRole::Thumbnail, inLibrary("Thumbnails/V2", m_asset, m_asset.fileName));
        return m_files;
    }

private:
    void addIfThere(AssetFileRole role, const QByteArray &path)
    {
        FileError error;
        if (m_listing.has(path, &error))
            m_files.push_back({role, path});
    }

    // The file beside the original with the same stem and `suffix` in any case.
    void addCompanion(AssetFileRole role, const QByteArray &suffix)
    {
        const QByteArray stemPath = m_asset.path().chopped(m_asset.fileName.size()) + m_stem;
        for (const QByteArray &path : {stemPath + suffix.toUpper(), stemPath + suffix}) {
            if (path != m_asset.path())
                addIfThere(role, path);
        }
    }

    void addAllIn(AssetFileRole role, const QByteArray &folder)
    {
        for (const QByteArray &name : m_listing.folder(folder).names)
            m_files.push_back({role, folder + '/' + name});
    }

    const Asset &m_asset;
    DeviceListing &m_listing;
    const QByteArray m_stem;
    std::vector<AssetFile> m_files;
};

} // namespace

std::vector<AssetFile> filesOf(const Asset &asset, DeviceListing &listing)
{
    if (asset.fileName.isEmpty())
        return {};
    return FilesOfAsset(asset, listing).find();
}
