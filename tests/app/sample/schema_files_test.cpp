#include "sample/sample_fixture.h"

#include <QImage>
#include <QtEndian>

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

    WrittenSample m_sample{sampleOptions(57, true, 1, GetParam())}; // three outings
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
    EXPECT_EQ(photos.size(), 3);
    for (const SqlRow &photo : photos) {
        EXPECT_TRUE(exists(file(photo)));
        EXPECT_TRUE(m_sample.bytes(QStringLiteral("%1/%2.MOV").arg(photo.at(0), stem(photo)))
                        .mid(4)
                        .startsWith("ftyp"));
    }
}

TEST_P(SampleFiles, HaveTheEditedPictureOfEveryEditedPhoto)
{
    const QVector<SqlRow> photos =
        assets("ZDIRECTORY, ZFILENAME, ZWIDTH, ZHEIGHT", QByteArray(editColumn()) + " != 0");
    EXPECT_EQ(photos.size(), 3);
    for (const SqlRow &photo : photos) {
        const QString folder =
            QStringLiteral("PhotoData/Mutations/%1/%2/Adjustments/").arg(photo.at(0), stem(photo));
        const QImage edited(m_sample.path(folder + QLatin1String("FullSizeRender.jpg")));
        EXPECT_EQ(edited.width(), photo.at(2).toInt());
        EXPECT_EQ(edited.height(), photo.at(3).toInt());
        const QImage original(m_sample.path(file(photo)));
        EXPECT_FALSE(original.isGrayscale());
        EXPECT_TRUE(edited.isGrayscale());
        EXPECT_TRUE(m_sample.bytes(folder + QLatin1String("Adjustments.plist"))
                        .contains("<key>adjustmentFormatIdentifier</key>"));
    }
    const QStringList mutations =
        m_sample.files().filter(QRegExp(QStringLiteral("^PhotoData/Mutations/")));
    EXPECT_EQ(mutations.size(), 6);
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
