#include "engine/export_plan.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/file_names.h"
#include "base/printable.h"
#include "base/sha256.h"
#include "engine/asset_files.h"
#include "engine/device_hash.h"
#include "engine/export_names.h"
#include "engine/export_report.h"
#include "engine/library_session.h"
#include "engine/name_values.h"
#include "engine/photo_text.h"

#include <QDateTime>

#include <limits>
#include <map>

namespace {

constexpr char blockedPath[] = "a link or a file stands in place of its folder";
constexpr char otherProgramsFile[] = "a file of another program has its name";
constexpr int longestSidecarSuffix = 5; // ".json"
constexpr char changedSidecar[] = "changed by somebody since it was exported: kept";

// The copies that a record has of each photo.
class RecordedPhotos
{
public:
    explicit RecordedPhotos(const ExportContents &record)
    {
        for (const RecordedFile &file : record.files)
            m_files[file.photo].push_back(&file);
    }

    // The last copy of a file with the role, wherever on the device it was.
    const RecordedFile *find(const QByteArray &photo, ExportRole role) const
    {
        for (const RecordedFile *file : of(photo)) {
            if (file->isCurrent && file->role == role)
                return file;
        }
        return nullptr;
    }

    // All copies of the files of `photo`, also older ones.
    std::vector<const RecordedFile *> of(const QByteArray &photo) const
    {
        const auto files = m_files.find(photo);
        return files == m_files.end() ? std::vector<const RecordedFile *>() : files->second;
    }

    // The last copy of a file; null when there is none.
    const RecordedFile *find(const QByteArray &photo, ExportRole role,
                             const QByteArray &source) const
    {
        const auto files = m_files.find(photo);
        if (files == m_files.end())
            return nullptr;
        for (const RecordedFile *file : files->second) {
            if (file->isCurrent && file->role == role && file->source == source)
                return file;
        }
        return nullptr;
    }

private:
    std::map<QByteArray, std::vector<const RecordedFile *>> m_files;
};

MadeFile madeSidecar(SidecarFormat format, const Asset &asset, const Catalog &catalog)
{
    try {
        const bool isJson = format == SidecarFormat::Json;
        return {isJson ? jsonSidecar(asset) : xmpSidecar(asset, catalog), FileError()};
    } catch (const Error &error) {
        return {QByteArray(), {FileError::Failed, QString::fromStdString(error.what())}};
    }
}

// What the files of one photo are planned with.
struct Photo {
    const Asset &asset;
    QByteArray key;                     // in records
    std::vector<ExportSource> sources;  // the original first
    std::vector<NameEnd> ends;          // of the sources' names, one for each
    std::optional<NamePath> path;       // by the template
    std::optional<QByteArray> base;     // that the record has, or that was found for it
    std::optional<QByteArray> freeBase; // for what cannot have that
};

class Planner
{
public:
    Planner(LibrarySession &session, const ExportRequest &request, ExportFolder &folder,
            const ExportContents &record, const CancelToken &cancel)
        : m_session(session), m_request(request), m_folder(folder), m_cancel(cancel),
          m_recorded(record), m_template(request.nameTemplate), m_values(session, request.filter),
          m_files(session.catalog(), session.listing()), m_sources(session, request, m_files),
          m_names(folder.longestName() - (request.sidecars.empty() ? 0 : longestSidecarSuffix))
    {
        for (const RecordedFile &file : record.files)
            m_names.take(file.path);
    }

    void add(const Asset &asset)
    {
        Photo photo = {asset, recordKey(asset), m_sources.of(asset), {}, {}, {}, {}};
        photo.ends = nameEnds(photo.sources);
        const std::size_t first = m_plan.files.size();
        for (std::size_t i = 0; i < photo.sources.size(); ++i) {
            if (photo.sources[i].isWanted)
                m_plan.files.push_back(planned(photo, i));
        }
        addSidecars(photo, first);
    }

