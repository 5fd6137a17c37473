#include "ios/album_fixture.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Ids = QList<quint64>;

const quint64 Key = 41;

// --- The same, told as plainly as it can be: every membership is a scan of the list itself.

// Each element of `keys` that `wanted` lacks, in order.
Ids missingFrom(const Ids &wanted, const Ids &keys)
{
    Ids missing;
    for (const quint64 key : keys) {
        if (!wanted.contains(key))
            missing.append(key);
    }
    return missing;
}

Ids without(Ids keys, const Ids &removed)
{
    for (const quint64 key : removed)
        keys.removeAll(key);
    return keys;
}

// --- Small lists drawn at random, the same for the same seed on every machine.

class Draw
{
public:
    explicit Draw(unsigned seed) : m_engine(seed) {}

    int below(int bound) { return static_cast<int>(m_engine() % static_cast<unsigned>(bound)); }

    quint64 key()
    {
        const quint64 negative = 0xffffffff80000000;
        const quint64 small = static_cast<quint64>(below(9));
        switch (below(6)) {
        case 0:
            return negative + small;
        case 1:
            return (quint64(1) << 32) + small;
        default:
            return small;
        }
    }

    Ids keys(int most)
    {
        Ids drawn;
        for (int count = below(most + 1); count > 0; --count)
            drawn.append(key());
        return drawn;
    }

private:
    std::mt19937 m_engine;
};

class RandomAlbums : public AlbumFixture
{
protected:
    void renew(const Ids &assets, const Ids &members, const Ids &inLibrary)
    {
        dropModel();
        manager.m_pCameraDB = new CameraDB();
        manager.m_listAlbumIDs.clear();
        for (const quint64 key : assets) {
            if (!model().assets.contains(key))
                addAsset(key);
        }
        addSyntheticAlbums(inLibrary);
        record = addListedAlbum(Key, members);
    }

    Camera_Album *record = nullptr;
};

TEST_F(RandomAlbums, AreFetchedLikeInAPlainWalk)
{
    for (unsigned seed = 0; seed < 400; ++seed) {
        Draw draw(seed);
        const Ids members = draw.keys(20);
        renew(draw.keys(12), members, Ids());
        const Ids stale = missingFrom(model().assets.keys(), members);
        albumItem album;
        album.photoIDs = draw.keys(3);
        const Ids expected = album.photoIDs + without(members, stale);
        ASSERT_TRUE(manager.getAlbum(Key, &album)) << seed;
        ASSERT_EQ(album.photoIDs, expected) << seed;
        ASSERT_EQ(record->assetKeys, without(members, stale)) << seed;
    }
}

TEST_F(RandomAlbums, AreUpdatedLikeInAPlainWalk)
{
    for (unsigned seed = 0; seed < 400; ++seed) {
        Draw draw(seed);
        const Ids members = draw.keys(20);
        renew(draw.keys(12), members, Ids());
        albumItem album;
        album.id = Key;
        album.photoIDs = draw.keys(12);
        const Ids wanted = album.photoIDs;
        ASSERT_EQ(manager.updateAlbum(&album), 0) << seed;
        ASSERT_EQ(record->assetKeys, without(members, missingFrom(wanted, members))) << seed;
        ASSERT_EQ(album.photoIDs, wanted) << seed;
    }
}

