#include "sample/classic_pictures.h"

#include "sample/jpeg.h"
#include "sample/scenes.h"

namespace sample {

qint64 ClassicPictures::write(const ClassicPhotoPlan &photo)
{
    const QImage picture = paintScene(photo.asset, photo.asset.scenePhase);
    for (std::size_t i = 0; i < classicFormats.size(); ++i)
        writeFrame(m_packed[i], classicFormats[i], photo.index, picture);
    if (photo.originalPath.isEmpty())
        return photo.asset.claimedSize;
    const auto date = static_cast<qint64>(photo.asset.created);
    const QByteArray file = cameraJpeg(picture, photo.asset.orientation, date);
    m_folder.writeFile(QStringLiteral("Photos/") + photo.originalPath, file, date);
    return file.size();
}

void ClassicPictures::writeFrame(PackedFile &packed, const ClassicFormat &format, int index,
                                 const QImage &picture)
{
    const QString path = frameLocation(format, index).path;
    if (path != packed.path) {
        if (packed.file)
            packed.file->close(m_date);
        packed.file =
            std::make_unique<OutputFile>(m_folder.prepare(QStringLiteral("Photos/") + path));
        packed.path = path;
    }
    packed.file->write(format.frame(picture));
}

void ClassicPictures::finish()
{
    for (const PackedFile &packed : m_packed)
        if (packed.file)
            packed.file->close(m_date);
}

} // namespace sample
