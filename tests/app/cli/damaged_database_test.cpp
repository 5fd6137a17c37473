#include "support/program_fixture.h"
#include "support/raw_pages.h"

#include <gtest/gtest.h>

namespace {

constexpr int pageSize = 512;

// A device whose photo database lacks one page in the middle of its videos.
class DamagedDatabase : public ProgramTest
{
protected:
    DamagedDatabase()
    {
        PhotosDatabase database;
        for (int pk = 1; pk <= 40; ++pk) {
            database.rows.assets.push_back(videoRow(pk, pk));
            database.rows.assets.back().fileName = "IMG_" + std::to_string(100 + pk) + ".MOV";
        }
        QByteArray bytes = inPagesOf(pageSize, database.bytes());
        const int page = bytes.indexOf("IMG_120.MOV") / pageSize;
        bytes.replace(page * pageSize, pageSize, QByteArray(pageSize, '\0'));
        m_scratch.write("device/PhotoData/Photos.sqlite", bytes);
    }

    QByteArray damage() const
    {
        return "photolib: " + m_scratch.path("device/PhotoData/Photos.sqlite") +
               ": damaged; only a part of the library can be read\n";
    }

    // What a command prints all the same; expects that it tells of the damage once, after
    // `firstErrors`, and fails.
    QByteArray shown(const QList<QByteArray> &arguments,
                     const QByteArray &firstErrors = QByteArray())
    {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(1, result.exitCode) << arguments[0].constData();
        EXPECT_EQ(firstErrors + damage(), result.errors) << arguments[0].constData();
        return result.output;
    }
};

TEST_F(DamagedDatabase, IsToldByEveryCommandThatLists)
{
    EXPECT_TRUE(shown({"info", "-d", device()}).contains("Videos:"));
    const QByteArray photos = shown({"photos", "-d", device()});
    EXPECT_TRUE(photos.contains("IMG_101.MOV"));
    EXPECT_FALSE(photos.contains("IMG_120.MOV"));
    EXPECT_TRUE(shown({"albums", "-d", device()}).contains("PHOTOS"));
    EXPECT_TRUE(shown({"show", "1", "-d", device()}).contains("IMG_101.MOV"));
    EXPECT_TRUE(shown({"dump", "-d", device()}).contains("\"photoIds\": [1,2"));
}

TEST_F(DamagedDatabase, IsToldBesideWhatIsWritten)
{
    shown({"sheet", "-d", device(), "-o", m_scratch.path("sheet.png")},
          "photolib: 14 videos have no thumbnail on the device, and photolib makes none of "
          "videos\n");
    EXPECT_TRUE(m_scratch.exists("sheet.png"));
}

TEST_F(DamagedDatabase, IsToldBeforeAnIdThatIsNotFound)
{
    const ProgramResult result = run({"show", "20", "-d", device()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(damage() + "photolib: 20: no photo with this id in " + device() + '\n',
              result.errors);
}

} // namespace
