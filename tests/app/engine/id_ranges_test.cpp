#include "engine/id_ranges.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

IdSelection selection(const std::vector<std::string> &texts)
{
    std::vector<IdRange> ranges;
    for (const std::string &text : texts)
        ranges.push_back(*idRange(text));
    return IdSelection(ranges);
}

TEST(IdRanges, AreNumbersOrTwoOfThem)
{
    const IdRange one = *idRange("42");
    EXPECT_FALSE(one.isRange);
    EXPECT_EQ(42U, one.first);
    const IdRange several = *idRange("3-9");
    EXPECT_TRUE(several.isRange);
    EXPECT_EQ(3U, several.first);
    EXPECT_EQ(9U, several.last);
    EXPECT_EQ("3-9", several.text);
    EXPECT_TRUE(idRange("9-3")->isReversed());
    EXPECT_FALSE(idRange("3-3")->isReversed());
    for (const char *text : {"", "-", "3-", "-3", "3-9-10", "a", "3-b", "3 - 9", "+3", "3,9"})
        EXPECT_FALSE(idRange(text)) << text;
}

TEST(IdRanges, EndAtTheLargestNumber)
{
    EXPECT_EQ(std::numeric_limits<quint64>::max(), idRange("3-99999999999999999999999")->last);
    EXPECT_FALSE(idRange("3-99999999999999999999999")->isReversed());
}

TEST(IdSelections, TellNamedIdsFromThoseInRanges)
{
    const IdSelection ids = selection({"5", "10-20", "15-17", "18-30", "40-50", "2", "45"});
    for (const quint64 id : {2, 5, 45})
        EXPECT_TRUE(ids.names(id)) << id;
    for (const quint64 id : {0, 3, 10, 15, 51})
        EXPECT_FALSE(ids.names(id)) << id;
    for (const quint64 id : {10, 14, 17, 20, 21, 30, 40, 45, 50})
        EXPECT_TRUE(ids.covers(id)) << id;
    for (const quint64 id : {0, 2, 5, 9, 31, 39, 51})
        EXPECT_FALSE(ids.covers(id)) << id;
}

TEST(IdSelections, OfNothingHoldNothing)
{
    EXPECT_FALSE(selection({}).names(1));
    EXPECT_FALSE(selection({}).covers(1));
}

} // namespace
