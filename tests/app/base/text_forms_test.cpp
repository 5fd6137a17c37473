#include "base/printable.h"
#include "devices/encoded_names.h"

#include <gtest/gtest.h>

namespace {

TEST(Printable, LeavesOrdinaryTextAlone)
{
    const QByteArray text =
        "IMG_0001.JPG gr\xc3\xbc\xc3\x9f \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x8c\x84";
    EXPECT_EQ(text, printable(text));
}

TEST(Printable, EscapesControlCharacters)
{
    EXPECT_EQ(QByteArray("a\\x0ab\\x1b[2J\\x7f\\x00"),
              printable(QByteArray("a\nb\x1b[2J\x7f\0", 9)));
    // A control character of eight bits, here in UTF-8.
    EXPECT_EQ(QByteArray("\\xc2\\x9b"), printable(QByteArray("\xc2\x9b")));
}

TEST(Printable, EscapesWhatIsNotUtf8)
{
    EXPECT_EQ(QByteArray("\\xff"), printable(QByteArray("\xff")));
    EXPECT_EQ(QByteArray("\\xc3"), printable(QByteArray("\xc3")));
    EXPECT_EQ(QByteArray("\\xc3("), printable(QByteArray("\xc3(")));
    EXPECT_EQ(QByteArray("\\xed\\xa0\\x80"), printable(QByteArray("\xed\xa0\x80"))); // a surrogate
    EXPECT_EQ(QByteArray("\\xc0\\xaf"), printable(QByteArray("\xc0\xaf"))); // too long a form
}

TEST(Printable, EscapesWhatTurnsTheDirectionOfWriting)
{
    EXPECT_EQ(QByteArray("\\xe2\\x80\\xaegpj"), printable(QByteArray("\xe2\x80\xaegpj")));
    EXPECT_EQ(QByteArray("\\xd8\\x9cgpj"), printable(QByteArray("\xd8\x9cgpj")));
}

TEST(UndoneEncoding, UndoesUtf8OfLatin1)
{
    EXPECT_EQ(QByteArray("gr\xc3\xbc"), undoneEncoding("gr\xc3\x83\xc2\xbc"));
    EXPECT_EQ(QByteArray("gr\xfc"), undoneEncoding("gr\xc3\xbc"));
}

TEST(UndoneEncoding, HasNothingToUndoInAscii)
{
    EXPECT_EQ(QByteArray(), undoneEncoding("DCIM/IMG_0001.JPG"));
    EXPECT_EQ(QByteArray(), undoneEncoding(""));
}

TEST(UndoneEncoding, HasNothingToUndoBeyondLatin1)
{
    EXPECT_EQ(QByteArray(), undoneEncoding("\xe6\x97\xa5"));
    EXPECT_EQ(QByteArray(), undoneEncoding("\xff"));
}

} // namespace
