#ifndef PHOTOLIB_SAMPLE_CLASSIC_PLAN_H
#define PHOTOLIB_SAMPLE_CLASSIC_PLAN_H

#include "sample/library_plan.h"
#include "sample/sample_options.h"

#include <QVector>

namespace sample {

/// One photo of a classic iPod and the files that belong to it.
struct ClassicPhotoPlan {
    int index = 0; ///< from 0, in the order of taking; the frame in the packed files
    quint32 id = 0;
    AssetPlan asset; ///< what it shows, its size and its date

    /// Its full-resolution file, relative to the folder of photos; empty without one.
    QString originalPath;
};

/// One album of a classic iPod.
struct ClassicAlbumPlan {
    QString name;
    quint32 memberSlots = 0; ///< bit n: the photos of slot n of an outing are members
    bool isMaster = false;   ///< the one with all photos
    bool isWide = false;     ///< the name is stored as UTF-16 and not as UTF-8
    int slideSeconds = 0;    ///< how long a slide show stays at a photo
    QString transition;      ///< from one slide to the next; null for the device's own
};

/// Makes the photos of a sample one by one, so that the plan of a large sample needs no more
/// memory than that of a small one. They are those of the outings that a computer hands on to
/// an iPod.
class ClassicPlan
{
public:
    explicit ClassicPlan(const ClassicSampleOptions &options);

    int photoCount() const { return m_options.photos; }
    bool hasPictures() const { return m_options.pictures; }

    /// The photo `index`, 0 to photoCount() - 1.
    ClassicPhotoPlan photo(int index) const;
    static quint32 photoId(int index);
    static bool isMember(const ClassicAlbumPlan &album, int index);

    /// Later than all dates of the library, whole seconds since 2001-01-01 00:00:00 UTC.
    qint64 endDate() const { return m_library.endDate(); }

private:
    ClassicSampleOptions m_options;
    LibraryPlan m_library;
};

/// The albums of every sample, in their order.
QVector<ClassicAlbumPlan> classicAlbums();

} // namespace sample

#endif // PHOTOLIB_SAMPLE_CLASSIC_PLAN_H
