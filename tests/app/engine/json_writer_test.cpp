#include "engine/json_writer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(JsonNumbers, AreAsShortAsTheyCanBeReadAgain)
{
    EXPECT_EQ("0.1", shortestText(0.1));
    EXPECT_EQ("5", shortestText(5));
    EXPECT_EQ("-79.38333333333334", shortestText(-79.38333333333334));
    EXPECT_EQ("5e-324", shortestText(5e-324));
    EXPECT_EQ("9007199254740992", shortestText(9007199254740992));
}

std::string written(const QByteArray &text)
{
    JsonWriter json;
    json.text(text);
    return json.taken().toStdString();
}

TEST(JsonTexts, KeepEveryCharacterAndActOnNoTerminal)
{
    EXPECT_EQ(R"("a\u000ab\u001b[2J\u0000\u007f")", written(QByteArray("a\nb\x1b[2J\0\x7f", 9)));
    EXPECT_EQ(R"("\u009b\u202e")", written("\xc2\x9b\xe2\x80\xae"));
    EXPECT_EQ("\"\xef\xbb\xbf\"", written("\xef\xbb\xbf"));
    EXPECT_EQ("\"\"", written(""));
    EXPECT_EQ("null", written(QByteArray()));
}

TEST(JsonTexts, ReplaceWhatIsNotUtf8)
{
    EXPECT_EQ("\"a\xef\xbf\xbd\xef\xbf\xbdz\"", written("a\xff\xc3z"));
    EXPECT_EQ("\"\xef\xbf\xbd\\\"\"", written("\xe6\x97\""));
}

} // namespace
