#ifndef PHOTOLIB_SAMPLE_PICTURE_FILES_H
#define PHOTOLIB_SAMPLE_PICTURE_FILES_H

#include "sample/library_plan.h"
#include "sample/output_folder.h"
#include "sample/thumbnail_file.h"

#include <QImage>

namespace sample {

/// Writes the pictures of a sample: sources, thumbnails and posters. All operations throw
/// SampleError on failure.
class PictureFiles
{
public:
    PictureFiles(OutputFolder &folder, const LibraryPlan &plan);

    /// Writes the files of the next asset; assets come in the order of the plan. Returns the
    /// bytes of its source file, or what the plan claims when it has none.
    qint64 write(const AssetPlan &asset);

    /// Closes the packed thumbnail file. No other operation may follow.
    void finish();

private:
    qint64 writeSource(const AssetPlan &asset, const QImage &picture);
    void writeCompanions(const AssetPlan &asset, const QImage &picture);
    void writeThumbnails(const AssetPlan &asset, const QImage &picture);
    void writeEdit(const AssetPlan &asset, const QImage &picture);
    void writePoster(const AssetPlan &asset, const QImage &picture);

    OutputFolder &m_folder;
    const ThumbnailFormat &m_format;
    OutputFile m_packedFile;
    QString m_largeName; ///< of the file in an asset's own thumbnail folder
    qint64 m_endDate;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_PICTURE_FILES_H
