#include "base/sha256.h"
#include "support/exiftool.h"
#include "support/export_fixture.h"
#include "support/sample_device.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class ReportOfAnExport : public ExportProgramTest
{
protected:
    QByteArray report() const { return m_scratch.path("report"); }

    std::vector<Json> reported(const QList<QByteArray> &further = {})
    {
        m_exitCode = runExport(QList<QByteArray>{"--report", report()} + further).exitCode;
        std::vector<Json> lines;
        for (const QByteArray &line : m_scratch.read("report").split('\n')) {
            if (!line.isEmpty())
                lines.push_back(Json::parse(line));
        }
        EXPECT_TRUE(lines.empty() || m_scratch.read("report").endsWith("}\n"));
        return lines;
    }

    int m_exitCode = -1;
};

TEST_F(ReportOfAnExport, HasALineForEachFile)
{
    addPhoto("a.jpg", "one");
    m_scratch.write(folder + QByteArray("a.MOV"), "film");
    m_scratch.write(folder + QByteArray("a.AAE"), "recipe");
    m_scratch.write("device/PhotoData/Mutations/DCIM/100APPLE/a/Adjustments/FullSizeRender.jpg",
                    "edited");
    m_scratch.write("device/PhotoData/Mutations/DCIM/100APPLE/a/Adjustments/FullSizeRender.mov",
                    "edited film");
    addRow("gone.jpg");
    addPhoto("c.jpg", "three");
    writeDevice();
    const QByteArray uuid = "01000000-0000-0000-0000-000000000000";
    const auto line = [&](const QByteArray &role, const QByteArray &path, const QByteArray &status,
                          const QByteArray &bytes) {
        return R"({"id":1,"uuid":")" + uuid + R"(","role":")" + role + R"(","path":")" + path +
               R"(","status":")" + status + R"(","bytes":)" + QByteArray::number(bytes.size()) +
               R"(,"sha256":")" + sha256Hex(bytes) + "\",\"cause\":null}\n";
    };
    for (const QByteArray status : {"copied", "unchanged"}) {
        EXPECT_EQ(0, runExport({"--report", report(), "--recipe", "1-2"}).exitCode);
        EXPECT_EQ(line("original", "a.jpg", status, "one") + line("live", "a.MOV", status, "film") +
                      line("edited", "a_edited.jpg", status, "edited") +
                      line("editedLive", "a_edited.mov", status, "edited film") +
                      line("recipe", "a.AAE", status, "recipe") +
                      "{\"id\":2,\"uuid\":\"02000000-0000-0000-0000-000000000000\",\"role\":"
                      "\"original\",\"path\":null,\"status\":\"notOnDevice\",\"bytes\":null,"
                      "\"sha256\":null,\"cause\":\"missing on the device\"}\n",
                  m_scratch.read("report"));
    }
}

TEST_F(ReportOfAnExport, TellsWhyAFileFailed)
{
    addPhoto("a.jpg", "one");
    addRow("pipe.jpg");
    m_scratch.makePipe(folder + QByteArray("pipe.jpg"));
    writeDevice();
    const std::vector<Json> lines = reported();
    EXPECT_EQ(1, m_exitCode);
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ("copied", lines[0]["status"].get<std::string>());
    EXPECT_EQ("failed", lines[1]["status"].get<std::string>());
    EXPECT_EQ("null", lines[1]["path"].text());
    EXPECT_EQ("null", lines[1]["bytes"].text());
    EXPECT_EQ("null", lines[1]["sha256"].text());
    EXPECT_EQ("not a regular file", lines[1]["cause"].get<std::string>());
    const ProgramResult result = runExport({"--report", report()});
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged, 1 failed (see " + report() + ")\n",
              result.output);
}

TEST_F(ReportOfAnExport, TellsOfSidecars)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    const std::vector<Json> lines = reported({"--sidecar", "json"});
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ("sidecar", lines[1]["role"].get<std::string>());
    EXPECT_EQ("a.jpg.json", lines[1]["path"].get<std::string>());
    EXPECT_EQ(sha256Hex(m_scratch.read("out/a.jpg.json")).toStdString(),
              lines[1]["sha256"].get<std::string>());
}

TEST_F(ReportOfAnExport, HasNoPathOfWhatSomebodyHasMoved)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    reported();
    ASSERT_EQ(0, ::unlink((out() + "/a.jpg").constData()));
    const std::vector<Json> lines = reported({"--only-new"});
    ASSERT_EQ(1U, lines.size());
    EXPECT_EQ("unchanged", lines[0]["status"].get<std::string>());
    EXPECT_EQ("null", lines[0]["path"].text());
    EXPECT_EQ("null", lines[0]["bytes"].text());
}

TEST_F(ReportOfAnExport, TellsOfAllFilesOfASample)
{
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(30));
    const std::vector<Json> lines = reported();
    EXPECT_EQ(0, m_exitCode);
    QList<QByteArray> paths;
    for (const Json &line : lines) {
        EXPECT_EQ((std::vector<std::string>{"id", "uuid", "role", "path", "status", "bytes",
                                            "sha256", "cause"}),
                  line.keys());
        if (line["path"].text() == "null")
            continue;
        paths.append(QByteArray::fromStdString(line["path"].get<std::string>()));
        const QByteArray bytes = m_scratch.read("out/" + paths.last());
        EXPECT_EQ(bytes.size(), line["bytes"].get<int>());
        EXPECT_EQ(sha256Hex(bytes).toStdString(), line["sha256"].get<std::string>());
    }
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(names(), paths);
}

