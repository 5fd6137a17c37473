#include "support/ipod_folder.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

QByteArray pngOf(const QImage &picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(picture.save(&buffer, "PNG"));
    return buffer.data();
}

QJsonArray plannedPhotos(const ScratchFolder &scratch, const QByteArray &folder,
                         const QVector<IpodPlan::Photo> &photos)
{
    QJsonArray result;
    for (const IpodPlan::Photo &photo : photos) {
        const QByteArray file = folder + "-original-" + QByteArray::number(result.size()) + ".png";
        scratch.write(file, pngOf(photo.picture));
        result.append(QJsonObject{{"file", QString::fromUtf8(scratch.path(file))},
                                  {"created", photo.created}});
    }
    return result;
}

QJsonArray plannedAlbums(const QVector<IpodPlan::Album> &albums)
{
    QJsonArray result;
    for (const IpodPlan::Album &album : albums) {
        QJsonArray photos;
        for (int index : album.photos)
            photos.append(index);
        result.append(QJsonObject{{"name", album.name}, {"photos", photos}});
    }
    return result;
}

// A program of its own: libgpod leaks, and takes the time zone from the environment.
QByteArray runWriter(const QStringList &arguments, const QByteArray &plan)
{
    QProcess writer;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    writer.setProcessEnvironment(environment);
    writer.start(QStringLiteral(PHOTOLIB_IPOD_WRITER), arguments);
    writer.write(plan);
    writer.closeWriteChannel();
    EXPECT_TRUE(writer.waitForFinished(60000));
    EXPECT_EQ(0, writer.exitCode()) << writer.readAllStandardError().constData();
    return writer.readAllStandardOutput();
}

QList<quint64> idsOf(const QJsonValue &ids)
{
    QList<quint64> result;
    for (const QJsonValue &id : ids.toArray())
        result.append(quint64(id.toDouble()));
    return result;
}

} // namespace

WrittenIpod writeIpod(const ScratchFolder &scratch, const QByteArray &folder,
                      const QByteArray &model, const IpodPlan &plan)
{
    const QJsonObject object{{"photos", plannedPhotos(scratch, folder, plan.photos)},
                             {"albums", plannedAlbums(plan.albums)}};
    const QByteArray answer =
        runWriter({QString::fromLatin1(model), QString::fromUtf8(scratch.path(folder))},
                  QJsonDocument(object).toJson());
    const QJsonObject written = QJsonDocument::fromJson(answer).object();
    WrittenIpod result;
    result.photoIDs = idsOf(written["photos"]);
    for (const QJsonValue &album : written["albums"].toArray()) {
        result.albums.append({quint64(album["id"].toDouble()), album["name"].toString(),
                              album["type"].toInt(), idsOf(album["photos"])});
    }
    return result;
}