    ExportPlan take()
    {
        for (const auto &[path, error] : m_files.unlistedFolders()) {
            m_session.requireConnected(error);
            m_plan.unlisted.push_back({QString::fromUtf8(printable(path)), failureText(error)});
        }
        return std::move(m_plan);
    }

private:
    void takeRecordedBase(Photo &photo)
    {
        for (std::size_t i = 0; i < photo.sources.size() && !photo.base; ++i) {
            const RecordedFile *const known = recorded(photo, photo.sources[i]);
            if (known)
                photo.base = photo.ends[i].baseOf(known->path);
        }
    }

    const RecordedFile *recorded(const Photo &photo, const ExportSource &source) const
    {
        const RecordedFile *const known = m_recorded.find(photo.key, source.role, source.source);
        if (known || source.failure.kind != FileError::NotFound)
            return known;
        return m_recorded.find(photo.key, source.role);
    }

    PlannedFile planned(Photo &photo, std::size_t i)
    {
        PlannedFile file;
        file.asset = &photo.asset;
        file.source = photo.sources[i];
        file.size = file.source.info.size;
        const RecordedFile *const known = recorded(photo, file.source);
        const bool isHere = known && isIntact(*known);
        if (isHere && isUnchanged(*known, file.source))
            keep(file, *known);
        else if (file.source.failure.kind != FileError::None)
            fail(file);
        else if (const RecordedFile *const earlier = earlierCopy(photo, file.source))
            keepAgain(file, *earlier);
        else if (known)
            planAgain(file, *known, photo, i);
        else
            planNew(file, photo, i);
        return file;
    }

    // As far as it shows without reading it.
    bool isIntact(const RecordedFile &known)
    {
        const ExportFolder::Entry entry = m_folder.entry(known.path);
        return entry.kind == ExportFolder::Kind::File && entry.size == known.size;
    }

    bool isUnchangedByContent(const RecordedFile &known)
    {
        const UniqueFd file = m_folder.open(known.path);
        return file.isOpen() && sha256OfFile(file.get(), m_cancel) == known.sha256;
    }

    // Whether the device has what `known`, which the folder has, is a copy of. What is in iCloud
    // by now is what it was.
    bool isUnchanged(const RecordedFile &known, const ExportSource &source)
    {
        if (source.failure.kind == FileError::NotFound)
            return true;
        if (source.failure.kind != FileError::None ||
            (!source.make && source.info.size != known.size))
            return false;
        return source.info.modified == known.modified || isSameByContent(known, source);
    }

    // A new time alone, of a device that was copied, say, makes no new file.
    bool isSameByContent(const RecordedFile &known, const ExportSource &source)
    {
        if (contentHash(source) != known.sha256)
            return false;
        RecordedFile file = known;
        file.modified = source.info.modified;
        m_plan.found.push_back(file);
        return true;
    }

    // A copy of the file as it is now: from another place on the device, which a restored one
    // chooses anew, or from before it was something else. Null when the folder has none.
    const RecordedFile *earlierCopy(const Photo &photo, const ExportSource &source)
    {
        QByteArray hash; // read once, where it is of use
        for (const RecordedFile *file : m_recorded.of(photo.key)) {
            const bool mayBeCopy = file->role == source.role &&
                                   (source.make || file->size == source.info.size) &&
                                   isIntact(*file);
            if (mayBeCopy && hash.isNull())
                hash = contentHash(source);
            if (mayBeCopy && file->sha256 == hash)
                return file;
        }
        return nullptr;
    }

    void keepAgain(PlannedFile &file, const RecordedFile &earlier)
    {
        keep(file, earlier);
        RecordedFile record = earlier;
        record.source = file.source.source;
        record.modified = file.source.info.modified;
        record.isCurrent = true;
        m_plan.found.push_back(record);
    }

    // Null when there is none.
    QByteArray contentHash(const ExportSource &source)
    {
        if (!source.make)
            return deviceHash(source);
        const MadeFile made = source.make();
        return made.failure.kind == FileError::None ? sha256Hex(made.bytes) : QByteArray();
    }

    // Null when the file cannot be read.
    QByteArray deviceHash(const ExportSource &source)
    {
        FileError error;
        QByteArray hash = sha256OfDeviceFile(m_session.files(), source.source, &error, m_cancel);
        m_session.requireConnected(error);
        return hash;
    }

