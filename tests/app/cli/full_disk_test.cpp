#include "support/command_rows.h"
#include "support/program_fixture.h"
#include "support/row_name.h"
#include "support/sample_device.h"

#include "base/unique_fd.h"
#include "cli/output.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace {

enum class Disk { ReadOnly, Small };

// A device of each kind with pictures of its own.
class FullDisk : public ProgramTest
{
protected:
    void writeDevice(bool isClassic)
    {
        const QString folder = QString::fromUtf8(device());
        if (isClassic)
            writeSampleTo(folder, classicOptions(4));
        else
            writeSampleTo(folder, sampleOptions(4));
        m_scratch.write("edits", "add-album Trip\n");
    }

    QList<QByteArray> arguments(const CommandRow &command, bool isClassic) const
    {
        return argumentsOf(command, {device(), isClassic ? "100" : "1", isClassic ? "106" : "5",
                                     m_scratch.path("edits"), m_scratch.path("disk/out")});
    }

    /// Runs the program with the disk mounted at the folder `disk`, which nobody else sees.
    /// What is on the disk in the end is behind its output, a line each. The exit code is 77
    /// where no disk can be mounted.
    ProgramResult runOnDisk(Disk disk, const QList<QByteArray> &arguments)
    {
        const QByteArray options = disk == Disk::ReadOnly ? "ro" : "size=8k";
        const QByteArray script = "mount -t tmpfs -o " + options + " tmpfs " +
                                  m_scratch.path("disk") +
                                  " 2>/dev/null || exit 77\n"
                                  "\"$0\" \"$@\"; code=$?; find " +
                                  m_scratch.path("disk") + " -mindepth 1; exit $code";
        m_scratch.makeFolder("disk");
        m_setup.program = QStringLiteral("unshare");
        ProgramResult result =
            run(QList<QByteArray>{"-Urm", "sh", "-c", script, PHOTOLIB_PROGRAM} + arguments);
        if (result.exitCode == -1 || result.errors.startsWith("unshare"))
            result.exitCode = 77;
        return result;
    }

    /// Whether the message names the cause; SQLite has words of its own for it.
    static bool namesCause(const QByteArray &errors, Disk disk)
    {
        if (disk == Disk::ReadOnly)
            return errors.contains("Read-only file system");
        return errors.contains("No space left on device") ||
               errors.contains("database or disk is full");
    }
};

struct DiskRow {
    std::string name;
    Disk disk;
    QList<QByteArray> arguments;
    bool isClassic;
    QByteArray kept; ///< what may be on the disk in the end: what fits
};

class ProgramOnAFullDisk : public FullDisk, public testing::WithParamInterface<DiskRow>
{
};

// Whatever was to be written is not, and nothing of it is left but files that are whole.
TEST_P(ProgramOnAFullDisk, FailsWithTheCauseAndLeavesNoHalfFile)
{
    const DiskRow &row = GetParam();
    writeDevice(row.isClassic);
    const QByteArray disk = m_scratch.path("disk");
    QList<QByteArray> words = row.arguments;
    for (QByteArray &word : words)
        word = word == "DEVICE" ? device() : word.startsWith("/disk") ? disk + word.mid(5) : word;
    const ProgramResult result = runOnDisk(row.disk, words);
    if (result.exitCode == 77)
        GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(namesCause(result.errors, row.disk)) << result.errors.constData();
    for (const QByteArray &line : result.errors.split('\n'))
        EXPECT_TRUE(line.isEmpty() || line.startsWith("photolib: ")) << line.constData();
    QList<QByteArray> left;
    for (const QByteArray &line : result.output.split('\n')) {
        if (line.startsWith(disk))
            left.append(line.mid(disk.size()));
    }
    if (!row.kept.isEmpty()) {
        for (const QByteArray &path : left)
            EXPECT_TRUE(path.startsWith(row.kept) && !path.contains(".part")) << path.constData();
        return;
    }
    EXPECT_EQ(QList<QByteArray>(), left);
}

