#include "base/byte_count.h"

#include <gtest/gtest.h>

namespace {

struct ByteCountRow {
    const char *text;
    qint64 bytes;
};

TEST(ByteCounts, AreReadAsPeopleWriteThem)
{
    const ByteCountRow rows[] = {
        {"0", 0},
        {"2000", 2000},
        {"2000B", 2000},
        {"500k", 500 * 1024},
        {"500K", 500 * 1024},
        {"1.5G", 1536LL << 20},
        {"10M", 10 << 20},
        {"10MB", 10000000},
        {"10 mb", 10000000},
        {"10MiB", 10 << 20},
        {"1kB", 1000},
        {"0.5KiB", 512},
        {"2T", 2LL << 40},
        {"1.5", 1},
        {"8000000T", 8000000LL << 40},
    };
    for (const ByteCountRow &row : rows)
        EXPECT_EQ(row.bytes, byteCount(row.text).value_or(-1)) << row.text;
}

TEST(ByteCounts, AreNothingInOtherTexts)
{
    for (const char *text : {"", "k", "-1", "1,5M", "10X", "10Mi", "1 0", "10MBit", " 10", "10\n",
                             ".5M", "9000000T", "99999999999999999999999999"})
        EXPECT_FALSE(byteCount(text)) << text;
}

} // namespace
