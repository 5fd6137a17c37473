#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "boundary/virtual_slots.h"
#include "host/device_database.h"
#include "host/iipod.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <type_traits>

namespace {

// The last operation that ran in one of the classes below, with what it was given.
struct LastCall {
    std::string operation;
    const void *first = nullptr;
    const void *second = nullptr;
    int deletions = 0;
};

LastCall last;

int note(const char *operation, const void *first = nullptr, const void *second = nullptr)
{
    last.operation = operation;
    last.first = first;
    last.second = second;
    return 7;
}

class NotedDevice : public IIPod
{
public:
    ~NotedDevice() override { note("~"); }
    static void *operator new(std::size_t size) { return ::operator new(size); }
    static void *operator new(std::size_t, void *place) { return place; }
    static void operator delete(void *memory)
    {
        ++last.deletions;
        ::operator delete(memory);
    }

    bool isAccessBlocked() override { return note("isAccessBlocked") != 0; }
    QString devicePath() override { return noted("devicePath"); }
    QString driveName() override { return noted("driveName"); }
    bool isIOSDevice() override { return note("isIOSDevice") != 0; }
    QString localDataPath() override { return noted("localDataPath"); }

private:
    static QString noted(const char *operation)
    {
        note(operation);
        return QString::fromLatin1(operation);
    }
};

class NotedManager : public photo_manager_int
{
public:
    ~NotedManager() override { note("~"); }
    static void *operator new(std::size_t size) { return ::operator new(size); }
    static void *operator new(std::size_t, void *place) { return place; }
    static void operator delete(void *memory)
    {
        ++last.deletions;
        ::operator delete(memory);
    }

    bool parseLib() override { return note("parseLib") != 0; }
    void cancleParse() override { note("cancleParse"); }
    QString getUUID() override
    {
        note("getUUID");
        return QStringLiteral("uuid");
    }
    int photoCnt() override { return note("photoCnt"); }
    QList<quint64> photoIDs() override
    {
        note("photoIDs");
        return {1, 2};
    }
    bool getPhoto(const quint64 &id, photoItem *item) override
    {
        return note("getPhoto", &id, item) != 0;
    }
    int getPhotoThumbnail(const quint64 &id, QByteArray &data) override
    {
        return note("getPhotoThumbnail", &id, &data);
    }
    int getSourcePhoto(const quint64 &id, QByteArray &data) override
    {
        return note("getSourcePhoto", &id, &data);
    }
    int albumCnt() override { return note("albumCnt"); }
    QList<quint64> albumIDs() override
    {
        note("albumIDs");
        return {3, 4};
    }
    bool getAlbum(const quint64 &id, albumItem *item) override
    {
        return note("getAlbum", &id, item) != 0;
    }
    int addPhoto2Album(photoItem *photo, const quint64 &albumId) override
    {
        return note("addPhoto2Album by key", photo, &albumId);
    }
    int addPhoto2Album(photoItem *photo, albumItem *album) override
    {
        return note("addPhoto2Album by record", photo, album);
    }
    int addAlbum(albumItem *album) override { return note("addAlbum", album); }
    int rmAlbum(const quint64 &id) override { return note("rmAlbum", &id); }
    int updateAlbum(albumItem *album) override { return note("updateAlbum", album); }
};

class NotedLibrary : public iphotolib
{
public:
    ~NotedLibrary() override { note("~"); }
    QList<quint32> photoIDs() override
    {
        note("photoIDs");
        return {5};
    }
    QList<quint32> albumIDs() override
    {
        note("albumIDs");
        return {6};
    }
    int getAlbum(const quint32 *id, itdb_pl *album) override { return note("getAlbum", id, album); }
    int getPhoto(const quint32 *id, itdb_trk *item) override { return note("getPhoto", id, item); }
};

class NotedDatabase : public iitdb
{
public:
    ~NotedDatabase() override { note("~"); }
    int parse() override { return note("parse"); }
    iphotolib *photoLib() override
    {
        note("photoLib");
        return nullptr;
    }
};

class VirtualTables : public testing::Test
{
protected:
    VirtualTables() { last = LastCall(); }

