#include "ios/album_fixture.h"
#include "support/row_name.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <functional>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace {

const quint64 AboveThirtyTwoBits = 0x100000000;
const quint64 Key = 41;
const quint64 Unlisted = 12345;
const qint32 HighestKey = std::numeric_limits<qint32>::max();
const qint32 LowestKey = std::numeric_limits<qint32>::min();
const quint64 LowestId = 0xffffffff80000000;

const LogLine NoPhoto = failure("no photolib or photo");
const LogLine NoAlbum = failure("no photolib or album");

// A library of the assets 1 to 9, of which the library album holds 7, 8 and 9, and the
// device album `Key` holds 1 and 2.
class AlbumEdit : public AlbumFixture
{
protected:
    AlbumEdit()
    {
        addAssets({1, 2, 3, 4, 5, 6, 7, 8, 9});
        addSyntheticAlbums({7, 8, 9});
        record = addListedAlbum(Key, {1, 2});
        model().maxAssetPk = 100;
        model().maxAlbumPk = 200;
    }

    Camera_Album *record = nullptr;
};

using AddPhoto = AlbumEdit;
using AddAlbum = AlbumEdit;
using UpdateAlbum = AlbumEdit;
using RemoveAlbum = AlbumEdit;
using AlbumEditThreads = AlbumEdit;

// A photo of the host's, with a value in every field.
photoItem newPhoto()
{
    photoItem photo;
    photo.uuid = "host's uuid";
    photo.name = QStringLiteral("Beach");
    photo.type = 2;
    photo.path = QStringLiteral("/home/me/beach.mov");
    photo.thumbPath = QStringLiteral("/home/me/beach.jpg");
    photo.orientation = 6;
    photo.height = 1080;
    photo.width = 1920;
    photo.duration = 99;
    photo.fileSize = 0x123456789;
    photo.createDate = QDateTime(QDate(2001, 1, 2), QTime(0, 0, 5), Qt::UTC);
    photo.modifyDate = QDateTime(QDate(2001, 1, 1), QTime(1, 0, 7), Qt::OffsetFromUTC, 3600);
    photo.trashedDate = 777;
    photo.avalancheUUID = QStringLiteral("burst");
    photo.sortToken = 6.5;
    return photo;
}

photoItem existingPhoto(quint64 id)
{
    photoItem photo = newPhoto();
    photo.id = id;
    return photo;
}

// All but the id and the uuid.
void expectRestOf(const photoItem &photo, const photoItem &expected)
{
    EXPECT_EQ(photo.name, expected.name);
    EXPECT_EQ(photo.type, expected.type);
    EXPECT_EQ(photo.path, expected.path);
    EXPECT_EQ(photo.thumbPath, expected.thumbPath);
    EXPECT_EQ(photo.orientation, expected.orientation);
    EXPECT_EQ(photo.height, expected.height);
    EXPECT_EQ(photo.width, expected.width);
    EXPECT_EQ(photo.duration, expected.duration);
    EXPECT_EQ(photo.fileSize, expected.fileSize);
    EXPECT_EQ(photo.createDate, expected.createDate);
    EXPECT_EQ(photo.modifyDate, expected.modifyDate);
    EXPECT_EQ(photo.trashedDate, expected.trashedDate);
    EXPECT_EQ(photo.avalancheUUID, expected.avalancheUUID);
    EXPECT_EQ(photo.sortToken, expected.sortToken);
}

void expectPhoto(const photoItem &photo, const photoItem &expected)
{
    EXPECT_EQ(photo.id, expected.id);
    EXPECT_EQ(photo.uuid, expected.uuid);
    expectRestOf(photo, expected);
}

void expectNewUuid(const QByteArray &uuid)
{
    EXPECT_EQ(uuid.size(), 16);
    EXPECT_EQ(uuid.left(8), QByteArray(8, '\0'));
    EXPECT_NE(uuid.mid(8), QByteArray(8, '\0'));
}

// --- addPhoto2Album with a key.

TEST_F(AddPhoto, NeedsAModelAndAPhoto)
{
    const LibraryState before = state();
    EXPECT_EQ(manager.addPhoto2Album(nullptr, Key), -1);
    EXPECT_EQ(host.trace(), Lines{"Log(\"PHOTOLIB\", 2, \"no photolib or photo\")"});
    EXPECT_TRUE(state() == before);

    dropModel();
    host.clearRecords();
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), -1);
    EXPECT_EQ(manager.addPhoto2Album(nullptr, Key), -1);
    EXPECT_EQ(host.log(), (Log{NoPhoto, NoPhoto}));
    expectPhoto(photo, newPhoto());
    EXPECT_EQ(library(), (Ids{7, 8, 9}));
}

TEST_F(AddPhoto, RecordsEveryFieldOfANewPhoto)
{
    photoItem photo = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&photo, Unlisted), 0);
    const Camera_Data *asset = model().assets.value(101);
    ASSERT_NE(asset, nullptr);
    EXPECT_EQ(asset->db, manager.m_pCameraDB);
    EXPECT_EQ(asset->pk, 101U);
    EXPECT_EQ(asset->kind, 2);
    EXPECT_EQ(asset->kindSubtype, 0);
    EXPECT_EQ(asset->name, QStringLiteral("Beach"));
    EXPECT_EQ(asset->uuid, photo.uuid);
    EXPECT_EQ(asset->createDate, 86405);
    EXPECT_EQ(asset->width, 1920);
    EXPECT_EQ(asset->height, 1080);
    EXPECT_EQ(asset->reserved1, 0);
    EXPECT_EQ(asset->reserved2, 0);
    EXPECT_EQ(asset->reserved3, 0);
    EXPECT_EQ(asset->thumbnailIndex, -1);
    EXPECT_EQ(asset->orientation, 6);
    EXPECT_TRUE(asset->directory.isNull());
    EXPECT_EQ(asset->fileName, QStringLiteral("/home/me/beach.mov"));
    EXPECT_EQ(asset->duration, 0);
    EXPECT_EQ(asset->modificationDate, 7);
    EXPECT_EQ(asset->trashedDate, 0);
    EXPECT_EQ(asset->originalFileSize, 0x123456789);
    EXPECT_TRUE(asset->avalancheUUID.isNull());
    EXPECT_EQ(asset->sortToken, 0.0);
}

