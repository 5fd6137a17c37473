#include "engine/reported_file.h"
#include "support/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

ReportedFile copiedFile()
{
    ReportedFile file;
    file.id = 42;
    file.uuid = "3F5B3D9E-248F-47FB-997B-6405814BC3EA";
    file.path = "2019/07/IMG_0001.JPG";
    file.bytes = 8 << 20;
    file.sha256 = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    return file;
}

std::string valueOf(const ReportedFile &file, const char *key)
{
    return Json::parse(reportLine(file))[key].text();
}

TEST(ReportLine, TellsAllOfACopiedFile)
{
    EXPECT_EQ(R"({"id":42,"uuid":"3F5B3D9E-248F-47FB-997B-6405814BC3EA","role":"original",)"
              R"("path":"2019/07/IMG_0001.JPG","status":"copied","bytes":8388608,)"
              R"("sha256":"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",)"
              R"("cause":null})"
              "\n",
              reportLine(copiedFile()).toStdString());
}

TEST(ReportLine, HasEveryKeyAndNullForWhatIsNotKnown)
{
    ReportedFile file;
    file.id = 7;
    file.status = ReportedFile::Failed;
    EXPECT_EQ(R"({"id":7,"uuid":null,"role":"original","path":null,"status":"failed",)"
              R"("bytes":null,"sha256":null,"cause":null})"
              "\n",
              reportLine(file).toStdString());
    file.uuid = file.path = file.sha256 = "";
    EXPECT_EQ("null", valueOf(file, "uuid"));
    EXPECT_EQ("null", valueOf(file, "path"));
    EXPECT_EQ("null", valueOf(file, "sha256"));
}

TEST(ReportLine, NamesWhatBecameOfTheFile)
{
    const std::pair<ReportedFile::Status, std::string> words[] = {
        {ReportedFile::Copied, "copied"},
        {ReportedFile::Unchanged, "unchanged"},
        {ReportedFile::NotOnDevice, "notOnDevice"},
        {ReportedFile::Failed, "failed"},
    };
    for (const auto &word : words) {
        ReportedFile file = copiedFile();
        file.status = word.first;
        EXPECT_EQ('"' + word.second + '"', valueOf(file, "status"));
    }
}

TEST(ReportLine, NamesTheRole)
{
    const std::pair<ExportRole, std::string> words[] = {
        {ExportRole::Original, "original"}, {ExportRole::Live, "live"},
        {ExportRole::Edited, "edited"},     {ExportRole::EditedLive, "editedLive"},
        {ExportRole::Recipe, "recipe"},     {ExportRole::Sidecar, "sidecar"},
        {ExportRole::Stored, "stored"},
    };
    for (const auto &word : words) {
        ReportedFile file = copiedFile();
        file.role = word.first;
        EXPECT_EQ('"' + word.second + '"', valueOf(file, "role"));
    }
}

TEST(ReportLine, KeepsLargeSizesAndAnEmptyFile)
{
    ReportedFile file = copiedFile();
    file.bytes = std::numeric_limits<qint64>::max();
    EXPECT_EQ("9223372036854775807", valueOf(file, "bytes"));
    file.bytes = 0;
    EXPECT_EQ("0", valueOf(file, "bytes"));
}

TEST(ReportLine, IsOneLineWhateverTheTexts)
{
    ReportedFile file = copiedFile();
    file.path = QByteArray("a\n\x1b[2J\"\xff\xe2\x80\xae\0.JPG", 17);
    file.cause = QStringLiteral("Gr\u00fc\u00dfe\n\u2028\u202e\"\\");
    const QByteArray line = reportLine(file);
    EXPECT_EQ(1, line.count('\n'));
    EXPECT_TRUE(line.endsWith('\n'));
    EXPECT_EQ(0, line.count('\x1b'));
    EXPECT_EQ(-1, line.indexOf("\xe2\x80\xae"));
    EXPECT_EQ(std::string("a\n\x1b[2J\"\xef\xbf\xbd\xe2\x80\xae\0.JPG", 19),
              Json::parse(line)["path"].get<std::string>());
    EXPECT_EQ(file.cause.toStdString(), Json::parse(line)["cause"].get<std::string>());
}

} // namespace
