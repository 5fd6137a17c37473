#include "engine/export_sources.h"

#include "base/error.h"
#include "base/file_names.h"
#include "base/printable.h"
#include "devices/encoded_names.h"
#include "engine/asset_files.h"
#include "engine/classic_sources.h"
#include "engine/library_session.h"

#include <algorithm>

namespace {

const char editedTail[] = "_edited";

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

QByteArray extensionOf(const QByteArray &name)
{
    return name.mid(nameStem(name).size());
}

// How a file of the device is exported; nothing for what the device can make again.
struct Treatment {
    ExportRole role;
    const char *tail;
};

std::optional<Treatment> treatmentOf(AssetFileRole role)
{
    switch (role) {
    case AssetFileRole::Original:
    case AssetFileRole::Other: // a raw picture beside the JPEG is an original, too
        return Treatment{ExportRole::Original, ""};
    case AssetFileRole::LiveFilm:
        return Treatment{ExportRole::Live, ""};
    case AssetFileRole::Edited:
        return Treatment{ExportRole::Edited, editedTail};
    case AssetFileRole::EditedFilm:
        return Treatment{ExportRole::EditedLive, editedTail};
    case AssetFileRole::Recipe:
        return Treatment{ExportRole::Recipe, ""};
    case AssetFileRole::Still:
    case AssetFileRole::Thumbnail:
        break;
    }
    return std::nullopt;
}

// Which files of one photo are asked for.
class Choice
{
public:
    Choice(const ExportRequest &request, const std::vector<ExportSource> &files)
        : m_request(request), m_hasEdit(std::any_of(files.begin(), files.end(), isEdit))
    {
    }

    bool includes(ExportRole role) const
    {
        const bool isLive = m_request.live == LiveChoice::Both;
        const bool isOriginal = m_request.edited != EditedChoice::Edited || !m_hasEdit;
        const bool isEdited = m_request.edited != EditedChoice::Original;
        switch (role) {
        case ExportRole::Original:
            return isOriginal;
        case ExportRole::Live:
            return isOriginal && isLive;
        case ExportRole::Edited:
            return isEdited;
        case ExportRole::EditedLive:
            return isEdited && isLive;
        case ExportRole::Recipe:
            return m_request.recipe;
        case ExportRole::Sidecar:
        case ExportRole::Stored:
            break;
        }
        return false;
    }

private:
    static bool isEdit(const ExportSource &file) { return file.role == ExportRole::Edited; }

    const ExportRequest &m_request;
    const bool m_hasEdit;
};

} // namespace

QByteArray ownFileName(const Asset &asset)
{
    return asset.fileName.isEmpty() ? QByteArray::number(asset.id) : asset.fileName;
}

ExportSources::ExportSources(LibrarySession &session, const ExportRequest &request,
                             AssetFiles &files)
    : m_session(session), m_request(request), m_files(files)
{
}

std::vector<ExportSource> ExportSources::of(const Asset &asset)
{
    if (m_session.classicIpod())
        return classicSources(m_session, m_request.stored, asset);
    return ofIosAsset(asset);
}

// The original is one of them although the device may not have it.
ExportSource ExportSources::original(const Asset &asset) const
{
    ExportSource source;
    source.source = asset.path();
    source.extension = extensionOf(ownFileName(asset));
    source.label = asset.path().isEmpty() ? QString::number(asset.id)
                                          : QString::fromUtf8(printable(asset.path()));
    source.isInCloud = asset.isInCloud.value_or(false) || asset.source == AssetSource::Cloud;
    return source;
}

std::vector<ExportSource> ExportSources::ofIosAsset(const Asset &asset)
{
    std::vector<ExportSource> sources = {original(asset)};
    bool hasOriginal = false;
    bool hasFilm = !asset.types.testFlag(AssetType::Live);
    for (const AssetFile &file : m_files.of(asset)) {
        hasOriginal = hasOriginal || file.role == AssetFileRole::Original;
        hasFilm = hasFilm || file.role == AssetFileRole::LiveFilm;
        const std::optional<Treatment> treatment = treatmentOf(file.role);
        if (!treatment || file.role == AssetFileRole::Original)
            continue;
        ExportSource source;
        source.role = treatment->role;
        source.source = file.path;
        source.tail = treatment->tail;
        source.extension = extensionOf(nameOf(file.path));
        source.label = QString::fromUtf8(printable(file.path));
        sources.push_back(source);
    }
    if (hasOriginal && !hasFilm)
        sources.push_back(missingFilm(sources.front()));
    const Choice choice(m_request, sources);
    for (ExportSource &source : sources) {
        source.isWanted = choice.includes(source.role);
        if (source.isWanted)
            measure(&source);
    }
    return sources;
}

// Who exports a Live Photo counts on its film.
ExportSource ExportSources::missingFilm(const ExportSource &original)
{
    ExportSource film;
    film.role = ExportRole::Live;
    film.extension = ".MOV";
    film.source = nameStem(original.source) + film.extension;
    film.label = QString::fromUtf8(printable(film.source));
    film.isInCloud = original.isInCloud;
    return film;
}

void ExportSources::measure(ExportSource *source)
{
    if (source->source.isEmpty())
        source->failure = {FileError::NotFound, QStringLiteral("its file has no name")};
    else if (!deviceFileInfo(m_session.files(), source->source, &source->info, &source->failure))
        m_session.requireConnected(source->failure);
    else if (source->info.type != FileInfo::File)
        source->failure = {FileError::WrongType, QStringLiteral("not a regular file")};
    else
        source->failure = FileError();
}
