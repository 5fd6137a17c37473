#include "boundary/photo_records.h"
#include "cameradb/camera_db_parse.h"
#include "cameradb/cancel_flag.h"
#include "ios/photo_manager.h"
#include "support/fake_host.h"
#include "support/photos_database.h"
#include "support/row_name.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

// Parses that are cancelled at random moments. What is copied is some ten blocks long, so
// that most moments lie in the middle of the copying.
//
// A block is what one read yields. That is up to 4 MiB, but moving ten times as much for each
// of a thousand parses takes minutes under a sanitizer, so most devices here yield less.

namespace {

using Lines = std::vector<std::string>;
using Log = std::vector<LogLine>;

const int LargestBlock = 4194304;

const QByteArray MainFile("/PhotoData/Photos.sqlite");
const QByteArray LogFile("/PhotoData/Photos.sqlite-wal");
const QByteArray SharedFile("/PhotoData/Photos.sqlite-shm");
const QByteArray SyncList("/Photos/Sync/CurrentLibraryUUID.plist");

struct Stress {
    const char *name;
    unsigned seed;
    int cancels;
    int blockBytes;
};

// The bytes of a device, shared by every parse of it.
struct DeviceBytes {
    explicit DeviceBytes(int block)
        : blockBytes(block), logFile(6 * block + 5, 'x'), sharedFile(block / 8, '\0')
    {
        PhotosDatabase database;
        for (int key = 1; key <= 6; ++key)
            database.rows.assets.push_back(key % 3 == 0 ? videoRow(key) : photoRow(key));
        database.rows.albums = {albumRow(11, 1000), albumRow(12, 2)};
        for (int key = 1; key <= 6; ++key)
            database.join().add(key % 2 == 0 ? 12 : 11, key);
        const std::string filler = "zeroblob(" + std::to_string(2 * block) + ")";
        database.rows.sql = {"CREATE TABLE ZFILLER (ZBYTES BLOB)",
                             "INSERT INTO ZFILLER VALUES (" + filler + ")"};
        mainFile = database.bytes();
    }

    const int blockBytes;
    QByteArray mainFile; // more than two blocks
    // None of SQLite's: the library is the same with any part of it.
    const QByteArray logFile;
    const QByteArray sharedFile;
    const QByteArray syncList = "<plist version=\"1.0\"><dict><key>libraryUUID</key>"
                                "<string>0123456789ABCDEF</string></dict></plist>";
};

// Device, host and manager of one parse that is cancelled.
class CancelledParse
{
public:
    CancelledParse(const DeviceBytes &bytes, const QString &workFolder)
    {
        device.localData = workFolder + QLatin1Char('/');
        host.setDeviceFile(MainFile, bytes.mainFile);
        host.setDeviceFile(LogFile, bytes.logFile);
        host.setDeviceFile(SharedFile, bytes.sharedFile);
        host.setDeviceFile(SyncList, bytes.syncList);
        for (const QByteArray &file : {MainFile, LogFile})
            host.shortenReads(file, bytes.blockBytes);
    }

