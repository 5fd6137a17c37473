#include "engine/photo_export.h"

#include "devices/memory_file.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "engine/export_folder.h"
#include "support/device_folder.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

#include <QMap>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 someTime = 1580466030123456789;

// A device whose files are in memory. `beforeRead` is called before each read, and makes it
// fail by returning an error.
class MemoryDevice : public DeviceFileSystem
{
public:
    QMap<QByteArray, QByteArray> contents;
    std::function<FileError()> beforeRead = [] { return FileError(); };
    qint64 changed = 1; ///< of all files
    qint64 surplus = 0; ///< by which it gives their sizes too large

    std::unique_ptr<DeviceFile> open(const QByteArray &path, FileError *error) override
    {
        if (contents.contains(path))
            return std::make_unique<File>(*this, contents[path]);
        *error = {FileError::NotFound, QStringLiteral("No such file or directory")};
        return nullptr;
    }

    bool info(const QByteArray &path, FileInfo *info, FileError *error) override
    {
        if (!open(path, error))
            return false;
        info->type = FileInfo::File;
        info->size = contents[path].size() + surplus;
        info->modified = someTime;
        info->changed = changed;
        return true;
    }

    bool list(const QByteArray &, QList<QByteArray> *, FileError *) override { return false; }
    DeviceState state() override { return DeviceState::Ready; }
    void close() override {}
    QByteArray id() const override { return "memory"; }
    QByteArray name() const override { return "memory"; }
    QByteArray displayName(const QByteArray &path) const override { return path; }

private:
    class File : public MemoryFile
    {
    public:
        File(MemoryDevice &device, const QByteArray &bytes) : MemoryFile(bytes), m_device(device) {}

        qint64 read(qint64 offset, char *buffer, qint64 length, FileError *error) override
        {
            *error = m_device.beforeRead();
            if (error->kind != FileError::None)
                return -1;
            return MemoryFile::read(offset, buffer, length, error);
        }

    private:
        MemoryDevice &m_device;
    };
};

// Keeps what it hears.
class HeardExport : public ExportObserver
{
public:
    QStringList failures;
    QStringList missing;
    ExportProgress progress;

    void looked(int, int) override {}
    void copied(const ExportProgress &heard) override { progress = heard; }
    void absent(const QString &label) override { missing.append(label); }
    void failed(const ItemFailure &failure) override { failures.append(failure.text()); }
};

class PhotoExports : public testing::Test
{
protected:
    PhotoExports() { m_scratch.makeFolder("out"); }

    /// Adds a file of the device to what is exported under `name`.
    void add(const QByteArray &name, const QByteArray &content)
    {
        ExportItem item;
        item.path = QByteArray::number(m_items.size());
        item.label = QString::fromUtf8(name);
        item.name = name;
        item.info.type = FileInfo::File;
        item.info.size = content.size();
        item.info.modified = someTime;
        m_items.append(item);
        m_device.contents[item.path] = content;
    }

    /// Adds a file that is made when its turn comes, of an announced size.
    void addMade(qint64 size, const std::function<MadeFile()> &make)
    {
        ExportItem item;
        item.label = QString::number(m_items.size());
        item.info.size = size;
        item.make = make;
        m_items.append(item);
    }

    /// The same for one of which all but the content is known before.
    void addForetold(const QByteArray &name, qint64 size, const std::function<MadeFile()> &make)
    {
        addMade(size, make);
        m_items.last().name = name;
        m_items.last().info.modified = someTime;
        m_items.last().isForetold = true;
    }

    /// Counts the reads of the device from now on.
    void countReads()
    {
        m_reads = 0;
        m_device.beforeRead = [this] {
            ++m_reads;
            return FileError();
        };
    }

    void setChangeOf(const QByteArray &name, qint64 nanoseconds) const
    {
        constexpr qint64 second = 1000000000;
        const timespec times[] = {{0, UTIME_NOW}, {nanoseconds / second, nanoseconds % second}};
        ASSERT_EQ(0, ::utimensat(AT_FDCWD, m_scratch.path(name).constData(), times, 0));
    }

