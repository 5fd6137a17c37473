#include "engine/edit_script.h"

#include "base/error.h"
#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

// "word|quoted word", the second marked by a ' behind it.
std::string wordsOf(const char *line)
{
    QVector<ScriptWord> words;
    const QString error = splitWords(QString::fromUtf8(line), &words);
    if (!error.isEmpty())
        return "error: " + error.toStdString();
    std::string result;
    for (const ScriptWord &word : words)
        result += word.text.toStdString() + (word.isQuoted ? "'|" : "|");
    return result;
}

struct Splitting {
    const char *name;
    const char *line;
    const char *words;
};

void PrintTo(const Splitting &row, std::ostream *stream)
{
    *stream << row.line;
}

class SplitWords : public testing::TestWithParam<Splitting>
{
};

TEST_P(SplitWords, FindsTheWords)
{
    EXPECT_EQ(GetParam().words, wordsOf(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    EachForm, SplitWords,
    testing::Values(
        Splitting{"Nothing", "", ""}, Splitting{"BlanksOnly", " \t ", ""},
        Splitting{"OneWord", "albums", "albums|"}, Splitting{"BlanksAround", "  a \t b\r", "a|b|"},
        Splitting{"Quoted", R"("a  b" c)", "a  b'|c|"},
        Splitting{"QuotedTab", "\"a\tb\"", "a\tb'|"}, Splitting{"Empty", R"(a "" b)", "a|'|b|"},
        Splitting{"EscapedQuote", R"("say \"hi\"")", R"(say "hi"'|)"},
        Splitting{"EscapedBackslash", R"("a\\" b)", R"(a\'|b|)"},
        Splitting{"QuotesInAWord", R"(a"b c"d)", "ab cd'|"},
        Splitting{"QuotesThatMeet", R"("a""b")", "ab'|"}, Splitting{"OtherQuotes", "it's", "it's|"},
        Splitting{"BeyondAscii", "日本 \"🗾 é\"", "日本|🗾 é'|"},
        Splitting{"HashInside", "a #b", "a|#b|"},
        Splitting{"OpenQuote", R"(a "b c)", "error: a quote is not closed"},
        Splitting{"OpenQuoteAtTheEnd", R"(a ")", "error: a quote is not closed"},
        Splitting{"OnlyAnEscapedQuote", R"("\")", "error: a quote is not closed"},
        Splitting{"BackslashOutside", R"(a\ b)", "error: a backslash outside quotes"},
        Splitting{"UnknownEscape", R"("a\nb")",
                  "error: a backslash in quotes goes before a quote or a backslash"},
        Splitting{"BackslashAtTheEnd", R"("a\)",
                  "error: a backslash in quotes goes before a quote or a backslash"}),
    rowName<Splitting>);

TEST(ScriptWord, IsAnIdOfDigitsOutsideQuotes)
{
    EXPECT_TRUE((ScriptWord{QStringLiteral("2018"), false}).isId());
    EXPECT_FALSE((ScriptWord{QStringLiteral("2018"), true}).isId());
    EXPECT_FALSE((ScriptWord{QStringLiteral("20x"), false}).isId());
    EXPECT_FALSE((ScriptWord{QStringLiteral("-1"), false}).isId());
    EXPECT_FALSE((ScriptWord{QString(), false}).isId());
}

TEST(EditScript, HasTheEditsWithTheirLines)
{
    const QVector<ScriptEdit> edits = parseEditScript("# a script\n"
                                                      "\n"
                                                      "add-album \"My Trip\" 3 4\r\n"
                                                      "   # another remark\n"
                                                      "  add-photo new.jpg \"My Trip\"\n"
                                                      "rename 7 Name\n"
                                                      "remove-photo 7 1\n"
                                                      "rm-album 7",
                                                      "s");
    ASSERT_EQ(5, edits.size());
    const EditKind kinds[] = {EditKind::AddAlbum, EditKind::AddPhoto, EditKind::Rename,
                              EditKind::RemovePhoto, EditKind::RemoveAlbum};
    const int lines[] = {3, 5, 6, 7, 8};
    const int arguments[] = {3, 2, 2, 2, 1};
    for (int i = 0; i < edits.size(); ++i) {
        EXPECT_EQ(kinds[i], edits[i].kind);
        EXPECT_EQ(lines[i], edits[i].line);
        EXPECT_EQ(arguments[i], edits[i].arguments.size());
    }
    EXPECT_EQ(QStringLiteral("add-photo new.jpg \"My Trip\""), edits[1].text);
    EXPECT_EQ(QStringLiteral("My Trip"), edits[0].arguments[0].text);
    EXPECT_EQ(QStringLiteral("4"), edits[0].arguments[2].text);
}

TEST(EditScript, MayBeEmpty)
{
    EXPECT_TRUE(parseEditScript("", "s").isEmpty());
    EXPECT_TRUE(parseEditScript("# nothing\n\n", "s").isEmpty());
}

TEST(EditScript, MayBeginWithAByteOrderMark)
{
    EXPECT_EQ(1, parseEditScript("\xef\xbb\xbfrm-album 7\n", "s").size());
}

struct WrongScript {
    const char *name;
    const char *script;
    const char *error;
};

void PrintTo(const WrongScript &row, std::ostream *stream)
{
    *stream << row.script;
}

class WrongEditScript : public testing::TestWithParam<WrongScript>
{
};

TEST_P(WrongEditScript, IsRefusedWithLineAndCause)
{
    try {
        parseEditScript(GetParam().script, "file");
        ADD_FAILURE() << "it is taken";
    } catch (const Error &error) {
        EXPECT_STREQ(GetParam().error, error.what());
        EXPECT_EQ(Error::Failed, error.kind());
    }
}

INSTANTIATE_TEST_SUITE_P(
    EachCause, WrongEditScript,
    testing::Values(
        WrongScript{"UnknownEdit", "rm-album 1\n\nmove 1 2\n", "file:3: move: no such edit"},
        WrongScript{"QuotedNothing", "\"\" 1", "file:1: : no such edit"},
        WrongScript{"AlbumWithoutName", "add-album", "file:1: add-album takes NAME [ID...]"},
        WrongScript{"AlbumOfNames", "add-album a 1 b", "file:1: b: not the id of a photo"},
        WrongScript{"AlbumOfQuotedIds", "add-album a \"1\"", "file:1: 1: not the id of a photo"},
        WrongScript{"PhotoWithoutAlbum", "add-photo 1", "file:1: add-photo takes FILE|ID ALBUM"},
        WrongScript{"TwoPhotos", "add-photo 1 2 3", "file:1: add-photo takes FILE|ID ALBUM"},
        WrongScript{"NoNewName", "rename 1", "file:1: rename takes ALBUM NAME"},
        WrongScript{"NameOfTwoWords", "rename 1 a b", "file:1: rename takes ALBUM NAME"},
        WrongScript{"EmptyName", "rename 1 \"\"", "file:1: rename: an argument is empty"},
        WrongScript{"RemoveNothing", "remove-photo 1", "file:1: remove-photo takes ALBUM ID..."},
        WrongScript{"RemoveAName", "remove-photo 1 a", "file:1: a: not the id of a photo"},
        WrongScript{"NoAlbum", "rm-album", "file:1: rm-album takes ALBUM"},
        WrongScript{"TwoAlbums", "rm-album 1 2", "file:1: rm-album takes ALBUM"},
        WrongScript{"OpenQuote", "\nrm-album \"a", "file:2: a quote is not closed"},
        WrongScript{"OtherEncoding", "rm-album \xfc", "file:1: not UTF-8"}),
    rowName<WrongScript>);

} // namespace
