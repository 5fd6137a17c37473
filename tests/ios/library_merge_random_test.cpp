#include "ios/parse_fixture.h"
#include "ios/reference_merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

// Libraries drawn at random, the same for the same seed on every machine.
class Draw
{
public:
    explicit Draw(unsigned seed) : m_engine(seed) {}

    int below(int bound) { return static_cast<int>(m_engine() % static_cast<unsigned>(bound)); }

    template <typename Value>
    Value from(const std::vector<Value> &values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

    QByteArray bytes(int size)
    {
        QByteArray drawn(size, '\0');
        for (int i = 0; i < size; ++i)
            drawn[i] = static_cast<char>(below(6) == 0 ? 0 : below(256));
        return drawn;
    }

    // `count` different keys, some of them negative.
    std::vector<int> keys(int count)
    {
        std::vector<int> all(60);
        std::iota(all.begin(), all.end(), -8);
        for (std::size_t i = all.size(); i > 1; --i)
            std::swap(all[i - 1], all[static_cast<std::size_t>(below(static_cast<int>(i)))]);
        all.erase(std::remove(all.begin(), all.end(), 0), all.end());
        all.resize(static_cast<std::size_t>(count));
        return all;
    }

private:
    std::mt19937 m_engine;
};

AssetRow drawAsset(Draw &draw, int key)
{
    AssetRow row = draw.below(4) == 0 ? videoRow(key) : photoRow(key);
    row.kindSubtype = draw.below(3);
    row.modificationDate = draw.below(20);
    row.directory = draw.from<std::string>(
        {"DCIM/100APPLE", "Media/DCIM", "dcim/100APPLE", "PhotoData/Sync", ""});
    row.uuid = draw.bytes(1 + draw.below(16));
    return row;
}

void drawAssets(Draw &draw, PhotosDatabase &database)
{
    database.rows.assets.clear();
    for (const int key : draw.keys(draw.below(40)))
        database.rows.assets.push_back(drawAsset(draw, key));
}

// With members that are assets, that are none, and that come again.
void drawAlbums(Draw &draw, PhotosDatabase &database, bool mayHaveCameraRoll)
{
    database.rows.albums.clear();
    database.join().rows.clear();
    std::vector<int> kinds = {2, 1550, 1001, 1500, 1599};
    if (mayHaveCameraRoll)
        kinds.push_back(1000);
    const std::vector<int> keys = draw.keys(1 + draw.below(8));
    for (const int key : keys) {
        AlbumRow row = albumRow(key, draw.from(kinds));
        row.trashedState = draw.from<int>({0, 0, 0, 1, 2});
        row.uuid = draw.bytes(1 + draw.below(16));
        database.rows.albums.push_back(row);
    }
    for (int i = draw.below(120); i > 0; --i)
        database.join().add(draw.from(keys), draw.below(60) - 8);
}

class RandomLibraryMerge : public ParseFixture
{
protected:
    // One more parse of a fresh library, beside the reference's.
    void parseDrawn(Draw &draw, ReferenceMerge &reference)
    {
        drawAssets(draw, database);
        drawAlbums(draw, database, draw.below(2) == 0);
        host.clearRecords();
        reference.lines.clear();
        ASSERT_TRUE(parse());
        reference.parse(*manager->m_pCameraDB);
        expectAsIn(reference);
    }

    void expectAsIn(const ReferenceMerge &reference)
    {
        EXPECT_EQ(manager->m_listAlbumIDs, reference.albumIds);
        EXPECT_EQ(manager->m_mapAlbum2Photos, reference.albumPhotos);
        EXPECT_EQ(manager->m_mapUsedUUID, reference.usedUuids);
        Log expected;
        for (const QByteArray &line : reference.lines)
            expected.push_back(notice(line));
        EXPECT_EQ(mergeLog(), expected);
        m_lines += reference.lines.size();
    }

    int m_lines = 0;
};

TEST_F(RandomLibraryMerge, GivesTheListsUuidsAndLinesOfThePlainScans)
{
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Draw draw(seed);
        renewManager();
        ReferenceMerge reference(photo_manager::m_photoLibUUID);
        parseDrawn(draw, reference);
    }
    EXPECT_GT(m_lines, 500) << "the draws are not worth much";
}

TEST_F(RandomLibraryMerge, GivesThemAlsoAfterEarlierParsesOfTheSameManager)
{
    ReferenceMerge reference(photo_manager::m_photoLibUUID);
    Draw draw(4711);
    for (int i = 1; i <= 40 && !HasFailure(); ++i) {
        SCOPED_TRACE("parse " + std::to_string(i));
        parseDrawn(draw, reference);
    }
    EXPECT_GT(m_lines, 500) << "the draws are not worth much";
}

} // namespace