TEST_F(ReportOfAnExport, IsNotWrittenToTheDeviceNorWithAPreview)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    expectFailure({"export", "-d", device(), "--report", device() + "/report", out()},
                  device() + ": photolib never writes to the device; choose a folder outside it");
    EXPECT_EQ(2, runExport({"--dry-run", "--report", report()}).exitCode);
    EXPECT_FALSE(m_scratch.exists("report"));
    EXPECT_FALSE(m_scratch.exists("out"));
}

// --- the summary

TEST_F(ReportOfAnExport, EndsWithASummaryWhoseNumbersAreEasyToRead)
{
    constexpr int photos = 1100;
    for (int i = 0; i < photos; ++i)
        addPhoto(std::to_string(i) + ".jpg", "1");
    writeDevice();
    const ProgramResult first = runExport();
    EXPECT_EQ(0, first.exitCode);
    EXPECT_EQ("Copied 1,100 files (1.1 KiB), 0 unchanged\n", first.output);
    EXPECT_EQ("Copied 0 files (0 bytes), 1,100 unchanged\n", runExport().output);
}

TEST_F(ReportOfAnExport, TellsWhatIsOnlyInICloudApart)
{
    m_database.schema.furtherAssetColumns = {"ZCLOUDLOCALSTATE INTEGER"};
    addPhoto("a.jpg", "one");
    for (const char *name : {"b.jpg", "c.jpg", "d.jpg"})
        addRow(name);
    m_database.rows.assets[3].savedAssetType = 6; // a copy that came from iCloud
    m_database.rows.sql = {"UPDATE ZGENERICASSET SET ZCLOUDLOCALSTATE = Z_PK = 2"};
    writeDevice();
    const std::vector<Json> lines = reported();
    EXPECT_EQ(0, m_exitCode);
    ASSERT_EQ(4U, lines.size());
    EXPECT_EQ("only in iCloud", lines[1]["cause"].get<std::string>());
    EXPECT_EQ("missing on the device", lines[2]["cause"].get<std::string>());
    EXPECT_EQ("only in iCloud", lines[3]["cause"].get<std::string>());
    const ProgramResult result = runExport();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("Copied 0 files (0 bytes), 1 unchanged, 2 only in iCloud, 1 not on the device\n",
              result.output);
    // As it is told elsewhere.
    EXPECT_TRUE(run({"info", "-d", device()}).output.contains("2 of the missing"));
}

// --- sidecars

TEST_F(ReportOfAnExport, GoesWithSidecarsAsJson)
{
    addPhoto("a.jpg", "one");
    m_scratch.write(folder + QByteArray("a.MOV"), "film");
    addRow("gone.jpg");
    writeDevice();
    EXPECT_EQ("Copied 3 files", runExport({"--sidecar", "json"}).output.left(14));
    EXPECT_EQ((QList<QByteArray>{"a.MOV", "a.jpg", "a.jpg.json"}), names());
    const Json listed = Json::parse(run({"photos", "--json", "-d", device()}).output);
    EXPECT_EQ(listed["photos"][0].text(), Json::parse(m_scratch.read("out/a.jpg.json")).text());
    EXPECT_EQ("Copied 0 files (0 bytes), 3 unchanged",
              runExport({"--sidecar", "json"}).output.left(37));
}

TEST_F(ReportOfAnExport, GoesWithSidecarsForOtherPrograms)
{
    if (!hasExiftool())
        GTEST_SKIP() << "exiftool is not installed";
    writeSampleTo(QString::fromUtf8(device()), sampleOptions(30));
    EXPECT_EQ(0, runExport({"--sidecar", "xmp", "--sidecar", "json", "1"}).exitCode);
    EXPECT_EQ((QList<QByteArray>{"2017/03/IMG_0001.JPG", "2017/03/IMG_0001.JPG.json",
                                 "2017/03/IMG_0001.JPG.xmp"}),
              names());
    const Json entry = Json::parse(m_scratch.read("out/2017/03/IMG_0001.JPG.json"));
    const Json tags =
        exiftoolTags(QString::fromUtf8(m_scratch.path("out/2017/03/IMG_0001.JPG.xmp")));
    EXPECT_EQ(entry["title"].get<std::string>(), tags["XMP-dc:Title"].get<std::string>());
}

TEST_F(ReportOfAnExport, LeavesSidecarsThatAPersonHasChanged)
{
    addPhoto("a.jpg", "one");
    writeDevice();
    EXPECT_EQ(0, runExport({"--sidecar", "xmp"}).exitCode);
    m_scratch.write("out/a.jpg.xmp", "my own words");
    EXPECT_EQ("Copied 0 files (0 bytes), 2 unchanged\n", runExport({"--sidecar", "xmp"}).output);
    EXPECT_EQ("my own words", m_scratch.read("out/a.jpg.xmp"));
}

} // namespace
