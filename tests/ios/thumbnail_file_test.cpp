#include "ios/thumbnail_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using thumbnail::Format;
using thumbnail::formats;

namespace {

// Differs from every row of the table.
const ThumbType Untouched = {1, 2, 3, 4};

class ThumbnailFile : public ThumbnailFixture
{
protected:
    void addFilesFrom(std::size_t first)
    {
        for (std::size_t i = first; i < formats().size(); ++i)
            host.setDeviceFile(formats()[i].path, "");
    }

    // The opens up to that of the format `found`, which succeeds.
    static Lines opensUpTo(std::size_t found)
    {
        Lines lines;
        for (std::size_t i = 0; i < found; ++i)
            lines.push_back(openLine(formats()[i].path));
        lines.push_back(openLine(formats()[found].path, "file1"));
        return lines;
    }
};

class ThumbnailFileFormat : public ThumbnailFile, public testing::WithParamInterface<Format>
{
protected:
    static std::size_t place()
    {
        std::size_t i = 0;
        while (formats()[i].path != GetParam().path)
            ++i;
        return i;
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, ThumbnailFileFormat, testing::ValuesIn(formats()),
                         rowName<Format>);

TEST_P(ThumbnailFileFormat, IsTakenWhenTheDeviceHasItAlone)
{
    host.setDeviceFile(GetParam().path, "");
    ThumbType type = Untouched;
    EXPECT_NE(manager->decideThmbFile(&type), nullptr);
    EXPECT_EQ(type, GetParam().type);
    EXPECT_EQ(type.dataSize, type.rowPixels * type.height * 2);
    EXPECT_EQ(host.trace(), opensUpTo(place()));
}

TEST_P(ThumbnailFileFormat, IsTakenBeforeThoseThatFollowIt)
{
    addFilesFrom(place());
    ThumbType type = Untouched;
    EXPECT_NE(manager->decideThmbFile(&type), nullptr);
    EXPECT_EQ(type, GetParam().type);
    EXPECT_EQ(host.trace(), opensUpTo(place()));
    EXPECT_EQ(host.openHandles(), (Lines{"dev1", "file1"}));
}

TEST_P(ThumbnailFileFormat, ServesItsRecords)
{
    const thumbnail::Extent extent = {GetParam().type.width - 3, GetParam().type.height - 5};
    host.setDeviceFile(GetParam().path, thumbnail::record(GetParam().type, extent));
    const Answer answer = request();
    EXPECT_EQ(answer.result, 0);
    EXPECT_TRUE(thumbnail::sameBytes(answer.out, thumbnail::image(GetParam().type, extent)));
    EXPECT_EQ(manager->m_thmbType, GetParam().type);
}

TEST_F(ThumbnailFile, IsNoneWhenTheDeviceHasNoneOfThem)
{
    host.setDeviceFile("/PhotoData/Thumbnails/64x64.ithmb", "");
    host.setDeviceFile("PhotoData/Thumbnails/3309.ithmb", "");
    ThumbType type = Untouched;
    EXPECT_EQ(manager->decideThmbFile(&type), nullptr);
    EXPECT_EQ(type, Untouched);
    Lines expected;
    for (const Format &format : formats())
        expected.push_back(openLine(format.path));
    EXPECT_EQ(host.trace(), expected);
}

TEST_F(ThumbnailFile, IsTheNextWhenOneDoesNotOpen)
{
    addFilesFrom(1);
    host.failFileOpen(formats()[1].path, 0);
    ThumbType type = Untouched;
    EXPECT_NE(manager->decideThmbFile(&type), nullptr);
    EXPECT_EQ(type, formats()[2].type);
}

TEST_F(ThumbnailFile, IsNoneWithoutADevice)
{
    addFilesFrom(0);
    closeDevice();
    ThumbType type = Untouched;
    EXPECT_EQ(manager->decideThmbFile(&type), nullptr);
    EXPECT_EQ(type, Untouched);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(ThumbnailFile, IsChosenAnewByEachCallOnItsOwn)
{
    host.setDeviceFile(formats()[7].path, "");
    ThumbType type = Untouched;
    VFile *first = manager->decideThmbFile(&type);
    host.setDeviceFile(formats()[3].path, "");
    VFile *second = manager->decideThmbFile(&type);
    EXPECT_NE(first, second);
    EXPECT_EQ(type, formats()[3].type);
    EXPECT_EQ(manager->m_pThmbFile, nullptr);
}

} // namespace
