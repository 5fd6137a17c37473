#include "cli/year_chart.h"

#include <gtest/gtest.h>

namespace {

std::string chart(const std::map<int, int> &years, int width = 10)
{
    return yearChart(years, width).join(QLatin1Char('\n')).toStdString();
}

TEST(YearChart, IsEmptyWithoutYears)
{
    EXPECT_EQ("", chart({}));
}

TEST(YearChart, DrawsTheYearOfTheMostOverTheWholeWidth)
{
    EXPECT_EQ("2018   6  #####\n2019  12  ##########", chart({{2018, 6}, {2019, 12}}));
}

TEST(YearChart, ShowsAYearOfFewToo)
{
    EXPECT_EQ("2018     1  #\n2019  1000  ##########", chart({{2018, 1}, {2019, 1000}}));
}

TEST(YearChart, HasALineForAYearOfNone)
{
    EXPECT_EQ("2017  1  ##########\n2018  0\n2019  1  ##########", chart({{2017, 1}, {2019, 1}}));
}

TEST(YearChart, LeavesCenturiesOfNoneOut)
{
    EXPECT_EQ("   1  1  ##########\n2019  1  ##########", chart({{1, 1}, {2019, 1}}));
}

} // namespace
