#include "sample/sample_fixture.h"
#include "support/picture_comparison.h"

#include "classic/image_unpacker.h"
#include "classic/photo_database.h"
#include "sample/canvas.h"
#include "sample/classic_format.h"
#include "sample/classic_plan.h"
#include "sample/scenes.h"

#include <QImageReader>

#include <vector>

namespace {

using sample::ClassicFormat;
using sample::classicFormats;

constexpr int interlacedId = 1019;

QImage unpacked(const QByteArray &raw, const StoredPicture &photo)
{
    QByteArray file;
    QString error;
    EXPECT_TRUE(unpackImage(raw, photo, &file, &error)) << error.toStdString();
    return QImage::fromData(file);
}

class ClassicSamplePictures : public testing::Test
{
protected:
    ClassicSamplePictures()
    {
        QString error;
        EXPECT_TRUE(readPhotoDatabase(m_sample.bytes(QStringLiteral("Photos/Photo Database")),
                                      &m_library, &error))
            << error.toStdString();
    }

    /// What the photo shows, as large as its original.
    QImage scene(int photo)
    {
        QImage &scene = m_scenes[photo];
        if (scene.isNull()) {
            const sample::AssetPlan asset = sample::ClassicPlan(m_options).photo(photo).asset;
            scene = paintScene(asset, asset.scenePhase);
        }
        return scene;
    }

    /// The stored bytes of a variant.
    QByteArray stored(const StoredPicture &variant)
    {
        QByteArray &file = m_files[variant.fileName];
        if (file.isEmpty())
            file = m_sample.bytes(pathOf(variant.fileName));
        return file.mid(variant.offset, variant.size);
    }

    /// A picture of the sample.
    struct Picture {
        int photo;
        const ClassicFormat &format;
        StoredPicture variant;
    };

    std::vector<Picture> pictures() const
    {
        std::vector<Picture> pictures;
        for (int i = 0; i < m_library.photos.size(); ++i)
            for (std::size_t f = 0; f < classicFormats.size(); ++f) {
                const StoredPicture &variant = m_library.photos.at(i).variants.at(int(f));
                EXPECT_EQ(variant.formatId, classicFormats[f].id);
                pictures.push_back({i, classicFormats[f], variant});
            }
        return pictures;
    }

    static QString pathOf(QString name)
    {
        return QStringLiteral("Photos") + name.replace(QLatin1Char(':'), QLatin1Char('/'));
    }

