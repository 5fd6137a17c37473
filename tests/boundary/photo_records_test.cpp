#include "boundary/photo_records.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

static_assert(!std::is_polymorphic<photoItem>::value, "a value without virtual operations");
static_assert(!std::is_polymorphic<albumItem>::value, "a value without virtual operations");
static_assert(std::is_standard_layout<photoItem>::value, "one block of public fields");
static_assert(std::is_standard_layout<albumItem>::value, "one block of public fields");

// What the fields of the records have to be, for sizes and offsets.
struct PhotoLayout {
    quint64 id;
    QByteArray uuid;
    QString name;
    qint32 type;
    QString path;
    QString thumbPath;
    qint32 orientation;
    qint32 height;
    qint32 width;
    qint32 duration;
    quint64 fileSize;
    QDateTime createDate;
    QDateTime modifyDate;
    qint64 trashedDate;
    QString avalancheUUID;
    double sortToken;
};

struct AlbumLayout {
    quint64 id;
    QByteArray uuid;
    QString name;
    qint32 type;
    QList<quint64> photoIDs;
};

// Hosts are compiled against the layout, so both its types and its offsets count.
#define EXPECT_SAME_PLACE(Record, Layout, field)                                                   \
    static_assert(std::is_same<decltype(Record::field), decltype(Layout::field)>::value, "type");  \
    EXPECT_EQ(offsetof(Record, field), offsetof(Layout, field)) << #field

photoItem filledPhoto()
{
    photoItem photo;
    photo.id = 0x123456789abcdef0;
    photo.uuid = QByteArray("\x01\x00\xff", 3);
    photo.name = QStringLiteral("IMG_0001.JPG");
    photo.type = 2;
    photo.path = QStringLiteral("DCIM/100APPLE/IMG_0001.JPG");
    photo.thumbPath = QStringLiteral("PhotoData/Metadata/x");
    photo.orientation = 6;
    photo.height = 2448;
    photo.width = 3264;
    photo.duration = 17;
    photo.fileSize = 0xfedcba9876543210;
    photo.createDate = QDateTime(QDate(2014, 5, 6), QTime(7, 8, 9), Qt::UTC);
    photo.modifyDate = QDateTime(QDate(2015, 6, 7), QTime(8, 9, 10), Qt::UTC);
    photo.trashedDate = -5;
    photo.avalancheUUID = QStringLiteral("burst");
    photo.sortToken = 2.5;
    return photo;
}

void expectFilled(const photoItem &photo)
{
    EXPECT_EQ(photo.id, 0x123456789abcdef0U);
    EXPECT_EQ(photo.uuid, QByteArray("\x01\x00\xff", 3));
    EXPECT_EQ(photo.name, QStringLiteral("IMG_0001.JPG"));
    EXPECT_EQ(photo.type, 2);
    EXPECT_EQ(photo.path, QStringLiteral("DCIM/100APPLE/IMG_0001.JPG"));
    EXPECT_EQ(photo.thumbPath, QStringLiteral("PhotoData/Metadata/x"));
    EXPECT_EQ(photo.orientation, 6);
    EXPECT_EQ(photo.height, 2448);
    EXPECT_EQ(photo.width, 3264);
    EXPECT_EQ(photo.duration, 17);
    EXPECT_EQ(photo.fileSize, 0xfedcba9876543210U);
    EXPECT_EQ(photo.createDate, QDateTime(QDate(2014, 5, 6), QTime(7, 8, 9), Qt::UTC));
    EXPECT_EQ(photo.modifyDate, QDateTime(QDate(2015, 6, 7), QTime(8, 9, 10), Qt::UTC));
    EXPECT_EQ(photo.trashedDate, -5);
    EXPECT_EQ(photo.avalancheUUID, QStringLiteral("burst"));
    EXPECT_EQ(photo.sortToken, 2.5);
}

albumItem filledAlbum()
{
    albumItem album;
    album.id = 0x123456789abcdef0;
    album.uuid = QByteArray(16, '\x07');
    album.name = QStringLiteral("Holidays");
    album.type = 6;
    album.photoIDs = {5, 3, 5};
    return album;
}

void expectFilled(const albumItem &album)
{
    EXPECT_EQ(album.id, 0x123456789abcdef0U);
    EXPECT_EQ(album.uuid, QByteArray(16, '\x07'));
    EXPECT_EQ(album.name, QStringLiteral("Holidays"));
    EXPECT_EQ(album.type, 6);
    EXPECT_EQ(album.photoIDs, (QList<quint64>{5, 3, 5}));
}

