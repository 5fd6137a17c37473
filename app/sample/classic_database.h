#ifndef PHOTOLIB_SAMPLE_CLASSIC_DATABASE_H
#define PHOTOLIB_SAMPLE_CLASSIC_DATABASE_H

#include "sample/chunk_buffer.h"
#include "sample/classic_plan.h"

namespace sample {

/// Makes the "Photo Database" of a classic iPod, little-endian: a list of photos with their
/// stored pictures, a list of albums and a list of formats.
class ClassicDatabase
{
public:
    /// `plan` must outlive the object.
    explicit ClassicDatabase(const ClassicPlan &plan);

    /// Adds the next photo of the plan; `sourceSize` is the number of bytes of the file that
    /// it was made from.
    void addPhoto(const ClassicPhotoPlan &photo, qint64 sourceSize);

    /// The whole file, once all photos are added.
    const QByteArray &finish();

private:
    int beginSet(int kind);
    int beginList(const char *tag, int count);
    void addVariants(const ClassicPhotoPlan &photo);
    void addOriginal(const ClassicPhotoPlan &photo, qint64 size);
    void addAlbums();
    void addAlbum(const ClassicAlbumPlan &album, quint32 id);
    void addFormats();

    const ClassicPlan &m_plan;
    ChunkBuffer m_chunks;
    int m_file;   ///< the chunk around all others
    int m_photos; ///< the set that photos are added to
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CLASSIC_DATABASE_H
