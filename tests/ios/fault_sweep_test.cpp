#include "cameradb/owned_model.h"
#include "ios/reference_manager.h"
#include "support/fault_sweep.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using story::Lines;
using story::Outcome;
using Way = CallFault::Way;

const CallFault Refusal = {Way::Refused, 0};
const CallFault Error = {Way::Refused, -1};

const char *const Database = "/PhotoData/Photos.sqlite";
const int BlockSize = 4 * 1024 * 1024;
const int DeviceBlock = 16 * 1024; // what the device gives at a time

const story::Questions &asked()
{
    static const story::Questions all = {{1, 2, 3, 4, 5, 6, 99},
                                         {1000, 16777215, 16777214, 16777213, 11, 12, 13, 14, 99},
                                         11,
                                         12,
                                         {1, 2, 3, 4, 5, 6}};
    return all;
}

// The healthy device's lists, as every parse of it has to give them.
const char *const WholeList = "photos -> 6 { 1 2 3 4 5 6 }";

AssetRow asset(const AssetRow &row, int index, const char *fileName)
{
    AssetRow changed = row;
    changed.thumbnailIndex = index;
    changed.fileName = fileName;
    return changed;
}

// A library whose last rows are in the write-ahead log alone.
PhotosFiles makeFiles()
{
    PhotosDatabase database;
    database.rows.libraryUuids = {QByteArray("DATABASE-UUID")};
    database.rows.assets = {
        asset(photoRow(1), 0, "IMG_0001.JPG"), asset(photoRow(2), 1, "IMG_0002.JPG"),
        asset(photoRow(3), 2, "IMG_0003.JPG"), asset(videoRow(4), 1, "IMG_0004.MOV"),
        asset(photoRow(5), 0, "IMG_0005.JPG")};
    database.rows.assets.back().kindSubtype = 1;
    database.rows.attributes = {{1, 1, {}, 1000}, {2, 4, 12.5, 0}};
    database.rows.albums = {albumRow(11), albumRow(12, 1550)};
    for (const auto &member : std::vector<std::pair<int, int>>{{11, 1}, {11, 3}, {12, 5}, {12, 2}})
        database.join().add(member.first, member.second);
    PhotosRows later;
    later.assets = {asset(photoRow(6), 2, "IMG_0006.JPG")};
    later.albums = {albumRow(13)};
    later.sql = {"INSERT INTO Z_26ASSETS VALUES (13, 6, 0)"};
    return database.filesWithWal(later);
}

QByteArray syncList()
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--" + QByteArray(1500, ' ') +
           "-->\n<plist version=\"1.0\"><dict><key>libraryUUID</key><string>SYNC-UUID</string>"
           "</dict></plist>\n";
}

QByteArray packedFile(const thumbnail::Format &format)
{
    QByteArray records;
    for (int i = 0; i < 3; ++i)
        records += thumbnail::record(format.type, {60 - i, 50 + i}, i);
    return records;
}

// Ready pictures for some photos, under the first, a middle and the last name; records of
// two packed files for the others.
void installPictures(FakeHost &host)
{
    const QByteArray ready = "/PhotoData/Thumbnails/V2/DCIM/100APPLE/";
    host.setDeviceFile(ready + "IMG_0001.JPG/5005.JPG", QByteArray(3000, 'a'));
    host.setDeviceFile(ready + "IMG_0001.JPG/3505.JPG", QByteArray(300, 'b'));
    host.setDeviceFile(ready + "IMG_0002.JPG/3505.JPG", QByteArray(500, 'c'));
    host.setDeviceFile(ready + "IMG_0006.JPG/5003.JPG", QByteArray(700, 'd'));
    static const QByteArray middle = packedFile(thumbnail::middle());
    static const QByteArray smallest = packedFile(thumbnail::smallest());
    host.setDeviceFile(thumbnail::middle().path, middle);
    host.setDeviceFile(thumbnail::smallest().path, smallest);
    for (const char *name : {"1.JPG", "2.JPG", "3.JPG", "4.MOV", "5.JPG", "6.JPG"})
        host.setDeviceFile(QByteArray("DCIM/100APPLE/IMG_000") + name, QByteArray(20, 'x'));
}

void installFiles(FakeHost &host)
{
    static const PhotosFiles files = makeFiles();
    const QByteArray path = Database;
    host.setDeviceFile(path, files.database);
    host.setDeviceFile(path + "-wal", files.wal);
    host.setDeviceFile(path + "-shm", files.shm);
    for (const char *suffix : {"", "-wal", "-shm"})
        host.shortenReads(path + suffix, DeviceBlock);
    host.setDeviceFile("/Photos/Sync/CurrentLibraryUUID.plist", syncList());
    installPictures(host);
}

