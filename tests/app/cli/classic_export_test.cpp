#include "support/classic_fixture.h"
#include "support/export_fixture.h"
#include "support/json.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// Photos of which the iPod has an original, none, and one that is named and not there.
class ClassicExport : public ClassicProgramTest
{
protected:
    ClassicExport() { writeThreePhotos(); }

    QByteArray out() const { return m_scratch.path("out"); }

    QList<QByteArray> exported(const QList<QByteArray> &options)
    {
        std::filesystem::remove_all(out().toStdString());
        m_result =
            run(QList<QByteArray>{"export", "-d", device()} + options + QList<QByteArray>{out()});
        EXPECT_EQ(0, m_result.exitCode) << m_result.errors.constData();
        return exportedFiles(m_scratch, "out");
    }

    ProgramResult m_result;
};

// Nothing is to be lost with an original that is gone.
TEST_F(ClassicExport, HasStoredPicturesOnlyWhereThereIsNoOriginal)
{
    EXPECT_EQ(
        (QList<QByteArray>{"101.bmp", "2005/08/IMG_0041.JPG", "2006/01/IMG_0042_320x240.bmp"}),
        exported({}));
    EXPECT_EQ("Copied 3 files (450.1 KiB), 0 unchanged, 1 not on the device\n", m_result.output);
}

TEST_F(ClassicExport, HasTheLargestPictureOfEachPhotoOnRequest)
{
    EXPECT_EQ((QList<QByteArray>{"101.bmp", "2005/08/IMG_0041.JPG", "2005/08/IMG_0041_320x240.bmp",
                                 "2006/01/IMG_0042_320x240.bmp"}),
              exported({"--stored", "largest"}));
}

TEST_F(ClassicExport, HasAllPicturesOnRequest)
{
    EXPECT_EQ((QList<QByteArray>{"101.bmp", "101_50x41.bmp", "2005/08/IMG_0041.JPG",
                                 "2005/08/IMG_0041_320x240.bmp", "2005/08/IMG_0041_50x41.bmp",
                                 "2006/01/IMG_0042_320x240.bmp"}),
              exported({"--stored", "all"}));
}

TEST_F(ClassicExport, HasOriginalsAloneOnRequest)
{
    EXPECT_EQ(QList<QByteArray>{"2005/08/IMG_0041.JPG"}, exported({"--stored", "none"}));
    EXPECT_EQ("Copied 1 file (8 bytes), 0 unchanged, 1 not on the device\n", m_result.output);
}

TEST_F(ClassicExport, ReportsWithTheRolesOriginalAndStored)
{
    exported({"--report", m_scratch.path("report")});
    QList<QByteArray> reported;
    for (const QByteArray &line : m_scratch.read("report").trimmed().split('\n')) {
        const Json file = Json::parse(line);
        EXPECT_EQ("null", file["uuid"].text());
        reported.append(QByteArray::fromStdString(file["id"].text() + ' ' +
                                                  file["role"].get<std::string>() + ' ' +
                                                  file["status"].get<std::string>()));
    }
    EXPECT_EQ((QList<QByteArray>{"100 original copied", "101 stored copied",
                                 "104 original notOnDevice", "104 stored copied"}),
              reported);
}

TEST_F(ClassicExport, HasFoldersOfAlbums)
{
    const QList<QByteArray> files = exported({"--albums", "link", "--stored", "none"});
    EXPECT_TRUE(files.contains("2005/08/IMG_0041.JPG"));
    EXPECT_EQ(1, std::count_if(files.begin(), files.end(), [](const QByteArray &name) {
                  return name.startsWith("Albums/Gr");
              }));
}

} // namespace
