#include "engine/asset_folder.h"

#include "base/file_names.h"
#include "base/valid_utf8.h"
#include "catalog/asset.h"

#include <algorithm>
#include <tuple>

namespace {

// The least one is the owner.
using Claim = std::tuple<bool, bool, bool, qint64>;

// Those in the trash come after others: what is in the trash is hardly ever exported.
Claim claim(const Asset &asset, bool isFirstChoice, bool isSecondChoice)
{
    return {!isFirstChoice, !isSecondChoice, asset.isTrashed(), asset.id};
}

bool isPhoto(const Asset &asset)
{
    return asset.kind == AssetKind::Photo;
}

bool isLive(const Asset &asset)
{
    return isPhoto(asset) && asset.types.testFlag(AssetType::Live);
}

bool isEdited(const Asset &asset)
{
    return asset.edited.value_or(false);
}

Claim filmClaim(const Asset &asset)
{
    return claim(asset, isPhoto(asset), isLive(asset));
}

Claim otherClaim(const Asset &asset)
{
    return claim(asset, true, true);
}

Claim editedPictureClaim(const Asset &asset)
{
    return claim(asset, isPhoto(asset), isEdited(asset));
}

Claim editedFilmClaim(const Asset &asset)
{
    return claim(asset, isEdited(asset), !isPhoto(asset) || isLive(asset));
}

Claim editClaim(const Asset &asset)
{
    return claim(asset, isEdited(asset), true);
}

void offer(const Asset *&owner, const Asset &asset, Claim (*claimOf)(const Asset &))
{
    if (!owner || claimOf(asset) < claimOf(*owner))
        owner = &asset;
}

void offerFiles(FileOwners &owners, const Asset &asset)
{
    offer(owners.ofFilm, asset, filmClaim);
    offer(owners.ofOther, asset, otherClaim);
}

void offerEdits(FileOwners &owners, const Asset &asset)
{
    offer(owners.ofFilm, asset, editedFilmClaim);
    offer(owners.ofPicture, asset, editedPictureClaim);
    offer(owners.ofOther, asset, editClaim);
}

// What names are compared by that differ by case only.
QByteArray folded(const QByteArray &name)
{
    const bool isAscii = std::all_of(name.begin(), name.end(),
                                     [](char byte) { return static_cast<uchar>(byte) < 0x80; });
    // Names that are no text are different ones although a comparison of texts sees none.
    if (isAscii || validUtf8(name) != name)
        return name.toLower();
    return comparedName(name).toUtf8();
}

bool hasExtension(const QByteArray &name, const QByteArray &stem, const char *extension)
{
    return name.mid(stem.size()).toLower() == extension;
}

bool isFilmOfEdit(const QByteArray &name, const QByteArray &stem)
{
    return hasExtension(name, stem, ".mov") || hasExtension(name, stem, ".mp4") ||
           hasExtension(name, stem, ".m4v");
}

const FileOwners *ownersIn(const std::map<QByteArray, FileOwners> &owners, const QByteArray &name)
{
    const auto found = owners.find(name);
    return found == owners.end() ? nullptr : &found->second;
}

bool byName(const AssetName &asset, const AssetName &other)
{
    return asset.name < other.name;
}

} // namespace

AssetFolder::AssetFolder(const QByteArray &path, const std::vector<AssetName> &assets,
                         const QList<QByteArray> &names, const QList<QByteArray> &edits)
{
    std::vector<AssetName> originals = assets;
    std::sort(originals.begin(), originals.end(), byName);
    findOwners(assets);
    findEdits(assets, edits);
    for (const QByteArray &name : names) {
        if (!std::binary_search(originals.begin(), originals.end(), AssetName{nullptr, name},
                                byName))
            addBeside(path, name);
    }
    std::stable_sort(m_beside.begin(), m_beside.end(),
                     [](const auto &file, const auto &other) { return file.first < other.first; });
}

void AssetFolder::findOwners(const std::vector<AssetName> &assets)
{
    for (const auto &[asset, name] : assets) {
        const QByteArray stem = nameStem(name);
        offerFiles(m_owners[stem], *asset);
        offerFiles(m_foldedOwners[folded(stem)], *asset);
    }
}

