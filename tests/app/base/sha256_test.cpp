#include "base/sha256.h"

#include <gtest/gtest.h>

namespace {

// The digests that the standard gives as examples.
const char ofNothing[] = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
const char ofAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const char ofMillionAs[] = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(Sha256, IsThatOfTheStandardsExamples)
{
    EXPECT_EQ(ofNothing, sha256Hex(QByteArray()));
    EXPECT_EQ(ofAbc, sha256Hex("abc"));
    EXPECT_EQ(ofMillionAs, sha256Hex(QByteArray(1000000, 'a')));
}

TEST(Sha256, IsTheSameInWhateverPiecesTheBytesCome)
{
    for (const int piece : {1, 7, 64, 65536}) {
        const QByteArray bytes(1000000, 'a');
        Sha256 sum;
        for (int at = 0; at < bytes.size(); at += piece)
            sum.add(bytes.constData() + at, qMin(piece, bytes.size() - at));
        EXPECT_EQ(ofMillionAs, sum.takeHex()) << piece;
    }
}

TEST(Sha256, BeginsAnewWhenItHasBeenTaken)
{
    Sha256 sum;
    sum.add("before", 6);
    sum.takeHex();
    EXPECT_EQ(ofNothing, sum.takeHex());
    sum.add("abc", 3);
    EXPECT_EQ(ofAbc, sum.takeHex());
}

TEST(Sha256, TakesZeroBytesInTheMiddle)
{
    EXPECT_NE(sha256Hex(QByteArray("a\0b", 3)), sha256Hex(QByteArray("a\0c", 3)));
    Sha256 sum;
    sum.add(nullptr, 0);
    EXPECT_EQ(ofNothing, sum.takeHex());
}

} // namespace