TEST_F(AddPhoto, GivesANewPhotoAnIdAndAUuidAndChangesNothingElseOfIt)
{
    photoItem photo = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&photo, Unlisted), 0);
    EXPECT_EQ(photo.id, 101U);
    expectNewUuid(photo.uuid);
    EXPECT_TRUE(manager.m_mapUsedUUID.value(photo.uuid));
    expectRestOf(photo, newPhoto());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(AddPhoto, KeepsANewPhotoOfAnUnlistedAlbumInTheLibraryAlone)
{
    const quint64 hidden = 77;
    addHiddenAlbum(hidden, {1});
    LibraryState expected = state();
    photoItem first = newPhoto();
    photoItem second = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&first, Unlisted), 0);
    EXPECT_EQ(manager.addPhoto2Album(&second, hidden), 0);
    EXPECT_EQ(first.id, 101U);
    EXPECT_EQ(second.id, 102U);
    EXPECT_NE(first.uuid, second.uuid);
    expected.assets[101] = model().assets.value(101);
    expected.assets[102] = model().assets.value(102);
    expected.usedUuids[first.uuid] = true;
    expected.usedUuids[second.uuid] = true;
    expected.maxAssetPk = 102;
    EXPECT_TRUE(state() == expected);
    EXPECT_EQ(manager.photoCnt(), 11);
}

TEST_F(AddPhoto, AppendsANewPhotoToAListedAlbumAndToTheLibraryAlone)
{
    LibraryState expected = state();
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, 101}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, 101}));
    expected.assets[101] = model().assets.value(101);
    expected.usedUuids[photo.uuid] = true;
    expected.maxAssetPk = 101;
    expected.albumPhotos[synthetic::Library] = library();
    std::get<6>(expected.albums[Key]) = record->assetKeys;
    EXPECT_TRUE(state() == expected);
}

TEST_F(AddPhoto, TakesThePhotosTypeForItsKindAsItIs)
{
    for (const qint32 type : {2, 3, 0, 1, -7}) {
        photoItem photo = newPhoto();
        photo.type = type;
        ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
        EXPECT_EQ(model().assets.value(photo.id)->kind, type);
        EXPECT_FALSE(model().videos.contains(photo.id)) << type;
        EXPECT_FALSE(model().panoramas.contains(photo.id)) << type;
    }
}

TEST_F(AddPhoto, CountsDatesInSecondsFromTheReferenceDate)
{
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    for (const qint64 seconds : {qint64(0), qint64(-5), qint64(HighestKey), qint64(LowestKey)}) {
        photoItem photo = newPhoto();
        photo.createDate = reference.addSecs(seconds).toLocalTime();
        photo.modifyDate = reference.addSecs(seconds / 2).toOffsetFromUtc(-7200);
        ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
        EXPECT_EQ(model().assets.value(photo.id)->createDate, seconds);
        EXPECT_EQ(model().assets.value(photo.id)->modificationDate, seconds / 2);
    }
    manager.m_refDate = reference.addSecs(1000);
    photoItem photo = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(model().assets.value(photo.id)->createDate, 85405);
    EXPECT_EQ(model().assets.value(photo.id)->modificationDate, -993);
}

TEST_F(AddPhoto, TakesNoDateForTheReferenceDate)
{
    photoItem photo;
    ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(model().assets.value(photo.id)->createDate, 0);
    EXPECT_EQ(model().assets.value(photo.id)->modificationDate, 0);
}

TEST_F(AddPhoto, ShowsANewPhotoToTheQueries)
{
    photoItem photo = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    photoItem seen;
    ASSERT_TRUE(manager.getPhoto(photo.id, &seen));
    EXPECT_EQ(seen.id, photo.id);
    EXPECT_EQ(seen.uuid, photo.uuid);
    EXPECT_EQ(seen.name, photo.name);
    EXPECT_EQ(seen.path, photo.path);
    EXPECT_EQ(seen.createDate, photo.createDate);
    EXPECT_EQ(seen.modifyDate, photo.modifyDate);
    EXPECT_EQ(seen.fileSize, photo.fileSize);
    EXPECT_EQ(fetched(Key).photoIDs, (Ids{1, 2, 101}));
    EXPECT_TRUE(manager.photoIDs().contains(101));
}

TEST_F(AddPhoto, AppendsAnExistingPhotoAndChangesNothingElse)
{
    LibraryState expected = state();
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    expectPhoto(photo, existingPhoto(5));
    expected.albumPhotos[synthetic::Library] = Ids{7, 8, 9, 5};
    std::get<6>(expected.albums[Key]) = Ids{1, 2, 5};
    EXPECT_TRUE(state() == expected);
    EXPECT_EQ(model().assets.value(5)->name, QString());
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(AddPhoto, AppendsWhatIsThereAlreadyOnceMore)
{
    photoItem photo = existingPhoto(8);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, 8, 8}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, 8, 8}));
}

TEST_F(AddPhoto, DoesNotAskWhetherAPhotoWithAnIdExists)
{
    photoItem photo = existingPhoto(4242);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, 4242}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, 4242}));
    EXPECT_FALSE(model().assets.contains(4242));
    EXPECT_EQ(fetched(Key).photoIDs, (Ids{1, 2}));
}

TEST_F(AddPhoto, IgnoresAnExistingPhotoForAnUnlistedAlbum)
{
    addHiddenAlbum(77, {1});
    const LibraryState before = state();
    photoItem photo = existingPhoto(5);
    for (const quint64 album : {quint64(77), Unlisted, quint64(0), AboveThirtyTwoBits + Key})
        EXPECT_EQ(manager.addPhoto2Album(&photo, album), 0) << album;
    EXPECT_TRUE(state() == before);
    expectPhoto(photo, existingPhoto(5));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(AddPhoto, AppendsToTheLibraryAloneForEverySyntheticAlbum)
{
    addSyntheticAlbum(synthetic::CameraRoll, {3});
    LibraryState expected = state();
    photoItem photo = existingPhoto(5);
    for (const quint64 album :
         {synthetic::CameraRoll, synthetic::Video, synthetic::Panorama, synthetic::Library})
        EXPECT_EQ(manager.addPhoto2Album(&photo, album), 0) << album;
    expected.albumPhotos[synthetic::Library] = Ids{7, 8, 9, 5, 5, 5, 5};
    EXPECT_TRUE(state() == expected);
}

TEST_F(AddPhoto, AppendsToTheLibraryForAListedAlbumWithoutARecord)
{
    manager.m_listAlbumIDs.append(77);
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, quint64(77)), 0);
    EXPECT_EQ(library(), (Ids{7, 8, 9, 5}));
    EXPECT_FALSE(model().albums.contains(77));
    EXPECT_FALSE(manager.m_mapAlbum2Photos.contains(77));
}

TEST_F(AddPhoto, MakesTheLibrarysListWhereItIsMissing)
{
    manager.m_mapAlbum2Photos.remove(synthetic::Library);
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(library(), Ids{5});
}

TEST_F(AddPhoto, AppendsOnceForAnAlbumThatIsListedTwice)
{
    manager.m_listAlbumIDs.append(Key);
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, 5}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, 5}));
}