    /// Exports, and returns "copied present failed".
    QByteArray run()
    {
        m_heard = HeardExport();
        ExportFolder folder(m_scratch.path("out"));
        PhotoExport photos(m_device, folder, m_items, m_comparison, m_heard, m_cancel);
        m_current = &photos;
        photos.run();
        m_result = photos.result();
        const ExportCounts counts = m_result.counts;
        return QByteArray::number(counts.copied) + ' ' + QByteArray::number(counts.present) + ' ' +
               QByteArray::number(counts.failed);
    }

    /// What the target folder holds, by name.
    QMap<QByteArray, QByteArray> copies() const
    {
        QMap<QByteArray, QByteArray> result;
        for (const QByteArray &path : m_scratch.everythingIn("out")) {
            const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
            result[name] = m_scratch.read("out/" + name);
        }
        return result;
    }

    /// When the file was changed last, in nanoseconds.
    qint64 changeOf(const QByteArray &name) const
    {
        struct stat status = {};
        EXPECT_EQ(0, ::stat(m_scratch.path(name).constData(), &status)) << name.constData();
        return status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec;
    }

    using Copies = QMap<QByteArray, QByteArray>;

    ScratchFolder m_scratch;
    MemoryDevice m_device;
    QVector<ExportItem> m_items;
    ExportComparison m_comparison = ExportComparison::SizeAndTime;
    HeardExport m_heard;
    CancelToken m_cancel;
    const PhotoExport *m_current = nullptr; ///< while `run` runs
    ExportResult m_result;
    int m_reads = 0;
};

TEST_F(PhotoExports, KeepBothOfTwoFilesOfOneName)
{
    add("a.jpg", "one");
    add("a.jpg", "two");
    add("a.jpg", "one");
    const Copies expected = {{"a.jpg", "one"}, {"a (2).jpg", "two"}, {"a (3).jpg", "one"}};
    EXPECT_EQ("3 0 0", run());
    EXPECT_EQ(expected, copies());
    EXPECT_EQ("0 3 0", run());
    EXPECT_EQ(expected, copies());
}

// It keeps its size and gets its time back, and what was read is a part of each.
TEST_F(PhotoExports, CopyAFileOnceMoreThatIsWrittenOver)
{
    add("a.jpg", QByteArray(3 << 20, 'x'));
    add("b.jpg", "b");
    int reads = 0;
    m_device.beforeRead = [&] {
        if (++reads == 2) {
            m_device.contents["0"].fill('y');
            ++m_device.changed;
        }
        return FileError();
    };
    EXPECT_EQ("2 0 0", run());
    EXPECT_EQ((Copies{{"a.jpg", QByteArray(3 << 20, 'y')}, {"b.jpg", "b"}}), copies());
}

TEST_F(PhotoExports, GiveUpOnAFileThatIsWrittenOverAgainAndAgain)
{
    add("a.jpg", QByteArray(3 << 20, 'x'));
    add("b.jpg", "b");
    m_device.beforeRead = [&] {
        if (m_current->result().counts.failed == 0)
            ++m_device.changed;
        return FileError();
    };
    EXPECT_EQ("1 0 1", run());
    EXPECT_EQ(QStringList{"a.jpg: changed while it was read, twice"}, m_heard.failures);
    EXPECT_EQ((Copies{{"b.jpg", "b"}}), copies());
}

TEST_F(PhotoExports, KeepNamesApartThatDifferByCase)
{
    add("A.JPG", "one");
    add("a.jpg", "two");
    const Copies expected = {{"A.JPG", "one"}, {"a (2).jpg", "two"}};
    EXPECT_EQ("2 0 0", run());
    EXPECT_EQ(expected, copies());
    EXPECT_EQ("0 2 0", run());
    EXPECT_EQ(expected, copies());
}

TEST_F(PhotoExports, KeepANameThatLooksLikeANumberedOne)
{
    add("a.jpg", "one");
    add("a.jpg", "two");
    add("a (2).jpg", "three");
    const Copies expected = {{"a.jpg", "one"}, {"a (2).jpg", "two"}, {"a (2) (2).jpg", "three"}};
    EXPECT_EQ("3 0 0", run());
    EXPECT_EQ(expected, copies());
    EXPECT_EQ("0 3 0", run());
    EXPECT_EQ(expected, copies());
}

