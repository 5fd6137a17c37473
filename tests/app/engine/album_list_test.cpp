#include "engine/album_list.h"

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"

#include <gtest/gtest.h>

namespace {

// A library of one album, as its fields say.
class OneAlbum : public photo_manager_int
{
public:
    bool isShown = true;
    albumItem album;

    bool getAlbum(const quint64 &id, albumItem *item) override
    {
        *item = album;
        item->id = id;
        return isShown;
    }
    QList<quint64> albumIDs() override { return {album.id}; }
    int albumCnt() override { return 1; }

    bool parseLib() override { return true; }
    void cancleParse() override {}
    QString getUUID() override { return QString(); }
    int photoCnt() override { return 0; }
    QList<quint64> photoIDs() override { return {}; }
    bool getPhoto(const quint64 &, photoItem *) override { return false; }
    int getPhotoThumbnail(const quint64 &, QByteArray &) override { return -1; }
    int getSourcePhoto(const quint64 &, QByteArray &) override { return 0; }
    int addPhoto2Album(photoItem *, const quint64 &) override { return -1; }
    int addPhoto2Album(photoItem *, albumItem *) override { return -1; }
    int addAlbum(albumItem *) override { return -1; }
    int rmAlbum(const quint64 &) override { return -1; }
    int updateAlbum(albumItem *) override { return -1; }
};

TEST(AlbumList, TellsAnAlbum)
{
    OneAlbum library;
    library.album.name = QStringLiteral("Trip");
    library.album.type = 4;
    library.album.photoIDs = {1, 2, 2};
    const ListedAlbum album = listedAlbum(library, 7, {1, 2});
    EXPECT_EQ(7u, album.id);
    EXPECT_TRUE(album.isShown);
    EXPECT_EQ("Trip", album.name);
    EXPECT_EQ("album", album.kind);
    EXPECT_EQ(3, album.photos);
}

TEST(AlbumList, CountsOnlyWhatTheLibraryHas)
{
    OneAlbum library;
    library.album.photoIDs = {1, 2, 3, 2};
    EXPECT_EQ(2, listedAlbum(library, 7, {2, 4}).photos);
}

TEST(AlbumList, TellsWhatIsKnownOfAnAlbumThatIsNotShown)
{
    OneAlbum library;
    library.album.name = QStringLiteral("Shared");
    library.isShown = false;
    const ListedAlbum album = listedAlbum(library, 7, {});
    EXPECT_FALSE(album.isShown);
    EXPECT_EQ("Shared", album.name);
}

TEST(AlbumList, HasWordsForEachKind)
{
    const char *const words[] = {"unknown", "camera roll",   "panoramas",  "videos",
                                 "album",   "photo library", "user album", "unknown"};
    for (int type = 0; type < 8; ++type)
        EXPECT_EQ(words[type], albumKindText(type).toStdString());
    EXPECT_EQ("unknown", albumKindText(-1).toStdString());
}

TEST(AlbumList, ShowsTitlesAsTheyAreButHarmless)
{
    // Read as Latin-1, this title would be other UTF-8.
    EXPECT_EQ("Ã¼", albumNameText(QStringLiteral("Ã¼")).toStdString());
    EXPECT_EQ("日本 🗾", albumNameText(QStringLiteral("日本 🗾")).toStdString());
    EXPECT_EQ("a\\x1b[2J\\x0a", albumNameText(QStringLiteral("a\x1b[2J\n")).toStdString());
}

} // namespace