TEST_F(AddPhoto, LeavesListsThatTheHostGotBeforeAlone)
{
    const Ids inAlbum = fetched(Key).photoIDs;
    const Ids inLibrary = fetched(synthetic::Library).photoIDs;
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(inAlbum, (Ids{1, 2}));
    EXPECT_EQ(inLibrary, (Ids{7, 8, 9}));
}

TEST_F(AddPhoto, TakesTheAlbumsKeyAsItWasPassed)
{
    // The photo's id becomes 101 during the call, which is an album, too.
    const Camera_Album *other = addListedAlbum(101);
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, photo.id), 0);
    EXPECT_EQ(photo.id, 101U);
    EXPECT_EQ(other->assetKeys, Ids());
    EXPECT_EQ(library(), (Ids{7, 8, 9}));

    photoItem same = existingPhoto(Key);
    EXPECT_EQ(manager.addPhoto2Album(&same, same.id), 0);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, Key}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, Key}));
}

// --- Keys at the end of their range.

TEST_F(AddPhoto, GoesOnAtTheLowestKeyAfterTheHighest)
{
    model().maxAssetPk = HighestKey;
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(photo.id, LowestId);
    EXPECT_EQ(model().maxAssetPk, LowestKey);
    ASSERT_TRUE(model().assets.contains(LowestId));
    EXPECT_EQ(model().assets.value(LowestId)->pk, LowestId);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, LowestId}));
}

TEST_F(AddPhoto, TakesNoKeyThatIsInUse)
{
    model().maxAssetPk = HighestKey;
    const Camera_Data *lowest = addAsset(LowestId);
    const Camera_Data *next = addAsset(LowestId + 1);
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(photo.id, LowestId + 2);
    EXPECT_EQ(model().maxAssetPk, LowestKey + 2);
    EXPECT_EQ(model().assets.value(LowestId), lowest);
    EXPECT_EQ(model().assets.value(LowestId + 1), next);
    EXPECT_EQ(manager.photoCnt(), 12);
}

TEST_F(AddPhoto, DoesNotTakeTheKeyThatMarksANewPhoto)
{
    model().maxAssetPk = -1;
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(photo.id, 10U); // behind the assets 1 to 9
    EXPECT_FALSE(model().assets.contains(0));
}

TEST_F(AddPhoto, ExtendsTheSignOfANegativeKey)
{
    model().maxAssetPk = -10;
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    EXPECT_EQ(photo.id, static_cast<quint64>(-9));
}

TEST_F(AddPhoto, NeverGivesOutAKeyOnceMore)
{
    photoItem photo = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&photo, Key), 0);
    albumItem library = fetched(synthetic::Library);
    library.photoIDs.clear();
    ASSERT_EQ(manager.updateAlbum(&library), 0);
    ASSERT_FALSE(model().assets.contains(101));
    photoItem next = newPhoto();
    ASSERT_EQ(manager.addPhoto2Album(&next, Key), 0);
    EXPECT_EQ(next.id, 102U);
}

// --- addPhoto2Album with a record.

// Counts the calls of the keyed overload and answers them itself.
class AnsweringManager : public photo_manager
{
public:
    using photo_manager::addPhoto2Album;
    using photo_manager::photo_manager;

    int addPhoto2Album(photoItem *photo, const quint64 &key) override
    {
        keys.append(key);
        photos.append(photo);
        if (photo != nullptr)
            photo->id = givenId;
        if (onCall)
            onCall();
        return answer;
    }

    QList<quint64> keys;
    QList<photoItem *> photos;
    quint64 givenId = 55;
    int answer = 0;
    std::function<void()> onCall;
};

class AddPhotoByRecord : public AlbumEdit
{
protected:
    AddPhotoByRecord()
    {
        album = oldAlbum();
        album.id = Key;
    }

    albumItem album;
};

TEST_F(AddPhotoByRecord, CallsTheKeyedOverloadAsAHostWould)
{
    AnsweringManager answering(&device);
    photoItem photo;
    EXPECT_EQ(answering.addPhoto2Album(&photo, &album), 0);
    EXPECT_EQ(answering.keys, Ids{Key});
    EXPECT_EQ(answering.photos, QList<photoItem *>{&photo});
    albumItem expected = oldAlbum();
    expected.id = Key;
    expected.photoIDs = {777, 778, 55};
    expectAlbum(album, expected);
}

TEST_F(AddPhotoByRecord, FailsWhenTheKeyedOverloadAnswersAnythingButZero)
{
    for (const int answer : {-1, 1, 2, HighestKey}) {
        AnsweringManager answering(&device);
        answering.answer = answer;
        photoItem photo;
        EXPECT_EQ(answering.addPhoto2Album(&photo, &album), -1) << answer;
        EXPECT_EQ(album.photoIDs, (Ids{777, 778})) << answer;
        EXPECT_EQ(answering.keys.size(), 1) << answer;
    }
}

TEST_F(AddPhotoByRecord, RefusesNoAlbumAndTheIdZeroWithoutALine)
{
    const LibraryState before = state();
    AnsweringManager answering(&device);
    photoItem photo = newPhoto();
    albumItem none = oldAlbum();
    none.id = 0;
    EXPECT_EQ(manager.addPhoto2Album(&photo, static_cast<albumItem *>(nullptr)), -1);
    EXPECT_EQ(manager.addPhoto2Album(&photo, &none), -1);
    EXPECT_EQ(manager.addPhoto2Album(nullptr, &none), -1);
    EXPECT_EQ(answering.addPhoto2Album(&photo, static_cast<albumItem *>(nullptr)), -1);
    EXPECT_EQ(answering.addPhoto2Album(&photo, &none), -1);
    EXPECT_EQ(answering.keys, Ids());
    EXPECT_EQ(none.photoIDs, oldAlbum().photoIDs);
    expectPhoto(photo, newPhoto());
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_TRUE(state() == before);
}

TEST_F(AddPhotoByRecord, LeavesANullPhotoToTheKeyedOverload)
{
    EXPECT_EQ(manager.addPhoto2Album(nullptr, &album), -1);
    EXPECT_EQ(host.log(), Log{NoPhoto});
    dropModel();
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, &album), -1);
    EXPECT_EQ(host.log(), (Log{NoPhoto, NoPhoto}));
    EXPECT_EQ(album.photoIDs, (Ids{777, 778}));
    expectPhoto(photo, newPhoto());
}

