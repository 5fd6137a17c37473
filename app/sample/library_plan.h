#ifndef PHOTOLIB_SAMPLE_LIBRARY_PLAN_H
#define PHOTOLIB_SAMPLE_LIBRARY_PLAN_H

#include "sample/database_model.h"
#include "sample/outing_slots.h"
#include "sample/sample_options.h"

#include <QByteArray>
#include <QString>

namespace sample {

/// What a photo shows, where that follows from the asset and not from chance.
enum class Subject { Landscape, Screen };

/// Where an asset came from, as the asset table says it.
enum SavedType {
    UndefinedType = 0,
    StreamType = 1,
    LocalType = 3,
    SharedType = 4,
    BoothType = 5,
    CloudType = 6,
    ReferencedType = 10,
    MessagesType = 12,
    SyncedType = 256,
};

/// One row of the asset table and the files that belong to it.
struct AssetPlan {
    int index = 0; ///< from 0, in the order of taking
    int slot = 0;  ///< the asset's part in its outing, 0 to 19
    qint64 pk = 0;
    qint64 attributesPk = 0;
    bool hasAttributes = true;

    int kind = 0; ///< 0 photo, 1 video
    int kindSubtype = 0;
    int savedType = LocalType;
    int customRendering = 0; ///< how the camera made the picture: 6 panorama
    int width = 0;           ///< pixels, upright
    int height = 0;
    int orientation = 1; ///< EXIF code
    QString directory;   ///< relative to the media root
    QString fileName;
    QByteArray uuid; ///< 16 bytes

    double created = 0; ///< seconds since 2001-01-01 00:00:00 UTC, as all dates here
    double modified = 0;
    double trashed = 0; ///< 0 when not in the trash
    QByteArray burst;   ///< 16 bytes, empty outside a burst
    int burstFrame = 0;
    int durationTicks = 0; ///< 600ths of a second, videos only

    int thumbnailIndex = -1; ///< record of the packed thumbnail file
    bool hasLargeThumbnail = false;
    bool hasSource = true;
    bool hasLiveFilm = false;
    QString filmExtension;        ///< of the live film
    bool hasRaw = false;          ///< the camera's raw data beside the JPEG
    bool isEdited = false;        ///< the edited picture or film is kept, and how it was made
    bool hasRecipeBeside = false; ///< how it was made is noted beside the original, too
    bool sizeRecorded = true;
    qint64 claimedSize = 0; ///< bytes, for a source that is not written

    Subject subject = Subject::Landscape;
    quint64 sceneSeed = 0;
    int scenePhase = 0; ///< thousandths of the way through the scene's movement

    bool isLeftOut() const { return slot == LeftOut; }
    bool isVideo() const { return kind == 1; }
    bool isInCameraRoll() const { return directory.startsWith(QLatin1String("DCIM/")); }
    QString path() const { return directory + QLatin1Char('/') + fileName; }
    QString stem() const { return fileName.section(QLatin1Char('.'), 0, 0); }
};

/// Makes the assets of a sample one by one, so that a large sample needs no more memory than
/// a small one. Assets come in outings of twenty, each with one of every kind of asset.
class LibraryPlan
{
public:
    explicit LibraryPlan(const SampleOptions &options);

    const SampleOptions &options() const { return m_options; }
    const DatabaseModel &model() const { return modelOf(m_options.schema); }
    bool isLate() const { return m_options.schema != SampleSchema::Early; }

    /// Rows of the asset table: the assets of the options, and those that readers leave out.
    int rowCount() const { return m_rows; }

    /// The asset `index`, 0 to rowCount() - 1.
    AssetPlan asset(int index) const;

    /// Assets before this index are in the main database file, the others only in its log.
    int firstLoggedAsset() const { return m_rows - (m_rows + 4) / 5; }

    /// Later than all dates of the library, whole seconds since 2001-01-01 00:00:00 UTC.
    qint64 endDate() const;

private:
    qint64 outingStart(int outing) const;
    void giveSource(AssetPlan &plan) const;
    void placeFile(AssetPlan &plan) const;
    void giveDates(AssetPlan &plan) const;
    void giveScene(AssetPlan &plan) const;
    void giveThumbnails(AssetPlan &plan) const;

    SampleOptions m_options;
    int m_rows;
    qint64 m_outingSpacing;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_LIBRARY_PLAN_H