TEST(PhotoRecord, StartsAsAPhotoWithoutNumbersTextsOrDates)
{
    const photoItem photo;
    EXPECT_EQ(photo.id, 0U);
    EXPECT_TRUE(photo.uuid.isEmpty());
    EXPECT_TRUE(photo.name.isNull());
    EXPECT_EQ(photo.type, 3);
    EXPECT_TRUE(photo.path.isNull());
    EXPECT_TRUE(photo.thumbPath.isNull());
    EXPECT_EQ(photo.orientation, 0);
    EXPECT_EQ(photo.height, 0);
    EXPECT_EQ(photo.width, 0);
    EXPECT_EQ(photo.duration, 0);
    EXPECT_EQ(photo.fileSize, 0U);
    EXPECT_TRUE(photo.createDate.isNull());
    EXPECT_TRUE(photo.modifyDate.isNull());
    EXPECT_EQ(photo.trashedDate, 0);
    EXPECT_TRUE(photo.avalancheUUID.isNull());
    EXPECT_EQ(photo.sortToken, 0.0);
}

TEST(PhotoRecord, HoldsItsSixteenFieldsInOrderAndNothingElse)
{
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, id);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, uuid);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, name);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, type);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, path);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, thumbPath);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, orientation);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, height);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, width);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, duration);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, fileSize);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, createDate);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, modifyDate);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, trashedDate);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, avalancheUUID);
    EXPECT_SAME_PLACE(photoItem, PhotoLayout, sortToken);
    EXPECT_EQ(sizeof(photoItem), sizeof(PhotoLayout));
}

TEST(PhotoRecord, CopiesEveryField)
{
    const photoItem source = filledPhoto();
    photoItem copy(source);
    expectFilled(copy);
    copy = photoItem();
    expectFilled(source);
}

TEST(PhotoRecord, AssignsEveryFieldAndReturnsItself)
{
    const photoItem source = filledPhoto();
    photoItem target;
    EXPECT_EQ(&(target = source), &target);
    expectFilled(target);
    expectFilled(source);
}

TEST(PhotoRecord, SharesTheBytesAndTextsOfACopyUntilOneIsChanged)
{
    const photoItem source = filledPhoto();
    photoItem copy(source);
    EXPECT_EQ(copy.uuid.constData(), source.uuid.constData());
    EXPECT_EQ(copy.path.constData(), source.path.constData());

    copy.uuid.append('x');
    copy.path.append(QLatin1Char('x'));
    copy.name.clear();
    expectFilled(source);
}

TEST(AlbumRecord, StartsWithTypeZeroAndWithoutPhotos)
{
    const albumItem album;
    EXPECT_EQ(album.id, 0U);
    EXPECT_TRUE(album.uuid.isEmpty());
    EXPECT_TRUE(album.name.isNull());
    EXPECT_EQ(album.type, 0);
    EXPECT_TRUE(album.photoIDs.isEmpty());
}

TEST(AlbumRecord, HoldsItsFiveFieldsInOrderAndNothingElse)
{
    EXPECT_SAME_PLACE(albumItem, AlbumLayout, id);
    EXPECT_SAME_PLACE(albumItem, AlbumLayout, uuid);
    EXPECT_SAME_PLACE(albumItem, AlbumLayout, name);
    EXPECT_SAME_PLACE(albumItem, AlbumLayout, type);
    EXPECT_SAME_PLACE(albumItem, AlbumLayout, photoIDs);
    EXPECT_EQ(sizeof(albumItem), sizeof(AlbumLayout));
}

TEST(AlbumRecord, CopiesEveryField)
{
    const albumItem source = filledAlbum();
    albumItem copy(source);
    expectFilled(copy);
    copy = albumItem();
    expectFilled(source);
}

TEST(AlbumRecord, AssignsEveryFieldAndReturnsItself)
{
    const albumItem source = filledAlbum();
    albumItem target;
    EXPECT_EQ(&(target = source), &target);
    expectFilled(target);
    expectFilled(source);
}

TEST(AlbumRecord, KeepsTheSourcesPhotosWhenACopyIsChanged)
{
    const albumItem source = filledAlbum();
    albumItem copy(source);
    EXPECT_TRUE(copy.photoIDs.isSharedWith(source.photoIDs));

    copy.photoIDs.append(9);
    copy.photoIDs[0] = 1;
    EXPECT_EQ(copy.photoIDs, (QList<quint64>{1, 3, 5, 9}));
    expectFilled(source);
}

} // namespace
