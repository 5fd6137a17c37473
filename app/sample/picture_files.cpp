#include "sample/picture_files.h"

#include "sample/canvas.h"
#include "sample/jpeg.h"
#include "sample/movie.h"
#include "sample/property_lists.h"
#include "sample/raw_file.h"
#include "sample/scenes.h"

#include <QSize>

namespace sample {

namespace {

constexpr QSize largeThumbnail(256, 256);
constexpr QSize rawSize(128, 128);
constexpr int thumbnailQuality = 80;
constexpr int frameQuality = 70;
constexpr int liveFilmTicks = 1800; // 3 s

/// Two frames a second, up to a dozen.
int frameCount(int ticks)
{
    return qBound(2, ticks / 300, 12);
}

QImage inColours(const QImage &picture)
{
    return picture;
}

QImage inBlackAndWhite(const QImage &picture)
{
    return picture.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_RGB32);
}

QByteArray film(const AssetPlan &asset, int ticks, QImage (*developed)(const QImage &) = inColours)
{
    Movie movie;
    movie.size = QSize(asset.width, asset.height);
    movie.ticks = static_cast<quint32>(ticks);
    movie.createdAt = static_cast<qint64>(asset.created);
    const int count = frameCount(ticks);
    for (int i = 0; i < count; ++i)
        movie.frames.append(jpeg(developed(paintScene(asset, i * 1000 / count)), frameQuality));
    return quickTimeFile(movie);
}

} // namespace

PictureFiles::PictureFiles(OutputFolder &folder, const LibraryPlan &plan)
    : m_folder(folder), m_format(thumbnailFormat(plan.options().schema)),
      m_packedFile(folder.prepare(QLatin1String(m_format.path))),
      m_largeName(plan.isLate() ? QStringLiteral("5005.JPG") : QStringLiteral("5003.JPG")),
      m_endDate(plan.endDate())
{
}

qint64 PictureFiles::write(const AssetPlan &asset)
{
    const QImage picture = paintScene(asset, asset.scenePhase);
    writeThumbnails(asset, picture);
    if (asset.isVideo())
        writePoster(asset, picture);
    if (asset.isEdited)
        writeEdit(asset, picture);
    return asset.hasSource ? writeSource(asset, picture) : asset.claimedSize;
}

qint64 PictureFiles::writeSource(const AssetPlan &asset, const QImage &picture)
{
    const auto date = static_cast<qint64>(asset.created);
    writeCompanions(asset, picture);
    const QByteArray file = asset.isVideo() ? film(asset, asset.durationTicks)
                                            : cameraJpeg(picture, asset.orientation, date);
    m_folder.writeFile(asset.path(), file, date);
    return file.size();
}

void PictureFiles::writeCompanions(const AssetPlan &asset, const QImage &picture)
{
    const QString stemPath = asset.directory + QLatin1Char('/') + asset.stem() + QLatin1Char('.');
    const auto date = static_cast<qint64>(asset.created);
    const auto edited = static_cast<qint64>(asset.modified);
    if (asset.hasLiveFilm)
        m_folder.writeFile(stemPath + asset.filmExtension, film(asset, liveFilmTicks), date);
    if (asset.hasRaw)
        m_folder.writeFile(stemPath + QLatin1String("DNG"), rawFile(fitted(picture, rawSize)),
                           date);
    if (asset.hasRecipeBeside)
        m_folder.writeFile(stemPath + QLatin1String("AAE"), adjustmentsPlist(edited), edited);
}

void PictureFiles::writeThumbnails(const AssetPlan &asset, const QImage &picture)
{
    if (asset.hasLargeThumbnail)
        m_folder.writeFile(
            QStringLiteral("PhotoData/Thumbnails/V2/%1/%2").arg(asset.path(), m_largeName),
            jpeg(fitted(picture, largeThumbnail), thumbnailQuality),
            static_cast<qint64>(asset.modified));
    if (asset.thumbnailIndex >= 0)
        m_packedFile.write(thumbnailRecord(fitted(picture, {m_format.width, m_format.height}),
                                           asset.uuid, m_format));
}

/// The edited photo or film is in black and white. What was done to it is noted beside it.
void PictureFiles::writeEdit(const AssetPlan &asset, const QImage &picture)
{
    const QString folder =
        QStringLiteral("PhotoData/Mutations/%1/%2/Adjustments/").arg(asset.directory, asset.stem());
    const auto date = static_cast<qint64>(asset.modified);
    const int ticks = asset.isVideo() ? asset.durationTicks : liveFilmTicks;
    if (!asset.isVideo())
        m_folder.writeFile(folder + QLatin1String("FullSizeRender.jpg"),
                           jpeg(inBlackAndWhite(picture), thumbnailQuality), date);
    if (asset.isVideo() || asset.hasLiveFilm)
        m_folder.writeFile(folder + QLatin1String("FullSizeRender.mov"),
                           film(asset, ticks, inBlackAndWhite), date);
    m_folder.writeFile(folder + QLatin1String("Adjustments.plist"), adjustmentsPlist(date), date);
}

void PictureFiles::writePoster(const AssetPlan &asset, const QImage &picture)
{
    m_folder.writeFile(
        QStringLiteral("PhotoData/Metadata/%1/%2.JPG").arg(asset.directory, asset.stem()),
        jpeg(picture, thumbnailQuality), static_cast<qint64>(asset.created));
}

void PictureFiles::finish()
{
    m_packedFile.close(m_endDate);
}

} // namespace sample
