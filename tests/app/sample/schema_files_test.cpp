#include "sample/sample_fixture.h"

#include <QImage>
#include <QtEndian>

#include <map>

namespace {

/// A sample of a newer system, with its files.
class SampleFiles : public testing::TestWithParam<SampleSchema>
{
protected:
    const char *assetTable() const
    {
        return GetParam() == SampleSchema::V13 ? "ZGENERICASSET" : "ZASSET";
    }
    const char *editColumn() const
    {
        return GetParam() < SampleSchema::V18 ? "ZHASADJUSTMENTS" : "ZADJUSTMENTSSTATE";
    }

    /// `columns` of the assets that meet `condition`.
    QVector<SqlRow> assets(const QByteArray &columns, const QByteArray &condition) const
    {
        const QByteArray sql =
            "select " + columns + " from " + assetTable() + " where " + condition;
        return m_database.rows(sql.constData());
    }
    QString file(const SqlRow &row) const { return row.at(0) + QLatin1Char('/') + row.at(1); }
    QString stem(const SqlRow &row) const { return QFileInfo(file(row)).completeBaseName(); }
    bool exists(const QString &relative) const { return QFile::exists(m_sample.path(relative)); }

    QString edits(const SqlRow &row) const
    {
        return QStringLiteral("PhotoData/Mutations/%1/%2/Adjustments/").arg(row.at(0), stem(row));
    }

    /// The values of the first directory of a little-endian TIFF file, by tag.
    static QMap<int, quint32> tiffTags(const QByteArray &bytes)
    {
        EXPECT_TRUE(bytes.startsWith(QByteArray("II*\0", 4)));
        const auto at = [&bytes](int offset) { return bytes.constData() + offset; };
        const int directory = qFromLittleEndian<qint32>(at(4));
        const int count = qFromLittleEndian<quint16>(at(directory));
        QMap<int, quint32> tags;
        for (int i = 0; i < count; ++i) {
            const char *const entry = at(directory + 2 + 12 * i);
            tags[qFromLittleEndian<quint16>(entry)] = qFromLittleEndian<quint32>(entry + 8);
        }
        return tags;
    }

    /// Three outings, written once: no test changes them.
    static const WrittenSample &sampleOf(SampleSchema schema)
    {
        static std::map<SampleSchema, std::unique_ptr<WrittenSample>> samples;
        std::unique_ptr<WrittenSample> &sample = samples[schema];
        if (!sample)
            sample = std::make_unique<WrittenSample>(sampleOptions(57, true, 1, schema));
        return *sample;
    }