TEST_F(RandomAlbums, OfTheWholeLibraryAreUpdatedLikeInAPlainWalk)
{
    for (unsigned seed = 0; seed < 400; ++seed) {
        Draw draw(seed);
        const Ids members = draw.keys(20);
        renew(draw.keys(12), Ids(), members);
        for (const quint64 key : model().assets.keys()) {
            if (draw.below(3) == 0)
                model().videos[key] = model().assets.value(key);
            if (draw.below(3) == 0)
                model().panoramas[key] = model().assets.value(key);
        }
        albumItem album;
        album.id = synthetic::Library;
        album.photoIDs = draw.keys(12);
        const Ids removed = missingFrom(album.photoIDs, members);
        const Ids assets = without(model().assets.keys(), removed);
        const Ids videos = without(model().videos.keys(), removed);
        const Ids panoramas = without(model().panoramas.keys(), removed);
        ASSERT_EQ(manager.updateAlbum(&album), 0) << seed;
        ASSERT_EQ(library(), without(members, removed)) << seed;
        ASSERT_EQ(model().assets.keys(), assets) << seed;
        ASSERT_EQ(model().videos.keys(), videos) << seed;
        ASSERT_EQ(model().panoramas.keys(), panoramas) << seed;
    }
}

// --- Albums so large that a scan of a list for each photo would outlast the test's time.

struct LargeRow {
    const char *name;
    int photos;
    quint64 (*key)(quint64 number);
};

// A library of many photos in an order drawn at random. Those with an odd number go.
class LargeAlbums : public AlbumFixture, public testing::WithParamInterface<LargeRow>
{
protected:
    LargeAlbums()
    {
        std::vector<quint64> numbers;
        for (quint64 number = 1; number <= static_cast<quint64>(GetParam().photos); ++number)
            numbers.push_back(number);
        std::mt19937 engine(7);
        for (std::size_t i = numbers.size(); i > 1; --i)
            std::swap(numbers[i - 1], numbers[engine() % i]);
        for (const quint64 number : numbers) {
            all.append(GetParam().key(number));
            if (number % 2 == 0)
                kept.append(all.last());
        }
    }

    Ids all;
    Ids kept;
};

TEST_P(LargeAlbums, AreFetchedWithoutHalfOfTheirPhotos)
{
    addAssets(kept);
    const Camera_Album *record = addListedAlbum(Key, all);
    EXPECT_TRUE(fetched(Key).photoIDs == kept);
    EXPECT_TRUE(record->assetKeys == kept);
}

TEST_P(LargeAlbums, AreUpdatedToHalfOfTheirPhotos)
{
    const Camera_Album *record = addListedAlbum(Key, all);
    albumItem album;
    album.id = Key;
    album.photoIDs = kept;
    std::reverse(album.photoIDs.begin(), album.photoIDs.end());
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_TRUE(record->assetKeys == kept);
}

TEST_P(LargeAlbums, OfTheWholeLibraryAreUpdatedToHalfOfTheirPhotos)
{
    addAssets(all);
    addSyntheticAlbums(all);
    model().videos = model().assets;
    albumItem album;
    album.id = synthetic::Library;
    album.photoIDs = kept;
    std::reverse(album.photoIDs.begin(), album.photoIDs.end());
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_TRUE(library() == kept);
    EXPECT_EQ(model().assets.size(), GetParam().photos / 2);
    EXPECT_EQ(model().videos.size(), GetParam().photos / 2);
}

TEST_P(LargeAlbums, GrowByOnePhotoAtATime)
{
    const Camera_Album *record = addListedAlbum(Key, Ids());
    addSyntheticAlbums(Ids());
    albumItem album;
    album.id = Key;
    for (const quint64 key : all) {
        photoItem photo;
        photo.id = key;
        ASSERT_EQ(manager.addPhoto2Album(&photo, &album), 0);
    }
    EXPECT_TRUE(record->assetKeys == all);
    EXPECT_TRUE(library() == all);
    EXPECT_TRUE(album.photoIDs == all);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, LargeAlbums,
    testing::Values(
        LargeRow{"InARow", 400000, [](quint64 number) { return number; }},
        LargeRow{"Negative", 100000, [](quint64 number) { return 0xffffffff80000000 + number; }},
        // All of one hash for Qt, whose hash is made of both halves.
        LargeRow{"OfOneHash", 100000, [](quint64 number) { return number << 32 | number; }}),
    rowName<LargeRow>);

} // namespace