TEST_F(AddPhotoByRecord, AppendsToTheRecordTheAlbumAndTheLibraryOnceEach)
{
    photoItem photo = newPhoto();
    EXPECT_EQ(manager.addPhoto2Album(&photo, &album), 0);
    EXPECT_EQ(photo.id, 101U);
    albumItem expected = oldAlbum();
    expected.id = Key;
    expected.photoIDs = {777, 778, 101};
    expectAlbum(album, expected);
    EXPECT_EQ(record->assetKeys, (Ids{1, 2, 101}));
    EXPECT_EQ(library(), (Ids{7, 8, 9, 101}));
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(AddPhotoByRecord, AppendsToTheRecordAlsoWhereTheAlbumIsNotListed)
{
    album.id = Unlisted;
    photoItem photo = existingPhoto(5);
    EXPECT_EQ(manager.addPhoto2Album(&photo, &album), 0);
    EXPECT_EQ(album.photoIDs, (Ids{777, 778, 5}));
    EXPECT_EQ(library(), (Ids{7, 8, 9}));
}

TEST_F(AddPhotoByRecord, KeepsARecordThatWasFetchedApartFromTheLibrary)
{
    for (const quint64 key : {Key, synthetic::Library}) {
        albumItem got = fetched(key);
        const Ids before = got.photoIDs;
        photoItem photo = existingPhoto(5);
        EXPECT_EQ(manager.addPhoto2Album(&photo, &got), 0);
        EXPECT_EQ(got.photoIDs, Ids(before) << 5);
        EXPECT_EQ(fetched(key).photoIDs, got.photoIDs);
    }
}

// --- addAlbum.

TEST_F(AddAlbum, NeedsAModelAndARecord)
{
    const LibraryState before = state();
    EXPECT_EQ(manager.addAlbum(nullptr), -1);
    EXPECT_EQ(host.trace(), Lines{"Log(\"PHOTOLIB\", 2, \"no photolib or album\")"});
    EXPECT_TRUE(state() == before);

    dropModel();
    host.clearRecords();
    albumItem album = oldAlbum();
    EXPECT_EQ(manager.addAlbum(&album), -1);
    EXPECT_EQ(manager.addAlbum(nullptr), -1);
    EXPECT_EQ(host.log(), (Log{NoAlbum, NoAlbum}));
    expectAlbum(album, oldAlbum());
    EXPECT_EQ(manager.albumCnt(), 4);
}

TEST_F(AddAlbum, RecordsEveryField)
{
    albumItem album = oldAlbum();
    ASSERT_EQ(manager.addAlbum(&album), 201);
    const Camera_Album *made = model().albums.value(201);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->pk, 201U);
    EXPECT_EQ(made->kind, 1550);
    EXPECT_EQ(made->reserved1, 0);
    EXPECT_EQ(made->reserved2, 0);
    EXPECT_EQ(made->title, QStringLiteral("old name"));
    EXPECT_EQ(made->uuid, album.uuid);
    EXPECT_EQ(made->reserved3, 0);
    EXPECT_EQ(made->trashedState, 0);
    EXPECT_EQ(made->assetKeys, (Ids{777, 778}));
}

