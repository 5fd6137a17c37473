#include "classic/image_unpacker.h"
#include "classic/photo_database.h"
#include "devices/folder_file_system.h"
#include "host/device.h"
#include "host/plugin.h"
#include "support/environment.h"
#include "support/export_fixture.h"
#include "support/ipod_folder.h"
#include "support/json.h"
#include "support/picture_comparison.h"
#include "support/program_fixture.h"
#include "support/row_name.h"

#include "boundary/photo_records.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// What a stored picture is made of; it says what the picture has lost.
enum class Storage {
    Rgb, ///< 15 or 16 bits a pixel
    Yuv, ///< a colour for several pixels
};

/// One form in which a model stores each picture.
struct FormatRow {
    int id;
    QSize frame;
    int bytes;
    Storage storage;
    bool fillsFrame = false; ///< a picture of another shape is cut, not padded
};

struct ModelRow {
    const char *name;
    const char *model;
    QVector<FormatRow> formats; ///< in the order in which libgpod writes them
};

FormatRow rgb(int id, const QSize &frame, bool fillsFrame = false)
{
    return {id, frame, frame.width() * frame.height() * 2, Storage::Rgb, fillsFrame};
}

FormatRow yuv(int id)
{
    return {id, QSize(720, 480), 691200, Storage::Yuv};
}

const ModelRow models[] = {
    {"Photo",
     "A079",
     {yuv(1019), rgb(1013, {220, 176}), rgb(1015, {130, 88}), rgb(1009, {42, 30})}},
    {"Video",
     "A446",
     {yuv(1019), rgb(1024, {320, 240}), rgb(1015, {130, 88}), rgb(1036, {50, 41})}},
    {"Nano1", "A004", {rgb(1023, {176, 132}), rgb(1032, {42, 37})}},
    {"Nano3", "A978", {rgb(1066, {64, 64}), rgb(1024, {320, 240}), yuv(1067)}},
    {"Nano4",
     "B480",
     {rgb(1083, {240, 320}), rgb(1079, {80, 80}), rgb(1066, {64, 64}), rgb(1024, {320, 240})}},
    {"Nano5", "C027", {rgb(1066, {64, 64}), rgb(1079, {80, 80}), rgb(1087, {384, 384})}},
    {"Classic", "B029", {rgb(1066, {64, 64}), rgb(1024, {320, 240}), yuv(1067)}},
    {"Touch1",
     "A623",
     {rgb(3008, {640, 480}), rgb(3009, {160, 120}), rgb(3011, {80, 79}, true),
      rgb(3004, {56, 55}, true)}},
};

const FormatRow &smallest(const ModelRow &model)
{
    return *std::min_element(
        model.formats.begin(), model.formats.end(),
        [](const FormatRow &one, const FormatRow &other) { return one.bytes < other.bytes; });
}

const FormatRow &largest(const ModelRow &model)
{
    return *std::max_element(
        model.formats.begin(), model.formats.end(),
        [](const FormatRow &one, const FormatRow &other) { return one.bytes < other.bytes; });
}

/// What `original` looks like in the size `size`, cut where the format does that.
QImage inSizeOf(const QImage &original, const FormatRow &format, const QSize &size)
{
    if (!format.fillsFrame)
        return original.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage covering =
        original.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    return covering.copy((covering.width() - size.width()) / 2,
                         (covering.height() - size.height()) / 2, size.width(), size.height());
}

/// Expects the size that the shape of `original` has in the frame, to a pixel: libgpod
/// rounds in its own way.
void expectSize(const QSize &original, const FormatRow &format, const QSize &size)
{
    const QSize exact =
        format.fillsFrame ? format.frame : original.scaled(format.frame, Qt::KeepAspectRatio);
    EXPECT_LE(std::abs(exact.width() - size.width()), 1) << size.width();
    EXPECT_LE(std::abs(exact.height() - size.height()), 1) << size.height();
}

/// The most that a smooth picture may lose. Besides what the format loses it was scaled, maybe
/// cut, by rules that are not those of the test.
PictureLoss smoothLoss(Storage storage)
{
    return storage == Storage::Yuv ? PictureLoss{1.5, 6} : PictureLoss{4.0, 12};
}

