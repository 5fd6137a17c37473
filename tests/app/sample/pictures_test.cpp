#include "sample/sample_fixture.h"

#include <QImage>
#include <QImageReader>
#include <QSet>
#include <QtEndian>

namespace {

constexpr int recordTrailer = 28;

/// The mean difference of a colour value, after both are scaled to 16 x 16 pixels.
double difference(const QImage &one, const QImage &other)
{
    const auto small = [](const QImage &picture) {
        return picture.scaled(16, 16, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB32);
    };
    const QImage a = small(one);
    const QImage b = small(other);
    int sum = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    return sum / (16.0 * 16 * 3);
}

int colorCount(const QImage &picture)
{
    QSet<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, y));
    return colors.size();
}

/// The source as it is to be shown.
QImage uprightPicture(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    return reader.read();
}

struct Frame {
    const char *name;
    int rowPixels;
    int height;
    int width;

    int dataSize() const { return rowPixels * height * 2; }
};

const Frame lateFrame = {"120x120.ithmb", 120, 120, 120};
const Frame earlyFrame = {"158x158.ithmb", 160, 158, 158};

/// One record of a packed thumbnail file.
struct Record {
    QByteArray uuid;
    int width = 0;
    int height = 0;
    QImage picture;       ///< cut out of the frame
    int pixelsAround = 0; ///< that are not zero although they lie outside the picture
};

Record readRecord(const QByteArray &file, int index, const Frame &frame)
{
    Record record;
    const char *data = file.constData() + qptrdiff{index} * (frame.dataSize() + recordTrailer);
    const char *trailer = data + frame.dataSize();
    record.uuid = QByteArray(trailer, 16);
    record.width = qFromLittleEndian<qint32>(trailer + 16);
    record.height = qFromLittleEndian<qint32>(trailer + 20);
    const int left = (frame.width - record.width) / 2;
    const int top = frame.height - (frame.height - record.height) / 2 - record.height;
    record.picture = QImage(record.width, record.height, QImage::Format_RGB32);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.rowPixels; ++x) {
            const auto pixel =
                qFromLittleEndian<quint16>(data + qptrdiff{2} * (y * frame.rowPixels + x));
            const QPoint at(x - left, y - top);
            if (record.picture.rect().contains(at))
                record.picture.setPixel(at, qRgb((pixel >> 10 & 0x1f) << 3,
                                                 (pixel >> 5 & 0x1f) << 3, (pixel & 0x1f) << 3));
            else
                record.pixelsAround += pixel != 0 ? 1 : 0;
        }
    return record;
}

class SamplePictures : public testing::Test
{
protected:
    WrittenSample m_sample{sampleOptions(24, true)};
    SampleDatabase m_database{m_sample};

    QVector<SqlRow> photos() const
    {
        return m_database.rows(
            "select ZDIRECTORY || '/' || ZFILENAME, ZWIDTH, ZHEIGHT, ZORIENTATION, "
            "ifnull(T.ZORIGINALFILESIZE, 0), cast(ZDATECREATED as integer), "
            "ifnull(ZAVALANCHEUUID, A.Z_PK) from ZGENERICASSET A "
            "left join ZADDITIONALASSETATTRIBUTES T on T.ZASSET = A.Z_PK "
            "where ZKIND = 0 order by A.Z_PK");
    }

    bool exists(const QString &relative) const { return QFile::exists(m_sample.path(relative)); }
};

TEST_F(SamplePictures, AreReadableSourcesOfTheSizeThatTheDatabaseSays)
{
    int missing = 0;
    for (const SqlRow &photo : photos()) {
        if (!exists(photo.at(0))) {
            ++missing;
            continue;
        }
        const QImage picture = uprightPicture(m_sample.path(photo.at(0)));
        EXPECT_EQ(picture.width(), photo.at(1).toInt()) << photo.at(0).toStdString();
        EXPECT_EQ(picture.height(), photo.at(2).toInt()) << photo.at(0).toStdString();
        EXPECT_GT(colorCount(picture), 100) << photo.at(0).toStdString();
        const qint64 recorded = photo.at(4).toLongLong();
        if (recorded != 0) {
            EXPECT_EQ(m_sample.bytes(photo.at(0)).size(), recorded);
        }
    }
    EXPECT_EQ(missing, 1);
}

TEST_F(SamplePictures, SayInTheirExifBlockHowTheCameraWasHeld)
{
    QMap<QString, QImageIOHandler::Transformations> expected = {
        {QStringLiteral("1"), QImageIOHandler::TransformationNone},
        {QStringLiteral("3"), QImageIOHandler::TransformationRotate180},
        {QStringLiteral("6"), QImageIOHandler::TransformationRotate90}};
    QSet<QString> seen;
    const WrittenSample longer(sampleOptions(28, true)); // the upside-down one is at 27
    const SampleDatabase database(longer);
    for (const SqlRow &photo : database.rows("select ZDIRECTORY || '/' || ZFILENAME, ZORIENTATION "
                                             "from ZGENERICASSET where ZKIND = 0")) {
        const QString path = longer.path(photo.at(0));
        if (!QFile::exists(path))
            continue;
        EXPECT_EQ(QImageReader(path).transformation(), expected.value(photo.at(1)));
        seen.insert(photo.at(1));
    }
    EXPECT_EQ(seen.size(), expected.size());
}

