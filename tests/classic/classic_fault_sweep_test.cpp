#include "support/fault_sweep.h"
#include "support/row_name.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace {

using Way = CallFault::Way;

const story::Questions &asked()
{
    static const story::Questions all = {
        {5, 6, 7, 8, 0xfffffff0, 99}, {21, 22, 99}, 21, 22, {5, 6, 7, 8, 0xfffffff0}};
    return all;
}

itdb_photo variant(const QString &fileName, qint32 offset, qint32 size)
{
    itdb_photo photo;
    photo.fileName = fileName;
    photo.offset = offset;
    photo.size = size;
    return photo;
}

itdb_trk item(quint32 timeStamp, const QList<itdb_photo> &variants)
{
    itdb_trk track;
    track.timeStamp = timeStamp;
    track.thumbs = variants;
    return track;
}

// Photos of all kinds: with several variants and with one, with files that end too early or
// are missing, and without any variant.
void fill(FakePhotoLibrary &library)
{
    const QString file = QStringLiteral(":Thumbs:F1019_1.ithmb");
    library.addPhoto(5, item(1400000000, {variant(file, 0, 300), variant(file, 300, 100),
                                          variant(file, 400, 100), variant(file, 0, 900)}));
    library.addPhoto(6, item(1500000000, {variant(file, 10, 200)}));
    library.addPhoto(7, item(4000000000, {variant(file, 900, 200)}));
    library.addPhoto(8, item(0, {variant(QStringLiteral(":Thumbs:none.ithmb"), 0, 10)}));
    library.addPhoto(0xfffffff0, item(1, {}));
    for (const quint32 key : {21U, 22U}) {
        itdb_pl album;
        album.name = QStringLiteral("Album ") + QString::number(key);
        album.photoIDs = {5, key, 0xfffffff0};
        library.addAlbum(key, album);
    }
}

// The databases of one story; a released one is not given out again.
using Databases = std::array<FakePhotoDB, 8>;

class ClassicFaultSweep : public FaultSweep
{
protected:
    ClassicFaultSweep() : FaultSweep(asked())
    {
        const QString folder = root.path() + "/E:/Photos/Thumbs";
        QDir().mkpath(folder);
        QFile file(folder + "/F1019_1.ithmb");
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(1000, 'p'));
    }

    std::shared_ptr<void> install(FakeHost &host, FakeIPod &device) override
    {
        device.iosDevice = false;
        device.drive = root.path() + "/E";
        host.setUnpacked("an image");
        const auto databases = std::make_shared<Databases>();
        for (std::size_t i = 0; i < databases->size(); ++i) {
            FakePhotoDB *const database = &(*databases)[i];
            fill(database->library);
            host.onCall("getPhotoDBInt", static_cast<int>(i) + 1,
                        [&host, database] { host.setPhotoDatabase(database); });
        }
        return databases;
    }

    // Also of a library that was read before nothing may be left when it is not read again.
    void goOn(story::Host &person, photo_manager_int *) override
    {
        person.parse();
        person.list();
        person.look();
    }

    // Each parse starts afresh, whatever became of the one before.
    std::string parseAgain(story::Host &person, photo_manager_int *library, bool) override
    {
        if (dynamic_cast<ReferenceManager *>(library) || dynamic_cast<photo_manager *>(library))
            return {}; // the host took the iPod for another device
        EXPECT_TRUE(person.parse());
        person.list();
        person.look();
        EXPECT_EQ(library->photoIDs(), questions.listed);
        return wholeList();
    }

    void sweepCallsOf(const std::string &operation)
    {
        for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
            if (story::operationOf(calls[i]) != operation)
                continue;
            for (const CallFault &fault : story::waysToFail(calls[i]))
                sweep(single(i, fault));
        }
    }
};

struct OperationRow {
    std::string name;
    std::string operation;
};

std::ostream &operator<<(std::ostream &out, const OperationRow &row)
{
    return out << row.operation;
}

class ClassicSingleFault : public ClassicFaultSweep,
                           public testing::WithParamInterface<OperationRow>
{
};

TEST_P(ClassicSingleFault, InEveryWayLeavesAWorkingHost)
{
    sweepCallsOf(GetParam().operation);
    EXPECT_GT(stories, 0);
}