std::vector<DiskRow> diskRows()
{
    struct Written {
        const char *name;
        QList<QByteArray> arguments;
        bool isClassic;
        QByteArray kept;
    };
    const std::vector<Written> all = {
        {"Export", {"export", "-d", "DEVICE", "/disk/out"}, false, ""},
        {"Thumbnails",
         {"thumb", "-d", "DEVICE", "--all", "/disk/out", "--format", "png"},
         false,
         "/out"},
        {"Thumbnail", {"thumb", "-d", "DEVICE", "1", "-o", "/disk/thumb.png"}, false, ""},
        {"Sheet", {"sheet", "-d", "DEVICE", "-o", "/disk/sheet.png"}, false, ""},
        {"Sample", {"sample", "/disk/new", "--assets", "4"}, false, ""},
        {"ClassicSample", {"sample", "/disk/new", "--classic", "--assets", "4"}, true, ""},
        {"ClassicExport", {"export", "-d", "DEVICE", "/disk/out"}, true, ""},
        {"ClassicThumbnails", {"thumb", "-d", "DEVICE", "--all", "/disk/out"}, true, "/out"},
        {"WorkFolder", {"info", "-d", "DEVICE", "--work-dir", "/disk/work"}, false, ""},
    };
    std::vector<DiskRow> rows;
    for (const Written &each : all) {
        rows.push_back({std::string(each.name) + "ReadOnly", Disk::ReadOnly, each.arguments,
                        each.isClassic, ""});
        rows.push_back({std::string(each.name) + "Small", Disk::Small, each.arguments,
                        each.isClassic, each.kept});
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(EachWriter, ProgramOnAFullDisk, testing::ValuesIn(diskRows()),
                         rowName<DiskRow>);

struct LargeRow {
    const char *name;
    qint64 database;
    qint64 journal;
};

class ProgramWithALargeDatabase : public FullDisk, public testing::WithParamInterface<LargeRow>
{
};

// It may not write a single byte: a copy that begins fails with another cause.
TEST_P(ProgramWithALargeDatabase, FailsBeforeItFillsTheDisk)
{
    m_scratch.writeSparse("device/PhotoData/Photos.sqlite", GetParam().database);
    m_scratch.writeSparse("device/PhotoData/Photos.sqlite-wal", GetParam().journal);
    m_setup.largestFile = 0;
    const ProgramResult result =
        run({"info", "-d", device(), "--work-dir", m_scratch.path("work")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.errors.startsWith("photolib: " + m_scratch.path("work") +
                                         ": No space left on device (the database takes 8.0 TiB"))
        << result.errors.constData();
    EXPECT_EQ(1, result.errors.count('\n'));
    EXPECT_FALSE(m_scratch.exists("work"));
}

constexpr qint64 tebibyte = qint64(1) << 40;

INSTANTIATE_TEST_SUITE_P(Files, ProgramWithALargeDatabase,
                         testing::Values(LargeRow{"InTheDatabase", 8 * tebibyte, 0},
                                         LargeRow{"InTheJournal", 0, 8 * tebibyte},
                                         LargeRow{"InBoth", 5 * tebibyte, 3 * tebibyte}),
                         rowName<LargeRow>);

// A file that is a page too large for the disk, and one that just fits.
TEST_F(FullDisk, IsFullFromThePageOnThatIsMissing)
{
    constexpr int page = 4096;
    for (const int pages : {2, 3}) {
        m_scratch.writeSparse("device/PhotoData/Photos.sqlite", pages * page);
        const ProgramResult result = runOnDisk(
            Disk::Small, {"info", "-d", device(), "--work-dir", m_scratch.path("disk/work")});
        if (result.exitCode == 77)
            GTEST_SKIP() << "no disk can be mounted here";
        EXPECT_EQ(1, result.exitCode);
        const QByteArray line = "photolib: " + m_scratch.path("disk/work") +
                                ": No space left on device (the database takes 12.0 KiB, and 8.0 "
                                "KiB are free)\n";
        EXPECT_EQ(pages == 3, result.errors == line) << result.errors.constData();
    }
}

struct OutputRow {
    std::string name;
    CommandRow command;
    bool isClassic;
};

class ProgramWithoutOutput : public FullDisk, public testing::WithParamInterface<OutputRow>
{
protected:
    ProgramWithoutOutput() { writeDevice(GetParam().isClassic); }

    QList<QByteArray> words() const
    {
        QList<QByteArray> words = arguments(GetParam().command, GetParam().isClassic);
        for (QByteArray &word : words)
            word.replace(m_scratch.path("disk/"), m_scratch.path(""));
        return words;
    }
};

TEST_P(ProgramWithoutOutput, FailsWithTheCause)
{
    m_setup.output = QStringLiteral("/dev/full");
    const ProgramResult full = run(words());
    EXPECT_EQ(1, full.exitCode);
    EXPECT_TRUE(full.errors.endsWith("photolib: standard output: No space left on device\n"))
        << full.errors.constData();
}

std::vector<OutputRow> outputRows()
{
    std::vector<OutputRow> rows;
    for (const CommandRow &command : deviceCommands()) {
        rows.push_back({std::string("Ios") + command.name, command, false});
        if (command.takesClassic)
            rows.push_back({std::string("Classic") + command.name, command, true});
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(EachCommand, ProgramWithoutOutput, testing::ValuesIn(outputRows()),
                         rowName<OutputRow>);

// A pipe that is set not to wait, as a terminal's programs may leave it.
TEST(OutputThreads, WaitsForASlowReader)
{
    int ends[2] = {};
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const UniqueFd reading(ends[0]);
    UniqueFd writing(ends[1]);
    const int size = ::fcntl(writing.get(), F_GETPIPE_SZ);
    qint64 arrived = 0;
    std::thread reader([&] {
        int waiting = 0;
        while (waiting < size)
            ::ioctl(reading.get(), FIONREAD, &waiting);
        QByteArray block(size, '\0');
        pollfd descriptor = {reading.get(), POLLIN, 0};
        while (::poll(&descriptor, 1, -1) > 0) {
            const ssize_t count = ::read(reading.get(), block.data(), size_t(size));
            if (count == 0)
                break;
            arrived += qMax<ssize_t>(count, 0);
        }
    });
    const UniqueFd before(::dup(STDOUT_FILENO));
    ::dup2(writing.get(), STDOUT_FILENO);
    writing = UniqueFd();
    Output output;
    EXPECT_NO_THROW({
        output.write(QByteArray(3 * size, 'x'));
        output.flush();
    });
    ::dup2(before.get(), STDOUT_FILENO);
    reader.join();
    EXPECT_EQ(3 * size, arrived);
}

} // namespace
