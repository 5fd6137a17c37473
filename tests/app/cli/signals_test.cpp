#include "support/command_rows.h"
#include "support/export_fixture.h"
#include "support/export_records.h"
#include "support/row_name.h"
#include "support/sample_device.h"

#include "base/atomic_file.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QImage>
#include <QMap>
#include <QSet>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>

namespace {

enum class Moment {
    Start,       ///< of the process
    FirstFile,   ///< in a folder of its own: a copy of the database, or a link to the device
    FirstLine,   ///< of the log
    FifthLine,   ///< of the log
    FirstOutput, ///< to standard output, or to the files that it writes
};

constexpr Moment allMoments[] = {Moment::Start, Moment::FirstFile, Moment::FirstLine,
                                 Moment::FifthLine, Moment::FirstOutput};
constexpr int allSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};

struct SignalRow {
    std::string name;
    CommandRow command;
    bool isClassic;
    int number; ///< of the row
};

class ProgramUnderSignals : public ProgramTest, public testing::WithParamInterface<SignalRow>
{
protected:
    ProgramUnderSignals()
    {
        m_setup.environment.append({"TMPDIR", QString::fromUtf8(m_scratch.path("tmp"))});
        // Where Qt would make a folder of its own.
        m_setup.environment.append(
            {"XDG_RUNTIME_DIR", QString::fromUtf8(m_scratch.path("runtime"))});
        m_scratch.write("edits", "add-album Trip 1\n");
        writeDevice();
    }

    void writeDevice()
    {
        const QString folder = QString::fromUtf8(device());
        if (GetParam().isClassic)
            writeSampleTo(folder, classicOptions(4));
        else
            writeSampleTo(folder, sampleOptions(12));
        for (const QByteArray &path : m_scratch.everythingIn("device")) {
            if (!isFolder(path))
                m_deviceContents.insert(m_scratch.read(path.mid(m_scratch.root().size() + 1)));
        }
    }

    /// Sends the signal at the moment, or not when the program ends before, and expects an
    /// end in good order.
    void interrupt(int signal, Moment moment)
    {
        SCOPED_TRACE(std::string(::sigabbrev_np(signal)) + " at " + std::to_string(int(moment)));
        m_scratch.makeFolder("tmp");
        Program program(m_setup, arguments());
        ASSERT_TRUE(program.waitForStarted());
        while (!hasCome(moment, program)) {
            if (program.waitForFinished(1) || program.state() == QProcess::NotRunning)
                break;
        }
        QElapsedTimer clock;
        clock.start();
        if (program.state() != QProcess::NotRunning) {
            ::kill(static_cast<pid_t>(program.processId()), signal);
            ++m_sent;
            ASSERT_TRUE(program.waitForFinished(60 * 1000)) << "it goes on";
        }
        m_slowest = qMax(m_slowest, clock.elapsed());
        expectEnd(program, signal);
        expectNothingHalf(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
        removeResults();
    }

    int m_sent = 0;
    qint64 m_slowest = 0; ///< milliseconds from a signal to the end

private:
    QList<QByteArray> arguments() const
    {
        return argumentsOf(GetParam().command, {device(), GetParam().isClassic ? "100" : "1",
                                                GetParam().isClassic ? "106" : "5",
                                                m_scratch.path("edits"), m_scratch.path("out")})
               << "--verbose";
    }

    bool hasCome(Moment moment, Program &program)
    {
        m_errors[&program] += program.readAllStandardError();
        const int lines = m_errors[&program].count('\n');
        switch (moment) {
        case Moment::Start:
            return true;
        case Moment::FirstFile:
            return !m_scratch.everythingIn("cache").isEmpty() ||
                   !m_scratch.everythingIn("tmp").isEmpty();
        case Moment::FirstLine:
            return lines >= 1;
        case Moment::FifthLine:
            return lines >= 5;
        case Moment::FirstOutput:
            return program.bytesAvailable() > 0 || m_scratch.exists("out") ||
                   m_scratch.exists("out.png");
        }
        return false;
    }

    void expectEnd(Program &program, int signal)
    {
        const QByteArray errors = m_errors.take(&program) + program.readAllStandardError();
        EXPECT_FALSE(errors.contains("Sanitizer")) << errors.constData();
        if (program.exitStatus() == QProcess::CrashExit) {
            EXPECT_EQ(signal, program.exitCode()) << errors.constData();
            return;
        }
        const int code = program.exitCode();
        EXPECT_TRUE(code == 130 || code == 0) << code << errors.constData();
        EXPECT_EQ(code == 130, errors.contains("photolib: interrupted")) << errors.constData();
    }

    /// Looks at all that the program has written. A sample is there as a whole or not at all.
    void expectNothingHalf(bool isDone)
    {
        // A signal may end a program where it stands; the next one tidies up.
        if (!m_scratch.everythingIn("tmp").isEmpty())
            run({"info", "-d", device()});
        EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("tmp"));
        if (GetParam().command.words.first() == "sample") {
            EXPECT_EQ(isDone, m_scratch.exists("out"));
            return;
        }
        QList<QByteArray> files = writtenFiles();
        if (m_scratch.exists("out.png"))
            files.append("out.png");
        for (const QByteArray &name : files) {
            EXPECT_FALSE(name.contains(".part")) << name.constData();
            EXPECT_TRUE(isWhole(name)) << name.constData();
        }
    }