TEST_F(AddAlbum, SetsTheIdTheUuidAndTheTypeOfTheRecord)
{
    albumItem album = oldAlbum();
    ASSERT_EQ(manager.addAlbum(&album), 201);
    expectNewUuid(album.uuid);
    EXPECT_TRUE(manager.m_mapUsedUUID.value(album.uuid));
    albumItem expected = oldAlbum();
    expected.id = 201;
    expected.uuid = album.uuid;
    expected.type = 6;
    expectAlbum(album, expected);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(AddAlbum, ListsTheAlbumLastAndChangesNothingElse)
{
    LibraryState expected = state();
    albumItem first = oldAlbum();
    albumItem second = oldAlbum();
    ASSERT_EQ(manager.addAlbum(&first), 201);
    ASSERT_EQ(manager.addAlbum(&second), 202);
    EXPECT_NE(first.uuid, second.uuid);
    LibraryState after = state();
    EXPECT_EQ(after.albums.take(201),
              LibraryState::Album(model().albums.value(201), 201, 1550, QStringLiteral("old name"),
                                  first.uuid, 0, Ids{777, 778}));
    EXPECT_TRUE(after.albums.remove(202));
    expected.albumIds << 201 << 202;
    expected.usedUuids[first.uuid] = true;
    expected.usedUuids[second.uuid] = true;
    expected.maxAlbumPk = 202;
    EXPECT_TRUE(after == expected);
}

TEST_F(AddAlbum, MakesAnAlbumThatIsFetchedWithThePhotosThatExist)
{
    albumItem trip;
    trip.name = QStringLiteral("Trip");
    trip.photoIDs = {3, 50, 4};
    const int key = manager.addAlbum(&trip);
    EXPECT_EQ(trip.type, 6);
    EXPECT_EQ(trip.photoIDs, (Ids{3, 50, 4}));
    albumItem expected = trip;
    expected.photoIDs = {3, 4};
    expectAlbum(fetched(static_cast<quint64>(key)), expected);
    EXPECT_EQ(library(), (Ids{7, 8, 9}));
}

TEST_F(AddAlbum, TakesAnEmptyNameWhichIsThenShownAsTheDefault)
{
    albumItem album;
    ASSERT_EQ(manager.addAlbum(&album), 201);
    EXPECT_EQ(fetched(201).name, QStringLiteral("Cus Album"));
    EXPECT_EQ(fetched(201).photoIDs, Ids());
}

TEST_F(AddAlbum, CopiesTheListOfTheCaller)
{
    albumItem album;
    album.photoIDs = {3, 4};
    ASSERT_EQ(manager.addAlbum(&album), 201);
    album.photoIDs.append(5);
    EXPECT_EQ(fetched(201).photoIDs, (Ids{3, 4}));

    albumItem copy = fetched(Key);
    ASSERT_EQ(manager.addAlbum(&copy), 202);
    photoItem photo = existingPhoto(5);
    ASSERT_EQ(manager.addPhoto2Album(&photo, quint64(202)), 0);
    EXPECT_EQ(fetched(Key).photoIDs, (Ids{1, 2}));
    EXPECT_EQ(copy.photoIDs, (Ids{1, 2}));
    EXPECT_EQ(fetched(202).photoIDs, (Ids{1, 2, 5}));
}

TEST_F(AddAlbum, GoesOnAtTheLowestKeyAfterTheHighest)
{
    model().maxAlbumPk = HighestKey;
    albumItem album;
    EXPECT_EQ(manager.addAlbum(&album), LowestKey);
    EXPECT_EQ(album.id, LowestId);
    EXPECT_EQ(model().maxAlbumPk, LowestKey);
    ASSERT_TRUE(model().albums.contains(LowestId));
    EXPECT_EQ(model().albums.value(LowestId)->pk, LowestId);
    EXPECT_EQ(manager.albumIDs().last(), LowestId);
    EXPECT_EQ(fetched(LowestId).id, LowestId);
}

TEST_F(AddAlbum, TakesNoKeyThatIsInUse)
{
    model().maxAlbumPk = HighestKey;
    const Camera_Album *hidden = addHiddenAlbum(LowestId);
    const Camera_Album *listed = addListedAlbum(LowestId + 1);
    albumItem album;
    EXPECT_EQ(manager.addAlbum(&album), LowestKey + 2);
    EXPECT_EQ(album.id, LowestId + 2);
    EXPECT_EQ(model().maxAlbumPk, LowestKey + 2);
    EXPECT_EQ(model().albums.value(LowestId), hidden);
    EXPECT_EQ(model().albums.value(LowestId + 1), listed);
}

struct SkippedKeysRow {
    const char *name;
    qint32 last;
    qint32 next;
};

class SkippedAlbumKeys : public AlbumEdit, public testing::WithParamInterface<SkippedKeysRow>
{
};

TEST_P(SkippedAlbumKeys, AreThoseWithAnotherMeaning)
{
    addSyntheticAlbum(synthetic::CameraRoll, {3});
    EXPECT_EQ(manager.rmAlbum(synthetic::Video), 0);
    const auto albumPhotos = manager.m_mapAlbum2Photos;
    model().maxAlbumPk = GetParam().last;
    albumItem album;
    album.name = QStringLiteral("Trip");
    EXPECT_EQ(manager.addAlbum(&album), GetParam().next);
    EXPECT_EQ(album.id, static_cast<quint64>(qint64(GetParam().next)));
    EXPECT_EQ(fetched(album.id).name, QStringLiteral("Trip"));
    EXPECT_EQ(manager.m_mapAlbum2Photos, albumPhotos);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, SkippedAlbumKeys,
    testing::Values(SkippedKeysRow{"CameraRoll", 999, 1001},
                    SkippedKeysRow{"VideoPanoramaAndLibrary", 16777212, 16777216},
                    SkippedKeysRow{"NoAlbum", -1, 1}, SkippedKeysRow{"Failure", -2, 1},
                    SkippedKeysRow{"None", -4, -3}),
    rowName<SkippedKeysRow>);

TEST_F(AddAlbum, TakesTheKeyOfTheSyntheticCameraRollWhereThereIsNone)
{
    model().maxAlbumPk = 999;
    albumItem album;
    EXPECT_EQ(manager.addAlbum(&album), 1000);
    EXPECT_EQ(fetched(1000).name, QStringLiteral("Cus Album"));
}

TEST_F(AddAlbum, NeverGivesOutAKeyOnceMore)
{
    albumItem album;
    ASSERT_EQ(manager.addAlbum(&album), 201);
    ASSERT_EQ(manager.rmAlbum(album.id), 0);
    albumItem next;
    EXPECT_EQ(manager.addAlbum(&next), 202);
}

// --- updateAlbum.

TEST_F(UpdateAlbum, RefusesANullRecord)
{
    const LibraryState before = state();
    EXPECT_EQ(manager.updateAlbum(nullptr), -1);
    EXPECT_EQ(host.trace(), Lines{"Log(\"PHOTOLIB\", 2, \"can not get the album: 0\")"});
    EXPECT_TRUE(state() == before);
    dropModel();
    host.clearRecords();
    EXPECT_EQ(manager.updateAlbum(nullptr), -1);
    EXPECT_EQ(host.log(), Log{failure("can not get the album: 0")});
}

TEST_F(UpdateAlbum, NeedsAModelAndLogsTheLowHalfOfTheKey)
{
    dropModel();
    const std::vector<std::pair<quint64, QByteArray>> rows = {
        {Key, "41"},        {synthetic::Library, "16777215"}, {0, "0"},
        {0xffffffff, "-1"}, {0x180000000, "-2147483648"},     {AboveThirtyTwoBits + 7, "7"},
    };
    for (const auto &row : rows) {
        host.clearRecords();
        albumItem album = oldAlbum();
        album.id = row.first;
        EXPECT_EQ(manager.updateAlbum(&album), -1);
        EXPECT_EQ(host.log(), Log{failure("can not get the album: " + row.second)});
        EXPECT_EQ(album.photoIDs, oldAlbum().photoIDs);
    }
    EXPECT_EQ(library(), (Ids{7, 8, 9}));
}

TEST_F(UpdateAlbum, IgnoresWhatIsNotListed)
{
    addHiddenAlbum(77, {1, 2});
    const LibraryState before = state();
    for (const quint64 key : {quint64(77), Unlisted, quint64(0), AboveThirtyTwoBits + Key,
                              AboveThirtyTwoBits + synthetic::Library}) {
        albumItem album = oldAlbum();
        album.id = key;
        EXPECT_EQ(manager.updateAlbum(&album), 0) << key;
    }
    EXPECT_TRUE(state() == before);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(UpdateAlbum, LeavesTheModelAloneForListedAlbumsWithoutARecord)
{
    addSyntheticAlbum(synthetic::CameraRoll, {3});
    manager.m_mapAlbum2Photos[synthetic::Video] = {4};
    manager.m_listAlbumIDs.append(4242);
    const LibraryState before = state();
    for (const quint64 key :
         {synthetic::CameraRoll, synthetic::Video, synthetic::Panorama, quint64(4242)}) {
        albumItem album = oldAlbum();
        album.id = key;
        EXPECT_EQ(manager.updateAlbum(&album), 0) << key;
    }
    EXPECT_TRUE(state() == before);
    EXPECT_EQ(host.trace(), Lines());
}

struct UpdateRow {
    const char *name;
    QList<quint64> members;
    QList<quint64> wanted;
    QList<quint64> kept;
};

class UpdatedMembers : public AlbumEdit, public testing::WithParamInterface<UpdateRow>
{
};

TEST_P(UpdatedMembers, OfADeviceAlbumAreThoseThatAreWanted)
{
    record->assetKeys = GetParam().members;
    LibraryState expected = state();
    albumItem album = oldAlbum();
    album.id = Key;
    album.photoIDs = GetParam().wanted;
    const albumItem passed = album;
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    expectAlbum(album, passed);
    std::get<3>(expected.albums[Key]) = QStringLiteral("old name");
    std::get<6>(expected.albums[Key]) = GetParam().kept;
    EXPECT_TRUE(state() == expected);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_P(UpdatedMembers, OfThePhotoLibraryAreThoseThatAreWanted)
{
    manager.m_mapAlbum2Photos[synthetic::Library] = GetParam().members;
    LibraryState expected = state();
    albumItem album = oldAlbum();
    album.id = synthetic::Library;
    album.photoIDs = GetParam().wanted;
    const albumItem passed = album;
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    expectAlbum(album, passed);
    expected.albumPhotos[synthetic::Library] = GetParam().kept;
    for (const quint64 key : GetParam().members) {
        if (!GetParam().wanted.contains(key))
            expected.assets.remove(key);
    }
    EXPECT_TRUE(state() == expected);
    EXPECT_EQ(host.trace(), Lines());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, UpdatedMembers,
    testing::Values(UpdateRow{"All", {1, 2, 3}, {1, 2, 3}, {1, 2, 3}},
                    UpdateRow{"InTheModelsOrder", {1, 2, 3, 1}, {3, 2, 1}, {1, 2, 3, 1}},
                    UpdateRow{"None", {1, 2, 3}, {}, {}},
                    UpdateRow{"OfAnEmptyAlbum", {}, {1, 2}, {}},
                    UpdateRow{"Some", {1, 2, 3, 4, 5}, {5, 1, 3}, {1, 3, 5}},
                    UpdateRow{"WithoutAnyRepeat", {7, 1, 7, 2, 7}, {1, 2}, {1, 2}},
                    UpdateRow{"WithEveryRepeat", {7, 1, 7, 2, 7}, {7}, {7, 7, 7}},
                    UpdateRow{"AndNoOthers", {1, 2}, {1, 8, 9, 2, 4242}, {1, 2}},
                    UpdateRow{"KnownOrNot", {1, 4242, 2, 4243}, {4242, 2}, {4242, 2}},
                    UpdateRow{"InSixtyFourBits", {1, 2}, {0x100000001, 2}, {2}}),
    rowName<UpdateRow>);

TEST_F(UpdateAlbum, RenamesADeviceAlbumAlsoToNothing)
{
    albumItem album = fetched(Key);
    album.name = QStringLiteral("Renamed");
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(record->title, QStringLiteral("Renamed"));
    album.name.clear();
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_TRUE(record->title.isEmpty());
    EXPECT_EQ(fetched(Key).name, QStringLiteral("Album in Device"));
    EXPECT_EQ(record->assetKeys, (Ids{1, 2}));
}

TEST_F(UpdateAlbum, EmptiesAndRenamesADeviceAlbum)
{
    albumItem album;
    album.id = Key;
    album.name = QStringLiteral("Empty");
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(record->assetKeys, Ids());
    EXPECT_EQ(record->title, QStringLiteral("Empty"));
    EXPECT_EQ(manager.photoCnt(), 9);
}

TEST_F(UpdateAlbum, ChangesNothingForARecordAsItWasFetched)
{
    const LibraryState before = state();
    for (const quint64 key : {Key, synthetic::Library}) {
        albumItem album = fetched(key);
        EXPECT_EQ(manager.updateAlbum(&album), 0);
    }
    EXPECT_TRUE(state() == before);
}

TEST_F(UpdateAlbum, IgnoresTheUuidAndTheTypeOfTheRecord)
{
    albumItem album = fetched(Key);
    album.uuid = "another";
    album.type = 1;
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(record->uuid, QByteArray("album-41"));
    EXPECT_EQ(record->kind, 2);
    EXPECT_EQ(record->pk, Key);
}

TEST_F(UpdateAlbum, LeavesListsThatTheHostGotBeforeAlone)
{
    for (const quint64 key : {Key, synthetic::Library}) {
        const albumItem before = fetched(key);
        albumItem album = before;
        const quint64 removed = album.photoIDs.takeFirst();
        EXPECT_EQ(manager.updateAlbum(&album), 0);
        EXPECT_EQ(before.photoIDs.first(), removed);
        EXPECT_EQ(fetched(key).photoIDs, album.photoIDs);
    }
}

TEST_F(UpdateAlbum, TakesPhotosOutOfTheLibraryWhichDeviceAlbumsLoseWhenFetched)
{
    record->assetKeys = {1, 7, 2, 7};
    addSyntheticAlbum(synthetic::CameraRoll, {7});
    manager.m_mapAlbum2Photos[synthetic::Video] = {7};
    manager.m_mapAlbum2Photos[synthetic::Panorama] = {7, 8};
    albumItem library = fetched(synthetic::Library);
    library.photoIDs.removeAll(7);
    EXPECT_EQ(manager.updateAlbum(&library), 0);

    EXPECT_EQ(manager.photoCnt(), 8);
    photoItem photo;
    EXPECT_FALSE(manager.getPhoto(7, &photo));
    EXPECT_EQ(record->assetKeys, (Ids{1, 7, 2, 7}));
    EXPECT_EQ(fetched(Key).photoIDs, (Ids{1, 2}));
    EXPECT_EQ(record->assetKeys, (Ids{1, 2}));
    EXPECT_EQ(fetched(synthetic::CameraRoll).photoIDs, Ids{7});
    EXPECT_EQ(fetched(synthetic::Video).photoIDs, Ids{7});
    EXPECT_EQ(fetched(synthetic::Panorama).photoIDs, (Ids{7, 8}));
}

TEST_F(UpdateAlbum, FreesThePhotosThatItTakesOutAtOnceAndEach)
{
    QByteArray marker("marker", 6);
    for (const quint64 key : {7, 8, 9})
        model().assets.value(key)->uuid = marker;
    model().videos[7] = model().assets.value(7);
    model().videos[9] = model().assets.value(9);
    model().panoramas[8] = model().assets.value(8);
    manager.m_mapAlbum2Photos[synthetic::Library] = {7, 8, 7, 9, 8, 7};
    manager.m_mapUsedUUID["asset-7"] = true;

    albumItem album = fetched(synthetic::Library);
    album.photoIDs = {9};
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(model().assets.keys(), (Ids{1, 2, 3, 4, 5, 6, 9}));
    EXPECT_EQ(model().videos.keys(), Ids{9});
    EXPECT_EQ(model().panoramas.keys(), Ids());
    EXPECT_EQ(library(), Ids{9});
    EXPECT_TRUE(manager.m_mapUsedUUID.contains("asset-7"));

    model().assets.value(9)->uuid.clear();
    EXPECT_TRUE(marker.isDetached()) << "a record that was taken out still holds it";
}

TEST_F(UpdateAlbum, UpdatesThePhotoLibraryAlsoUnlistedAndWithoutItsList)
{
    manager.m_listAlbumIDs.removeAll(synthetic::Library);
    albumItem album;
    album.id = synthetic::Library;
    album.photoIDs = {8, 9};
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(library(), (Ids{8, 9}));
    EXPECT_FALSE(model().assets.contains(7));

    manager.m_mapAlbum2Photos.remove(synthetic::Library);
    album.photoIDs.clear();
    EXPECT_EQ(manager.updateAlbum(&album), 0);
    EXPECT_EQ(library(), Ids());
    EXPECT_EQ(manager.photoCnt(), 8);
}

TEST_F(UpdateAlbum, GoesByTheLibraryAlsoWhereTheDeviceHasAnAlbumOfItsKey)
{
    const Camera_Album *album = addHiddenAlbum(synthetic::Library, {1, 2});
    albumItem update;
    update.id = synthetic::Library;
    update.name = QStringLiteral("Renamed");
    update.photoIDs = {7, 8, 9};
    EXPECT_EQ(manager.updateAlbum(&update), 0);
    EXPECT_EQ(album->title, QStringLiteral("Album"));
    EXPECT_EQ(album->assetKeys, (Ids{1, 2}));
}

// --- rmAlbum.

TEST_F(RemoveAlbum, NeedsAModelAndSaysNothing)
{
    dropModel();
    const Ids listed = manager.albumIDs();
    for (const quint64 key : {Key, synthetic::Library, Unlisted})
        EXPECT_EQ(manager.rmAlbum(key), -1) << key;
    EXPECT_EQ(host.trace(), Lines());
    EXPECT_EQ(manager.albumIDs(), listed);
}

TEST_F(RemoveAlbum, RefusesThePhotoLibrary)
{
    const LibraryState before = state();
    EXPECT_EQ(manager.rmAlbum(synthetic::Library), -1);
    EXPECT_EQ(host.trace(),
              Lines{"Log(\"PHOTOLIB\", 2, \"You can not remove the photo library\")"});
    EXPECT_TRUE(state() == before);
}

TEST_F(RemoveAlbum, TakesEveryOccurrenceOfTheAlbumOutOfTheListAndKeepsTheRest)
{
    addSyntheticAlbum(synthetic::CameraRoll, {3});
    manager.m_mapUsedUUID[record->uuid] = true;
    manager.m_listAlbumIDs = {Key, synthetic::Library, synthetic::CameraRoll, Key, 5,
                              Key, synthetic::Video,   synthetic::Panorama};
    const Ids before = manager.albumIDs();
    LibraryState expected = state();
    for (const quint64 key : {Key, synthetic::CameraRoll, synthetic::Video, synthetic::Panorama}) {
        EXPECT_EQ(manager.rmAlbum(key), 0);
        expected.albumIds.removeAll(key);
        EXPECT_TRUE(state() == expected) << key;
        albumItem album = oldAlbum();
        host.clearRecords();
        EXPECT_FALSE(manager.getAlbum(key, &album));
        EXPECT_EQ(host.log(), Log{failure("Can not get album")});
        expectAlbum(album, oldAlbum());
    }
    EXPECT_EQ(manager.albumIDs(), (Ids{synthetic::Library, 5}));
    EXPECT_EQ(before.size(), 8);
}

TEST_F(RemoveAlbum, IgnoresWhatIsNotListed)
{
    addHiddenAlbum(77);
    const LibraryState before = state();
    for (const quint64 key : {quint64(77), Unlisted, quint64(0), AboveThirtyTwoBits + Key,
                              AboveThirtyTwoBits + synthetic::Library})
        EXPECT_EQ(manager.rmAlbum(key), 0) << key;
    EXPECT_TRUE(state() == before);
    EXPECT_EQ(host.trace(), Lines());
}

TEST_F(RemoveAlbum, ReadsItsKeyFromAListOfTheManagers)
{
    manager.m_listAlbumIDs = {Key, 5, Key, 5};
    const Ids ids = manager.albumIDs();
    EXPECT_EQ(manager.rmAlbum(ids.first()), 0);
    EXPECT_EQ(manager.albumIDs(), (Ids{5, 5}));
    EXPECT_EQ(manager.rmAlbum(manager.m_listAlbumIDs.first()), 0);
    EXPECT_EQ(manager.albumIDs(), Ids());
}

// --- Locks.

TEST_F(AlbumEditThreads, HoldTheRecordLockWhileAFailureIsLogged)
{
    photoItem photo;
    albumItem album;
    album.id = Key;
    const std::vector<std::function<int()>> refused = {
        [&] { return manager.addPhoto2Album(nullptr, Key); },
        [&] { return manager.addPhoto2Album(nullptr, &album); },
        [&] { return manager.addAlbum(nullptr); },
        [&] { return manager.updateAlbum(nullptr); },
        [&] { return manager.rmAlbum(synthetic::Library); },
    };
    for (const auto &edit : refused) {
        host.clearRecords();
        std::vector<bool> freeThen;
        host.onCall("Log", 1, [&] { freeThen.push_back(isFreeElsewhere(manager.m_recMutex)); });
        EXPECT_EQ(edit(), -1);
        EXPECT_EQ(freeThen, std::vector<bool>{false});
        EXPECT_TRUE(isFreeElsewhere(manager.m_recMutex));
    }
}

TEST_F(AlbumEditThreads, HoldTheRecordLockWhileTheKeyedOverloadRuns)
{
    AnsweringManager answering(&device);
    bool isFree = true;
    answering.onCall = [&] { isFree = isFreeElsewhere(answering.m_recMutex); };
    photoItem photo;
    albumItem album;
    album.id = Key;
    EXPECT_EQ(answering.addPhoto2Album(&photo, &album), 0);
    EXPECT_FALSE(isFree);
}

TEST_F(AlbumEditThreads, ReleaseBothLocksAndMayHoldTheRecordLockAlready)
{
    photoItem photo = newPhoto();
    photoItem another = newPhoto();
    albumItem album = fetched(Key);
    albumItem made;
    albumItem none;
    const std::vector<std::function<int()>> edits = {
        [&] { return manager.addPhoto2Album(&photo, &album); },
        [&] { return manager.addPhoto2Album(&photo, &none) + 1; },
        [&] { return manager.addPhoto2Album(&another, Unlisted); },
        [&] { return manager.addAlbum(&made) < 0 ? -1 : 0; },
        [&] { return manager.updateAlbum(&album); },
        [&] { return manager.updateAlbum(&none); },
        [&] { return manager.rmAlbum(Unlisted); },
        [&] { return manager.rmAlbum(Key); },
    };
    for (const auto &edit : edits) {
        EXPECT_EQ(edit(), 0);
        EXPECT_TRUE(isFreeElsewhere(manager.m_recMutex));
        EXPECT_TRUE(isFreeElsewhere(manager.m_mutex));
        manager.m_recMutex.lock();
        EXPECT_EQ(edit(), 0);
        EXPECT_FALSE(isFreeElsewhere(manager.m_recMutex));
        manager.m_recMutex.unlock();
    }
}

// --- After a real parse.

class ParsedAlbumEdit : public ParseFixture
{
protected:
    // The assets 3, 4, 7 and the video 20; the album 10 holds 3 and 7, the album 11 holds 4.
    ParsedAlbumEdit()
    {
        addPhotos({3, 4, 7});
        database.rows.assets.push_back(videoRow(20));
        addAlbum(10, 2, {3, 7});
        addAlbum(11, 1000, {4});
    }

    albumItem fetched(quint64 key)
    {
        albumItem album;
        EXPECT_TRUE(manager->getAlbum(key, &album)) << key;
        return album;
    }
};

TEST_F(ParsedAlbumEdit, RefusesEveryEditBeforeTheParse)
{
    photoItem photo = newPhoto();
    albumItem album = oldAlbum();
    EXPECT_EQ(manager->addPhoto2Album(&photo, quint64(10)), -1);
    EXPECT_EQ(manager->addPhoto2Album(&photo, &album), -1);
    EXPECT_EQ(manager->addAlbum(&album), -1);
    EXPECT_EQ(manager->updateAlbum(&album), -1);
    EXPECT_EQ(manager->rmAlbum(10), -1);
    EXPECT_EQ(manager->rmAlbum(synthetic::Library), -1);
    EXPECT_EQ(host.log(), (Log{NoPhoto, NoPhoto, NoAlbum, failure("can not get the album: 999")}));
    expectPhoto(photo, newPhoto());
    expectAlbum(album, oldAlbum());
    EXPECT_TRUE(LibraryState(*manager) == LibraryState(photo_manager(&device)));
}

TEST_F(ParsedAlbumEdit, GivesANewPhotoTheKeyAfterTheHighestOne)
{
    ASSERT_TRUE(parse());
    photoItem photo = newPhoto();
    EXPECT_EQ(manager->addPhoto2Album(&photo, Unlisted), 0);
    EXPECT_EQ(photo.id, 21U);
    expectNewUuid(photo.uuid);
    EXPECT_EQ(manager->photoCnt(), 5);
}

TEST_F(ParsedAlbumEdit, MakesTheAlbumTrip)
{
    ASSERT_TRUE(parse());
    host.clearRecords();
    albumItem trip;
    trip.name = QStringLiteral("Trip");
    trip.photoIDs = {3, 4};
    EXPECT_EQ(manager->addAlbum(&trip), 12);
    EXPECT_EQ(trip.type, 6);
    const albumItem seen = fetched(12);
    EXPECT_EQ(seen.name, QStringLiteral("Trip"));
    EXPECT_EQ(seen.type, 6);
    EXPECT_EQ(seen.photoIDs, (Ids{3, 4}));
    EXPECT_EQ(seen.uuid, trip.uuid);
    EXPECT_EQ(manager->albumIDs().last(), 12U);
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ParsedAlbumEdit, TakesAPhotoOutOfTheLibrary)
{
    ASSERT_TRUE(parse());
    albumItem library = fetched(synthetic::Library);
    ASSERT_EQ(library.photoIDs.removeAll(7), 1);
    ASSERT_EQ(library.photoIDs.removeAll(20), 1);
    host.clearRecords();
    EXPECT_EQ(manager->updateAlbum(&library), 0);
    EXPECT_EQ(manager->photoIDs(), (Ids{3, 4}));
    EXPECT_EQ(fetched(10).photoIDs, Ids{3});
    EXPECT_EQ(manager->m_pCameraDB->videos.keys(), Ids());
    EXPECT_EQ(fetched(synthetic::Video).photoIDs, Ids{20});
    EXPECT_EQ(host.log(), Log());
}

TEST_F(ParsedAlbumEdit, RefusesEditsAfterASecondParseThatFailed)
{
    ASSERT_TRUE(parse());
    host.removeDeviceFile("/PhotoData/Photos.sqlite");
    ASSERT_FALSE(manager->parseLib());
    const LibraryState before(*manager);
    host.clearRecords();
    photoItem photo = existingPhoto(3);
    albumItem album;
    album.id = 10;
    EXPECT_EQ(manager->addPhoto2Album(&photo, &album), -1);
    EXPECT_EQ(manager->addAlbum(&album), -1);
    EXPECT_EQ(manager->updateAlbum(&album), -1);
    EXPECT_EQ(manager->rmAlbum(10), -1);
    EXPECT_EQ(host.log(), (Log{NoPhoto, NoAlbum, failure("can not get the album: 10")}));
    EXPECT_TRUE(LibraryState(*manager) == before);
}

// Counts the connections that SQLite opens while it lives.
class OpenCounter
{
public:
    OpenCounter()
    {
        opened = 0;
        sqlite3_auto_extension(entryPoint());
    }
    ~OpenCounter() { sqlite3_cancel_auto_extension(entryPoint()); }
    OpenCounter(const OpenCounter &) = delete;
    OpenCounter &operator=(const OpenCounter &) = delete;

    int count() const { return opened; }

private:
    using EntryPoint = void (*)();
    static EntryPoint entryPoint() { return reinterpret_cast<EntryPoint>(&note); }
    static int note(sqlite3 *, const char **, const sqlite3_api_routines *)
    {
        ++opened;
        return SQLITE_OK;
    }

    static int opened;
};

int OpenCounter::opened = 0;

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

TEST_F(ParsedAlbumEdit, TouchesNeitherTheDeviceNorTheDatabase)
{
    ASSERT_TRUE(parse());
    const QStringList copies = QDir(work.path()).entryList(QDir::Files);
    ASSERT_FALSE(copies.isEmpty());
    QList<QByteArray> contents;
    for (const QString &copy : copies)
        contents.append(bytesOf(work.filePath(copy)));
    const OpenCounter connections;
    host.clearRecords();

    photoItem photo = newPhoto();
    albumItem album = fetched(10);
    EXPECT_EQ(manager->addPhoto2Album(&photo, &album), 0);
    EXPECT_EQ(manager->addPhoto2Album(&photo, quint64(11)), 0);
    EXPECT_EQ(manager->addAlbum(&album), 12);
    album.photoIDs.clear();
    EXPECT_EQ(manager->updateAlbum(&album), 0);
    EXPECT_EQ(manager->rmAlbum(album.id), 0);
    albumItem library = fetched(synthetic::Library);
    library.photoIDs.clear();
    EXPECT_EQ(manager->updateAlbum(&library), 0);

    EXPECT_EQ(host.trace(), Lines());
    EXPECT_EQ(connections.count(), 0);
    EXPECT_EQ(QDir(work.path()).entryList(QDir::Files), copies);
    for (int i = 0; i < copies.size(); ++i)
        EXPECT_EQ(bytesOf(work.filePath(copies[i])), contents[i]);
}

} // namespace