/// Expects that `bytes`, an image file, shows all of the smooth picture `original`.
void expectLike(const QImage &original, const FormatRow &format, const QByteArray &bytes)
{
    const QImage picture = QImage::fromData(bytes);
    ASSERT_FALSE(picture.isNull());
    expectSize(original.size(), format, picture.size());
    const PictureLoss loss = lossBetween(inSizeOf(original, format, picture.size()), picture);
    EXPECT_LE(loss.mean, smoothLoss(format.storage).mean) << loss;
    EXPECT_LE(loss.most, smoothLoss(format.storage).most) << loss;
}

QList<quint64> idsIn(const Json &ids)
{
    QList<quint64> result;
    for (const Json &id : ids.elements())
        result.append(id.get<quint64>());
    return result;
}

/// What a table's rows begin with, without its heading.
QList<quint64> firstNumbers(const QList<QByteArray> &lines)
{
    QList<quint64> result;
    for (const QByteArray &line : lines.mid(1))
        result.append(line.simplified().split(' ').first().toULongLong());
    return result;
}

/// As the dump writes it.
std::string createdText(const IpodPlan::Photo &photo)
{
    const QDateTime date = QDateTime::fromSecsSinceEpoch(photo.created, Qt::UTC);
    const QString text = QLatin1Char('"') + date.toString(Qt::ISODate) + QLatin1Char('"');
    return photo.created == 0 ? "null" : text.toStdString();
}

/// The photos of the plan: of each shape, and none like another.
IpodPlan threePhotos()
{
    IpodPlan plan;
    plan.photos = {{smoothPicture({800, 600}, 0), 1104537600}, // 2005-01-01
                   {smoothPicture({600, 800}, 1), 1167609599}, // 2006-12-31 23:59:59
                   {smoothPicture({500, 500}, 2), 0}};
    plan.albums = {{QStringLiteral("Été"), {2, 0}}, {QStringLiteral("Empty"), {}}};
    return plan;
}

class IpodModels : public ProgramTest, public testing::WithParamInterface<ModelRow>
{
protected:
    IpodModels() { m_setup.environment.append({QStringLiteral("TZ"), QStringLiteral("UTC")}); }

    void write(const IpodPlan &plan)
    {
        m_plan = plan;
        m_written = writeIpod(m_scratch, "device", GetParam().model, plan);
        ASSERT_EQ(plan.photos.size(), m_written.photoIDs.size());
        // The library itself comes first.
        ASSERT_EQ(plan.albums.size() + 1, m_written.albums.size());
    }

    ClassicLibrary readDatabase() const
    {
        ClassicLibrary library;
        QString error;
        EXPECT_TRUE(
            readPhotoDatabase(m_scratch.read("device/Photos/Photo Database"), &library, &error))
            << error.toStdString();
        return library;
    }

    /// The stored bytes of `variant`.
    QByteArray storedBytes(const StoredPicture &variant) const
    {
        const QString path = QString(variant.fileName).replace(':', '/');
        return m_scratch.read("device/Photos" + path.toUtf8()).mid(variant.offset, variant.size);
    }

    QByteArray unpacked(const StoredPicture &variant) const
    {
        QByteArray image;
        QString error;
        EXPECT_TRUE(unpackImage(storedBytes(variant), variant, &image, &error))
            << error.toStdString();
        return image;
    }

    /// The lines of what the program prints; that it fails or complains fails the test.
    QList<QByteArray> linesOf(const QList<QByteArray> &arguments)
    {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(0, result.exitCode) << arguments.first().constData();
        EXPECT_EQ("", result.errors);
        return result.output.trimmed().split('\n');
    }

    Json dumped() { return Json::parse(linesOf({"dump", "-d", device()}).join('\n')); }

    IpodPlan m_plan;
    WrittenIpod m_written;
};

/// The plug-in on a device in this process.
class LoadedIpod
{
public:
    explicit LoadedIpod(const QByteArray &folder)
        : m_device(FolderFileSystem::openFolder(folder, &m_error), DeviceKind::Classic, QString()),
          m_library(Plugin(PHOTOLIB_PLUGIN_FILE).makeLibrary(&m_device))
    {
        EXPECT_TRUE(m_library->parseLib());
    }