    const ClassicSampleOptions m_options = classicOptions(14, true); // one of each shape
    const WrittenSample m_sample{m_options};
    ClassicLibrary m_library;
    QMap<QString, QByteArray> m_files;
    QMap<int, QImage> m_scenes;
};

TEST_F(ClassicSamplePictures, ShowTheirScenesInEveryFormat)
{
    for (const Picture &picture : pictures()) {
        const QSize frame(picture.format.width, picture.format.height);
        const QImage expected = sample::fitted(scene(picture.photo), frame);
        const QImage found = unpacked(stored(picture.variant), picture.variant);
        const PictureLoss loss = lossBetween(expected, found);
        EXPECT_LT(loss.mean, 5.0) << picture.photo << ' ' << picture.format.id << ' ' << loss;
        // 5 bits of 8 are kept; interlaced pixels share their colour with a neighbour.
        if (picture.format.id != interlacedId) {
            EXPECT_LE(loss.most, 7) << picture.photo << ' ' << picture.format.id;
        }
    }
}

TEST_F(ClassicSamplePictures, FillTheirFramesOneWayUnlessTheyAreSmall)
{
    int small = 0;
    for (const Picture &picture : pictures()) {
        const StoredPicture &variant = picture.variant;
        const QSize size = unpackedSize(variant);
        if (size.width() != picture.format.width && size.height() != picture.format.height)
            ++small;
        const int right = picture.format.width - variant.width;
        const int below = picture.format.height - variant.height;
        EXPECT_GE(right, 0);
        EXPECT_GE(below, 0);
        // Interlaced pictures begin with a pair of pixels.
        const int slack = picture.format.id == interlacedId ? 3 : 1;
        EXPECT_LE(qAbs(variant.horizontalPadding - right), slack);
        EXPECT_LE(qAbs(variant.verticalPadding - below), 1);
    }
    EXPECT_EQ(small, 2); // one photo, in the two largest frames
}

/// `frame` with `area` painted black.
QImage blackened(QImage frame, const QRect &area)
{
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            frame.setPixel(x, y, qRgb(0, 0, 0));
    return frame;
}

TEST_F(ClassicSamplePictures, HaveBlackAroundThem)
{
    for (const Picture &picture : pictures()) {
        const StoredPicture &variant = picture.variant;
        StoredPicture whole = variant;
        whole.width = picture.format.width;
        whole.height = picture.format.height;
        whole.horizontalPadding = whole.verticalPadding = 0;
        QRect area(QPoint(variant.horizontalPadding, variant.verticalPadding),
                   unpackedSize(variant));
        // A last pixel without a neighbour shares its colour with the black beside it.
        if (picture.format.id == interlacedId)
            area.setWidth((area.width() + 1) / 2 * 2);
        const QImage frame = unpacked(stored(variant), whole);
        EXPECT_FALSE(frame.isNull());
        EXPECT_EQ(blackened(frame, area), blackened(frame, frame.rect()))
            << picture.photo << ' ' << picture.format.id;
    }
}

TEST_F(ClassicSamplePictures, HaveOriginalsOfTheirScenesAsTheCameraWasHeld)
{
    QSet<int> transformations;
    for (int i = 0; i < m_library.photos.size(); ++i) {
        const QString name = m_library.photos.at(i).originalName;
        if (name.isEmpty())
            continue;
        QImageReader reader(m_sample.path(pathOf(name)));
        reader.setAutoTransform(true);
        transformations.insert(reader.transformation());
        const PictureLoss loss = lossBetween(scene(i), reader.read());
        EXPECT_LT(loss.mean, 6.0) << i << ' ' << loss;
    }
    EXPECT_EQ(transformations.size(), 3);
}

TEST_F(ClassicSamplePictures, FillTheirFilesToTheEnd)
{
    for (const StoredPicture &variant : m_library.photos.last().variants)
        EXPECT_EQ(QFileInfo(m_sample.path(pathOf(variant.fileName))).size(),
                  variant.offset + variant.size);
}

QImage frameOf(const ClassicFormat &format, QRgb evenRows, QRgb oddRows)
{
    QImage picture(format.width, format.height, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, y % 2 == 0 ? evenRows : oddRows);
    return picture;
}

TEST(ClassicSampleFormats, StoreColoursInStudioRangeWithTheEvenRowsFirst)
{
    const ClassicFormat format = classicFormats[0];
    struct Row {
        QRgb color;
        QByteArray bytes; ///< of two pixels
    };
    const QRgb black = qRgb(0, 0, 0);
    for (const Row &row :
         {Row{black, "\x80\x10\x80\x10"}, //
          Row{qRgb(255, 255, 255), "\x80\xeb\x80\xeb"}, Row{qRgb(255, 0, 0), "\x5a\x51\xf0\x51"},
          Row{qRgb(0, 255, 0), "\x36\x91\x22\x91"}, Row{qRgb(0, 0, 255), "\xf0\x29\x6e\x29"}}) {
        const QByteArray field = row.bytes.repeated(360 * 240);
        const QByteArray blackField = QByteArray("\x80\x10\x80\x10").repeated(360 * 240);
        EXPECT_TRUE(format.frame(frameOf(format, row.color, black)) == field + blackField);
        EXPECT_TRUE(format.frame(frameOf(format, black, row.color)) == blackField + field);
    }
}

TEST(ClassicSampleFormats, StoreWordsWithRedHighest)
{
    const ClassicFormat format = classicFormats[3];
    struct Row {
        QRgb color;
        QByteArray bytes; ///< of a pixel
    };
    for (const Row &row :
         {Row{qRgb(255, 0, 0), QByteArray("\x00\xf8", 2)}, Row{qRgb(0, 255, 0), "\xe0\x07"},
          Row{qRgb(0, 0, 255), QByteArray("\x1f\x00", 2)}, Row{qRgb(0x88, 0x44, 0x20), "\x24\x8a"}})
        EXPECT_TRUE(format.frame(frameOf(format, row.color, row.color)) ==
                    row.bytes.repeated(50 * 41));
}

} // namespace