TEST_F(PhotoExports, LeaveWhatWasThereBefore)
{
    m_scratch.write("out/a.jpg", "own");
    m_scratch.write("out/B.jpg", "same");
    add("a.jpg", "one");
    add("b.jpg", "same");
    EXPECT_EQ("1 1 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "own"}, {"a (2).jpg", "one"}, {"B.jpg", "same"}}), copies());
}

TEST_F(PhotoExports, ReadNothingOfTheDeviceAgain)
{
    add("a.jpg", "one");
    add("a.jpg", "three");
    add("b.jpg", QByteArray());
    EXPECT_EQ("3 0 0", run());
    countReads();
    EXPECT_EQ("0 3 0", run());
    EXPECT_EQ(0, m_reads);
}

TEST_F(PhotoExports, TakeSizeAndTimeForTheContentUnlessItIsToBeVerified)
{
    add("a.jpg", "one");
    add("b.jpg", "two");
    EXPECT_EQ("2 0 0", run());
    m_device.contents["0"] = "new";
    EXPECT_EQ("0 2 0", run());
    m_comparison = ExportComparison::Content;
    EXPECT_EQ("1 1 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "one"}, {"a (2).jpg", "new"}, {"b.jpg", "two"}}), copies());
    EXPECT_EQ("0 2 0", run());
}

// As FAT, exFAT and others keep them.
TEST_F(PhotoExports, KnowACopyByTheTimeThatItsDiskHolds)
{
    add("a.jpg", "one");
    EXPECT_EQ("1 0 0", run());
    constexpr qint64 second = 1000000000;
    countReads();
    for (const qint64 step : {qint64(100), qint64(1000), second / 100, second, 2 * second}) {
        for (const qint64 held : {someTime - someTime % step, someTime - someTime % step + step}) {
            setChangeOf("out/a.jpg", held);
            EXPECT_EQ("0 1 0", run());
            EXPECT_EQ(0, m_reads) << held;
        }
    }
}

TEST_F(PhotoExports, CompareTheContentWhereTheTimesDiffer)
{
    constexpr qint64 second = 1000000000;
    add("a.jpg", "one");
    EXPECT_EQ("1 0 0", run());
    for (const qint64 other : {someTime + 1, someTime - 1, someTime - someTime % second - second,
                               someTime + 7200 * second, qint64(0)}) {
        setChangeOf("out/a.jpg", other);
        countReads();
        EXPECT_EQ("0 1 0", run());
        EXPECT_GT(m_reads, 0) << other;
    }
    m_device.contents["0"] = "new";
    EXPECT_EQ("1 0 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "one"}, {"a (2).jpg", "new"}}), copies());
}

TEST_F(PhotoExports, CompareTheWholeContent)
{
    QByteArray large(5 << 20, 'x');
    add("a.jpg", large);
    large[large.size() - 1] = 'y';
    m_scratch.write("out/a.jpg", large);
    EXPECT_EQ("1 0 0", run());
    EXPECT_EQ(2, copies().size());
    EXPECT_EQ("0 1 0", run());
}

TEST_F(PhotoExports, CopyAfterAnotherSelectionWithoutRepeatingIt)
{
    add("a.jpg", "one");
    add("a.jpg", "two");
    const QVector<ExportItem> all = m_items;
    m_items = {all[1]};
    EXPECT_EQ("1 0 0", run());
    m_items = all;
    EXPECT_EQ("1 1 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "two"}, {"a (2).jpg", "one"}}), copies());
    EXPECT_EQ("0 2 0", run());
}

TEST_F(PhotoExports, TakeNoLinkForACopy)
{
    m_scratch.write("out/target", "one");
    m_scratch.makeLink("out/a.jpg", "target");
    m_scratch.makeLink("out/b.jpg", m_scratch.path("elsewhere"));
    add("a.jpg", "one");
    add("b.jpg", "two");
    EXPECT_EQ("2 0 0", run());
    EXPECT_EQ("one", m_scratch.read("out/a (2).jpg"));
    EXPECT_EQ("two", m_scratch.read("out/b (2).jpg"));
    EXPECT_FALSE(m_scratch.exists("elsewhere"));
    EXPECT_EQ("0 2 0", run());
}

TEST_F(PhotoExports, TakeAnotherNameWhenSomebodyTakesItMeanwhile)
{
    add("a.jpg", "one");
    m_device.beforeRead = [this] {
        m_scratch.write("out/a.jpg", "own");
        return FileError();
    };
    EXPECT_EQ("1 0 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "own"}, {"a (2).jpg", "one"}}), copies());
}

TEST_F(PhotoExports, TakeWhatAnotherExportCopiesMeanwhileForTheCopy)
{
    add("a.jpg", "one");
    add("b.jpg", "two");
    // The first one appears after this export has looked for it, the second one before.
    m_device.beforeRead = [this] {
        m_scratch.write("out/a.jpg", "one");
        m_scratch.write("out/b.jpg", "two");
        return FileError();
    };
    EXPECT_EQ("0 2 0", run());
    EXPECT_EQ((Copies{{"a.jpg", "one"}, {"b.jpg", "two"}}), copies());
}

TEST_F(PhotoExports, GoOnAfterAFileThatCanNotBeRead)
{
    add("a.jpg", "one");
    add("b.jpg", "two");
    add("c.jpg", "three");
    m_device.contents.remove("1");
    bool isFirst = true;
    m_device.beforeRead = [&isFirst]() -> FileError {
        if (!std::exchange(isFirst, false))
            return {};
        return {FileError::Failed, QStringLiteral("Input/output error")};
    };
    EXPECT_EQ("1 0 2", run());
    EXPECT_EQ((QStringList{"a.jpg: Input/output error", "b.jpg: missing on the device"}),
              m_heard.failures);
    EXPECT_EQ((Copies{{"c.jpg", "three"}}), copies());
}

TEST_F(PhotoExports, CountWhatTheDeviceDoesNotHaveApartFromWhatFails)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        add(name, name);
    m_items[0].failure = {FileError::NotFound, "No such file or directory"};
    m_items[1].failure = {FileError::Denied, "Permission denied"};
    EXPECT_EQ("1 0 1", run());
    EXPECT_EQ("copied 1 file (5 bytes), 0 already there, 1 not on the device, 1 failed",
              m_result.counts.text());
    EXPECT_EQ(QStringList{"a.jpg"}, m_result.absent);
    EXPECT_EQ(QStringList{"a.jpg"}, m_heard.missing);
    ASSERT_EQ(1, m_result.failures.size());
    EXPECT_EQ("b.jpg: Permission denied", m_result.failures[0].text());
    EXPECT_EQ(QStringList{"b.jpg: Permission denied"}, m_heard.failures);
}

TEST_F(PhotoExports, RefuseAFileThatIsShorterThanTheDeviceSaid)
{
    add("a.jpg", "whole");
    m_device.surplus = 2;
    EXPECT_EQ("0 0 1", run());
    EXPECT_EQ(QStringList{"a.jpg: changed while it was read, twice"}, m_heard.failures);
    EXPECT_EQ(Copies(), copies());
}

TEST_F(PhotoExports, EndWhenTheDeviceIsGone)
{
    add("a.jpg", "one");
    add("b.jpg", "two");
    m_device.beforeRead = [] { return FileError{FileError::Disconnected, "No such device"}; };
    EXPECT_THROW(run(), Error);
    EXPECT_EQ(Copies(), copies());
}

// A name that was free may be taken by the second run.
QList<QByteArray> sortedContents(const QMap<QByteArray, QByteArray> &copies)
{
    QList<QByteArray> contents = copies.values();
    std::sort(contents.begin(), contents.end());
    return contents;
}

struct ReadFault {
    const char *name;
    FileError error;
};

class PhotoExportsOnFaults : public PhotoExports, public testing::WithParamInterface<ReadFault>
{
};

// Of each read in turn. What is there is whole, and a second run completes it.
TEST_P(PhotoExportsOnFaults, LeaveWholeFilesThatTheNextOneCompletes)
{
    add("a.jpg", "one");
    add("a.jpg", QByteArray(5 << 20, 'x'));
    add("b.jpg", QByteArray());
    addMade(3, [] { return MadeFile{"c.bmp", "made", someTime, FileError()}; });
    const Copies all = {{"a.jpg", "one"},
                        {"a (2).jpg", QByteArray(5 << 20, 'x')},
                        {"b.jpg", QByteArray()},
                        {"c.bmp", "made"}};
    int reads = 0;
    int failing = 0;
    m_device.beforeRead = [&] { return ++reads == failing ? GetParam().error : FileError(); };
    ASSERT_EQ("4 0 0", run());
    const int healthy = reads;
    for (failing = 1; failing <= healthy; ++failing) {
        for (const QByteArray &path : m_scratch.everythingIn("out"))
            ASSERT_EQ(0, ::unlink(path.constData()));
        reads = 0;
        try {
            EXPECT_EQ("3 0 1", run());
        } catch (const Error &error) {
            EXPECT_EQ(FileError::Disconnected, GetParam().error.kind) << error.what();
        }
        const Copies some = copies();
        for (auto copy = some.begin(); copy != some.end(); ++copy)
            EXPECT_TRUE(all.values().contains(copy.value())) << copy.key().constData();
        run();
        EXPECT_TRUE(sortedContents(all) == sortedContents(copies()));
    }
    std::printf("%d faults\n", healthy);
}

INSTANTIATE_TEST_SUITE_P(
    EachError, PhotoExportsOnFaults,
    testing::Values(ReadFault{"ReadError", {FileError::Failed, "Input/output error"}},
                    ReadFault{"Locked", {FileError::Denied, "Permission denied"}},
                    ReadFault{"Missing", {FileError::NotFound, "No such file or directory"}},
                    ReadFault{"Gone", {FileError::Disconnected, "No such device"}}),
    rowName<ReadFault>);

TEST_F(PhotoExports, LeaveNoHalfFileWhenCancelled)
{
    add("a.jpg", "one");
    add("b.jpg", QByteArray(50 << 20, 'x'));
    int reads = 0;
    m_device.beforeRead = [&]() -> FileError {
        if (++reads == 5)
            m_cancel.cancel();
        return {};
    };
    EXPECT_EQ("1 0 0", run());
    EXPECT_LE(reads, 6);
    EXPECT_EQ((Copies{{"a.jpg", "one"}}), copies());
}

// So that the time that is left can be told of those that are still to be read.
TEST_F(PhotoExports, CountTheBytesThatAreReadApartFromThoseOfWhatIsThere)
{
    add("a.jpg", QByteArray(1000, 'x'));
    EXPECT_EQ("1 0 0", run());
    add("b.jpg", QByteArray(500, 'x'));
    EXPECT_EQ("1 1 0", run());
    EXPECT_EQ(1500, m_heard.progress.doneBytes);
    EXPECT_EQ(500, m_heard.progress.readBytes);
}

TEST_F(PhotoExports, CountTheBytesOfWhatIsDone)
{
    add("a.jpg", QByteArray(1000, 'x'));
    add("b.jpg", QByteArray(500, 'x'));
    m_scratch.write("out/b.jpg", QByteArray(500, 'x'));
    bool isFirst = true;
    m_device.beforeRead = [&] {
        if (std::exchange(isFirst, false)) {
            EXPECT_EQ(0, m_heard.progress.doneBytes);
            EXPECT_EQ(1500, m_heard.progress.totalBytes);
            EXPECT_EQ(2, m_heard.progress.files);
        }
        return FileError();
    };
    EXPECT_EQ("1 1 0", run());
    EXPECT_EQ(2, m_heard.progress.doneFiles);
    EXPECT_EQ(1500, m_heard.progress.doneBytes);
    EXPECT_EQ(1500, m_heard.progress.readBytes);
    EXPECT_EQ(1000, m_result.counts.copiedBytes);
    EXPECT_EQ("copied 1 file (1000 bytes), 1 already there, 0 failed", m_result.counts.text());
}

MadeFile madeFile(const QByteArray &name, const QByteArray &bytes)
{
    return {name, bytes, someTime, FileError()};
}

TEST_F(PhotoExports, WriteWhatIsMadeLikeACopy)
{
    int made = 0;
    add("a.jpg", "one");
    for (const char *bytes : {"two", "three"}) {
        addMade(3, [bytes, &made] {
            ++made;
            return madeFile("a.jpg", bytes);
        });
    }
    const Copies expected = {{"a.jpg", "one"}, {"a (2).jpg", "two"}, {"a (3).jpg", "three"}};
    EXPECT_EQ("3 0 0", run());
    EXPECT_EQ(expected, copies());
    EXPECT_EQ(2, made);
    EXPECT_EQ("0 3 0", run());
    EXPECT_EQ(expected, copies());
}

TEST_F(PhotoExports, MakeNothingAgainOfWhichNameSizeAndTimeAreKnown)
{
    int made = 0;
    const auto make = [&made] {
        ++made;
        return madeFile("a.bmp", "one");
    };
    addForetold("a.bmp", 3, make);
    EXPECT_EQ("1 0 0", run());
    EXPECT_EQ("0 1 0", run());
    EXPECT_EQ(1, made);
    m_comparison = ExportComparison::Content;
    EXPECT_EQ("0 1 0", run());
    EXPECT_EQ(2, made);
}

TEST_F(PhotoExports, WriteWhatIsMadeThoughSomethingElseWasForetold)
{
    addForetold("a.bmp", 4, [] { return madeFile("a.bmp", "one"); });
    addForetold("b.bmp", 3, [] { return madeFile("b.jpg", "two"); });
    EXPECT_EQ("2 0 0", run());
    EXPECT_EQ((Copies{{"a.bmp", "one"}, {"b.jpg", "two"}}), copies());
    EXPECT_EQ("0 2 0", run());
}

TEST_F(PhotoExports, WriteAMadeFileOfManyBlocks)
{
    QByteArray large(5 << 20, 'x');
    large.replace(3 << 20, 1, "y");
    addMade(1, [&large] { return madeFile("a.bmp", large); });
    EXPECT_EQ("1 0 0", run());
    EXPECT_TRUE(large == copies().value("a.bmp"));
    EXPECT_EQ("0 1 0", run());
}

TEST_F(PhotoExports, GiveAMadeFileItsTimeIfItHasOne)
{
    addMade(3, [] { return madeFile("known", "one"); });
    addMade(3, [] { return MadeFile{"unknown", "two", std::nullopt, FileError()}; });
    EXPECT_EQ("2 0 0", run());
    EXPECT_EQ(someTime, changeOf("out/known"));
    EXPECT_GT(changeOf("out/unknown"), someTime);
}

TEST_F(PhotoExports, GoOnAfterAFileThatCanNotBeMade)
{
    addMade(3, [] {
        return MadeFile{{}, {}, std::nullopt, {FileError::Failed, QStringLiteral("damaged")}};
    });
    addMade(3, [] { return madeFile("b.bmp", "two"); });
    EXPECT_EQ("1 0 1", run());
    EXPECT_EQ(QStringList{"0: damaged"}, m_heard.failures);
    EXPECT_EQ((Copies{{"b.bmp", "two"}}), copies());
}

TEST_F(PhotoExports, MakeNothingMoreWhenTheDeviceIsGone)
{
    int made = 0;
    for (int i = 0; i < 2; ++i) {
        addMade(3, [&made] {
            ++made;
            return MadeFile{{}, {}, std::nullopt, {FileError::Disconnected, "No such device"}};
        });
    }
    EXPECT_THROW(run(), Error);
    EXPECT_EQ(1, made);
}

TEST_F(PhotoExports, CountMadeFilesByTheirAnnouncedSizesUntilTheyAreThere)
{
    addMade(1000, [] { return madeFile("a.bmp", QByteArray(700, 'x')); });
    EXPECT_EQ("1 0 0", run());
    EXPECT_EQ(1000, m_heard.progress.totalBytes);
    EXPECT_EQ(1000, m_heard.progress.doneBytes);
    EXPECT_EQ(700, m_result.counts.copiedBytes);
}

TEST_F(PhotoExports, TakeLinearTimeForManyPhotosOfOneName)
{
    constexpr int count = 3000;
    for (int i = 0; i < count; ++i)
        add("a.jpg", QByteArray::number(i));
    EXPECT_EQ("3000 0 0", run());
    int reads = 0;
    m_device.beforeRead = [&reads] {
        ++reads;
        return FileError();
    };
    EXPECT_EQ("0 3000 0", run());
    EXPECT_LE(reads, 2 * count); // one for the content and one at its end
}

} // namespace