const std::vector<OperationRow> Operations = {
    {"Kind", "isIOSDevice"},
    {"Database", "getPhotoDBInt"},
    {"Parse", "iitdb::parse"},
    {"Library", "iitdb::photoLib"},
    {"PhotoList", "iphotolib::photoIDs"},
    {"AlbumList", "iphotolib::albumIDs"},
    {"Photo", "iphotolib::getPhoto"},
    {"Album", "iphotolib::getAlbum"},
    {"Drive", "driveName"},
    {"Unpacking", "unpackiThmb"},
};

INSTANTIATE_TEST_SUITE_P(Calls, ClassicSingleFault, testing::ValuesIn(Operations),
                         rowName<OperationRow>);

TEST_F(ClassicFaultSweep, KnowsEveryOperationThatCanFail)
{
    std::set<std::string> swept;
    for (const OperationRow &row : Operations)
        swept.insert(row.operation);
    EXPECT_EQ(failingOperations(), swept);
}

TEST_F(ClassicFaultSweep, StartsFromAStoryWithoutFailures)
{
    EXPECT_TRUE(healthy.parsed);
    EXPECT_EQ(healthy.answers[1], wholeList());
    EXPECT_EQ(healthy.answers[2], "albums -> 2 { 21 22 }");
    EXPECT_EQ(healthy.log, story::Lines());
    EXPECT_EQ(healthy.handles, story::Lines());
    if (countsExactly()) {
        EXPECT_EQ(tell({}).heapLeft, 0);
    }
}

// --- What each failure is promised to give

struct PromiseRow {
    std::string name;
    std::string operation;
    qint64 value;
    bool parsed;
    std::vector<LogLine> log;
    std::string photos; ///< the answer to the listing of all photos
};

std::ostream &operator<<(std::ostream &out, const PromiseRow &row)
{
    return out << row.name;
}

class ClassicPromisedFailure : public ClassicFaultSweep,
                               public testing::WithParamInterface<PromiseRow>
{
};

TEST_P(ClassicPromisedFailure, IsToldByTheStatusAndTheseLines)
{
    const PromiseRow &row = GetParam();
    const std::string operation = row.operation;
    const CallFault fault = {Way::Refused, row.value};
    const story::Outcome outcome =
        tell({row.name, [operation, fault](const CountedCall &call) {
                  return call.operation == operation ? std::make_optional(fault) : std::nullopt;
              }});
    EXPECT_EQ(outcome.parsed, row.parsed);
    EXPECT_EQ(outcome.answers[1], row.photos);
    story::Lines lines;
    for (int parse = 0; parse < 2; ++parse) {
        for (const LogLine &line : row.log)
            lines.push_back(testing::PrintToString(line));
    }
    EXPECT_EQ(outcome.log, lines);
}

std::vector<PromiseRow> promises()
{
    const LogLine unread = failure("can not parse photo db in ipod");
    const std::string none = "photos -> 0 { }";
    const std::string all = "photos -> 5 " + story::keys(asked().listed);
    return {
        {"Database", "getPhotoDBInt", 0, false, {unread}, none},
        {"Parse", "iitdb::parse", 1, false, {unread}, none},
        {"Library", "iitdb::photoLib", 0, true, {}, none},
        {"PhotoList", "iphotolib::photoIDs", 0, true, {}, none},
        {"Photo", "iphotolib::getPhoto", -1, true, {}, all},
        {"Album", "iphotolib::getAlbum", 1, true, {}, all},
        {"Drive", "driveName", 0, true, {}, all},
        {"Unpacking", "unpackiThmb", -1, true, {}, all},
    };
}

INSTANTIATE_TEST_SUITE_P(Calls, ClassicPromisedFailure, testing::ValuesIn(promises()),
                         rowName<PromiseRow>);

// --- Several faults

TEST_F(ClassicFaultSweep, LeavesAWorkingHostWhereverTheIpodIsTakenAway)
{
    sweepLosses([](const CountedCall &call) { return call.onDevice; });
}

TEST_F(ClassicFaultSweep, LeavesAWorkingHostAfterTwoFaultsInARow)
{
    sweepPairs();
}

TEST_F(ClassicFaultSweep, LeavesAReleaseThatAsksTheHostForNothing)
{
    for (const char *operation : {"getPhotoDBInt", "iitdb::parse", "iitdb::photoLib"})
        sweepReleases(operation);
}

} // namespace