    // What the manager holds after a parse that succeeded.
    void expectLibrary()
    {
        EXPECT_EQ(manager.photoIDs(), (QList<quint64>{1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(manager.albumIDs(), (QList<quint64>{16777215, 16777214, 16777213, 11, 12}));
        EXPECT_EQ(manager.getUUID(), QStringLiteral("0123456789ABCDEF"));
        albumItem album;
        EXPECT_TRUE(manager.getAlbum(12, &album));
        EXPECT_EQ(album.photoIDs, (QList<quint64>{2, 4, 6}));
    }

    void expectNothing()
    {
        EXPECT_EQ(host.log(), (Log{notice("load ATHCameraDB"), failure("Can not load lib"),
                                   failure("Can not parse photo lib")}));
        EXPECT_EQ(host.openHandles(), Lines());
        EXPECT_EQ(manager.m_pCameraDB, nullptr);
        EXPECT_EQ(manager.photoCnt(), 0);
        EXPECT_EQ(manager.albumCnt(), 0);
        EXPECT_EQ(manager.getUUID(), QString());
    }

    // On the same object, which has nothing of the parse that was cancelled. The journals
    // are left out, for speed; what was copied of them lies in the work folder.
    void expectNextParseToWork()
    {
        host.setDeviceFile(LogFile, QByteArray());
        host.setDeviceFile(SharedFile, QByteArray());
        host.clearRecords();
        EXPECT_TRUE(manager.parseLib());
        EXPECT_FALSE(gbShouldQuit);
        expectLibrary();
        EXPECT_EQ(host.openHandles().size(), 1U) << "the device";
    }

    FakeHost host{FakeHost::Disk::Real};
    FakeIPod device;
    photo_manager manager{&device};
};

// The name of the service in a recorded line.
std::string operationOf(const std::string &line)
{
    return line.substr(0, line.find('('));
}

// No more than the block in progress is finished and the next one looked at.
void expectAtMostOneBlock(const Lines &lines, std::size_t from)
{
    std::map<std::string, int> calls;
    for (std::size_t i = from; i < lines.size(); ++i) {
        const std::string operation = operationOf(lines[i]);
        ++calls[operation];
        const bool isBlock = operation == "vFileRead" || operation == "vFileWrite";
        const int bytes = std::atoi(lines[i].c_str() + lines[i].find(", ") + 2);
        EXPECT_TRUE(!isBlock || bytes <= LargestBlock) << lines[i];
    }
    EXPECT_LE(calls["vFileRead"], 1);
    EXPECT_LE(calls["vFileWrite"], 1);
    EXPECT_LE(calls["vFileOpen"], 2) << "no file is begun after this one";
}

// --- Cancels in the n-th call of any of the host's services.

// A call of a service: the n-th one of its name.
struct HostCall {
    std::string operation;
    int n;
    bool isCopying; // until the last file is copied
};

// All calls of a parse that is not disturbed.
std::vector<HostCall> callsOfAParse(const DeviceBytes &bytes, const QString &workFolder)
{
    CancelledParse undisturbed(bytes, workFolder);
    EXPECT_TRUE(undisturbed.manager.parseLib());
    undisturbed.expectLibrary();
    const Lines lines = undisturbed.host.trace();
    const auto isLastClose = [](const std::string &line) { return line == "vDevClose(dev6)"; };
    const auto lastClose = std::find_if(lines.begin(), lines.end(), isLastClose);
    EXPECT_NE(lastClose, lines.end());
    std::vector<HostCall> calls;
    std::map<std::string, int> counts;
    for (auto line = lines.begin(); line != lines.end(); ++line) {
        const std::string operation = operationOf(*line);
        calls.push_back({operation, ++counts[operation], line <= lastClose});
    }
    return calls;
}

class CancelStressThreads : public testing::TestWithParam<Stress>
{
protected:
    ~CancelStressThreads() override { gbShouldQuit = false; }

    void report(const char *moments)
    {
        EXPECT_GT(m_ended, 0);
        RecordProperty("cancels", GetParam().cancels);
        RecordProperty("cancels_that_ended_a_parse", m_ended);
        std::printf("%d cancels %s, of which %d ended the parse\n", GetParam().cancels, moments,
                    m_ended);
    }

    const DeviceBytes m_bytes{GetParam().blockBytes};
    QTemporaryDir m_work;
    std::mt19937 m_random{GetParam().seed};
    int m_ended = 0;
};

TEST_P(CancelStressThreads, EndWithinABlockOfAnyCallOfTheHost)
{
    const std::vector<HostCall> calls = callsOfAParse(m_bytes, m_work.path());
    for (int run = 0; run < GetParam().cancels && !HasFailure(); ++run) {
        const HostCall &call = calls[m_random() % calls.size()];
        SCOPED_TRACE(call.operation + " " + std::to_string(call.n));
        CancelledParse parse(m_bytes, m_work.path());
        std::size_t linesBefore = 0;
        parse.host.onCall(call.operation, call.n, [&] {
            std::thread(&::cancleParse).join();
            linesBefore = parse.host.trace().size();
        });
        EXPECT_EQ(parse.manager.parseLib(), !call.isCopying);
        parse.host.onCall(call.operation, call.n, nullptr);
        EXPECT_TRUE(gbShouldQuit) << "until the next parse";
        if (call.isCopying) {
            expectAtMostOneBlock(parse.host.trace(), linesBefore);
            parse.expectNothing();
            parse.expectNextParseToWork();
            ++m_ended;
        } else {
            // A database that is open is read to its end, and so is the sync list.
            parse.expectLibrary();
        }
    }
    report("in a call of the host");
}

// --- Cancels by a thread of their own, at any moment.

// Meets the parse in one of its reads, waits some time more, as chosen beforehand, cancels it
// while it goes on, and waits for its end.
class FreeCanceller
{
public:
    FreeCanceller(CancelledParse &parse, std::mt19937 &random)
        : m_parse(parse), m_spins(static_cast<int>(random() % 20000))
    {
        // The main file takes four reads, the other two eight and two.
        const int reads = 1 + static_cast<int>(random() % 12);
        parse.host.onCall("vFileRead", reads, [this] {
            m_isThere = true;
            while (!m_isSeen)
                std::this_thread::yield();
        });
        m_thread = std::thread([this] { run(); });
    }
    ~FreeCanceller() { join(); }
    FreeCanceller(const FreeCanceller &) = delete;
    FreeCanceller &operator=(const FreeCanceller &) = delete;

    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    std::atomic<bool> parseEnded{false};

    bool wasInTime = false; // not all files were copied
    std::size_t linesBefore = 0;
    bool hadEnded = false; // when the manager's own cancel came back

private:
    void run()
    {
        const FakeHost &host = m_parse.host;
        while (!parseEnded && !m_isThere)
            std::this_thread::yield();
        m_isSeen = true;
        for (int i = 0; i < m_spins; ++i)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        ::cancleParse();
        linesBefore = host.trace().size();
        // Three copies close two files each, and look for a cancel behind that.
        wasInTime = !parseEnded && host.callCount("vFileClose") < 6;
        m_parse.manager.cancleParse();
        hadEnded = m_parse.manager.m_semParse.available() == 1;
    }

    CancelledParse &m_parse;
    const int m_spins;
    std::atomic<bool> m_isThere{false};
    std::atomic<bool> m_isSeen{false};
    std::thread m_thread;
};

TEST_P(CancelStressThreads, EndWithinABlockOfAnyMoment)
{
    for (int run = 0; run < GetParam().cancels && !HasFailure(); ++run) {
        SCOPED_TRACE(run);
        CancelledParse parse(m_bytes, m_work.path());
        FreeCanceller canceller(parse, m_random);
        const bool isParsed = parse.manager.parseLib();
        canceller.parseEnded = true;
        canceller.join();
        EXPECT_FALSE(isParsed && canceller.wasInTime);
        if (isParsed) {
            parse.expectLibrary();
            continue;
        }
        EXPECT_TRUE(canceller.hadEnded);
        expectAtMostOneBlock(parse.host.trace(), canceller.linesBefore);
        parse.expectNothing();
        parse.expectNextParseToWork();
        ++m_ended;
    }
    report("at any moment");
}

INSTANTIATE_TEST_SUITE_P(
    Moments, CancelStressThreads,
    testing::Values(Stress{"First", 1, 100, 65536}, Stress{"Second", 2, 100, 65536},
                    Stress{"Third", 3, 100, 65536}, Stress{"Fourth", 4, 100, 65536},
                    Stress{"Fifth", 5, 100, 65536}, Stress{"LargestBlocks", 6, 10, LargestBlock}),
    rowName<Stress>);

} // namespace