    static void keep(PlannedFile &file, const RecordedFile &known)
    {
        file.action = PlannedFile::Keep;
        file.path = known.path;
        file.size = known.size;
        file.sha256 = known.sha256;
    }

    static void fail(PlannedFile &file)
    {
        const FileError &failure = file.source.failure;
        const bool isMissing = failure.kind == FileError::NotFound;
        file.action = isMissing ? PlannedFile::Missing : PlannedFile::Fail;
        file.cause = failureText(failure);
        if (isMissing && file.source.isInCloud)
            file.cause = QStringLiteral("only in iCloud");
    }

    // A file that was exported before, and that the folder does not have, or the device not as it
    // was then.
    void planAgain(PlannedFile &file, const RecordedFile &known, Photo &photo, std::size_t i)
    {
        file.replaced = m_folder.entry(known.path);
        const bool isGone = file.replaced.kind == ExportFolder::Kind::Nothing;
        file.path = known.path;
        if (m_request.onlyNew && isUnchanged(known, file.source)) {
            file.action = PlannedFile::Skip;
            file.path = QByteArray();
            file.cause = QStringLiteral("moved, deleted or changed in the folder");
        } else if (isGone) {
            return;
        } else if (isCopyAt(known.path, photo.sources[i])) {
            adopt(file, photo.key);
        } else if (m_request.update == UpdateChoice::Replace && isUnchangedByContent(known)) {
            file.replaces = true;
        } else {
            file.path = freePath(photo, i);
            planPlace(file, photo.key);
        }
    }

    void planNew(PlannedFile &file, Photo &photo, std::size_t i)
    {
        const QByteArray &base = baseFor(photo); // which may change the ends
        file.path = base + photo.ends[i].text();
        const bool isOwn = photo.freeBase == photo.base;
        if (!isOwn && (m_names.isTaken(file.path) || !mayHave(photo, i, base)))
            file.path = freePath(photo, i);
        m_names.take(file.path);
        planPlace(file, photo.key);
    }

    // What has the path is a copy, or in the way.
    void planPlace(PlannedFile &file, const QByteArray &key)
    {
        const ExportFolder::Kind kind = m_folder.entry(file.path).kind;
        if (kind == ExportFolder::Kind::Nothing)
            return;
        if (kind == ExportFolder::Kind::Blocked)
            refuse(file, blockedPath);
        else if (kind == ExportFolder::Kind::File && isCopyAt(file.path, file.source))
            adopt(file, key);
        else
            refuse(file, otherProgramsFile);
    }

    // A copy that the record does not know: of a program that was killed, say.
    void adopt(PlannedFile &file, const QByteArray &key)
    {
        const UniqueFd there = m_folder.open(file.path);
        file.size = m_folder.entry(file.path).size;
        file.sha256 = there.isOpen() ? sha256OfFile(there.get(), m_cancel) : QByteArray();
        if (file.sha256.isNull())
            return refuse(file, otherProgramsFile); // somebody has taken it away meanwhile
        file.action = PlannedFile::Keep;
        m_plan.found.push_back(recordOf(file, key));
    }

    // The base of the photo's other files, also of those that were exported before.
    const QByteArray &baseFor(Photo &photo)
    {
        if (photo.base)
            return *photo.base;
        templatePath(photo);
        takeRecordedBase(photo);
        if (!photo.base)
            photo.base = freeBase(photo);
        return *photo.base;
    }

    // Templates may leave the extension out, or take it from the name that the file had before.
    const NamePath &templatePath(Photo &photo)
    {
        if (photo.path)
            return *photo.path;
        const QByteArray name = nameStem(ownFileName(photo.asset)) + photo.ends.front().extension;
        photo.path = m_template.pathFor(m_values(photo.asset, name));
        photo.path->base = m_names.withKnownFolders(photo.path->base);
        if (photo.ends.front().tail.isEmpty())
            photo.ends.front().extension = photo.path->extension;
        makeDistinct(&photo.ends);
        return *photo.path;
    }

