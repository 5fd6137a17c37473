#include "support/classic_fixture.h"
#include "support/opened_library.h"

#include <gtest/gtest.h>

namespace {

class ClassicCatalog : public ClassicProgramTest
{
protected:
    void open()
    {
        m_scratch.makeFolder("work");
        m_opened =
            std::make_unique<OpenedLibrary>(m_scratch.path("device"), m_scratch.path("work"));
    }

    const Catalog &catalog() const { return m_opened->session.catalog(); }

    std::unique_ptr<OpenedLibrary> m_opened;
};

TEST_F(ClassicCatalog, ListsPhotosByTheirIds)
{
    addPhoto(104);
    addPhoto(100);
    addPhoto(4294967295U);
    writeDevice();
    open();
    ASSERT_EQ(3U, catalog().assets.size());
    EXPECT_EQ(100, catalog().assets[0].id);
    EXPECT_EQ(104, catalog().assets[1].id);
    EXPECT_EQ(4294967295, catalog().assets[2].id);
}

TEST_F(ClassicCatalog, TellsWhatTheDatabaseDoes)
{
    writeThreePhotos();
    open();
    const Asset *const first = catalog().asset(100);
    ASSERT_TRUE(first);
    EXPECT_EQ("Photos/Full Resolution/2005/08/06/IMG_0041.JPG", first->path());
    EXPECT_EQ(1123323630.0 - 978307200.0, first->taken);
    EXPECT_FALSE(first->utcOffset);
    EXPECT_EQ(4100 + 153600, first->size);
    EXPECT_EQ(320, first->width);
    EXPECT_EQ(240, first->height);
    EXPECT_FALSE(first->favorite);
    EXPECT_EQ((std::vector<qint64>{1, 2}), first->albums);
}

TEST_F(ClassicCatalog, KnowsNeitherNameNorDateWhereThereIsNone)
{
    writeThreePhotos();
    open();
    const Asset *const second = catalog().asset(101);
    ASSERT_TRUE(second);
    EXPECT_TRUE(second->path().isNull());
    EXPECT_FALSE(second->taken);
}

TEST_F(ClassicCatalog, ListsAlbumsInTheirOwnOrder)
{
    writeThreePhotos();
    open();
    const Album *const album = catalog().album(2);
    ASSERT_TRUE(album);
    EXPECT_EQ(QByteArray("Gr\xc3\xbcn \x1b[2J"), album->title);
    EXPECT_EQ((std::vector<qint64>{104, 100}), album->assets);
}

} // namespace