class IosFaultSweep : public FaultSweep
{
protected:
    IosFaultSweep() : FaultSweep(asked()) {}

    std::shared_ptr<void> install(FakeHost &host, FakeIPod &device) override
    {
        device.localData = root.path() + "/copies/";
        installFiles(host);
        return nullptr;
    }

    // A second parse adds to the first, so it gives a whole library only after a failed one.
    std::string parseAgain(story::Host &person, photo_manager_int *library, bool parsed) override
    {
        auto *manager = dynamic_cast<photo_manager *>(library);
        if (parsed || manager == nullptr)
            return {};
        CameraDB *const overwritten = manager->m_pCameraDB;
        EXPECT_TRUE(person.parse());
        if (overwritten != nullptr)
            DeleteModel()(overwritten); // the manager's, which forgets it
        person.list();
        person.look();
        EXPECT_EQ(manager->photoIDs(), asked().listed);
        return "photos -> " + std::to_string(manager->photoCnt()) + ' ' +
               story::keys(manager->photoIDs());
    }

    /// Sweeps every way in which each call of `operation` can fail.
    void sweepCallsOf(const std::string &operation)
    {
        for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
            if (story::operationOf(calls[i]) != operation)
                continue;
            for (const CallFault &fault : story::waysToFail(calls[i])) {
                Faults faults = single(i, fault);
                faults.isUnforeseeable = inventsBytes(calls[i], fault);
                sweep(faults);
            }
        }
    }

    /// Sweeps a disk on which no block has room from some block on.
    void sweepFullDisk()
    {
        for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
            if (story::operationOf(calls[i]) != "vFileWrite")
                continue;
            for (const CallFault &fault : {Refusal, Error, CallFault{Way::Cut, 100}})
                sweep({"full at " + calls[i], fullFrom(static_cast<int>(i) + 1, fault)});
        }
    }

private:
    // What there is room for goes to the `first` call.
    static std::function<std::optional<CallFault>(const CountedCall &)>
    fullFrom(int first, const CallFault &fault)
    {
        return [first, fault](const CountedCall &call) {
            if (call.operation != "vFileWrite" || call.number < first)
                return std::optional<CallFault>();
            return std::make_optional(call.number == first ? fault : Refusal);
        };
    }

    // Whether the fault gives out bytes of a buffer that stays as it was.
    static bool inventsBytes(const std::string &call, const CallFault &fault)
    {
        if (story::operationOf(call) != "vFileRead")
            return false;
        const bool isCopy = call.find(", 4194304)") != std::string::npos;
        const bool isRecord = call.find(", 28800)") != std::string::npos;
        if (fault.way == Way::Feigned)
            return isCopy || isRecord;
        return isCopy && fault.way == Way::Lied && fault.value <= BlockSize &&
               fault.value > std::stoll(call.substr(call.find("-> ") + 3));
    }
};

// --- One fault

struct OperationRow {
    std::string name;
};

std::ostream &operator<<(std::ostream &out, const OperationRow &row)
{
    return out << row.name;
}

class IosSingleFault : public IosFaultSweep, public testing::WithParamInterface<OperationRow>
{
};

TEST_P(IosSingleFault, InEveryWayLeavesAWorkingHost)
{
    sweepCallsOf(GetParam().name);
    EXPECT_GT(stories, 0);
}

const std::vector<OperationRow> Operations = {
    {"isIOSDevice"}, {"isAccessBlocked"}, {"devicePath"}, {"localDataPath"},
    {"vDevOpen"},    {"vDevCreateDir"},   {"vFileOpen"},  {"vFileRead"},
    {"vFileWrite"},  {"vFileSeek"},       {"vFileTell"},  {"vDevFileSize"},
};

INSTANTIATE_TEST_SUITE_P(Calls, IosSingleFault, testing::ValuesIn(Operations),
                         rowName<OperationRow>);

TEST_F(IosFaultSweep, KnowsEveryOperationThatCanFail)
{
    std::set<std::string> swept;
    for (const OperationRow &row : Operations)
        swept.insert(row.name);
    EXPECT_EQ(failingOperations(), swept);
}