    static RecordedFile recordOf(const PlannedFile &file, const QByteArray &key)
    {
        RecordedFile record;
        record.photo = key;
        record.role = file.source.role;
        record.source = file.source.source;
        record.size = file.size;
        record.modified = file.source.info.modified;
        record.path = file.path;
        record.sha256 = file.sha256;
        record.exported = QDateTime::currentSecsSinceEpoch();
        return record;
    }

    // The first base under which nothing of the photo is in the way of anything else.
    QByteArray freeBase(Photo &photo)
    {
        if (photo.freeBase)
            return *photo.freeBase;
        const NamePath &path = templatePath(photo);
        const auto isFree = [&](const QByteArray &base) { return isFreeFor(photo, base); };
        const FoundBase found = m_names.firstFree(path.base, photo.ends, isFree);
        if (found.isCut || path.wasCut)
            m_plan.cutNames.append(QString::fromUtf8(printable(found.base)));
        photo.freeBase = found.base;
        for (const NameEnd &end : photo.ends)
            m_names.take(found.base + end.text());
        return found.base;
    }

    QByteArray freePath(Photo &photo, std::size_t i)
    {
        const QByteArray base = freeBase(photo); // which may change the ends
        return base + photo.ends[i].text();
    }

    bool isFreeFor(const Photo &photo, const QByteArray &base)
    {
        for (std::size_t i = 0; i < photo.ends.size(); ++i) {
            if (!mayHave(photo, i, base))
                return false;
        }
        return true;
    }

    // Whether nothing but a copy of the file is in its way. What nothing could have is left to the
    // first number, and fails.
    bool mayHave(const Photo &photo, std::size_t i, const QByteArray &base)
    {
        const QByteArray path = base + photo.ends[i].text();
        const ExportFolder::Entry entry = m_folder.entry(path);
        if (entry.kind != ExportFolder::Kind::File)
            return entry.kind != ExportFolder::Kind::Other;
        return isCopyAt(path, photo.sources[i]);
    }

    bool isCopyAt(const QByteArray &path, const ExportSource &source)
    {
        if (!source.isWanted || source.failure.kind != FileError::None ||
            (!source.make && source.info.size != m_folder.entry(path).size))
            return false;
        const UniqueFd file = m_folder.open(path);
        return file.isOpen() && isCopyOf(source, file.get());
    }

    bool isCopyOf(const ExportSource &source, int file)
    {
        if (source.make)
            return sha256OfFile(file, m_cancel) == contentHash(source);
        FileError error;
        const bool isCopy = hasContentOf(m_session.files(), source.source, file, &error, m_cancel);
        m_session.requireConnected(error);
        return isCopy;
    }

    // Beside the first file of the photo that the folder has or gets.
    void addSidecars(const Photo &photo, std::size_t first)
    {
        QByteArray beside;
        for (std::size_t i = first; i < m_plan.files.size() && beside.isEmpty(); ++i) {
            const PlannedFile &file = m_plan.files[i];
            if (file.action == PlannedFile::Copy || file.action == PlannedFile::Keep)
                beside = file.path;
        }
        if (beside.isEmpty())
            return;
        for (const SidecarFormat format : m_request.sidecars)
            m_plan.files.push_back(sidecar(photo, format, beside + sidecarSuffix(format)));
    }

    PlannedFile sidecar(const Photo &photo, SidecarFormat format, const QByteArray &path)
    {
        PlannedFile file;
        const Asset &asset = photo.asset;
        const Catalog &catalog = m_session.catalog();
        file.asset = &asset;
        file.path = path;
        file.source.role = ExportRole::Sidecar;
        file.source.source = sidecarSuffix(format).mid(1);
        file.source.label = QString::fromUtf8(printable(path));
        file.source.make = [&asset, &catalog, format] {
            return madeSidecar(format, asset, catalog);
        };
        const MadeFile made = file.source.make();
        file.size = made.bytes.size();
        file.source.info.type = FileInfo::File;
        file.source.info.size = file.size;
        file.source.failure = made.failure;
        if (made.failure.kind == FileError::None)
            planSidecar(file, photo, sha256Hex(made.bytes));
        else
            fail(file);
        m_names.take(path);
        return file;
    }

