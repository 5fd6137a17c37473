#include "sample/sample_fixture.h"
#include "support/environment.h"

#include "classic/photo_database.h"

#include <QLocale>
#include <QSet>
#include <QtEndian>

namespace {

const QString databaseName = QStringLiteral("Photos/Photo Database");

/// What the program reads from the database of the sample.
ClassicLibrary libraryOf(const WrittenSample &sample)
{
    ClassicLibrary library;
    QString error;
    EXPECT_TRUE(readPhotoDatabase(sample.bytes(databaseName), &library, &error))
        << error.toStdString();
    return library;
}

QList<quint32> idsOf(const ClassicLibrary &library)
{
    QList<quint32> ids;
    for (const ClassicPhoto &photo : library.photos)
        ids.append(photo.id);
    return ids;
}

/// When the photo was taken by the camera's clock, which is read as UTC here.
QDateTime takenAt(const ClassicPhoto &photo)
{
    return QDateTime(QDate(1904, 1, 1), QTime(0, 0), Qt::UTC).addSecs(photo.taken);
}

/// The path on the device of a name from the database.
QString pathOf(QString name)
{
    return QStringLiteral("Photos") + name.replace(QLatin1Char(':'), QLatin1Char('/'));
}

quint32 number(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

/// The system's default locale while it lives.
class DefaultLocale
{
public:
    explicit DefaultLocale(const QLocale &locale) { QLocale::setDefault(locale); }
    ~DefaultLocale() { QLocale::setDefault(m_old); }
    DefaultLocale(const DefaultLocale &) = delete;
    DefaultLocale &operator=(const DefaultLocale &) = delete;

private:
    QLocale m_old;
};

TEST(ClassicSample, HasTheSameBytesAndDatesForTheSameArguments)
{
    const ClassicSampleOptions options = classicOptions(9, true, 5);
    const WrittenSample here(options);
    const Environment zone("TZ", "Pacific/Kiritimati");
    const DefaultLocale locale(QLocale(QLocale::Arabic, QLocale::Egypt));
    const WrittenSample there(options);
    EXPECT_EQ(here.files(), there.files());
    EXPECT_EQ(here.contents(), there.contents());
}

TEST(ClassicSample, HasOtherPicturesAndDatesForAnotherSeed)
{
    const WrittenSample first(classicOptions(4, true, 1));
    const WrittenSample second(classicOptions(4, true, 2));
    EXPECT_NE(first.bytes(databaseName), second.bytes(databaseName));
    for (const char *name : {"F1019_1", "F1024_1", "F1015_1", "F1036_1"}) {
        const QString path = QStringLiteral("Photos/Thumbs/%1.ithmb").arg(QLatin1String(name));
        EXPECT_NE(first.bytes(path), second.bytes(path)) << name;
    }
}

TEST(ClassicSample, IsADatabaseAndADescriptionWithoutPictures)
{
    const WrittenSample sample(classicOptions(30, false));
    const QStringList expected = {databaseName, QStringLiteral("iPod_Control/Device/SysInfo")};
    EXPECT_EQ(sample.files(), expected);
    EXPECT_EQ(libraryOf(sample).photos.size(), 30);
}

TEST(ClassicSample, MayHaveNoPhotos)
{
    const WrittenSample sample(classicOptions(0, true));
    const ClassicLibrary library = libraryOf(sample);
    EXPECT_TRUE(library.photos.isEmpty());
    EXPECT_EQ(library.albums.size(), 6);
}

TEST(ClassicSample, HasADatabaseOfThreeSetsWithAnIdToSpare)
{
    const WrittenSample sample(classicOptions(20, false));
    const QByteArray bytes = sample.bytes(databaseName);
    EXPECT_EQ(bytes.left(4), "mhfd");
    EXPECT_EQ(number(bytes, 4), 0x84U);
    EXPECT_EQ(number(bytes, 8), static_cast<quint32>(bytes.size()));
    EXPECT_EQ(number(bytes, 16), 2U);
    EXPECT_EQ(number(bytes, 20), 3U);
    EXPECT_EQ(bytes.at(48), 2);
    const ClassicLibrary library = libraryOf(sample);
    for (const quint32 id : idsOf(library))
        EXPECT_LT(id, number(bytes, 28));
    for (const ClassicAlbum &album : library.albums)
        EXPECT_LT(album.id, number(bytes, 28));
}

TEST(ClassicSample, HasSetsOfPhotosAlbumsAndFormats)
{
    const WrittenSample sample(classicOptions(20, false));
    const QByteArray bytes = sample.bytes(databaseName);
    const QVector<QPair<QByteArray, quint32>> lists = {{"mhli", 20}, {"mhla", 6}, {"mhlf", 4}};
    int at = 0x84;
    for (int i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(bytes.mid(at, 4), "mhsd");
        EXPECT_EQ(number(bytes, at + 4), 0x60U);
        EXPECT_EQ(bytes.at(at + 12), i + 1);
        EXPECT_EQ(bytes.mid(at + 0x60, 4), lists.at(i).first);
        EXPECT_EQ(number(bytes, at + 0x60 + 4), 0x5cU);
        EXPECT_EQ(number(bytes, at + 0x60 + 8), lists.at(i).second);
        at += static_cast<int>(number(bytes, at + 8));
    }
    EXPECT_EQ(at, bytes.size());
}

TEST(ClassicSample, ListsTheBytesOfItsFormats)
{
    const WrittenSample sample(classicOptions(2, false));
    const QByteArray bytes = sample.bytes(databaseName);
    const QVector<QPair<quint32, quint32>> formats = {
        {1019, 691200}, {1024, 153600}, {1015, 22880}, {1036, 4100}};
    int at = bytes.indexOf("mhlf") + 0x5c;
    for (const QPair<quint32, quint32> &format : formats) {
        EXPECT_EQ(bytes.mid(at, 4), "mhif");
        EXPECT_EQ(number(bytes, at + 16), format.first);
        EXPECT_EQ(number(bytes, at + 20), format.second);
        at += 0x7c;
    }
    EXPECT_EQ(at, bytes.size());
}

TEST(ClassicSample, HasAFrameOfEachFormatForEachPhotoOneAfterTheOther)
{
    const WrittenSample sample(classicOptions(20, false));
    const ClassicLibrary library = libraryOf(sample);
    const QVector<QPair<int, int>> formats = {
        {1019, 691200}, {1024, 153600}, {1015, 22880}, {1036, 4100}};
    for (int i = 0; i < library.photos.size(); ++i) {
        const QList<StoredPicture> &variants = library.photos.at(i).variants;
        ASSERT_EQ(variants.size(), formats.size());
        for (int f = 0; f < formats.size(); ++f) {
            EXPECT_EQ(variants.at(f).formatId, formats.at(f).first);
            EXPECT_EQ(variants.at(f).size, formats.at(f).second);
            EXPECT_EQ(variants.at(f).offset, i * formats.at(f).second);
            EXPECT_EQ(variants.at(f).fileName,
                      QStringLiteral(":Thumbs:F%1_1.ithmb").arg(formats.at(f).first));
        }
    }
}

TEST(ClassicSample, BeginsAnotherFileBeforeOneGrowsTooLarge)
{
    const WrittenSample sample(classicOptions(1500, false));
    QMap<QString, int> frames;
    for (const ClassicPhoto &photo : libraryOf(sample).photos)
        for (const StoredPicture &variant : photo.variants) {
            int &before = frames[variant.fileName];
            EXPECT_EQ(variant.offset, before * variant.size) << variant.fileName.toStdString();
            EXPECT_LE(variant.offset, 500000000 - variant.size);
            ++before;
        }
    const QMap<QString, int> expected = {{QStringLiteral(":Thumbs:F1019_1.ithmb"), 723},
                                         {QStringLiteral(":Thumbs:F1019_2.ithmb"), 723},
                                         {QStringLiteral(":Thumbs:F1019_3.ithmb"), 54},
                                         {QStringLiteral(":Thumbs:F1024_1.ithmb"), 1500},
                                         {QStringLiteral(":Thumbs:F1015_1.ithmb"), 1500},
                                         {QStringLiteral(":Thumbs:F1036_1.ithmb"), 1500}};
    EXPECT_EQ(frames, expected);
}

TEST(ClassicSample, HasTheOriginalsOfTwoPhotosOfThreeInFoldersOfTheirDays)
{
    const WrittenSample sample(classicOptions(9, true));
    const QVector<ClassicPhoto> photos = libraryOf(sample).photos;
    int originals = 0;
    for (const ClassicPhoto &photo : photos) {
        if (photo.originalName.isEmpty())
            continue;
        ++originals;
        const QString path = pathOf(photo.originalName);
        EXPECT_TRUE(path.startsWith(
            takenAt(photo).toString(QStringLiteral("'Photos/Full Resolution/'yyyy/MM/dd/"))))
            << path.toStdString();
        EXPECT_EQ(QFileInfo(sample.path(path)).lastModified().toUTC(), takenAt(photo));
    }
    EXPECT_EQ(originals, 6);
    EXPECT_EQ(sample.files().filter(QStringLiteral("Full Resolution")).size(), originals);
}

TEST(ClassicSample, HasAlbumsOfEveryKind)
{
    const WrittenSample sample(classicOptions(34, false));
    const ClassicLibrary library = libraryOf(sample);
    QStringList names;
    for (const ClassicAlbum &album : library.albums) {
        names.append(album.name);
        EXPECT_EQ(album.type, album.name == QLatin1String("Photo Library") ? 1 : 2);
        for (const quint32 id : album.photoIDs)
            EXPECT_TRUE(idsOf(library).contains(id));
        EXPECT_EQ(album.photoIDs.isEmpty(), album.name == QLatin1String("Empty"));
    }
    const QStringList expected = {QStringLiteral("Photo Library"),
                                  QStringLiteral("Summer by the Sea"),
                                  QStringLiteral("Århus – Kraków, für Zoë"),
                                  QStringLiteral("日本 2012"),
                                  QStringLiteral("Series"),
                                  QStringLiteral("Empty")};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(library.albums.first().photoIDs, idsOf(library));
}

TEST(ClassicSample, StoresNamesInBothEncodingsFilledUpToFourBytes)
{
    const WrittenSample sample(classicOptions(2, false));
    const QByteArray bytes = sample.bytes(databaseName);
    const QString wide = QStringLiteral("Århus – Kraków, für Zoë");
    const QByteArray wideBytes(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2);
    for (const QByteArray &text : {QByteArray("Photo Library"), QByteArray("Series"),
                                   QByteArray("Dissolve"), QByteArray("日本 2012"), wideBytes}) {
        const int at = bytes.indexOf(text);
        ASSERT_GE(at, 0) << text.constData();
        const int chunk = at - 36;
        const int padding = (4 - text.size() % 4) % 4;
        EXPECT_EQ(bytes.mid(chunk, 4), "mhod");
        EXPECT_EQ(number(bytes, chunk + 8), static_cast<quint32>(36 + text.size() + padding));
        EXPECT_EQ(bytes.at(chunk + 15), padding);
        EXPECT_EQ(number(bytes, chunk + 24), static_cast<quint32>(text.size()));
        EXPECT_EQ(bytes.at(chunk + 28), text == wideBytes ? 2 : 1);
    }
}

TEST(ClassicSample, GivesEveryPhotoOfALargeLibraryAnIdAndAnOriginalOfItsOwn)
{
    const WrittenSample sample(classicOptions(20000, false));
    const ClassicLibrary library = libraryOf(sample);
    ASSERT_EQ(library.photos.size(), 20000);
    QSet<QString> originals;
    int named = 0;
    for (const ClassicPhoto &photo : library.photos)
        if (!photo.originalName.isEmpty()) {
            originals.insert(photo.originalName);
            ++named;
        }
    EXPECT_EQ(named, 13334);
    EXPECT_EQ(originals.size(), named);
    const QList<quint32> ids = idsOf(library);
    EXPECT_EQ(QSet<quint32>(ids.begin(), ids.end()).size(), 20000);
}

} // namespace
