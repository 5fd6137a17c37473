#include "cli/text_table.h"

#include "base/byte_count.h"
#include "cli/output.h"
#include "engine/photo_text.h"

#include <gtest/gtest.h>

namespace {

std::string written(const TextTable &table)
{
    testing::internal::CaptureStdout();
    Output output;
    table.write(output);
    output.flush();
    return testing::internal::GetCapturedStdout();
}

TEST(TextTable, LinesColumnsUp)
{
    TextTable table({"ID", "NAME", "PATH"});
    table.alignRight(0);
    table.addRow({"1", "a.jpg", "DCIM/a.jpg"});
    table.addRow({"1000", "longer.jpg", ""});
    EXPECT_EQ("  ID  NAME        PATH\n"
              "   1  a.jpg       DCIM/a.jpg\n"
              "1000  longer.jpg\n",
              written(table));
}

TEST(TextTable, IsNotWidenedByASingleCell)
{
    const QString longName(1000, 'x');
    TextTable table({"NAME", "PATH"});
    table.addRow({longName, "p"});
    table.addRow({"a", "q"});
    EXPECT_EQ("NAME" + std::string(198, ' ') + "PATH\n" + longName.toStdString() + "  p\na" +
                  std::string(201, ' ') + "q\n",
              written(table));
}

TEST(TextTable, LinesUpWideAndCombiningLetters)
{
    TextTable table({"N", "P"});
    table.addRow({QString::fromUtf8("日本"), "x"});
    table.addRow({QString::fromUtf8("e\u0301e\u0301"), "x"});
    table.addRow({QString::fromUtf8("grün"), "x"});
    EXPECT_EQ("N     P\n"
              "日本  x\n"
              "e\u0301e\u0301    x\n"
              "grün  x\n",
              written(table));
}

TEST(DisplayWidth, CountsTheCellsOfATerminal)
{
    EXPECT_EQ(0, displayWidth(QString()));
    EXPECT_EQ(3, displayWidth("abc"));
    EXPECT_EQ(4, displayWidth(QString::fromUtf8("日本")));
    EXPECT_EQ(2, displayWidth(QString::fromUtf8("\U0001f304")));
    EXPECT_EQ(1, displayWidth(QString::fromUtf8("e\u0301")));
}

TEST(NameText, ShowsANameAsTheDeviceWroteIt)
{
    // How the plug-in reads the UTF-8 of "grün".
    EXPECT_EQ(QString::fromUtf8("grün"), nameText(QString::fromLatin1("gr\xc3\xbcn")));
    EXPECT_EQ(QString::fromUtf8("grün"), nameText(QString::fromUtf8("grün")));
    EXPECT_EQ(QStringLiteral("IMG_0001.JPG"), nameText("IMG_0001.JPG"));
    EXPECT_EQ(QStringLiteral("a\\x0ab"), nameText("a\nb"));
}

TEST(ByteCountText, CountsInBinaryUnits)
{
    EXPECT_EQ(QStringLiteral("0 bytes"), byteCountText(0));
    EXPECT_EQ(QStringLiteral("1.5 KiB"), byteCountText(1536));
    EXPECT_EQ(QStringLiteral("64.0 GiB"), byteCountText(qint64(64) << 30));
}

} // namespace
