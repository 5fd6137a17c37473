#include "engine/library_session.h"

#include "base/error.h"
#include "support/device_folder.h"
#include "support/environment.h"

#include <gtest/gtest.h>

#include <QFile>

#include <thread>

namespace {

// What the opening of a library told.
class RecordedOpening : public OpenObserver
{
public:
    explicit RecordedOpening(CancelToken *cancelled = nullptr) : m_cancelled(cancelled) {}

    void waiting(const QByteArray &workFolder) override { waitedFor.append(workFolder); }

    void copied(qint64 done, qint64 total) override
    {
        lastDone = done;
        lastTotal = total;
        if (m_cancelled)
            m_cancelled->cancel();
    }

    QList<QByteArray> waitedFor;
    qint64 lastDone = -1;
    qint64 lastTotal = -1;

private:
    CancelToken *const m_cancelled;
};

// Devices of some photos each, and a cache folder of their own.
class LibrarySessions : public testing::Test
{
protected:
    LibrarySessions() : m_cache("XDG_CACHE_HOME", m_scratch.path("cache")) {}

    LibraryOptions deviceOf(const QByteArray &name, int photos)
    {
        PhotosDatabase database;
        for (int id = 1; id <= photos; ++id) {
            database.rows.assets.push_back(photoRow(id));
            database.rows.assets.back().fileName = "IMG_" + std::to_string(id) + ".JPG";
        }
        writeDatabase(m_scratch, name, database);
        LibraryOptions options;
        options.device = m_scratch.path(name);
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        return options;
    }

    static std::unique_ptr<LibrarySession> opened(const LibraryOptions &options)
    {
        RecordedOpening observer;
        CancelToken cancel;
        return std::make_unique<LibrarySession>(options, observer, cancel);
    }

    static int photosIn(LibrarySession &session) { return session.library().photoCnt(); }

    QList<QByteArray> workFolders() const
    {
        return m_scratch.exists("cache") ? m_scratch.everythingIn("cache") : QList<QByteArray>();
    }

    // The text and the kind of the failure to open it.
    static std::pair<std::string, Error::Kind> failureOf(const LibraryOptions &options)
    {
        try {
            opened(options);
        } catch (const Error &error) {
            return {error.what(), error.kind()};
        }
        return {"opened", Error::Failed};
    }