TEST_F(IosFaultSweep, StartsFromAStoryWithoutFailures)
{
    EXPECT_TRUE(healthy.parsed);
    EXPECT_EQ(healthy.answers[1], WholeList);
    EXPECT_EQ(healthy.answers[2], "albums -> 7 { 1000 16777215 16777214 16777213 11 12 13 }");
    EXPECT_EQ(healthy.answers[3], "uuid -> 0 \"SYNC-UUID\"");
    EXPECT_EQ(healthy.handles, Lines{"file10"}); // the packed one
    EXPECT_EQ(healthy.newList, WholeList);
    if (countsExactly()) {
        // The texts of two sync lists, which belong to libplist.
        const qint64 left = tell({}).heapLeft;
        EXPECT_GT(left, 0);
        EXPECT_LT(left, 128);
    }
}

// --- What each failure is promised to give

struct PromiseRow {
    std::string name;
    std::string call; ///< how the line of the call begins
    int nth;          ///< among those that begin so, from 1
    CallFault fault;
    bool parsed;
    std::vector<QByteArray> failures; ///< beyond those of the healthy story, at level 2
};

std::ostream &operator<<(std::ostream &out, const PromiseRow &row)
{
    return out << row.name;
}

class IosPromisedFailure : public IosFaultSweep, public testing::WithParamInterface<PromiseRow>
{
protected:
    std::size_t placeOf(const std::string &start, int nth) const
    {
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (calls[i].rfind(start, 0) == 0 && --nth == 0)
                return i;
        }
        throw std::out_of_range("no call " + start);
    }

    // The log lines at level 2, up to the end of the parse when it fails, in any order.
    static std::multiset<std::string> failuresOf(const Outcome &outcome)
    {
        std::multiset<std::string> lines;
        for (const std::string &line : outcome.log) {
            if (line.rfind("PHOTOLIB/2", 0) == 0)
                lines.insert(line);
            if (line.find("Can not parse photo lib") != std::string::npos)
                break;
        }
        return lines;
    }

    std::multiset<std::string> promised(const PromiseRow &row) const
    {
        std::multiset<std::string> lines;
        if (row.parsed)
            lines = failuresOf(healthy);
        for (const QByteArray &text : row.failures)
            lines.insert(testing::PrintToString(failure(text)));
        return lines;
    }
};

TEST_P(IosPromisedFailure, IsToldByTheStatusAndTheseLines)
{
    const PromiseRow &row = GetParam();
    const Faults faults = single(placeOf(row.call, row.nth), row.fault);
    const Outcome outcome = tell(faults);
    EXPECT_EQ(injected, 1);
    EXPECT_EQ(outcome.parsed, row.parsed);
    EXPECT_EQ(failuresOf(outcome), promised(row));
}

// The last two lines of every parse that read nothing.
std::vector<QByteArray> unread(const std::vector<QByteArray> &lines)
{
    std::vector<QByteArray> all = lines;
    all.insert(all.end(), {"Can not load lib", "Can not parse photo lib"});
    return all;
}

std::vector<PromiseRow> promises()
{
    const QByteArray noDatabase = "Can not open file: /PhotoData/Photos.sqlite";
    return {
        {"Device", "vDevOpen(2", 1, Refusal, false, unread({"Can not open device"})},
        {"DeviceName", "devicePath", 1, Refusal, false, unread({"Can not open device"})},
        {"DatabaseOpen", "vFileOpen(dev1", 1, Refusal, false, unread({noDatabase})},
        {"DatabaseRead", "vFileRead(file1", 1, Error, false,
         unread({"Can not parse camera album"})},
        {"DatabaseEmpty", "vFileRead(file1", 1, Refusal, false,
         unread({"Can not parse camera album"})},
        {"DatabaseWrite", "vFileWrite(file2", 1, Error, false,
         unread({"Can not parse camera album"})},
        {"AccessToDatabase",
         "isAccessBlocked",
         1,
         {Way::Lied, 1},
         false,
         unread({"Can not parse camera album"})},
        {"AccessAtTheEnd",
         "isAccessBlocked",
         4,
         {Way::Lied, 1},
         false,
         {"Can not parse photo lib"}},
        {"LogDevice",
         "vDevOpen(2",
         2,
         Refusal,
         true,
         {"Can not open device", "Can not get photo", "Can not get album"}},
        {"LogOpen",
         "vFileOpen(dev3",
         1,
         Refusal,
         true,
         {noDatabase + "-wal", "Can not get photo", "Can not get album"}},
        {"SharedMemoryOpen", "vFileOpen(dev5", 1, Refusal, true, {noDatabase + "-shm"}},
        {"SyncListDevice", "vDevOpen(2", 4, Refusal, true,
         std::vector<QByteArray>(6, "Can not decide teh iThmb file")},
        {"SyncListOpen", "vFileOpen(dev7, \"/Photos/Sync", 1, Refusal, true, {}},
        {"SyncListRead", "vFileRead(file7", 1, Error, true, {}},
        {"PhotoSize", "vDevFileSize", 1, {Way::Lied, -1}, true, {}},
        {"ReadyOpen", "vFileOpen(dev7, \"/PhotoData/Thumbnails/V2", 1, Refusal, true, {}},
        {"PackedSeek",
         "vFileSeek(file10",
         1,
         Error,
         true,
         {"Can seek to offset 57656 while getting ithmb"}},
        {"PackedData",
         "vFileRead(file10, 28800",
         1,
         {Way::Cut, 28799},
         true,
         {"Can not read ithmb data"}},
        {"PackedTrailer",
         "vFileRead(file10, 28)",
         1,
         {Way::Cut, 27},
         true,
         {"Can not read ithmb info"}},
    };
}

