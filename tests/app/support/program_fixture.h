#ifndef PHOTOLIB_TESTS_APP_PROGRAM_FIXTURE_H
#define PHOTOLIB_TESTS_APP_PROGRAM_FIXTURE_H

#include "support/device_folder.h"
#include "support/program_run.h"

#include <gtest/gtest.h>

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
