#include "engine/library_export.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/library_session.h"
#include "support/device_folder.h"
#include "support/environment.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

class SilentOpening : public OpenObserver
{
public:
    void waiting(const QByteArray &) override {}
    void copied(qint64, qint64) override {}
};

// Keeps what it hears, and passes the progress on.
class HeardExport : public ExportObserver
{
public:
    int mostLookedFor = -1;
    ExportProgress last;
    QStringList failures;
    QStringList missing;
    std::function<void()> afterLook = [] {};
    std::function<void(const ExportProgress &)> afterCopy = [](const ExportProgress &) {};

    void looked(int done, int total) override
    {
        EXPECT_LE(done, total);
        mostLookedFor = qMax(mostLookedFor, total);
        afterLook();
    }

    void copied(const ExportProgress &progress) override
    {
        EXPECT_LE(progress.doneFiles, progress.files);
        EXPECT_LE(last.doneBytes, progress.doneBytes);
        last = progress;
        afterCopy(progress);
    }

    void absent(const QString &label) override { missing.append(label); }
    void failed(const ItemFailure &failure) override { failures.append(failure.text()); }
};

// Exports of a device with some photos, without any program around them.
class LibraryExports : public testing::Test
{
protected:
    LibraryExports() : m_cache("XDG_CACHE_HOME", m_scratch.path("cache"))
    {
        m_request.folder = m_scratch.path("out");
    }

    /// Adds a photo to the library, without a file.
    void addRow(const std::string &name)
    {
        const int id = int(m_database.rows.assets.size()) + 1;
        m_database.rows.assets.push_back(photoRow(id));
        m_database.rows.assets.back().fileName = name;
    }

    void addPhoto(const QByteArray &name, const QByteArray &content)
    {
        addRow(name.toStdString());
        m_scratch.write(folder + name, content);
    }

    void open()
    {
        writeDatabase(m_scratch, "device", m_database);
        LibraryOptions options;
        options.device = m_scratch.path("device");
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        SilentOpening opening;
        CancelToken cancel;
        m_session = std::make_unique<LibrarySession>(options, opening, cancel);
    }

    /// What the result says in short.
    std::string run()
    {
        const CancelToken cancel;
        m_heard.last = ExportProgress();
        return exportPhotos(*m_session, m_request, m_heard, cancel).counts.text().toStdString();
    }

    /// The same for an export that is cancelled.
    std::string cancelled(const CancelToken &cancel)
    {
        try {
            exportPhotos(*m_session, m_request, m_heard, cancel);
        } catch (const Error &error) {
            EXPECT_EQ(Error::Cancelled, error.kind());
            return error.what();
        }
        return "done";
    }

    int copies() const { return m_scratch.everythingIn("out").size(); }

    static constexpr char folder[] = "device/DCIM/100APPLE/";

    ScratchFolder m_scratch;
    Environment m_cache;
    PhotosDatabase m_database;
    std::unique_ptr<LibrarySession> m_session;
    ExportRequest m_request;
    HeardExport m_heard;
};

TEST_F(LibraryExports, TellWhatBecameOfEachFile)
{
    addPhoto("a.jpg", "one");
    addRow("cloud.jpg");
    addRow("pipe.jpg");
    m_scratch.makePipe(folder + QByteArray("pipe.jpg"));
    open();
    const CancelToken cancel;
    const ExportResult result = exportPhotos(*m_session, m_request, m_heard, cancel);
    EXPECT_EQ("copied 1 file (3 bytes), 0 already there, 1 not on the device, 1 failed",
              result.counts.text());
    EXPECT_EQ(QStringList{"DCIM/100APPLE/cloud.jpg"}, result.absent);
    EXPECT_EQ(result.absent, m_heard.missing);
    ASSERT_EQ(1, result.failures.size());
    EXPECT_EQ("DCIM/100APPLE/pipe.jpg: not a regular file", result.failures[0].text());
    EXPECT_EQ(QStringList{result.failures[0].text()}, m_heard.failures);
    EXPECT_EQ(3, m_heard.mostLookedFor);
    EXPECT_EQ(3, m_heard.last.doneFiles);
    EXPECT_EQ(3, m_heard.last.files);
    EXPECT_EQ(3, m_heard.last.doneBytes);
}

TEST_F(LibraryExports, CopyWhatIsChosen)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        addPhoto(name, name);
    m_database.rows.albums = {albumRow(7)};
    m_database.join().add(7, 2);
    open();
    m_request.filter.album = "7";
    EXPECT_EQ("copied 1 file (5 bytes), 0 already there, 0 failed", run());
    EXPECT_TRUE(m_scratch.exists("out/b.jpg"));
    m_request.filter.album.reset();
    m_request.filter.ids = {{*idRange("3"), *idRange("2"), *idRange("3")}};
    EXPECT_EQ("copied 1 file (5 bytes), 1 already there, 0 failed", run());
    m_request.filter.ids.reset();
    EXPECT_EQ("copied 1 file (5 bytes), 2 already there, 0 failed", run());
    m_request.filter.ids = {{*idRange("4")}};
    EXPECT_THROW(run(), Error);
}

// An empty file is there all the same.
TEST_F(LibraryExports, CopyAnEmptyFileLikeAnyOther)
{
    addPhoto("a.jpg", QByteArray());
    open();
    EXPECT_EQ("copied 1 file (0 bytes), 0 already there, 0 failed", run());
    EXPECT_EQ(0, m_scratch.size("out/a.jpg"));
    EXPECT_EQ("copied 0 files (0 bytes), 1 already there, 0 failed", run());
    m_request.verify = true;
    EXPECT_EQ("copied 0 files (0 bytes), 1 already there, 0 failed", run());
}

TEST_F(LibraryExports, MakeNoFolderWhenTheyAreCancelledBeforeTheyCopy)
{
    addPhoto("a.jpg", "one");
    open();
    CancelToken cancel;
    m_heard.afterLook = [&] { cancel.cancel(); };
    EXPECT_EQ("interrupted: nothing was copied", cancelled(cancel));
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(LibraryExports, KeepWhatIsCopiedWhenTheyAreCancelled)
{
    addPhoto("a.jpg", "one");
    addPhoto("b.jpg", "two");
    open();
    CancelToken cancel;
    m_heard.afterCopy = [&](const ExportProgress &progress) {
        if (progress.doneFiles == 1)
            cancel.cancel();
    };
    EXPECT_EQ("interrupted: copied 1 file (3 bytes), 0 already there, 0 failed", cancelled(cancel));
    EXPECT_EQ(1, copies());
    EXPECT_EQ("one", m_scratch.read("out/a.jpg"));
    m_heard = HeardExport();
    EXPECT_EQ("copied 1 file (3 bytes), 1 already there, 0 failed", run());
    EXPECT_EQ(2, copies());
}

TEST_F(LibraryExports, LeaveNoHalfFileWhenTheyAreCancelledWithinOne)
{
    addPhoto("a.jpg", QByteArray(20 << 20, 'x'));
    open();
    CancelToken cancel;
    m_heard.afterCopy = [&](const ExportProgress &progress) {
        if (progress.doneBytes > 0)
            cancel.cancel();
    };
    EXPECT_EQ("interrupted: copied 0 files (0 bytes), 0 already there, 0 failed",
              cancelled(cancel));
    EXPECT_LT(m_heard.last.doneBytes, 20 << 20);
    EXPECT_FALSE(m_scratch.exists("out"));
}

} // namespace
