#include "support/export_fixture.h"
#include "support/json.h"

#include <gtest/gtest.h>

#include <map>

namespace {

// What an export would do. The whole tree, with its times, is as it was afterwards.
class PreviewOfAnExport : public ExportProgramTest
{
protected:
    void SetUp() override
    {
        addPhoto("a.jpg", "one");
        m_scratch.write(folder + QByteArray("a.MOV"), "film");
        addRow("gone.jpg");
        writeDevice();
    }

    ProgramResult preview(const QList<QByteArray> &further = {})
    {
        const auto before = state();
        ProgramResult result = runExport(QList<QByteArray>{"--dry-run"} + further);
        EXPECT_EQ(before, state());
        return result;
    }

private:
    struct FileState {
        qint64 modified;
        qint64 changed;
        quint64 inode;
        QByteArray bytes;

        bool operator==(const FileState &other) const
        {
            return modified == other.modified && changed == other.changed && inode == other.inode &&
                   bytes == other.bytes;
        }
    };

    std::map<QByteArray, FileState> state() const
    {
        std::map<QByteArray, FileState> files;
        const QList<QByteArray> paths = m_scratch.everythingIn();
        for (const QByteArray &path : paths) {
            struct stat status = {};
            EXPECT_EQ(0, ::lstat(path.constData(), &status)) << path.constData();
            const QByteArray below = path.mid(m_scratch.root().size() + 1);
            files[path] = {
                changeOf(path), status.st_ctim.tv_sec * 1000000000 + status.st_ctim.tv_nsec,
                status.st_ino, S_ISREG(status.st_mode) ? m_scratch.read(below) : QByteArray()};
        }
        return files;
    }
};

TEST_F(PreviewOfAnExport, IsATableThatMakesNoFolder)
{
    const ProgramResult result = preview();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("ID  ROLE      ACTION                    SIZE  FROM                    TO\n"
              " 1  original  copy                   3 bytes  DCIM/100APPLE/a.jpg     a.jpg\n"
              " 1  live      copy                   4 bytes  DCIM/100APPLE/a.MOV     a.MOV\n"
              " 2  original  missing on the device           DCIM/100APPLE/gone.jpg\n"
              "Would copy 2 files (7 bytes), 0 unchanged; nothing was written\n",
              result.output);
    EXPECT_EQ(QByteArray(), result.errors);
    EXPECT_FALSE(m_scratch.exists("out"));
}

TEST_F(PreviewOfAnExport, IsJsonOnRequest)
{
    const ProgramResult result = preview({"--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(
        R"({"bytes": 7, "files": [
{"id":1,"uuid":"01000000-0000-0000-0000-000000000000","role":"original","source":"DCIM/100APPLE/a.jpg","path":"a.jpg","action":"copy","replaces":false,"bytes":3,"cause":null},
{"id":1,"uuid":"01000000-0000-0000-0000-000000000000","role":"live","source":"DCIM/100APPLE/a.MOV","path":"a.MOV","action":"copy","replaces":false,"bytes":4,"cause":null},
{"id":2,"uuid":"02000000-0000-0000-0000-000000000000","role":"original","source":"DCIM/100APPLE/gone.jpg","path":null,"action":"notOnDevice","replaces":false,"bytes":null,"cause":"missing on the device"}
]}
)",
        result.output);
}

TEST_F(PreviewOfAnExport, NeedsToBeOneForJson)
{
    const ProgramResult result = runExport({"--json"});
    EXPECT_EQ(2, result.exitCode);
    EXPECT_FALSE(m_scratch.exists("out"));
}

// With a record that only a person's program has open, too.
TEST_F(PreviewOfAnExport, TellsWhatAnEarlierExportHasLeftToDo)
{
    EXPECT_EQ(0, runExport({"1", "--live", "still"}).exitCode);
    m_scratch.write(folder + QByteArray("a.jpg"), "edited");
    EXPECT_EQ("Would copy 2 files (10 bytes), 0 unchanged; nothing was written",
              preview().output.trimmed().split('\n').last());
    EXPECT_TRUE(preview().output.contains("  a (2).jpg\n"));
    EXPECT_TRUE(preview({"--update", "replace"}).output.contains("  replace "));
    const Json replaced = Json::parse(preview({"--update", "replace", "--json"}).output);
    EXPECT_EQ("copy", replaced["files"][0]["action"].get<std::string>());
    EXPECT_TRUE(replaced["files"][0]["replaces"].get<bool>());
    EXPECT_EQ(0, runExport().exitCode);
    EXPECT_EQ("Would copy 0 files (0 bytes), 2 unchanged; nothing was written",
              preview().output.trimmed().split('\n').last());
    const Json unchanged = Json::parse(preview({"--json"}).output);
    EXPECT_EQ(0, unchanged["bytes"].get<int>());
    EXPECT_EQ("unchanged", unchanged["files"][0]["action"].get<std::string>());
}

TEST_F(PreviewOfAnExport, TellsOfSidecars)
{
    const Json plan = Json::parse(preview({"--json", "--sidecar", "json"}).output);
    ASSERT_EQ(4U, plan["files"].size());
    EXPECT_EQ("sidecar", plan["files"][2]["role"].get<std::string>());
    EXPECT_EQ("a.jpg.json", plan["files"][2]["path"].get<std::string>());
    EXPECT_EQ("null", plan["files"][2]["source"].text());
}

TEST_F(PreviewOfAnExport, IsOfTheSameFilesAsTheExport)
{
    const Json plan = Json::parse(preview({"--json", "--name", "{id}/{name}"}).output);
    EXPECT_EQ(0, runExport({"--name", "{id}/{name}"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"1/a.MOV", "1/a.jpg"}), names());
    EXPECT_EQ("1/a.jpg", plan["files"][0]["path"].get<std::string>());
    EXPECT_EQ("1/a.MOV", plan["files"][1]["path"].get<std::string>());
}

TEST_F(PreviewOfAnExport, FailsWhereTheExportWould)
{
    writeDatabase(m_scratch, "other", twoPhotos());
    expectFailure({"export", "-d", device(), "--dry-run", m_scratch.path("other")},
                  m_scratch.path("other") + ": a device, not a folder to copy to");
    expectRefusalOfDevice({"export", "-d", device(), "--dry-run", device() + "/new"},
                          device() + "/new");
    m_scratch.write("file", "text");
    expectFailure({"export", "-d", device(), "--dry-run", m_scratch.path("file")},
                  m_scratch.path("file") + ": not a folder");
    m_scratch.makePipe(folder + QByteArray("gone.jpg"));
    const ProgramResult result = preview();
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.output.contains("not a regular file")) << result.output.constData();
}

} // namespace
