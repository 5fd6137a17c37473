#include "sample/sample_fixture.h"

#include <QImage>
#include <QtEndian>

namespace {

/// The content of the atom at the end of `path` (four-letter types, one after the other), or a
/// null array. Each atom's size is checked against that of the one around it.
QByteArray atomContent(QByteArray content, const QStringList &path)
{
    for (const QString &type : path) {
        int at = 0;
        QByteArray found;
        while (at + 8 <= content.size()) {
            const auto size = qFromBigEndian<quint32>(content.constData() + at);
            if (size < 8 || size > static_cast<quint32>(content.size() - at))
                return {};
            if (content.mid(at + 4, 4) == type.toLatin1() && found.isNull())
                found = content.mid(at + 8, static_cast<int>(size) - 8);
            at += static_cast<int>(size);
        }
        if (at != content.size() || found.isNull())
            return {};
        content = found;
    }
    return content;
}

const QStringList sampleTable = {QStringLiteral("moov"), QStringLiteral("trak"),
                                 QStringLiteral("mdia"), QStringLiteral("minf"),
                                 QStringLiteral("stbl")};

/// The 32-bit word `index` of an atom's content, from 0; 0 behind its end.
quint32 word(const QByteArray &content, int index)
{
    return content.size() < 4 * (index + 1)
               ? 0
               : qFromBigEndian<quint32>(content.constData() + qptrdiff{4} * index);
}

struct Film {
    QByteArray file;

    QByteArray table(const char *type) const
    {
        return atomContent(file, sampleTable + QStringList{QLatin1String(type)});
    }

    /// The frames where the sample table says that they are.
    QVector<QByteArray> frames() const
    {
        QVector<QByteArray> frames;
        const QByteArray sizes = table("stsz");
        auto at = static_cast<int>(word(table("stco"), 2));
        for (int i = 0; i < static_cast<int>(word(sizes, 2)); ++i) {
            const auto size = static_cast<int>(word(sizes, 3 + i));
            frames.append(file.mid(at, size));
            at += size;
        }
        return frames;
    }

    quint32 ticksOfFrames() const
    {
        const QByteArray times = table("stts");
        quint32 sum = 0;
        for (int run = 0; run < static_cast<int>(word(times, 1)); ++run)
            sum += word(times, 2 + 2 * run) * word(times, 3 + 2 * run);
        return sum;
    }
};

class SampleMovies : public testing::Test
{
protected:
    WrittenSample m_sample{sampleOptions(24, true)};
    SampleDatabase m_database{m_sample};

    QVector<SqlRow> videos() const
    {
        return m_database.rows("select ZDIRECTORY, ZFILENAME, round(T.ZDURATION * 600), "
                               "ZWIDTH, ZHEIGHT from ZGENERICASSET A "
                               "join ZADDITIONALASSETATTRIBUTES T on T.ZASSET = A.Z_PK "
                               "where ZKIND = 1");
    }

    Film film(const SqlRow &video) const
    {
        return {m_sample.bytes(video.at(0) + QLatin1Char('/') + video.at(1))};
    }
};

TEST_F(SampleMovies, LastAsLongAsTheDatabaseSays)
{
    ASSERT_EQ(videos().size(), 3);
    for (const SqlRow &video : videos()) {
        const Film film = this->film(video);
        const auto ticks = static_cast<quint32>(video.at(2).toDouble());
        EXPECT_TRUE(
            atomContent(film.file, {QStringLiteral("ftyp")}).startsWith(QByteArray("qt  ")));
        const QByteArray movie =
            atomContent(film.file, {QStringLiteral("moov"), QStringLiteral("mvhd")});
        EXPECT_EQ(movie.size(), 100);
        EXPECT_EQ(word(movie, 3), 600U);
        EXPECT_EQ(word(movie, 4), ticks);
        const QByteArray media =
            atomContent(film.file, {QStringLiteral("moov"), QStringLiteral("trak"),
                                    QStringLiteral("mdia"), QStringLiteral("mdhd")});
        EXPECT_EQ(word(media, 4), ticks);
        EXPECT_EQ(film.ticksOfFrames(), ticks);
    }
}

TEST_F(SampleMovies, HoldJpegFramesWhereTheTablesSay)
{
    for (const SqlRow &video : videos()) {
        const Film film = this->film(video);
        const QVector<QByteArray> frames = film.frames();
        EXPECT_GE(frames.size(), 2);
        QByteArray joined;
        for (const QByteArray &frame : frames) {
            const QImage picture = QImage::fromData(frame, "JPEG");
            EXPECT_EQ(picture.width(), video.at(3).toInt());
            EXPECT_EQ(picture.height(), video.at(4).toInt());
            joined += frame;
        }
        EXPECT_EQ(joined, atomContent(film.file, {QStringLiteral("mdat")}));
        EXPECT_NE(frames.first(), frames.last());
        EXPECT_EQ(film.table("stsd").mid(12, 4), QByteArray("jpeg"));
    }
}

TEST_F(SampleMovies, HaveAPosterBesideTheLibrary)
{
    for (const SqlRow &video : videos()) {
        QString poster = QStringLiteral("PhotoData/Metadata/%1/%2").arg(video.at(0), video.at(1));
        poster.replace(QStringLiteral("MOV"), QStringLiteral("JPG"));
        const QImage picture(m_sample.path(poster));
        EXPECT_EQ(picture.width(), video.at(3).toInt()) << poster.toStdString();
        EXPECT_EQ(picture.height(), video.at(4).toInt()) << poster.toStdString();
    }
}

TEST_F(SampleMovies, AccompanyLivePhotos)
{
    const QStringList photos = m_database.column("select ZDIRECTORY || '/' || ZFILENAME "
                                                 "from ZGENERICASSET where ZKINDSUBTYPE = 2");
    ASSERT_EQ(photos.size(), 1);
    QString name = photos.first();
    const Film film{m_sample.bytes(name.replace(QStringLiteral(".JPG"), QStringLiteral(".MOV")))};
    EXPECT_EQ(film.ticksOfFrames(), 1800U);
    EXPECT_FALSE(QImage::fromData(film.frames().value(0), "JPEG").isNull());
}

} // namespace