    static void expectLast(const char *operation, const void *first = nullptr,
                           const void *second = nullptr)
    {
        EXPECT_EQ(last.operation, operation);
        EXPECT_EQ(last.first, first);
        EXPECT_EQ(last.second, second);
    }
};

// The complete destructor leaves the storage alone, the deleting one frees it too.
template <typename Class>
void expectDestructorsIn(std::size_t completeSlot)
{
    alignas(Class) unsigned char storage[sizeof(Class)];
    void *placed = new (storage) Class;
    vtable::call<void>(placed, completeSlot);
    EXPECT_EQ(last.operation, "~");
    EXPECT_EQ(last.deletions, 0);

    last = LastCall();
    vtable::call<void>(new Class, completeSlot + 1);
    EXPECT_EQ(last.operation, "~");
    EXPECT_EQ(last.deletions, 1);
}

TEST_F(VirtualTables, HoldTheDevicesOperationsInTheSlotsThatThePlugInCalls)
{
    EXPECT_EQ(vtable::of(&IIPod::isAccessBlocked), 9U);
    EXPECT_EQ(vtable::of(&IIPod::devicePath), 18U);
    EXPECT_EQ(vtable::of(&IIPod::driveName), 20U);
    EXPECT_EQ(vtable::of(&IIPod::isIOSDevice), 41U);
    EXPECT_EQ(vtable::of(&IIPod::localDataPath), 49U);
}

TEST_F(VirtualTables, ReachTheDevicesOperationsThroughTheTableItself)
{
    NotedDevice device;
    EXPECT_TRUE(vtable::call<bool>(&device, 9));
    expectLast("isAccessBlocked");
    EXPECT_EQ(vtable::call<QString>(&device, 18), QStringLiteral("devicePath"));
    EXPECT_EQ(vtable::call<QString>(&device, 20), QStringLiteral("driveName"));
    EXPECT_TRUE(vtable::call<bool>(&device, 41));
    expectLast("isIOSDevice");
    EXPECT_EQ(vtable::call<QString>(&device, 49), QStringLiteral("localDataPath"));
}

TEST_F(VirtualTables, StartWithTheDevicesDestructors)
{
    expectDestructorsIn<NotedDevice>(1);
}

TEST_F(VirtualTables, GiveTheDeviceReservedOperationsThatDoNothingAndNeedNoBody)
{
    static_assert(!std::is_abstract<NotedDevice>::value, "only the five are asked of a host");
    NotedDevice device;
    for (std::size_t slot = 3; slot <= 48; ++slot) {
        if (slot == 9 || slot == 18 || slot == 20 || slot == 41)
            continue;
        vtable::call<void>(&device, slot);
        expectLast("");
    }
}

TEST_F(VirtualTables, HoldTheManagersSixteenOperationsInOrder)
{
    using Manager = photo_manager_int;
    using ByKey = int (Manager::*)(photoItem *, const quint64 &);
    using ByRecord = int (Manager::*)(photoItem *, albumItem *);
    EXPECT_EQ(vtable::of(&Manager::parseLib), 1U);
    EXPECT_EQ(vtable::of(&Manager::cancleParse), 2U);
    EXPECT_EQ(vtable::of(&Manager::getUUID), 3U);
    EXPECT_EQ(vtable::of(&Manager::photoCnt), 4U);
    EXPECT_EQ(vtable::of(&Manager::photoIDs), 5U);
    EXPECT_EQ(vtable::of(&Manager::getPhoto), 6U);
    EXPECT_EQ(vtable::of(&Manager::getPhotoThumbnail), 7U);
    EXPECT_EQ(vtable::of(&Manager::getSourcePhoto), 8U);
    EXPECT_EQ(vtable::of(&Manager::albumCnt), 9U);
    EXPECT_EQ(vtable::of(&Manager::albumIDs), 10U);
    EXPECT_EQ(vtable::of(&Manager::getAlbum), 11U);
    EXPECT_EQ(vtable::of(static_cast<ByKey>(&Manager::addPhoto2Album)), 12U);
    EXPECT_EQ(vtable::of(static_cast<ByRecord>(&Manager::addPhoto2Album)), 13U);
    EXPECT_EQ(vtable::of(&Manager::addAlbum), 14U);
    EXPECT_EQ(vtable::of(&Manager::rmAlbum), 15U);
    EXPECT_EQ(vtable::of(&Manager::updateAlbum), 16U);
}

TEST_F(VirtualTables, ReachTheManagersQueriesThroughTheTableItself)
{
    NotedManager manager;
    const quint64 id = 11;
    photoItem photo;
    albumItem album;
    QByteArray data;

    EXPECT_TRUE(vtable::call<bool>(&manager, 1));
    expectLast("parseLib");
    vtable::call<void>(&manager, 2);
    expectLast("cancleParse");
    EXPECT_EQ(vtable::call<QString>(&manager, 3), QStringLiteral("uuid"));
    expectLast("getUUID");
    EXPECT_EQ(vtable::call<int>(&manager, 4), 7);
    expectLast("photoCnt");
    EXPECT_EQ(vtable::call<QList<quint64>>(&manager, 5), (QList<quint64>{1, 2}));
    EXPECT_TRUE(vtable::call<bool>(&manager, 6, &id, &photo));
    expectLast("getPhoto", &id, &photo);
    EXPECT_EQ(vtable::call<int>(&manager, 7, &id, &data), 7);
    expectLast("getPhotoThumbnail", &id, &data);
    EXPECT_EQ(vtable::call<int>(&manager, 8, &id, &data), 7);
    expectLast("getSourcePhoto", &id, &data);
    EXPECT_EQ(vtable::call<int>(&manager, 9), 7);
    expectLast("albumCnt");
    EXPECT_EQ(vtable::call<QList<quint64>>(&manager, 10), (QList<quint64>{3, 4}));
    EXPECT_TRUE(vtable::call<bool>(&manager, 11, &id, &album));
    expectLast("getAlbum", &id, &album);
}

TEST_F(VirtualTables, ReachTheManagersEditsThroughTheTableItself)
{
    NotedManager manager;
    const quint64 id = 12;
    photoItem photo;
    albumItem album;

    EXPECT_EQ(vtable::call<int>(&manager, 12, &photo, &id), 7);
    expectLast("addPhoto2Album by key", &photo, &id);
    EXPECT_EQ(vtable::call<int>(&manager, 13, &photo, &album), 7);
    expectLast("addPhoto2Album by record", &photo, &album);
    EXPECT_EQ(vtable::call<int>(&manager, 14, &album), 7);
    expectLast("addAlbum", &album);
    EXPECT_EQ(vtable::call<int>(&manager, 15, &id), 7);
    expectLast("rmAlbum", &id);
    EXPECT_EQ(vtable::call<int>(&manager, 16, &album), 7);
    expectLast("updateAlbum", &album);
}

TEST_F(VirtualTables, EndWithTheManagersDestructors)
{
    expectDestructorsIn<NotedManager>(17);
}

TEST_F(VirtualTables, LeaveTheManagersInterfaceWithoutData)
{
    EXPECT_EQ(sizeof(photo_manager_int), sizeof(void *));
    EXPECT_TRUE(std::is_abstract<photo_manager_int>::value);
    EXPECT_TRUE(std::has_virtual_destructor<photo_manager_int>::value);
}

TEST_F(VirtualTables, HoldTheDatabasesOperationsInOrder)
{
    EXPECT_EQ(vtable::of(&iitdb::parse), 1U);
    EXPECT_EQ(vtable::of(&iitdb::photoLib), 2U);

    NotedDatabase database;
    EXPECT_EQ(vtable::call<int>(&database, 1), 7);
    expectLast("parse");
    EXPECT_EQ(vtable::call<iphotolib *>(&database, 2), nullptr);
    expectLast("photoLib");
}

TEST_F(VirtualTables, HoldTheClassicLibrarysOperationsInOrder)
{
    EXPECT_EQ(vtable::of(&iphotolib::photoIDs), 1U);
    EXPECT_EQ(vtable::of(&iphotolib::albumIDs), 2U);
    EXPECT_EQ(vtable::of(&iphotolib::getAlbum), 3U);
    EXPECT_EQ(vtable::of(&iphotolib::getPhoto), 4U);

    NotedLibrary library;
    const quint32 id = 1;
    itdb_pl album;
    itdb_trk item;
    EXPECT_EQ(vtable::call<QList<quint32>>(&library, 1), QList<quint32>{5});
    EXPECT_EQ(vtable::call<QList<quint32>>(&library, 2), QList<quint32>{6});
    EXPECT_EQ(vtable::call<int>(&library, 3, &id, &album), 7);
    expectLast("getAlbum", &id, &album);
    EXPECT_EQ(vtable::call<int>(&library, 4, &id, &item), 7);
    expectLast("getPhoto", &id, &item);
}

TEST_F(VirtualTables, EndWithTheDatabasesAndItsLibrarysDestructors)
{
    alignas(NotedDatabase) unsigned char database[sizeof(NotedDatabase)];
    vtable::call<void>(new (database) NotedDatabase, 3);
    EXPECT_EQ(last.operation, "~");

    last = LastCall();
    alignas(NotedLibrary) unsigned char library[sizeof(NotedLibrary)];
    vtable::call<void>(new (library) NotedLibrary, 5);
    EXPECT_EQ(last.operation, "~");
}

} // namespace
