// Exports of the same device, again and at the same time.

#include "base/cancel_token.h"
#include "support/proven_export.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <mutex>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace {

// Tells a waiting thread that the export waits for another one.
class WaitingObserver : public DeafObserver
{
public:
    std::function<void()> afterWaiting = [] {};

    void waiting() override { afterWaiting(); }
};

class RepeatedExports : public ProvenExports
{
protected:
    RepeatedExports()
    {
        open();
        findExpected();
        m_files->startCounting();
    }

    ExportCounts exportAgain(const QByteArray &folder)
    {
        EXPECT_EQ("", exportTo(folder));
        return m_result.counts;
    }
};

TEST_F(RepeatedExports, ReadNoPhoto)
{
    EXPECT_EQ(0, exportAgain(out()).copied);
    EXPECT_EQ(0, m_files->count(WatchedFiles::Open));
    EXPECT_EQ(m_expected, contentsOf(out()));
}

TEST_F(RepeatedExports, ReadNoPhotoWhenTheFolderWasMoved)
{
    const QByteArray moved = m_scratch.path("another place/moved");
    m_scratch.makeFolder("another place");
    ASSERT_EQ(0, std::rename(out().constData(), moved.constData()));
    const ExportCounts counts = exportAgain(moved);
    EXPECT_EQ(0, counts.copied);
    EXPECT_EQ(int(photoFilesOf(device()).size()), counts.unchanged);
    EXPECT_EQ(0, m_files->count(WatchedFiles::Open));
    expectWholeExport(device(), photoFilesOf(device()), moved);
    EXPECT_EQ(m_expected, contentsOf(moved));
}

// A device over a cable answers slowly: one question about each file, and one about each folder.
TEST_F(RepeatedExports, OpenNoneOfTenThousandPhotos)
{
    constexpr int photos = 10000;
    PhotosDatabase database;
    for (int i = 1; i <= photos; ++i) {
        database.rows.assets.push_back(photoRow(i));
        const QByteArray name = "IMG_" + QByteArray::number(i) + ".JPG";
        database.rows.assets.back().fileName = name.toStdString();
        m_scratch.write("device/DCIM/100APPLE/" + name, name);
    }
    writeDatabase(m_scratch, "device", database);
    m_request = ExportRequest();
    resetOut();
    open();
    EXPECT_EQ(photos, exportAgain(out()).copied);
    open();
    EXPECT_EQ(photos, exportAgain(out()).unchanged);
    EXPECT_EQ(0, m_result.counts.copied + m_result.counts.failed);
    EXPECT_EQ(0, m_files->count(WatchedFiles::Open));
    EXPECT_EQ(0, m_files->count(WatchedFiles::Read));
    EXPECT_LE(m_files->count(WatchedFiles::Info), photos);
    EXPECT_LE(m_files->count(WatchedFiles::List), 10);
}

class SimultaneousExports : public ProvenExports
{
protected:
    SimultaneousExports()
    {
        open();
        findExpected();
        resetOut();
    }

    /// Exports on the calling thread with a session of its own, calling `afterWaiting` when it
    /// waits for another one.
    ExportCounts exportWith(const std::function<void()> &afterWaiting)
    {
        LibraryOptions options;
        options.device = device();
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        WaitingObserver observer;
        observer.afterWaiting = afterWaiting;
        CancelToken cancel;
        LibrarySession session(options, observer, cancel);
        ExportRequest request = m_request;
        request.folder = out();
        ExportResult result;
        exportPhotos(session, request, observer, cancel, &result);
        return result.counts;
    }
};

TEST_F(SimultaneousExports, WaitForEachOtherAndCopyEachFileOnce)
{
    std::promise<void> reading;
    std::promise<void> goOn;
    std::shared_future<void> mayGoOn = goOn.get_future().share();
    std::once_flag first;
    m_files->beforeRead = [&] {
        std::call_once(first, [&] { reading.set_value(); });
        mayGoOn.wait();
    };
    std::string end;
    std::thread other([&] { end = exportTo(out()); });
    reading.get_future().wait();
    int waits = 0;
    const ExportCounts second = exportWith([&] {
        ++waits;
        goOn.set_value();
    });
    other.join();
    EXPECT_EQ("", end);
    EXPECT_EQ(1, waits);
    EXPECT_EQ(int(photoFilesOf(device()).size()), m_result.counts.copied);
    EXPECT_EQ(0, second.copied);
    EXPECT_EQ(m_result.counts.copied, second.unchanged);
    expectWholeExport(device(), photoFilesOf(device()), out());
    EXPECT_EQ(m_expected, contentsOf(out()));
}

TEST_F(SimultaneousExports, CompleteOneThatIsKilledWhileTheyWaitForIt)
{
    int ends[2] = {};
    ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    const UniqueFd reading(ends[0]);
    UniqueFd telling(ends[1]);
    const pid_t process = ::fork();
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::atomic<int> reads{0};
        m_files->beforeRead = [&] {
            if (++reads <= 3) // so that something is there already
                return;
            [[maybe_unused]] const ssize_t told = ::write(telling.get(), "x", 1);
            ::pause();
        };
        exportTo(out());
        ::_exit(0);
    }
    telling = UniqueFd();
    char told = 0;
    EXPECT_EQ(1, ::read(reading.get(), &told, 1));
    int waits = 0;
    exportWith([&] {
        ++waits;
        ASSERT_EQ(0, ::kill(process, SIGKILL));
        int status = 0;
        ASSERT_EQ(process, ::waitpid(process, &status, 0));
    });
    EXPECT_EQ(1, waits);
    expectWholeExport(device(), photoFilesOf(device()), out());
    EXPECT_EQ(m_expected, contentsOf(out()));
}

} // namespace
