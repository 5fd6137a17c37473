#ifndef PHOTOLIB_TESTS_APP_PROGRAM_FIXTURE_H
#define PHOTOLIB_TESTS_APP_PROGRAM_FIXTURE_H

#include "support/device_folder.h"
#include "support/program_run.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

/// The file of the first photo of `ProgramTest::writeTwoPhotos`.
constexpr char twoPhotosPath[] = "device/DCIM/100APPLE/IMG_0001.JPG";

/// A photo with its file and one without.
inline PhotosDatabase twoPhotos()
{
    PhotosDatabase database;
    database.rows.assets = {photoRow(1), photoRow(2, 60)};
    database.rows.assets[1].fileName = "IMG_0002.JPG";
    return database;
}

/// Runs of the program with a cache folder of their own.
class ProgramTest : public testing::Test
{
protected:
    ProgramTest() { m_setup.cacheFolder = QString::fromUtf8(m_scratch.path("cache")); }

    ProgramResult run(const QList<QByteArray> &arguments) { return runProgram(m_setup, arguments); }

    /// Runs the program and expects a failure that is told in the one line `line`, prints
    /// nothing and leaves nothing behind.
    void expectFailure(const QList<QByteArray> &arguments, const QByteArray &line, int code = 1)
    {
        const QList<QByteArray> before = m_scratch.everythingIn();
        const ProgramResult result = run(arguments);
        EXPECT_EQ(code, result.exitCode);
        EXPECT_EQ("photolib: " + line + '\n', result.errors);
        EXPECT_EQ(QByteArray(), result.output);
        EXPECT_EQ(before, m_scratch.everythingIn());
    }

    /// The same for a failure that writes nothing into the device, not even for a moment.
    void expectRefusalOfDevice(const QList<QByteArray> &arguments, const QByteArray &path)
    {
        const QList<QByteArray> paths = m_scratch.everythingIn("device") << device();
        QList<qint64> before;
        for (const QByteArray &each : paths)
            before.append(changeOf(each));
        expectFailure(arguments,
                      path + ": photolib never writes to the device; choose a folder outside it");
        for (int i = 0; i < paths.size(); ++i)
            EXPECT_EQ(before[i], changeOf(paths[i])) << paths[i].constData();
    }

    /// When `path` was changed last, in nanoseconds.
    static qint64 changeOf(const QByteArray &path)
    {
        struct stat status = {};
        EXPECT_EQ(0, ::lstat(path.constData(), &status)) << path.constData();
        return status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec;
    }

    void writeTwoPhotos()
    {
        writeDatabase(m_scratch, "device", twoPhotos());
        m_scratch.write(twoPhotosPath, "picture");
    }

    QByteArray device() const { return m_scratch.path("device"); }

    ScratchFolder m_scratch;
    ProgramSetup m_setup;
};

#endif // PHOTOLIB_TESTS_APP_PROGRAM_FIXTURE_H
