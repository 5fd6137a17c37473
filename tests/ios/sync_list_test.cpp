#include "ios/parse_fixture.h"

#include <QThread>

#include <plist/plist.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <dlfcn.h>

namespace {

// How many dictionaries the plug-in freed. The sanitizers cannot tell those that it did
// not: leaks from libplist's own code are suppressed.
int freedDictionaries = 0;

} // namespace

// Stands in front of libplist's own, to which it passes every call. libplist itself calls
// it for keys.
extern "C" void plist_free(plist_t list)
{
    static const auto behindThis =
        reinterpret_cast<decltype(&plist_free)>(dlsym(RTLD_NEXT, "plist_free"));
    if (list != nullptr && plist_get_node_type(list) == PLIST_DICT)
        ++freedDictionaries;
    behindThis(list);
}

namespace {

const char *const SyncList = "/Photos/Sync/CurrentLibraryUUID.plist";

QByteArray propertyList(const QByteArray &root)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           root + "\n</plist>\n";
}

QByteArray syncList(const QByteArray &uuid, const QByteArray &before = QByteArray())
{
    return propertyList("<dict>" + before + "<key>libraryUUID</key><string>" + uuid +
                        "</string></dict>");
}

// A list of exactly `size` bytes that names the library "PADDED".
QByteArray syncListOfSize(int size)
{
    const QByteArray list = syncList("PADDED");
    const QByteArray comment = "<!---->";
    const int missing = size - list.size() - comment.size();
    EXPECT_GE(missing, 0);
    QByteArray padded = list;
    padded.insert(list.indexOf("<dict>"), "<!--" + QByteArray(missing, ' ') + "-->");
    EXPECT_EQ(padded.size(), size);
    return padded;
}

class SyncListParse : public ParseFixture
{
protected:
    // Parses with the list on the device; what the manager knew before is "before".
    void parseWith(const QByteArray &list)
    {
        freedDictionaries = 0;
        host.setDeviceFile(SyncList, list);
        manager->m_libraryUUID = "before";
        ASSERT_TRUE(parse());
        EXPECT_EQ(manager->m_semParse.available(), 1);
    }

    // The calls after the manager learnt that access is not blocked.
    Lines callsForTheList() const
    {
        const Lines calls = host.calls();
        const auto last = std::find(calls.rbegin(), calls.rend(), "isAccessBlocked() -> false");
        return Lines(last.base(), calls.end());
    }
};

TEST_F(SyncListParse, NamesTheLibrary)
{
    parseWith(syncList("6A1F-77"));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("6A1F-77"));
    EXPECT_EQ(manager->getUUID(), QStringLiteral("6A1F-77"));
}

TEST_F(SyncListParse, FreesTheListOnce)
{
    for (const QByteArray &list : {syncList("6A1F-77"), propertyList("<dict></dict>")}) {
        parseWith(list);
        EXPECT_EQ(freedDictionaries, 1);
    }
}

TEST_F(SyncListParse, KeepsTheBytesOfTheTextAsTheyAre)
{
    parseWith(syncList("\xc3\xa9 &amp; &#x20ac;"));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("\xc3\xa9 & \xe2\x82\xac"));
}

// libplist ends the process over such a text when it is asked for a copy of it.
TEST_F(SyncListParse, TakesWhatIsBeforeAZeroByte)
{
    parseWith(syncList(QByteArray("6A1F\0-77", 8)));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("6A1F"));
}

TEST_F(SyncListParse, FindsTheNameAmongOtherEntries)
{
    parseWith(syncList("6A1F", "<key>other</key><array><integer>1</integer></array>"
                               "<key>inner</key><dict><key>libraryUUID</key><string>no</string>"
                               "</dict>"));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("6A1F"));
}

TEST_F(SyncListParse, TakesAnEmptyNameToo)
{
    parseWith(syncList(""));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray());
}

TEST_F(SyncListParse, ReadsInPiecesOf1024BytesToTheReadThatYieldsNone)
{
    parseWith(syncListOfSize(2500));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("PADDED"));
    EXPECT_EQ(
        callsForTheList(),
        (Lines{"devicePath() -> \"connected-device\"", "vDevOpen(2, \"connected-device\") -> dev5",
               "vFileOpen(dev5, \"/Photos/Sync/CurrentLibraryUUID.plist\", 0) -> file3",
               "vFileRead(file3, 1024) -> 1024", "vFileRead(file3, 1024) -> 1024",
               "vFileRead(file3, 1024) -> 452", "vFileRead(file3, 1024) -> 0",
               "vFileClose(file3)"}));
}

TEST_F(SyncListParse, ReadsAWholePieceAndThenNone)
{
    parseWith(syncListOfSize(1024));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("PADDED"));
    const Lines calls = callsForTheList();
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[3], "vFileRead(file3, 1024) -> 1024");
    EXPECT_EQ(calls[4], "vFileRead(file3, 1024) -> 0");
    EXPECT_EQ(calls[5], "vFileClose(file3)");
}

TEST_F(SyncListParse, GoesOnAfterShortReads)
{
    host.shortenReads(SyncList, 100);
    parseWith(syncListOfSize(450));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("PADDED"));
    EXPECT_EQ(host.callCount("vFileRead"), 2 + 6);
}

TEST_F(SyncListParse, StopsAtAReadErrorAndClosesTheFile)
{
    host.failRead(SyncList, 2, -1);
    parseWith(syncListOfSize(2500));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("before"));
    const Lines calls = callsForTheList();
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[4], "vFileRead(file3, 1024) -> -1");
    EXPECT_EQ(calls[5], "vFileClose(file3)");
}

TEST_F(SyncListParse, UsesWhatCameBeforeAReadError)
{
    host.failRead(SyncList, 2, -1);
    parseWith(syncList("6A1F"));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("6A1F"));
}