INSTANTIATE_TEST_SUITE_P(Calls, IosPromisedFailure, testing::ValuesIn(promises()),
                         rowName<PromiseRow>);

// --- Several faults

TEST_F(IosFaultSweep, LeavesAWorkingHostWhereverTheDeviceIsTakenAway)
{
    sweepLosses([](const CountedCall &call) { return call.onDevice; });
}

TEST_F(IosFaultSweep, LeavesAWorkingHostWhereverTheDeviceIsLocked)
{
    const auto isAsked = [](const CountedCall &call) {
        return call.onDevice || call.operation == "isAccessBlocked";
    };
    for (const char *operation : {"isAccessBlocked", "vFileOpen"})
        sweepLosses(isAsked, operation);
}

TEST_F(IosFaultSweep, LeavesAWorkingHostWhereverTheDiskIsFull)
{
    sweepFullDisk();
}

// A library of several blocks of the copy's own size, without journals.
class IosLargeFaultSweep : public IosFaultSweep
{
protected:
    std::shared_ptr<void> install(FakeHost &host, FakeIPod &device) override
    {
        static const QByteArray database = largeDatabase();
        device.localData = root.path() + "/copies/";
        host.setDeviceFile(Database, database);
        installPictures(host);
        return nullptr;
    }

private:
    static QByteArray largeDatabase()
    {
        PhotosDatabase database;
        for (int key = 1; key <= 6; ++key)
            database.rows.assets.push_back(photoRow(key));
        database.rows.sql = {"CREATE TABLE FILLER (BYTES)",
                             "INSERT INTO FILLER VALUES (zeroblob(9000000))"};
        return database.bytes();
    }
};

TEST_F(IosLargeFaultSweep, LeavesAWorkingHostWhereverTheDiskIsFull)
{
    sweepFullDisk();
    EXPECT_EQ(stories, 9); // three blocks
}

TEST_F(IosFaultSweep, LeavesAWorkingHostAfterTwoFaultsInARow)
{
    sweepPairs();
}

// A library that was read and used is read again.
class IosSecondParseFaultSweep : public IosFaultSweep
{
protected:
    void goOn(story::Host &person, photo_manager_int *library) override
    {
        auto *manager = static_cast<photo_manager *>(library);
        CameraDB *const overwritten = manager->m_pCameraDB;
        person.parse();
        DeleteModel()(overwritten); // the manager forgets it, whatever becomes of the parse
        person.list();
        person.look();
    }
};

TEST_F(IosSecondParseFaultSweep, LeavesAWorkingHost)
{
    const auto second = std::find(calls.rbegin(), calls.rend(), healthy.calls[1]);
    ASSERT_NE(second, calls.rend());
    const auto start = static_cast<std::size_t>(std::distance(second, calls.rend())) - 1;
    ASSERT_GT(start, 1U);
    for (std::size_t i = start; i < calls.size() && !HasFailure(); ++i) {
        if (!story::waysToFail(calls[i]).empty())
            sweep(single(i, story::refusal(story::operationOf(calls[i]))));
    }
    EXPECT_GT(stories, 50);
}

TEST_F(IosFaultSweep, LeavesAReleaseThatAsksTheHostForNothing)
{
    for (const char *operation : {"vDevOpen", "vFileOpen", "vFileTell"})
        sweepReleases(operation);
}

} // namespace