    QList<QByteArray> writtenFiles() const
    {
        QList<QByteArray> files;
        if (isExport()) {
            expectWholeRecord();
            for (const QByteArray &name : exportedFiles(m_scratch, "out"))
                files.append("out/" + name);
            return files;
        }
        for (const QByteArray &path : m_scratch.everythingIn("out"))
            files.append(path.mid(m_scratch.root().size() + 1));
        return files;
    }

    bool isExport() const { return GetParam().command.words.first() == "export"; }

    /// Whatever a record tells of is there, as it tells.
    void expectWholeRecord() const
    {
        if (!m_scratch.exists("out"))
            return;
        for (const RecordedFile &file : readExportRecord(m_scratch.path("out")).files)
            EXPECT_EQ(file.sha256, sha256Hex(m_scratch.read("out/" + file.path)))
                << file.path.constData();
    }

    bool isWhole(const QByteArray &path) const
    {
        const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
        const QByteArray bytes = m_scratch.read(path);
        if (isExport() && !name.endsWith(".bmp"))
            return m_deviceContents.contains(bytes);
        const bool isEnded = !name.endsWith(".jpg") || bytes.endsWith("\xff\xd9");
        const bool isPicture = name.endsWith(".MOV") || !QImage::fromData(bytes).isNull();
        return isEnded && isPicture;
    }

    void removeResults()
    {
        for (const char *name : {"out", "out.png", "cache"})
            std::filesystem::remove_all(m_scratch.path(name).toStdString());
    }

    QMap<Program *, QByteArray> m_errors;
    QSet<QByteArray> m_deviceContents; // of its files
};

// PHOTOLIB_SIGNAL_ROUNDS asks for more than a sample of the combinations.
TEST_P(ProgramUnderSignals, EndsSoonAndLeavesNothingHalf)
{
    const int rounds = qMax(1, qEnvironmentVariableIntValue("PHOTOLIB_SIGNAL_ROUNDS"));
    constexpr int runsPerRound = 2;
    for (int run = 0; run < rounds * runsPerRound; ++run) {
        const int step = GetParam().number * runsPerRound + run;
        interrupt(allSignals[step % 5], allMoments[(step / 5 + step) % 5]);
    }
    std::printf("%d signals in %d runs, the slowest end after %lld ms\n", m_sent,
                rounds * runsPerRound, static_cast<long long>(m_slowest));
}