TEST_F(SyncListParse, SucceedsWithoutAList)
{
    manager->m_libraryUUID = "before";
    EXPECT_TRUE(parse());
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("before"));
    EXPECT_NE(manager->m_pVDev, nullptr);
    EXPECT_EQ(
        callsForTheList(),
        (Lines{"devicePath() -> \"connected-device\"", "vDevOpen(2, \"connected-device\") -> dev5",
               "vFileOpen(dev5, \"/Photos/Sync/CurrentLibraryUUID.plist\", 0) -> null"}));
    EXPECT_EQ(mergeLog(), Log());
}

TEST_F(SyncListParse, KeepsTheEarlierNameForAListWithoutOne)
{
    for (const QByteArray &list :
         {QByteArray(), QByteArray("not a list at all"), QByteArray("<plist"),
          QByteArray(3000, '<'), QByteArray(100, '\0'), QByteArray("bplist00\xd1\x01\x02"),
          propertyList(""), propertyList("<array><string>libraryUUID</string></array>"),
          propertyList("<string>libraryUUID</string>"), propertyList("<dict></dict>"),
          propertyList("<dict><key>LibraryUUID</key><string>x</string></dict>"),
          propertyList("<dict><key>libraryUUID</key><integer>5</integer></dict>"),
          propertyList("<dict><key>libraryUUID</key><data>QUJD</data></dict>"),
          propertyList("<dict><key>libraryUUID</key><array><string>x</string></array></dict>"),
          syncList("cut short").left(150)}) {
        parseWith(list);
        EXPECT_EQ(manager->m_libraryUUID, QByteArray("before")) << list.left(80).toStdString();
    }
}

TEST_F(SyncListParse, ReadsTheListAfterTheMerge)
{
    addPhotos({1});
    parseWith(syncList("6A1F"));
    const Lines trace = host.trace();
    const std::string merged = "Log(\"PHOTOLIB\", 1, \"Add some photo not in album but as Camera "
                               "roll: 1, uuid: photo-1\")";
    const auto line = std::find(trace.begin(), trace.end(), merged);
    ASSERT_NE(line, trace.end());
    EXPECT_EQ(std::count(line, trace.end(), "vDevOpen(2, \"connected-device\") -> dev5"), 1);
}

// Hosts parse on threads of their own, whose stacks may be small.
class SmallStack
{
public:
    explicit SmallStack(const std::function<void()> &body) : m_thread(QThread::create(body))
    {
        m_thread->setStackSize(1024 * 1024);
        m_thread->start();
        m_thread->wait();
    }

private:
    std::unique_ptr<QThread> m_thread;
};

TEST_F(SyncListParse, SurvivesAListThatNestsVeryDeep)
{
    const int depth = 100000;
    QByteArray list;
    const auto parseList = [&] { parseWith(list); };
    list = propertyList(QByteArray("<array>").repeated(depth) +
                        QByteArray("</array>").repeated(depth));
    const SmallStack arrays(parseList);
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("before"));
    list = propertyList(QByteArray("<dict><key>libraryUUID</key>").repeated(depth) +
                        QByteArray("</dict>").repeated(depth));
    const SmallStack dictionaries(parseList);
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("before"));
}

TEST_F(SyncListParse, ReadsAListOfManyEntriesSideBySide)
{
    parseWith(syncList("6A1F", "<key>many</key><array>" +
                                   QByteArray("<dict><key>a</key><array/></dict>").repeated(2000) +
                                   "</array>"));
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("6A1F"));
}

// --- The device that the list is read from.

const QString AccentedName = QString::fromUtf8("Ger\u00e4t");
const char *const AccentedUtf8 = "Ger\xc3\xa4t";
const char *const AccentedLatin1 = "Ger\xe4t";

TEST_F(SyncListParse, NamesTheDeviceInTheLocalEncodingAndTheCopiesInUtf8)
{
    ASSERT_EQ(AccentedName.toLocal8Bit(), QByteArray(AccentedLatin1));
    device.path = AccentedName;
    host.setDeviceFile("/PhotoData/Photos.sqlite", database.bytes(), AccentedUtf8);
    host.setDeviceFile(SyncList, syncList("utf-8"), AccentedUtf8);
    host.setDeviceFile(SyncList, syncList("latin-1"), AccentedLatin1);
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("latin-1"));
    const Lines calls = callsForTheList();
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[1], std::string("vDevOpen(2, \"") + AccentedLatin1 + "\") -> dev5");
}

TEST_F(SyncListParse, SucceedsWhenTheDeviceDoesNotOpenForTheList)
{
    device.path = AccentedName;
    host.setDeviceFile("/PhotoData/Photos.sqlite", database.bytes(), AccentedUtf8);
    manager->m_libraryUUID = "before";
    EXPECT_TRUE(parse());
    EXPECT_EQ(manager->m_pVDev, nullptr);
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("before"));
    EXPECT_EQ(callsForTheList().size(), 2U);
    EXPECT_EQ(mergeLog(), Log());
    EXPECT_EQ(manager->m_semParse.available(), 1);
}

TEST_F(SyncListParse, UsesTheDeviceThatAnEarlierParseOpened)
{
    parseWith(syncList("first"));
    VDev *opened = manager->m_pVDev;
    host.clearRecords();
    host.setDeviceFile(SyncList, syncList("second"));
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->m_pVDev, opened);
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("second"));
    EXPECT_EQ(callsForTheList().front(),
              "vFileOpen(dev5, \"/Photos/Sync/CurrentLibraryUUID.plist\", 0) -> file6");

    host.removeDeviceFile(SyncList);
    ASSERT_TRUE(parse());
    EXPECT_EQ(manager->m_libraryUUID, QByteArray("second"));
}

} // namespace
