#include "host/device_database.h"

#include "base/log_output.h"
#include "devices/folder_file_system.h"
#include "host/classic_ipod.h"
#include "host/device.h"
#include "host/transfer_monitor.h"
#include "support/device_folder.h"
#include "support/environment.h"
#include "support/photo_database_bytes.h"

#include <QFile>

#include <gtest/gtest.h>

#include <tuple>
#include <unistd.h>

namespace {

using Confinement = FolderFileSystem::Confinement;

constexpr char thumbsName[] = ":Thumbs:F1036_1.ithmb";

StoredPicture variantIn(const QString &fileName)
{
    StoredPicture variant;
    variant.formatId = 1036;
    variant.size = 4100;
    variant.width = 50;
    variant.height = 41;
    variant.fileName = fileName;
    return variant;
}

ClassicPhoto photoIn(quint32 id, const QString &fileName)
{
    ClassicPhoto photo;
    photo.id = id;
    photo.variants = {variantIn(fileName)};
    return photo;
}

ClassicLibrary twoPhotos()
{
    ClassicLibrary library;
    const QString name = QString::fromLatin1(thumbsName);
    library.photos = {photoIn(100, name), photoIn(7, name)};
    library.photos[1].taken = 2082844800u + 1123335296u;
    ClassicAlbum album;
    album.id = 5;
    album.name = QStringLiteral("Été");
    album.photoIDs = {7, 100, 7};
    library.albums = {album};
    return library;
}

// A classic iPod in a folder, as the plug-in asks for what is in it.
class DeviceDatabase : public testing::Test
{
protected:
    void write(const ClassicLibrary &library)
    {
        m_scratch.write("iPod/Photos/Photo Database", photoDatabaseBytes(library));
    }

    Device &device()
    {
        if (!m_device) {
            FileError error;
            m_device = std::make_unique<Device>(
                FolderFileSystem::openFolder(m_scratch.path("iPod"), &error, m_confinement),
                DeviceKind::Classic, QString());
        }
        return *m_device;
    }

    // Parsed, and owned by the device.
    iphotolib &photoLib()
    {
        iitdb *const database = getPhotoDBInt(&device());
        EXPECT_EQ(0, database->parse());
        return *database->photoLib();
    }

    itdb_trk photo(iphotolib &library, quint32 id)
    {
        itdb_trk photo;
        EXPECT_EQ(0, library.getPhoto(&id, &photo));
        return photo;
    }

    // The name on the disk of the file `name` of a picture; none when the plug-in is told of no
    // picture.
    QString nameOnDisk(const QString &name)
    {
        ClassicLibrary library;
        library.photos = {photoIn(1, name)};
        write(library);
        if (photo(photoLib(), 1).thumbs.isEmpty())
            return QStringLiteral("none");
        return device().classicIpod()->photo(1)->variants.first().fileName;
    }

    // What the plug-in reads under the name that it is given.
    QByteArray readOnDrive(const QString &name)
    {
        const QString below = QString(name).replace(QLatin1Char(':'), QLatin1Char('/'));
        QFile file(device().driveName() + QStringLiteral(":/Photos") + below);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }

    // What a failed parse logs.
    QList<QByteArray> parseFailure()
    {
        const LogCapture log;
        iitdb *database = getPhotoDBInt(&device());
        EXPECT_NE(0, database->parse());
        releaseITunesDBInt(&database);
        EXPECT_FALSE(database);
        return log.failures();
    }

