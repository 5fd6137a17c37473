#ifndef PHOTOLIB_ENGINE_ASSET_FOLDER_H
#define PHOTOLIB_ENGINE_ASSET_FOLDER_H

#include "engine/asset_file.h"

#include <QByteArray>
#include <QList>

#include <map>
#include <optional>
#include <utility>
#include <vector>

struct Asset;

/// A photo or video and the name of its original in its folder.
struct AssetName {
    const Asset *asset;
    QByteArray name;
};

/// The photos and videos of which several have a claim to files, and which one gets them. Null
/// where there is none.
struct FileOwners {
    const Asset *ofFilm = nullptr;
    const Asset *ofPicture = nullptr;
    const Asset *ofOther = nullptr;
};

/// The photos and videos whose originals have one folder, and to which of them the other files
/// belong. The time and memory that it takes grow with the number of names, whatever they are.
class AssetFolder
{
public:
    /// Of the folder `path`, in which the library has `assets`, which must outlive the object, and
    /// the device the files `names`. `edits` are the folders of what was made by editing, one for
    /// each photo, by its name without the extension.
    AssetFolder(const QByteArray &path, const std::vector<AssetName> &assets,
                const QList<QByteArray> &names, const QList<QByteArray> &edits);

    /// What belongs to the photo or video `id` beside its original.
    std::vector<AssetFile> beside(qint64 id) const;

    /// The one of the folders of edits that may have some of `asset`; null when there is none.
    QByteArray editsOf(const AssetName &asset) const;

    /// What the file `name` in `edits`, which came from `editsOf`, is to `asset`; nothing when it
    /// belongs to another one.
    std::optional<AssetFileRole> editRole(const QByteArray &edits, const QByteArray &name,
                                          const AssetName &asset) const;

private:
    using OwnersByName = std::map<QByteArray, FileOwners>;

    void findOwners(const std::vector<AssetName> &assets);
    void findEdits(const std::vector<AssetName> &assets, const QList<QByteArray> &edits);
    void addBeside(const QByteArray &path, const QByteArray &name);
    void addFilm(const Asset &owner, const AssetFile &file, bool isExact);
    QByteArray editsFor(const QByteArray &stem) const;

    OwnersByName m_owners; // by the names' stems
    OwnersByName m_foldedOwners;
    OwnersByName m_edits;
    std::map<QByteArray, QByteArray> m_foldedEdits; // to the first folder of that name

    struct FilmPlace {
        std::size_t index; // in m_beside
        bool isExact;
    };
    std::map<qint64, FilmPlace> m_films;
    std::vector<std::pair<qint64, AssetFile>> m_beside; // by id
};

#endif // PHOTOLIB_ENGINE_ASSET_FOLDER_H