    // What a person or another program has written to a sidecar is worth more than what would be
    // written in its place.
    void planSidecar(PlannedFile &file, const Photo &photo, const QByteArray &hash)
    {
        const RecordedFile *const known = recorded(photo, file.source);
        const bool isPlaceRecorded = known && known->path == file.path;
        file.replaced = m_folder.entry(file.path);
        if (file.replaced.kind == ExportFolder::Kind::Blocked)
            return refuse(file, blockedPath);
        if (file.replaced.kind == ExportFolder::Kind::Nothing) {
            if (isPlaceRecorded && m_request.onlyNew && known->sha256 == hash)
                file.action = PlannedFile::Skip;
            return;
        }
        const UniqueFd there = m_folder.open(file.path);
        const QByteArray hashThere =
            there.isOpen() ? sha256OfFile(there.get(), m_cancel) : QByteArray();
        const bool mayReplace = isPlaceRecorded && hashThere == known->sha256;
        if (hashThere == hash)
            keepSidecar(file, photo, known, hash);
        else if (mayReplace && there.isOpen())
            file.replaces = true;
        else if (isPlaceRecorded)
            keepChanged(file, hashThere);
        else
            refuse(file, otherProgramsFile);
    }

    void keepSidecar(PlannedFile &file, const Photo &photo, const RecordedFile *known,
                     const QByteArray &hash)
    {
        file.action = PlannedFile::Keep;
        file.sha256 = hash;
        const bool isRecorded = known && known->path == file.path && known->sha256 == hash;
        if (!isRecorded)
            m_plan.found.push_back(recordOf(file, photo.key));
    }

    static void keepChanged(PlannedFile &file, const QByteArray &hash)
    {
        file.action = PlannedFile::Keep;
        file.size = file.replaced.size;
        file.sha256 = hash;
        file.cause = QString::fromLatin1(changedSidecar);
    }

    static void refuse(PlannedFile &file, const char *cause)
    {
        file.action = PlannedFile::Fail;
        file.path = QByteArray();
        file.cause = QString::fromLatin1(cause);
    }

    LibrarySession &m_session;
    const ExportRequest &m_request;
    ExportFolder &m_folder;
    const CancelToken &m_cancel;
    const RecordedPhotos m_recorded;
    const NameTemplate m_template;
    const NameValuesOf m_values;
    AssetFiles m_files;
    ExportSources m_sources;
    ExportNames m_names;
    ExportPlan m_plan;
};

qint64 saturatedSum(qint64 a, qint64 b)
{
    qint64 sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<qint64>::max() : sum;
}

qint64 bytesToCopy(const ExportPlan &plan)
{
    qint64 bytes = 0;
    for (const PlannedFile &file : plan.files) {
        if (file.action == PlannedFile::Copy)
            bytes = saturatedSum(bytes, file.size);
    }
    return bytes;
}

constexpr char nothingCopied[] = "interrupted: nothing was copied";

// It may be interrupted while it compares a file.
void addTo(Planner &planner, const Asset &photo)
{
    try {
        planner.add(photo);
    } catch (const Error &error) {
        if (error.kind() == Error::Cancelled)
            throw Error(Error::Cancelled, nothingCopied);
        throw;
    }
}

} // namespace

ExportPlan plannedExport(LibrarySession &session, const ExportRequest &request,
                         const std::vector<const Asset *> &photos, ExportFolder &folder,
                         const ExportContents &record, ExportObserver &observer,
                         const CancelToken &cancel)
{
    Planner planner(session, request, folder, record, cancel);
    const auto count = static_cast<int>(photos.size());
    for (int i = 0; i < count; ++i) {
        observer.looked(i, count);
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, nothingCopied);
        addTo(planner, *photos[static_cast<std::size_t>(i)]);
    }
    ExportPlan plan = planner.take();
    plan.bytes = bytesToCopy(plan);
    for (const ItemFailure &failure : plan.unlisted)
        observer.failed(failure);
    return plan;
}

QByteArray recordKey(const Asset &asset)
{
    return asset.uuid.isEmpty() ? '#' + QByteArray::number(asset.id) : asset.uuid;
}