    photo_manager_int *operator->() const { return m_library.get(); }

private:
    const Environment m_zone{"TZ", "UTC"};
    FileError m_error;
    Device m_device;
    const std::unique_ptr<photo_manager_int> m_library;
};

TEST_P(IpodModels, HaveTheirPhotosAndAlbumsRead)
{
    write(threePhotos());
    const ClassicLibrary library = readDatabase();
    ASSERT_EQ(m_written.photoIDs.size(), library.photos.size());
    for (int i = 0; i < library.photos.size(); ++i) {
        constexpr qint64 secondsFrom1904To1970 = 2082844800;
        const qint64 created = m_plan.photos[i].created;
        EXPECT_EQ(m_written.photoIDs[i], library.photos[i].id);
        EXPECT_EQ(created ? created + secondsFrom1904To1970 : 0, library.photos[i].taken);
        EXPECT_EQ(QString(), library.photos[i].originalName);
    }
    ASSERT_EQ(m_written.albums.size(), library.albums.size());
    for (int i = 0; i < library.albums.size(); ++i) {
        const WrittenIpod::Album &written = m_written.albums[i];
        EXPECT_EQ(written.id, library.albums[i].id);
        EXPECT_EQ(written.name, library.albums[i].name);
        EXPECT_EQ(i == 0 ? 1 : 2, library.albums[i].type);
        QList<quint64> photoIDs;
        for (const quint32 id : library.albums[i].photoIDs)
            photoIDs.append(id);
        EXPECT_EQ(written.photoIDs, photoIDs);
    }
}

TEST_P(IpodModels, ShowEachPhotoInEachOfTheirFormats)
{
    write(threePhotos());
    const ClassicLibrary library = readDatabase();
    ASSERT_EQ(m_plan.photos.size(), library.photos.size());
    for (int i = 0; i < library.photos.size(); ++i) {
        const QList<StoredPicture> &variants = library.photos[i].variants;
        ASSERT_EQ(GetParam().formats.size(), variants.size());
        for (int j = 0; j < variants.size(); ++j) {
            const FormatRow &format = GetParam().formats[j];
            SCOPED_TRACE(testing::Message() << "photo " << i << ", format " << format.id);
            EXPECT_EQ(format.id, variants[j].formatId);
            EXPECT_EQ(format.bytes, variants[j].size);
            const QByteArray image = unpacked(variants[j]);
            expectLike(m_plan.photos[i].picture, format, image);
            EXPECT_EQ(unpackedSize(variants[j]), QImage::fromData(image).size());
        }
    }
}

// A picture of the frame's size is stored without scaling.
TEST_P(IpodModels, HaveEachPixelInItsPlace)
{
    IpodPlan plan;
    for (const FormatRow &format : GetParam().formats)
        plan.photos.append({noisyPicture(format.frame), 0});
    write(plan);
    const ClassicLibrary library = readDatabase();
    ASSERT_EQ(plan.photos.size(), library.photos.size());
    for (int i = 0; i < plan.photos.size(); ++i) {
        const FormatRow &format = GetParam().formats[i];
        SCOPED_TRACE(testing::Message() << "format " << format.id);
        const QImage picture = QImage::fromData(unpacked(library.photos[i].variants.value(i)));
        const PictureLoss loss = lossBetween(plan.photos[i].picture, picture);
        // The lowest three of eight bits, or what rounding to 220 levels loses.
        EXPECT_LE(loss.most, format.storage == Storage::Yuv ? 2 : 7) << loss;
    }
}

TEST_P(IpodModels, AreReadByThePlugIn)
{
    write(threePhotos());
    const LoadedIpod library(device());
    EXPECT_EQ(m_written.photoIDs, library->photoIDs());
    for (int i = 0; i < m_written.photoIDs.size(); ++i) {
        photoItem item;
        ASSERT_TRUE(library->getPhoto(m_written.photoIDs[i], &item));
        EXPECT_EQ(m_plan.photos[i].created, item.createDate.toSecsSinceEpoch());
    }
    QList<quint64> albumIDs;
    for (const WrittenIpod::Album &written : m_written.albums) {
        albumIDs.append(written.id);
        albumItem item;
        ASSERT_TRUE(library->getAlbum(written.id, &item));
        EXPECT_EQ(written.name, item.name);
        EXPECT_EQ(written.photoIDs, item.photoIDs);
    }
    EXPECT_EQ(albumIDs, library->albumIDs());
}

