#include "engine/library_date.h"
#include "support/catalogs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double firstSecond = -63113904000; // 0001-01-01
constexpr double lastSecond = 252423993599;  // 9999-12-31 23:59:59

std::string iso(LibraryDate date, std::optional<int> utcOffset = std::nullopt)
{
    return isoDateText(date, utcOffset).toStdString();
}

TEST(LibraryDates, BeginIn2001AndAreInUtcWhereTheZoneIsNotKnown)
{
    EXPECT_EQ("2001-01-01T00:00:00Z", iso(0));
    EXPECT_EQ("2019-07-27T13:16:49Z", iso(july2019(27, 13, 16, 49)));
    EXPECT_EQ("2000-12-31T23:59:59Z", iso(-1));
    EXPECT_EQ("", iso(std::nullopt));
}

TEST(LibraryDates, AreThoseOfTheZonesClock)
{
    const double taken = july2019(27, 13, 16, 49);
    EXPECT_EQ("2019-07-27T09:16:49-04:00", iso(taken, -240));
    EXPECT_EQ("2019-07-27T18:46:49+05:30", iso(taken, 330));
    EXPECT_EQ("2019-07-27T12:46:49-00:30", iso(taken, -30));
    EXPECT_EQ("2019-07-27T13:16:49+00:00", iso(taken, 0));
    EXPECT_EQ("2019-07-28T13:15:49+23:59", iso(taken, 1439));
    EXPECT_EQ("2019-07-27 09:16:49", clockText(taken, -240));
    EXPECT_EQ("2019-07-27 13:16:49", clockText(taken));
    EXPECT_EQ("", clockText(std::nullopt));
}

TEST(LibraryDates, AreRoundedToTheNearestMillisecondHalfUp)
{
    EXPECT_EQ("2001-01-01T00:00:00.001Z", iso(0.0005));
    EXPECT_EQ("2001-01-01T00:00:00Z", iso(0.000499));
    EXPECT_EQ("2001-01-01T00:00:00Z", iso(-0.0005));
    EXPECT_EQ("2000-12-31T23:59:59.999Z", iso(-0.0006));
    EXPECT_EQ("2001-01-01T00:00:00.250Z", iso(0.25));
    EXPECT_EQ("2001-01-01T00:00:01Z", iso(0.9996));
    EXPECT_EQ("2000-12-31T23:59:58.500-00:30", iso(1798.5, -30));
}

TEST(LibraryDates, EndWithTheYearsOfFourDigits)
{
    EXPECT_EQ("0001-01-01T00:00:00Z", iso(firstSecond));
    EXPECT_EQ("", iso(firstSecond - 1));
    EXPECT_EQ("9999-12-31T23:59:59Z", iso(lastSecond));
    EXPECT_EQ("9999-12-31T23:59:59.999Z", iso(lastSecond + 0.9991));
    EXPECT_EQ("", iso(lastSecond + 1));
    EXPECT_EQ("", iso(1e300));
    EXPECT_EQ("", iso(-1e300));
    EXPECT_EQ("", iso(std::numeric_limits<double>::infinity()));
    EXPECT_EQ("", iso(std::nan("")));
}

TEST(LibraryDates, EndWithThemOnTheZonesClockAsWellAsInUtc)
{
    EXPECT_EQ("0001-01-01T01:00:00+01:00", iso(firstSecond, 60));
    EXPECT_EQ("", iso(firstSecond, -60));
    EXPECT_EQ("", iso(firstSecond - 1, 60));
    EXPECT_EQ("", iso(lastSecond, 60));
    EXPECT_EQ("", iso(lastSecond + 1, -60));
}

struct SpanRow {
    const char *text;
    const char *start;
    const char *lastMillisecond;
    bool isUtc = false;
};

TEST(DateSpans, LastAsLongAsWhatIsNamed)
{
    const SpanRow rows[] = {
        {"2019", "2019-01-01T00:00:00Z", "2019-12-31T23:59:59.999Z"},
        {"2019-07", "2019-07-01T00:00:00Z", "2019-07-31T23:59:59.999Z"},
        {"2020-02", "2020-02-01T00:00:00Z", "2020-02-29T23:59:59.999Z"},
        {"2019-12-31", "2019-12-31T00:00:00Z", "2019-12-31T23:59:59.999Z"},
        {"2019-07-27T09:16", "2019-07-27T09:16:00Z", "2019-07-27T09:16:59.999Z"},
        {"2019-07-27 09:16:49", "2019-07-27T09:16:49Z", "2019-07-27T09:16:49.999Z"},
        {"2019-07-27T09:16:49.25", "2019-07-27T09:16:49.250Z", "2019-07-27T09:16:49.250Z"},
        {"2019-07-27T09:16Z", "2019-07-27T09:16:00Z", "2019-07-27T09:16:59.999Z", true},
        {"2019-07-27T01:16:49+02:00", "2019-07-26T23:16:49Z", "2019-07-26T23:16:49.999Z", true},
        {"2019-07-27T23:16:49-04:30", "2019-07-28T03:46:49Z", "2019-07-28T03:46:49.999Z", true},
        {"0001", "0001-01-01T00:00:00Z", "0001-12-31T23:59:59.999Z"},
        {"9999", "9999-01-01T00:00:00Z", "9999-12-31T23:59:59.999Z"},
    };
    for (const SpanRow &row : rows) {
        const std::optional<DateSpan> span = dateSpan(row.text);
        ASSERT_TRUE(span) << row.text;
        EXPECT_EQ(row.start, iso(double(span->start) / 1000)) << row.text;
        EXPECT_EQ(row.lastMillisecond, iso(double(span->end - 1) / 1000)) << row.text;
        EXPECT_EQ(row.isUtc, span->isUtc) << row.text;
    }
}

TEST(DateSpans, AreNothingButWhatTheCalendarHas)
{
    for (const char *text : {"",
                             "19",
                             "20190",
                             "2019-",
                             "2019-7",
                             "2019-13",
                             "2019-00",
                             "2019-02-29",
                             "2019-07-32",
                             "0000",
                             "2019-07-27T",
                             "2019-07-27T24:00",
                             "2019-07-27T09:60",
                             "2019-07-27T09",
                             "2019-07-27T09:16:60",
                             "2019-07-27T09:16:49.",
                             "2019-07-27T09:16:49.1234",
                             "2019Z",
                             "2019-07-27Z",
                             "2019-07-27T09:16+2",
                             "2019-07-27T09:16+24:00",
                             "2019-07-27T09:16+02:60",
                             " 2019",
                             "2019 ",
                             "2019\n",
                             "yesterday",
                             "-2019"})
        EXPECT_FALSE(dateSpan(text)) << text;
}

} // namespace
