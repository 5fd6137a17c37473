#ifndef PHOTOLIB_SAMPLE_CLASSIC_PICTURES_H
#define PHOTOLIB_SAMPLE_CLASSIC_PICTURES_H

#include "sample/classic_format.h"
#include "sample/classic_plan.h"
#include "sample/output_folder.h"

#include <array>
#include <memory>

namespace sample {

/// Paints the photos of a sample classic iPod and writes their files. All operations throw
/// SampleError.
class ClassicPictures
{
public:
    /// `folder` must outlive the object; `date` is that of the packed files, in seconds since
    /// 2001-01-01 00:00:00 UTC.
    ClassicPictures(OutputFolder &folder, qint64 date) : m_folder(folder), m_date(date) {}

    /// Writes the files of the next photo; returns the size in bytes of the file that it was
    /// made from, on the device or not.
    qint64 write(const ClassicPhotoPlan &photo);
    /// Must be called after the last photo.
    void finish();

private:
    /// The file of one format that frames are appended to.
    struct PackedFile {
        QString path;
        std::unique_ptr<OutputFile> file;
    };

    void writeFrame(PackedFile &packed, const ClassicFormat &format, int index,
                    const QImage &picture);

    OutputFolder &m_folder;
    qint64 m_date;
    std::array<PackedFile, classicFormats.size()> m_packed;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CLASSIC_PICTURES_H