TEST_P(IpodModels, GiveThePlugInTheSmallestAndTheLargestPicture)
{
    write(threePhotos());
    const LoadedIpod library(device());
    for (int i = 0; i < m_written.photoIDs.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "photo " << i);
        QByteArray image;
        EXPECT_EQ(0, library->getPhotoThumbnail(m_written.photoIDs[i], image));
        expectLike(m_plan.photos[i].picture, smallest(GetParam()), image);
        QByteArray source;
        EXPECT_EQ(0, library->getSourcePhoto(m_written.photoIDs[i], source));
        expectLike(m_plan.photos[i].picture, largest(GetParam()), source);
    }
}

TEST_P(IpodModels, AreDumpedByTheProgram)
{
    write(threePhotos());
    const Json dump = dumped();
    EXPECT_EQ(m_written.photoIDs, idsIn(dump["photoIds"]));
    for (int i = 0; i < m_written.photoIDs.size(); ++i) {
        const Json photo = dump["photos"][size_t(i)];
        EXPECT_EQ(m_written.photoIDs[i], photo["id"].get<quint64>());
        EXPECT_EQ(createdText(m_plan.photos[i]), photo["createDate"].text());
    }
    for (int i = 0; i < m_written.albums.size(); ++i) {
        const Json album = dump["albums"][size_t(i)];
        EXPECT_EQ(m_written.albums[i].id, album["id"].get<quint64>());
        EXPECT_EQ(m_written.albums[i].name.toStdString(), album["name"].get<std::string>());
        EXPECT_EQ(m_written.albums[i].photoIDs, idsIn(album["photoIds"]));
    }
}

TEST_P(IpodModels, AreListedByTheProgram)
{
    write(threePhotos());
    const QList<QByteArray> photos = linesOf({"photos", "-d", device()});
    ASSERT_EQ(4, photos.size());
    EXPECT_TRUE(photos[1].contains("2005-01-01 00:00")) << photos[1].constData();
    EXPECT_TRUE(photos[2].contains("2006-12-31 23:59")) << photos[2].constData();
    for (const WrittenIpod::Album &album : m_written.albums) {
        const QByteArray id = QByteArray::number(album.id);
        EXPECT_EQ(album.photoIDs, firstNumbers(linesOf({"photos", "-d", device(), "--album", id})));
    }
    const QList<QByteArray> albums = linesOf({"albums", "-d", device()});
    ASSERT_EQ(4, albums.size());
    for (int i = 0; i < m_written.albums.size(); ++i) {
        EXPECT_TRUE(albums[i + 1].contains(m_written.albums[i].name.toUtf8()))
            << albums[i + 1].constData();
    }
}

TEST_P(IpodModels, HaveTheSmallestPictureForAThumbnail)
{
    write(threePhotos());
    for (int i = 0; i < m_written.photoIDs.size(); ++i) {
        const QByteArray id = QByteArray::number(m_written.photoIDs[i]);
        const QByteArray file = id + ".bmp";
        linesOf({"thumb", "-d", device(), id, "-o", m_scratch.path(file)});
        expectLike(m_plan.photos[i].picture, smallest(GetParam()), m_scratch.read(file));
    }
}

TEST_P(IpodModels, HaveTheLargestPictureExported)
{
    write(threePhotos());
    linesOf({"export", "-d", device(), "--name", "{name}", m_scratch.path("out")});
    EXPECT_EQ(m_written.photoIDs.size(), exportedFiles(m_scratch, "out").size());
    for (int i = 0; i < m_written.photoIDs.size(); ++i) {
        const QByteArray file = "out/" + QByteArray::number(m_written.photoIDs[i]) + ".bmp";
        expectLike(m_plan.photos[i].picture, largest(GetParam()), m_scratch.read(file));
        const qint64 created = m_plan.photos[i].created;
        if (created != 0) {
            EXPECT_EQ(created * 1000000000, changeOf(m_scratch.path(file)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Models, IpodModels, testing::ValuesIn(models), rowName<ModelRow>);

} // namespace