    ScratchFolder m_scratch;
    Environment m_cache;
};

TEST_F(LibrarySessions, AreOpenSideBySide)
{
    const auto first = opened(deviceOf("first", 2));
    const auto second = opened(deviceOf("second", 5));
    const auto again = opened(deviceOf("first", 2));
    EXPECT_EQ(2, photosIn(*first));
    EXPECT_EQ(5, photosIn(*second));
    EXPECT_EQ(2, photosIn(*again));
}

TEST_F(LibrarySessions, CountTheBytesOfTheirOwnDatabase)
{
    const LibraryOptions few = deviceOf("few", 1);
    const LibraryOptions many = deviceOf("many", 3000);
    RecordedOpening fewOpening;
    RecordedOpening manyOpening;
    const auto open = [](const LibraryOptions &options, RecordedOpening &observer) {
        CancelToken cancel;
        const LibrarySession session(options, observer, cancel);
    };
    std::thread other([&] { open(few, fewOpening); });
    open(many, manyOpening);
    other.join();
    EXPECT_EQ(m_scratch.size("few/PhotoData/Photos.sqlite"), fewOpening.lastTotal);
    EXPECT_EQ(m_scratch.size("many/PhotoData/Photos.sqlite"), manyOpening.lastTotal);
    EXPECT_LT(fewOpening.lastTotal, manyOpening.lastTotal);
    EXPECT_EQ(fewOpening.lastTotal, fewOpening.lastDone);
    EXPECT_EQ(manyOpening.lastTotal, manyOpening.lastDone);
}

TEST_F(LibrarySessions, KeepTheirCopyAsLongAsTheyLive)
{
    auto session = opened(deviceOf("device", 2));
    int copies = 0;
    for (const QByteArray &path : workFolders())
        copies += path.endsWith("/Photos.sqlite");
    EXPECT_EQ(1, copies);
    session.reset();
    for (const QByteArray &path : workFolders())
        EXPECT_FALSE(path.contains("Photos.sqlite")) << path.constData();
}

TEST_F(LibrarySessions, NoteUnreadableFilesOfTheirOwnDevice)
{
    const auto first = opened(deviceOf("first", 2));
    const auto second = opened(deviceOf("second", 2));
    FileError error;
    error.text = "Permission denied";
    first->noteUnreadable("IMG_1.JPG", error);
    EXPECT_NE(QString(), first->unreadableText());
    EXPECT_EQ(QString(), second->unreadableText());
}

TEST_F(LibrarySessions, FailWithTheirOwnCause)
{
    LibraryOptions text = deviceOf("text", 1);
    LibraryOptions none = deviceOf("none", 1);
    m_scratch.write("text/PhotoData/Photos.sqlite", QByteArray(5000, 'x'));
    ASSERT_TRUE(QFile::remove(QString::fromUtf8(m_scratch.path("none/PhotoData/Photos.sqlite"))));
    const auto whole = opened(deviceOf("whole", 1));
    EXPECT_EQ(std::make_pair(m_scratch.path("text/PhotoData/Photos.sqlite").toStdString() +
                                 ": not readable as a photo library: not an SQLite database",
                             Error::Damaged),
              failureOf(text));
    const auto missing = failureOf(none);
    EXPECT_EQ(m_scratch.path("none").toStdString(),
              missing.first.substr(0, none.device.toStdString().size()));
    EXPECT_EQ(Error::NoLibrary, missing.second);
    EXPECT_EQ(1, photosIn(*whole));
}

TEST_F(LibrarySessions, AreCancelledWhileTheDatabaseIsCopied)
{
    const LibraryOptions options = deviceOf("device", 3000);
    const auto other = opened(deviceOf("other", 1));
    const QList<QByteArray> before = workFolders();
    CancelToken cancel;
    RecordedOpening observer(&cancel);
    try {
        const LibrarySession session(options, observer, cancel);
        ADD_FAILURE() << "opened";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind()) << error.what();
    }
    EXPECT_EQ(before, workFolders());
    EXPECT_EQ(1, photosIn(*other));
    const auto again = opened(options);
    EXPECT_EQ(3000, photosIn(*again));
}

TEST_F(LibrarySessions, DoNotOpenOnceTheyAreCancelled)
{
    const LibraryOptions options = deviceOf("device", 1);
    CancelToken cancel;
    cancel.cancel();
    RecordedOpening observer;
    try {
        const LibrarySession session(options, observer, cancel);
        ADD_FAILURE() << "opened";
    } catch (const Error &error) {
        EXPECT_EQ(Error::Cancelled, error.kind()) << error.what();
    }
}

TEST(LibrarySessionsThreads, AreOpenedOnSeveralThreadsAtATime)
{
    const ScratchFolder scratch;
    const Environment cache("XDG_CACHE_HOME", scratch.path("cache"));
    PhotosDatabase database;
    database.rows.assets = {photoRow(1), photoRow(2)};
    writeDatabase(scratch, "device", database);
    const auto open = [&scratch] {
        LibraryOptions options;
        options.device = scratch.path("device");
        options.plugin = PHOTOLIB_PLUGIN_FILE;
        for (int i = 0; i < 20; ++i) {
            RecordedOpening observer;
            CancelToken cancel;
            LibrarySession session(options, observer, cancel);
            EXPECT_EQ(2, session.library().photoCnt());
        }
    };
    std::thread first(open);
    std::thread second(open);
    first.join();
    second.join();
}

} // namespace