std::vector<SignalRow> signalRows()
{
    std::vector<SignalRow> rows;
    const auto add = [&rows](const CommandRow &command, bool isClassic) {
        rows.push_back({std::string(isClassic ? "Classic" : "Ios") + command.name, command,
                        isClassic, int(rows.size())});
    };
    for (const CommandRow &command : deviceCommands()) {
        add(command, false);
        if (command.takesClassic)
            add(command, true);
    }
    add({"Sample", {"sample", "OUT", "--assets", "30"}}, false);
    add({"Sample", {"sample", "OUT", "--assets", "10", "--classic"}}, true);
    return rows;
}

INSTANTIATE_TEST_SUITE_P(EachCommand, ProgramUnderSignals, testing::ValuesIn(signalRows()),
                         rowName<SignalRow>);

// --- a sample that takes longer than any test

class InterruptedSample : public ProgramTest
{
protected:
    bool waitFor(Program &program, const QByteArray &name) const
    {
        while (!m_scratch.exists(name)) {
            if (program.waitForFinished(5) || program.state() == QProcess::NotRunning)
                return false;
        }
        return true;
    }
};

TEST_F(InterruptedSample, IsRemovedWithTheFoldersThatWereMadeForIt)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        Program program(m_setup, {"sample", m_scratch.path("new/phone"), "--assets", "100000"});
        ASSERT_TRUE(waitFor(program, "new/phone/DCIM/100APPLE/IMG_0001.JPG"));
        ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), signal));
        EXPECT_EQ(130, program.waitForExitCode());
        EXPECT_EQ("photolib: interrupted: no sample was written\n", program.readAllStandardError());
        EXPECT_FALSE(m_scratch.exists("new"));
    }
}

TEST_F(InterruptedSample, OfAClassicIpodIsRemovedButNotAnEmptyFolderThatWasThere)
{
    m_scratch.makeFolder("ipod");
    Program program(m_setup, {"sample", m_scratch.path("ipod"), "--classic", "--assets", "100000"});
    ASSERT_TRUE(waitFor(program, "ipod/Photos/Thumbs/F1019_1.ithmb"));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGINT));
    EXPECT_EQ(130, program.waitForExitCode());
    EXPECT_TRUE(m_scratch.exists("ipod"));
    EXPECT_EQ(QList<QByteArray>(), m_scratch.everythingIn("ipod"));
}

TEST_F(InterruptedSample, ThatWouldHaveBeenShownLeavesNoCacheFolder)
{
    Program program(m_setup, {"info"});
    ASSERT_TRUE(waitFor(program, "cache/photolib/sample.partial/PhotoData"));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGTERM));
    EXPECT_EQ(130, program.waitForExitCode());
    EXPECT_EQ("photolib: interrupted: no sample was written\n", program.readAllStandardError());
    EXPECT_FALSE(m_scratch.exists("cache/photolib"));
}

// Where a file has a temporary name until it is whole, as on memory cards.
TEST(RemoveTemporaryFiles, LeavesNoNameOfAFileThatIsNotWhole)
{
    const ScratchFolder scratch;
    const pid_t child = ::fork();
    if (child == 0) {
        const UniqueFd folder(::open(scratch.root().constData(), O_RDONLY | O_DIRECTORY));
        AtomicFile named(folder.get(), AtomicFile::Hiding::TemporaryName);
        AtomicFile half(folder.get(), AtomicFile::Hiding::TemporaryName);
        half.write("half", 4);
        const bool hasName = named.giveName("whole");
        removeTemporaryFiles();
        ::_exit(hasName ? 0 : 1);
    }
    ASSERT_GT(child, 0);
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(QList<QByteArray>{scratch.path("whole")}, scratch.everythingIn());
}

TEST_F(InterruptedSample, IgnoresWhatItsParentHadItIgnore)
{
    m_setup.program = QStringLiteral("nohup");
    Program program(m_setup,
                    {PHOTOLIB_PROGRAM, "sample", m_scratch.path("phone"), "--assets", "40"});
    ASSERT_TRUE(waitFor(program, "phone/PhotoData"));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(program.processId()), SIGHUP));
    EXPECT_EQ(0, program.waitForExitCode());
    EXPECT_TRUE(m_scratch.exists("phone/PhotoData/Photos.sqlite-wal"));
}

} // namespace