void AssetFolder::findEdits(const std::vector<AssetName> &assets, const QList<QByteArray> &edits)
{
    for (const QByteArray &name : edits) {
        m_edits.emplace(name, FileOwners());
        m_foldedEdits.emplace(folded(name), name);
    }
    for (const auto &[asset, name] : assets) {
        const auto owners = m_edits.find(editsFor(nameStem(name)));
        if (owners != m_edits.end())
            offerEdits(owners->second, *asset);
    }
}

void AssetFolder::addBeside(const QByteArray &path, const QByteArray &name)
{
    const QByteArray stem = nameStem(name);
    const FileOwners *const exact = ownersIn(m_owners, stem);
    const FileOwners *const owners = exact ? exact : ownersIn(m_foldedOwners, folded(stem));
    if (!owners)
        return;
    AssetFile file = {AssetFileRole::Other, path.isEmpty() ? name : path + '/' + name};
    const Asset &filmOwner = *owners->ofFilm;
    if (hasExtension(name, stem, ".mov") && isPhoto(filmOwner)) {
        addFilm(filmOwner, file, exact != nullptr);
        return;
    }
    if (hasExtension(name, stem, ".aae"))
        file.role = AssetFileRole::Recipe;
    m_beside.emplace_back(owners->ofOther->id, file);
}

// Of several films that which has the photo's name exactly is the live film.
void AssetFolder::addFilm(const Asset &owner, const AssetFile &file, bool isExact)
{
    const FilmPlace place = {m_beside.size(), isExact};
    m_beside.emplace_back(owner.id, file);
    const auto [film, isFirst] = m_films.emplace(owner.id, place);
    if (!isFirst && isExact && !film->second.isExact) {
        m_beside[film->second.index].second.role = AssetFileRole::Other;
        film->second = place;
    }
    m_beside[film->second.index].second.role = AssetFileRole::LiveFilm;
}

std::vector<AssetFile> AssetFolder::beside(qint64 id) const
{
    auto file = std::lower_bound(m_beside.begin(), m_beside.end(), id,
                                 [](const auto &entry, qint64 key) { return entry.first < key; });
    std::vector<AssetFile> files;
    for (; file != m_beside.end() && file->first == id; ++file)
        files.push_back(file->second);
    return files;
}

QByteArray AssetFolder::editsFor(const QByteArray &stem) const
{
    if (m_edits.count(stem))
        return stem;
    const auto other = m_foldedEdits.find(folded(stem));
    return other == m_foldedEdits.end() ? QByteArray() : other->second;
}

QByteArray AssetFolder::editsOf(const AssetName &asset) const
{
    const auto edits = m_edits.find(editsFor(nameStem(asset.name)));
    if (edits == m_edits.end())
        return QByteArray();
    const FileOwners &owners = edits->second;
    for (const Asset *const owner : {owners.ofPicture, owners.ofFilm, owners.ofOther}) {
        if (owner && owner->id == asset.asset->id)
            return edits->first;
    }
    return QByteArray();
}

std::optional<AssetFileRole> AssetFolder::editRole(const QByteArray &edits, const QByteArray &name,
                                                   const AssetName &asset) const
{
    const FileOwners &owners = m_edits.at(edits);
    const QByteArray stem = nameStem(name);
    const bool isRendered = stem.toLower() == "fullsizerender";
    const bool isFilm = isRendered && isFilmOfEdit(name, stem);
    const Asset *const owner = isFilm       ? owners.ofFilm
                               : isRendered ? owners.ofPicture
                                            : owners.ofOther;
    if (!owner || owner->id != asset.asset->id)
        return std::nullopt;
    if (name.toLower() == "adjustments.plist")
        return AssetFileRole::Recipe;
    if (!isRendered)
        return AssetFileRole::Other;
    if (isFilm)
        return isPhoto(*owner) ? AssetFileRole::EditedFilm : AssetFileRole::Edited;
    return isPhoto(*owner) ? AssetFileRole::Edited : AssetFileRole::Other;
}