    const ScratchFolder m_scratch;
    Confinement m_confinement = Confinement::BestAvailable;
    std::unique_ptr<Device> m_device;
};

TEST_F(DeviceDatabase, ListsPhotosAndAlbumsInTheirOrder)
{
    write(twoPhotos());
    iphotolib &library = photoLib();
    EXPECT_EQ((QList<quint32>{100, 7}), library.photoIDs());
    EXPECT_EQ(QList<quint32>{5}, library.albumIDs());
}

TEST_F(DeviceDatabase, FillsAnAlbum)
{
    write(twoPhotos());
    const quint32 id = 5;
    itdb_pl album;
    EXPECT_EQ(0, photoLib().getAlbum(&id, &album));
    EXPECT_EQ(QStringLiteral("Été"), album.name);
    EXPECT_EQ((QList<quint32>{7, 100, 7}), album.photoIDs);
}

TEST_F(DeviceDatabase, FillsAPhoto)
{
    const Environment zone("TZ", "UTC");
    write(twoPhotos());
    iphotolib &library = photoLib();
    const itdb_trk second = photo(library, 7);
    EXPECT_EQ(1123335296u, second.timeStamp);
    ASSERT_EQ(1, second.thumbs.size());
    EXPECT_EQ(1036, second.thumbs[0].formatId);
    EXPECT_EQ(4100, second.thumbs[0].size);
    EXPECT_EQ(0u, photo(library, 100).timeStamp);
}

TEST_F(DeviceDatabase, LeavesTheRecordsAloneForUnknownIds)
{
    write(twoPhotos());
    iphotolib &library = photoLib();
    const quint32 unknown = 6;
    itdb_pl album;
    album.name = QStringLiteral("untouched");
    EXPECT_NE(0, library.getAlbum(&unknown, &album));
    EXPECT_EQ(QStringLiteral("untouched"), album.name);
    itdb_trk photo;
    photo.timeStamp = 3;
    EXPECT_NE(0, library.getPhoto(&unknown, &photo));
    EXPECT_EQ(3u, photo.timeStamp);
}

TEST_F(DeviceDatabase, FindsItsFileInOtherCase)
{
    m_scratch.write("iPod/PHOTOS/PHOTO DATABASE", photoDatabaseBytes(twoPhotos()));
    EXPECT_EQ(2, photoLib().photoIDs().size());
}

TEST_F(DeviceDatabase, GivesPictureFilesTheNamesThatTheyHaveOnTheDisk)
{
    m_scratch.write("iPod/Photos/THUMBS/f1036_1.ITHMB", "");
    EXPECT_EQ(QStringLiteral(":THUMBS:f1036_1.ITHMB"), nameOnDisk(QString::fromLatin1(thumbsName)));
}

TEST_F(DeviceDatabase, KeepsTheNameOfAFileThatIsNotThere)
{
    EXPECT_EQ(QString::fromLatin1(thumbsName), nameOnDisk(QString::fromLatin1(thumbsName)));
}

TEST_F(DeviceDatabase, GivesNamesTheFormThatThePlugInNeeds)
{
    m_scratch.write("iPod/Photos/a", "");
    EXPECT_EQ(QStringLiteral(":a"), nameOnDisk(QStringLiteral("a")));
    EXPECT_EQ(QStringLiteral(":a"), nameOnDisk(QStringLiteral("::a:")));
}

struct Refusal {
    const char *name;
    const char *fileName;
    const char *cause;
};

class DeviceDatabaseRefusal : public DeviceDatabase,
                              public testing::WithParamInterface<std::tuple<Refusal, Confinement>>
{
};

TEST_P(DeviceDatabaseRefusal, KeepsThePlugInFromTheFile)
{
    const Refusal &refusal = std::get<Refusal>(GetParam());
    m_confinement = std::get<Confinement>(GetParam());
    m_scratch.write("secret", "outside");
    m_scratch.makeFolder("iPod/Photos/folder");
    m_scratch.makeLink("iPod/Photos/out", m_scratch.path("secret"));
    m_scratch.makeLink("iPod/Photos/up", "../..");
    m_scratch.makePipe("iPod/Photos/pipe");
    const LogCapture log;
    const QString name = QString::fromLatin1(refusal.fileName);
    EXPECT_EQ(QStringLiteral("none"), nameOnDisk(name));
    const QByteArray line = "The picture file \"" + name.toUtf8() + "\" is left out: ";
    EXPECT_EQ(QList<QByteArray>{line + refusal.cause}, log.failures());
}

constexpr char dotsCause[] = "a path with \"..\" in it";
constexpr char linkCause[] = "a link that leads out of the device";

INSTANTIATE_TEST_SUITE_P(
    Names, DeviceDatabaseRefusal,
    testing::Combine(
        testing::Values(Refusal{"Dots", ":..:..:secret", dotsCause},
                        Refusal{"DotsBehindAFolder", ":folder:..:..:secret", dotsCause},
                        Refusal{"DotsBetweenSlashes", ":folder/../../../secret", dotsCause},
                        Refusal{"Slashes", "/etc/passwd", dotsCause},
                        Refusal{"ALinkOut", ":out", linkCause},
                        Refusal{"AFolderThatLeadsOut", ":up:secret", linkCause},
                        Refusal{"NothingInAFolderThatLeadsOut", ":up:none", linkCause},
                        Refusal{"APipe", ":pipe", "not a regular file"},
                        Refusal{"AFolder", ":folder", "not a regular file"},
                        Refusal{"NoName", ":", "not a regular file"}),
        testing::Values(Confinement::BestAvailable, Confinement::NameByName)),
    [](const auto &info) {
        const bool isByName = std::get<Confinement>(info.param) == Confinement::NameByName;
        return std::get<Refusal>(info.param).name +
               std::string(isByName ? "NameByName" : "BestAvailable");
    });

TEST_F(DeviceDatabase, LogsOnceWhatManyPhotosName)
{
    ClassicLibrary library;
    for (quint32 id = 1; id <= 50; ++id)
        library.photos.append(photoIn(id, QStringLiteral(":..:x")));
    write(library);
    const LogCapture log;
    EXPECT_EQ(50, photoLib().photoIDs().size());
    EXPECT_EQ(1, log.failures().size());
}

TEST_F(DeviceDatabase, SaysWhatIsWrongWithADamagedFile)
{
    m_scratch.write("iPod/Photos/Photo Database", photoDatabaseBytes(twoPhotos()).left(200));
    const QList<QByteArray> failure = parseFailure();
    ASSERT_EQ(1, failure.size());
    EXPECT_TRUE(failure[0].contains("at offset 0x")) << failure[0].constData();
}

TEST_F(DeviceDatabase, SaysThatThereIsNoFile)
{
    m_scratch.makeFolder("iPod/Photos");
    EXPECT_EQ(QList<QByteArray>{"No such file or directory"}, parseFailure());
}

TEST_F(DeviceDatabase, ReadsNoFileThatIsFarTooLarge)
{
    m_scratch.writeSparse("iPod/Photos/Photo Database", qint64(1) << 40);
    EXPECT_EQ(QList<QByteArray>{"a file of 1099511627776 bytes is no photo database"},
              parseFailure());
}

TEST_F(DeviceDatabase, IsReadAnewEachTime)
{
    write(twoPhotos());
    iitdb *database = getPhotoDBInt(&device());
    EXPECT_EQ(0, database->parse());
    ClassicLibrary one;
    one.photos = {photoIn(9, QString())};
    write(one);
    EXPECT_EQ(2, database->photoLib()->photoIDs().size());
    releaseITunesDBInt(&database);
    EXPECT_FALSE(database);
    EXPECT_EQ(QList<quint32>{9}, photoLib().photoIDs());
}

TEST_F(DeviceDatabase, IsEmptyBeforeItIsRead)
{
    write(twoPhotos());
    iitdb *const database = getPhotoDBInt(&device());
    EXPECT_EQ(QList<quint32>(), database->photoLib()->photoIDs());
    const quint32 id = 7;
    itdb_trk photo;
    EXPECT_NE(0, database->photoLib()->getPhoto(&id, &photo));
}

TEST_F(DeviceDatabase, IsThatOfItsDevice)
{
    write(twoPhotos());
    const ScratchFolder other;
    other.write("Photos/Photo Database", photoDatabaseBytes(ClassicLibrary()));
    FileError error;
    Device second(FolderFileSystem::openFolder(other.root(), &error), DeviceKind::Classic,
                  QString());
    iitdb *database = getPhotoDBInt(&second);
    EXPECT_EQ(0, database->parse());
    EXPECT_EQ(2, photoLib().photoIDs().size());
    EXPECT_EQ(0, database->photoLib()->photoIDs().size());
    releaseITunesDBInt(&database);
    EXPECT_TRUE(device().classicIpod()->photo(7));
}

TEST_F(DeviceDatabase, TellsTheProgramOfTheFullResolutionFile)
{
    ClassicLibrary library = twoPhotos();
    library.photos[0].originalName = QStringLiteral(":Full Resolution:2005:08:06:IMG_1.JPG");
    write(library);
    m_scratch.write("iPod/Photos/FULL RESOLUTION/2005/08/06/img_1.jpg", "picture");
    photoLib();
    const ClassicIpod &iPod = *device().classicIpod();
    EXPECT_EQ("/Photos/FULL RESOLUTION/2005/08/06/img_1.jpg", iPod.originalPath(*iPod.photo(100)));
    EXPECT_EQ("", iPod.originalPath(*iPod.photo(7)));
    EXPECT_EQ(100u, iPod.photo((quint64(1) << 32) + 100)->id);
    EXPECT_FALSE(iPod.photo(8));
}

TEST_F(DeviceDatabase, TellsTheProgramOfNoFileOutsideTheDevice)
{
    ClassicLibrary library = twoPhotos();
    library.photos[0].originalName = QStringLiteral(":..:..:secret");
    library.photos[1].originalName = QStringLiteral(":a/../../../secret");
    write(library);
    m_scratch.write("secret", "outside");
    photoLib();
    const ClassicIpod &iPod = *device().classicIpod();
    for (const quint64 id : {100, 7}) {
        FileError error;
        EXPECT_FALSE(device().files().open(iPod.originalPath(*iPod.photo(id)), &error));
        EXPECT_EQ(FileError::Outside, error.kind);
    }
}

TEST_F(DeviceDatabase, HasADriveThatLeadsToItsPictures)
{
    m_scratch.write("iPod/PHOTOS/THUMBS/a", "thumbnails");
    ClassicLibrary library;
    library.photos = {photoIn(1, QStringLiteral(":Thumbs:A"))};
    m_scratch.write("iPod/PHOTOS/Photo Database", photoDatabaseBytes(library));
    EXPECT_EQ("thumbnails", readOnDrive(photo(photoLib(), 1).thumbs.value(0).fileName));
    EXPECT_EQ(":THUMBS:a", device().classicIpod()->photo(1)->variants.value(0).fileName);
}

TEST_F(DeviceDatabase, GivesThePlugInTheFileThatItLookedAt)
{
    write(twoPhotos());
    m_scratch.write("iPod/Photos/Thumbs/F1036_1.ithmb", "thumbnails");
    m_scratch.write("secret", "outside");
    const QString name = photo(photoLib(), 7).thumbs.value(0).fileName;
    const QByteArray file = m_scratch.path("iPod/Photos/Thumbs/F1036_1.ithmb");
    ASSERT_EQ(0, ::unlink(file.constData()));
    m_scratch.makeLink("iPod/Photos/Thumbs/F1036_1.ithmb", m_scratch.path("secret"));
    EXPECT_EQ("thumbnails", readOnDrive(name));
}

TEST_F(DeviceDatabase, GivesItNoFileThatIsPutThereLater)
{
    write(twoPhotos());
    const QString name = photo(photoLib(), 7).thumbs.value(0).fileName;
    m_scratch.write("secret", "outside");
    m_scratch.makeFolder("iPod/Photos/Thumbs");
    m_scratch.makeLink("iPod/Photos/Thumbs/F1036_1.ithmb", m_scratch.path("secret"));
    EXPECT_EQ("none", readOnDrive(name));
}

TEST_F(DeviceDatabase, HoldsEachFileOpenOnceAndNoMoreThanItMay)
{
    ClassicLibrary library;
    constexpr int files = DriveLinks::most + 50;
    for (quint32 i = 0; i < files; ++i) {
        const QByteArray name = "F1036_" + QByteArray::number(i) + ".ithmb";
        m_scratch.write("iPod/Photos/Thumbs/" + name, name);
        library.photos.append(photoIn(2 * i + 1, ":Thumbs:" + QString::fromUtf8(name)));
        library.photos.append(photoIn(2 * i + 2, "::Thumbs:" + QString::fromUtf8(name.toLower())));
    }
    write(library);
    const LogCapture log;
    iphotolib &photos = photoLib();
    int reachable = 0;
    for (const quint32 id : photos.photoIDs()) {
        const QList<itdb_photo> variants = photo(photos, id).thumbs;
        const QByteArray expected = "F1036_" + QByteArray::number((id - 1) / 2) + ".ithmb";
        if (!variants.isEmpty() && readOnDrive(variants[0].fileName) == expected)
            ++reachable;
    }
    EXPECT_EQ(2 * DriveLinks::most, reachable);
    EXPECT_EQ(QList<QByteArray>{"50 picture files are left out: more than 256 cannot be held open"},
              log.failures());
}

TEST_F(DeviceDatabase, LetsGoOfItsFilesWhenItIsReleased)
{
    write(twoPhotos());
    m_scratch.write("iPod/Photos/Thumbs/F1036_1.ithmb", "thumbnails");
    for (int i = 0; i < 2 * DriveLinks::most; ++i) {
        iitdb *database = getPhotoDBInt(&device());
        ASSERT_EQ(0, database->parse());
        const QString name = photo(*database->photoLib(), 7).thumbs.value(0).fileName;
        ASSERT_EQ("thumbnails", readOnDrive(name)) << i;
        releaseITunesDBInt(&database);
        ASSERT_EQ("none", readOnDrive(name)) << i;
    }
}

TEST(DeviceDatabaseOfNone, IsNoneForAnIosDeviceOrNoDevice)
{
    const ScratchFolder scratch;
    FileError error;
    Device device(FolderFileSystem::openFolder(scratch.root(), &error), DeviceKind::Ios, QString());
    EXPECT_FALSE(getPhotoDBInt(&device));
    EXPECT_FALSE(getPhotoDBInt(nullptr));
    EXPECT_EQ(QString(), device.driveName());
}

TEST(DeviceDatabaseOfNone, IsReleasedWithoutEffect)
{
    iitdb *none = nullptr;
    releaseITunesDBInt(&none);
    releaseITunesDBInt(nullptr);
    EXPECT_FALSE(none);
}

TEST(ThumbnailUnpacker, MakesAnImageFile)
{
    QByteArray raw(4100, '\0');
    QByteArray out;
    itdb_photo variant;
    variant.formatId = 1036;
    variant.size = 4100;
    variant.width = 50;
    variant.height = 41;
    EXPECT_EQ(0, unpackiThmb(nullptr, raw, variant, out));
    EXPECT_TRUE(out.startsWith("BM"));
}

TEST(ThumbnailUnpacker, LogsWhatItCanNotDecodeAndLeavesTheOutputAlone)
{
    const LogCapture log;
    QByteArray raw = "pixels";
    QByteArray out = "untouched";
    itdb_photo photo;
    photo.formatId = 9999;
    EXPECT_NE(0, unpackiThmb(nullptr, raw, photo, out));
    EXPECT_EQ("untouched", out);
    ASSERT_EQ(1, log.failures().size());
    EXPECT_TRUE(log.failures()[0].contains("9999"));
}

// Hears what fails.
class FailureObserver : public TransferObserver
{
public:
    QList<FileError> errors;

    void bytesWritten(qint64) override {}
    void failed(const QByteArray &, const FileError &error) override { errors.append(error); }
};

TEST(ThumbnailUnpacker, TellsWhoeverWatchesWhatItCannotDecode)
{
    const LogCapture log;
    FailureObserver observer;
    const TransferWatch watch(&observer);
    QByteArray raw = "pixels";
    QByteArray out;
    itdb_photo photo;
    photo.formatId = 9999;
    EXPECT_NE(0, unpackiThmb(nullptr, raw, photo, out));
    ASSERT_EQ(1, observer.errors.size());
    EXPECT_EQ(FileError::Damaged, observer.errors[0].kind);
    EXPECT_EQ("unknown format 9999", observer.errors[0].text);
}

} // namespace
