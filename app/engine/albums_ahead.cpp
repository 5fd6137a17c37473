#include "engine/albums_ahead.h"

#include "engine/exported_files.h"

#include <limits>
#include <map>

namespace {

qint64 boundedProduct(qint64 a, qint64 b)
{
    qint64 product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<qint64>::max() : product;
}

// How many copies of each file are still to be made, by its path.
std::map<QByteArray, qint64> missingCopies(const std::vector<PlannedAlbum> &albums,
                                           const std::vector<RecordedAlbumFile> &recorded,
                                           ExportFolder &folder)
{
    std::map<QByteArray, qint64> counts;
    for (const PlannedAlbum &album : albums) {
        for (const PlannedAlbumFile &file : album.files)
            ++counts[file.target];
    }
    for (const RecordedAlbumFile &file : recorded) {
        const bool isCopy = file.kind == RecordedAlbumFile::Copy &&
                            folder.entry(file.path).kind == ExportFolder::Kind::File;
        const auto count = isCopy ? counts.find(file.target) : counts.end();
        if (count != counts.end() && count->second > 0)
            --count->second;
    }
    return counts;
}

qint64 bytesOfCopies(const std::vector<PlannedAlbum> &albums,
                     const std::vector<RecordedFile> &files, const ExportContents &before,
                     ExportFolder &folder)
{
    const std::map<QByteArray, qint64> missing = missingCopies(albums, before.albumFiles, folder);
    const std::map<QByteArray, qint64> all = missingCopies(albums, {}, folder);
    qint64 bytes = 0;
    for (const RecordedFile &file : files) {
        // The copies of what is replaced are of no use any more.
        const std::map<QByteArray, qint64> &counts = isToBeCopied(file) ? all : missing;
        const auto count = counts.find(file.path);
        if (count != counts.end())
            bytes = boundedSum(bytes, boundedProduct(file.size, count->second));
    }
    return bytes;
}

} // namespace

AlbumsAhead albumsAhead(const Catalog &catalog, const ExportRequest &request,
                        const ExportPlan &plan, const ExportContents &before, ExportFolder &folder)
{
    AlbumsAhead ahead;
    if (!request.albums)
        return ahead;
    const std::vector<RecordedFile> files = shownFilesAfter(plan, before.files, folder);
    ahead.albums = plannedAlbums(catalog, filesByPhoto(catalog, files));
    if (request.albums == RecordedAlbumFile::Copy)
        ahead.bytes = bytesOfCopies(ahead.albums, files, before, folder);
    return ahead;
}

qint64 boundedSum(qint64 a, qint64 b)
{
    qint64 sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<qint64>::max() : sum;
}