TEST_F(SamplePictures, DifferFromEachOtherButForTheFramesOfABurst)
{
    QVector<QImage> pictures;
    QStringList bursts;
    for (const SqlRow &photo : photos())
        if (exists(photo.at(0))) {
            pictures.append(uprightPicture(m_sample.path(photo.at(0))));
            bursts.append(photo.at(6));
        }
    for (int i = 0; i < pictures.size(); ++i)
        for (int j = 0; j < i; ++j) {
            const double found = difference(pictures.at(i), pictures.at(j));
            if (bursts.at(i) == bursts.at(j)) {
                EXPECT_GT(found, 0.0) << i << ' ' << j;
            } else {
                EXPECT_GT(found, 4.0) << i << ' ' << j;
            }
        }
}

TEST_F(SamplePictures, CarryTheDateOfTheirAsset)
{
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    for (const SqlRow &photo : photos())
        if (exists(photo.at(0))) {
            EXPECT_EQ(QFileInfo(m_sample.path(photo.at(0))).lastModified().toUTC(),
                      reference.addSecs(photo.at(5).toLongLong()));
        }
}

TEST_F(SamplePictures, HaveALargeThumbnailInTwoOfThreeFolders)
{
    int found = 0;
    for (const SqlRow &photo : photos()) {
        const QString thumbnail =
            QStringLiteral("PhotoData/Thumbnails/V2/%1/5005.JPG").arg(photo.at(0));
        if (!exists(thumbnail))
            continue;
        ++found;
        const QImage small(m_sample.path(thumbnail));
        EXPECT_FALSE(small.isNull());
        EXPECT_EQ(qMax(small.width(), small.height()),
                  qMin(256, qMax(photo.at(1).toInt(), photo.at(2).toInt())));
        if (exists(photo.at(0))) {
            EXPECT_LT(difference(small, uprightPicture(m_sample.path(photo.at(0)))), 8.0);
        }
    }
    EXPECT_GE(found, photos().size() * 3 / 5);
    EXPECT_LE(found, photos().size() * 4 / 5);
}

TEST_F(SamplePictures, LieCentredInTheRecordsOfThePackedFile)
{
    const QByteArray file =
        m_sample.bytes(QStringLiteral("PhotoData/Thumbnails/") + QLatin1String(lateFrame.name));
    const QVector<SqlRow> rows = m_database.rows(
        "select ZTHUMBNAILINDEX, hex(ZUUID), ZDIRECTORY || '/' || ZFILENAME, ZKIND, "
        "ZWIDTH, ZHEIGHT from ZGENERICASSET where ZTHUMBNAILINDEX >= 0 order by 1");
    ASSERT_EQ(file.size(), rows.size() * (lateFrame.dataSize() + recordTrailer));
    for (int i = 0; i < rows.size(); ++i) {
        const SqlRow &row = rows.at(i);
        ASSERT_EQ(row.at(0).toInt(), i);
        const Record record = readRecord(file, i, lateFrame);
        EXPECT_EQ(record.uuid, QByteArray::fromHex(row.at(1).toLatin1()));
        EXPECT_EQ(qMax(record.width, record.height),
                  qMin(120, qMax(row.at(4).toInt(), row.at(5).toInt())));
        EXPECT_EQ(record.pixelsAround, 0);
        EXPECT_GT(colorCount(record.picture), 20);
        if (row.at(3) == QLatin1String("0") && exists(row.at(2))) {
            EXPECT_LT(difference(record.picture, uprightPicture(m_sample.path(row.at(2)))), 10.0)
                << row.at(2).toStdString();
        }
    }
}

TEST_F(SamplePictures, HaveAThumbnailOfOneFormOrTheOther)
{
    for (const SqlRow &row : m_database.rows(
             "select ZDIRECTORY || '/' || ZFILENAME, ZTHUMBNAILINDEX from ZGENERICASSET"))
        EXPECT_TRUE(row.at(1).toInt() >= 0 ||
                    exists(QStringLiteral("PhotoData/Thumbnails/V2/%1/5005.JPG").arg(row.at(0))));
}

TEST(EarlySamplePictures, HavePackedRecordsWithWiderRows)
{
    const WrittenSample sample(sampleOptions(9, true, 1, SampleSchema::Early));
    const QByteArray file =
        sample.bytes(QStringLiteral("PhotoData/Thumbnails/") + QLatin1String(earlyFrame.name));
    ASSERT_EQ(file.size(), 8 * (50560 + recordTrailer)); // the edited one has none
    for (int i = 0; i < 8; ++i) {
        const Record record = readRecord(file, i, earlyFrame);
        EXPECT_EQ(qMax(record.width, record.height), 158);
        EXPECT_EQ(record.pixelsAround, 0);
    }
    const QImage source(sample.path(QStringLiteral("DCIM/100APPLE/IMG_0001.JPG")));
    EXPECT_LT(difference(readRecord(file, 0, earlyFrame).picture, source), 10.0);
}

} // namespace
