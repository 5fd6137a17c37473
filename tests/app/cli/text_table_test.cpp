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

TEST(TextTable, FitsByCuttingTheWidestColumnsThatMayBeCut)
{
    TextTable table({"ID", "NAME", "PATH"});
    table.allowCutting(1);
    table.allowCutting(2);
    table.addRow({"1000", "a name of 20 letters", "a path of some thirty letters.."});
    table.addRow({"1", "short", "p"});
    table.fitInto(40);
    EXPECT_EQ("ID    NAME              PATH\n"
              "1000  a name of 20 le…  a path of some …\n"
              "1     short             p\n",
              written(table));
}

TEST(TextTable, CutsLinesWhereColumnsWouldGetTooNarrow)
{
    TextTable table({"KEPT", "CUT"});
    table.allowCutting(1);
    table.addRow({"twelve cells", "twenty cells of text"});
    table.fitInto(18);
    EXPECT_EQ("KEPT          CUT\n"
              "twelve cells  twe…\n",
              written(table));
}

TEST(TextTable, IsLeftAsItIsWhenItFits)
{
    TextTable table({"A", "B"});
    table.allowCutting(1);
    table.addRow({"x", "twenty cells of text"});
    table.fitInto(23);
    EXPECT_EQ("A  B\nx  twenty cells of text\n", written(table));
}

TEST(TextTable, CutsWideLettersAsAWhole)
{
    EXPECT_EQ(QString::fromUtf8("日本"), cutToWidth(QString::fromUtf8("日本"), 4));
    EXPECT_EQ(QString::fromUtf8("日…"), cutToWidth(QString::fromUtf8("日本"), 3));
    EXPECT_EQ(QString::fromUtf8("…"), cutToWidth(QString::fromUtf8("日本"), 2));
    EXPECT_EQ(QString::fromUtf8("e\u0301…"), cutToWidth(QString::fromUtf8("e\u0301e\u0301e"), 2));
}

} // namespace