    const WrittenSample &m_sample = sampleOf(GetParam());
    SampleDatabase m_database{m_sample};
};

INSTANTIATE_TEST_SUITE_P(Of, SampleFiles,
                         testing::Values(SampleSchema::V13, SampleSchema::V14, SampleSchema::V26),
                         [](const auto &info) {
                             return std::string(info.param == SampleSchema::V13   ? "V13"
                                                : info.param == SampleSchema::V14 ? "V14"
                                                                                  : "V26");
                         });

TEST_P(SampleFiles, HaveAFilmBesideEveryLivePhoto)
{
    const QVector<SqlRow> photos =
        assets("ZDIRECTORY, ZFILENAME", "ZKIND = 0 and ZKINDSUBTYPE = 2");
    QStringList extensions;
    for (const SqlRow &photo : photos) {
        EXPECT_TRUE(exists(file(photo)));
        const QString film = QStringLiteral("%1/%2.").arg(photo.at(0), stem(photo));
        const QString extension =
            exists(film + QLatin1String("mov")) ? QStringLiteral("mov") : QStringLiteral("MOV");
        extensions.append(extension);
        EXPECT_TRUE(m_sample.bytes(film + extension).mid(4).startsWith("ftyp"));
    }
    EXPECT_EQ(QStringList({"MOV", "mov", "MOV"}), extensions);
}

TEST_P(SampleFiles, HaveTheEditedPictureOfEveryEditedPhoto)
{
    const QVector<SqlRow> photos = assets("ZDIRECTORY, ZFILENAME, ZWIDTH, ZHEIGHT",
                                          QByteArray(editColumn()) + " != 0 and ZKIND = 0");
    EXPECT_EQ(photos.size(), 4);
    for (const SqlRow &photo : photos) {
        const QImage edited(m_sample.path(edits(photo) + QLatin1String("FullSizeRender.jpg")));
        EXPECT_EQ(edited.width(), photo.at(2).toInt());
        EXPECT_EQ(edited.height(), photo.at(3).toInt());
        const QImage original(m_sample.path(file(photo)));
        EXPECT_FALSE(original.isGrayscale());
        EXPECT_TRUE(edited.isGrayscale());
        EXPECT_TRUE(m_sample.bytes(edits(photo) + QLatin1String("Adjustments.plist"))
                        .contains("<key>adjustmentFormatIdentifier</key>"));
    }
}

TEST_P(SampleFiles, HaveTheEditedFilmOfEveryEditedVideoAndLivePhoto)
{
    const QVector<SqlRow> films =
        assets("ZDIRECTORY, ZFILENAME",
               QByteArray(editColumn()) + " != 0 and (ZKIND = 1 or ZKINDSUBTYPE = 2)");
    EXPECT_EQ(films.size(), 2);
    for (const SqlRow &film : films) {
        EXPECT_TRUE(m_sample.bytes(edits(film) + QLatin1String("FullSizeRender.mov"))
                        .mid(4)
                        .startsWith("ftyp"));
        EXPECT_TRUE(exists(edits(film) + QLatin1String("Adjustments.plist")));
    }
}

TEST_P(SampleFiles, HaveNoOtherEdits)
{
    const QStringList mutations =
        m_sample.files().filter(QRegExp(QStringLiteral("^PhotoData/Mutations/")));
    EXPECT_EQ(mutations.size(), 3 * 2 + 3 + 2); // of three photos, a Live Photo and a video
}

TEST_P(SampleFiles, NoteSomeEditsBesideTheOriginals)
{
    const QStringList recipes = m_sample.files().filter(QRegExp(QStringLiteral("\\.AAE$")));
    EXPECT_EQ(QStringList({"DCIM/100APPLE/IMG_0004.AAE", "DCIM/101APPLE/IMG_0044.AAE"}), recipes);
    for (const QString &recipe : recipes)
        EXPECT_TRUE(m_sample.bytes(recipe).contains("<key>adjustmentFormatIdentifier</key>"));
}

TEST_P(SampleFiles, HaveTheRawDataOfSomeImports)
{
    const QStringList files = m_sample.files().filter(QRegExp(QStringLiteral("\\.DNG$")));
    EXPECT_EQ(QStringList({"DCIM/100APPLE/IMG_0010.DNG", "DCIM/101APPLE/IMG_0050.DNG"}), files);
    for (const QString &file : files) {
        const QMap<int, quint32> tags = tiffTags(m_sample.bytes(file));
        const quint32 width = tags[256], height = tags[257], offset = tags[273], count = tags[279];
        EXPECT_EQ(width * height, count);
        EXPECT_EQ(offset + count, quint32(m_sample.bytes(file).size()));
        EXPECT_EQ(0x0401u, tags[50706]); // the version that makes it a DNG file
    }
}

TEST_P(SampleFiles, LackTheFilesThatAreElsewhere)
{
    int missing = 0;
    for (const SqlRow &asset : assets("ZDIRECTORY, ZFILENAME, ZSAVEDASSETTYPE, Z_PK", "1")) {
        if (exists(file(asset)))
            continue;
        ++missing;
        const bool isElsewhere = asset.at(2) == QLatin1String("6") ||
                                 asset.at(2) == QLatin1String("10") ||
                                 asset.at(3) == QLatin1String("8"); // whose file got lost
        EXPECT_TRUE(isElsewhere) << file(asset).toStdString();
    }
    EXPECT_EQ(missing, GetParam() == SampleSchema::V13 ? 2 : 4);
}

TEST_P(SampleFiles, RunAsLongAsTheDatabaseSays)
{
    const QVector<SqlRow> films =
        assets("ZDIRECTORY, ZFILENAME, round(1000000 * ZDURATION)", "ZKIND = 1");
    EXPECT_EQ(films.size(), 7);
    for (const SqlRow &film : films) {
        const QByteArray bytes = m_sample.bytes(file(film));
        const int header = bytes.indexOf("mvhd");
        ASSERT_GE(header, 0) << file(film).toStdString();
        const auto word = [&](int at) {
            return qFromBigEndian<quint32>(bytes.constData() + header + at);
        };
        EXPECT_EQ(film.at(2).toDouble(), qRound(1000000.0 * word(20) / word(16)));
    }
    for (const SqlRow &photo : assets("ZDURATION", "ZKIND = 0"))
        EXPECT_EQ(photo.at(0).toDouble(), 0);
}

TEST_P(SampleFiles, PackThumbnailsWithTheUuidOfTheirAsset)
{
    constexpr int pixels = 2 * 120 * 120;
    constexpr int recordSize = pixels + 28;
    const char *const name = GetParam() == SampleSchema::V13 ? "120x120" : "4031";
    const QByteArray packed =
        m_sample.bytes(QStringLiteral("PhotoData/Thumbnails/%1.ithmb").arg(QLatin1String(name)));
    const QByteArray hexUuid =
        GetParam() == SampleSchema::V13 ? "hex(ZUUID)" : "replace(ZUUID, '-', '')";
    const QVector<SqlRow> rows =
        assets("ZTHUMBNAILINDEX, " + hexUuid + ", ZWIDTH, ZHEIGHT", "ZTHUMBNAILINDEX >= 0");
    EXPECT_EQ(packed.size(), rows.size() * recordSize);
    for (const SqlRow &row : rows) {
        const QByteArray footer = packed.mid(row.at(0).toInt() * recordSize + pixels, 28);
        ASSERT_EQ(footer.size(), 28);
        EXPECT_EQ(footer.left(16).toHex().toUpper(), row.at(1).toLatin1());
        const auto word = [&](int at) {
            return qFromLittleEndian<qint32>(footer.constData() + at);
        };
        EXPECT_EQ(qMax(word(16), word(20)), qMin(120, qMax(row.at(2).toInt(), row.at(3).toInt())));
        EXPECT_EQ(word(16) > word(20), row.at(2).toInt() > row.at(3).toInt());
        EXPECT_EQ(word(24), 0);
    }
}

} // namespace
