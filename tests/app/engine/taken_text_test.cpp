#include "engine/taken_text.h"

#include "catalog/asset.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::string textOf(LibraryDate taken, std::optional<int> utcOffset = 0)
{
    Asset asset;
    asset.taken = taken;
    asset.utcOffset = utcOffset;
    return takenText(asset).toStdString();
}

constexpr double ofAJuly = 585926209; // 2019-07-27 13:16:49 UTC

TEST(TakenText, IsByTheClockWhereThePhotoWasTaken)
{
    EXPECT_EQ("2019-07-27 13:16", textOf(ofAJuly));
    EXPECT_EQ("2019-07-27 09:16", textOf(ofAJuly, -240));
    EXPECT_EQ("2019-07-28 03:01", textOf(ofAJuly, 825));
}

TEST(TakenText, SaysThatItIsInUtcWhereThatClockIsNotKnown)
{
    EXPECT_EQ("2019-07-27 13:16Z", textOf(ofAJuly, std::nullopt));
}

TEST(TakenText, CountsTheMinutesThatHavePassed)
{
    EXPECT_EQ("2001-01-01 00:00", textOf(59.9994));
    EXPECT_EQ("2001-01-01 00:01", textOf(59.9995)); // a millisecond is not told apart
    EXPECT_EQ("2000-12-31 23:59", textOf(-0.001));
}

TEST(TakenText, IsEmptyWithoutADateOfTheCalendar)
{
    const double inTheYear10000 = 252423993600;
    EXPECT_EQ("", textOf(std::nullopt));
    EXPECT_EQ("9999-12-31 23:59", textOf(inTheYear10000 - 1));
    EXPECT_EQ("", textOf(inTheYear10000));
    EXPECT_EQ("", textOf(1e300));
    EXPECT_EQ("", textOf(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ("", textOf(std::numeric_limits<double>::quiet_NaN()));
}

TEST(TakenText, HasYearsOfFourDigits)
{
    const double inTheYear1 = -63113904000; // its first second
    EXPECT_EQ("0001-01-01 00:00", textOf(inTheYear1));
    EXPECT_EQ("", textOf(inTheYear1 - 1));
}

} // namespace
