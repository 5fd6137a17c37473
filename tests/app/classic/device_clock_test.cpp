#include "classic/device_clock.h"

#include "support/environment.h"

#include <gtest/gtest.h>

namespace {

constexpr quint32 from1904To1970 = 2082844800;
constexpr quint32 summer2005 = 1123335296; // 2005-08-06 13:34:56 UTC

TEST(DeviceClock, ShowsTheTimeOfThisComputersZone)
{
    const Environment zone("TZ", "America/New_York");
    constexpr quint32 summerHours = 4;
    EXPECT_EQ(summer2005 + summerHours * 3600, unixTime(from1904To1970 + summer2005));
}

TEST(DeviceClock, FollowsTheZonesSummerTime)
{
    const Environment zone("TZ", "America/New_York");
    constexpr quint32 winter2005 = summer2005 - 180 * 86400;
    constexpr quint32 winterHours = 5;
    EXPECT_EQ(winter2005 + winterHours * 3600, unixTime(from1904To1970 + winter2005));
}

TEST(DeviceClock, ShowsUtcWhereThatIsTheZone)
{
    const Environment zone("TZ", "UTC");
    EXPECT_EQ(summer2005, unixTime(from1904To1970 + summer2005));
    EXPECT_EQ(1u, unixTime(from1904To1970 + 1));
    EXPECT_EQ(0xffffffffu - from1904To1970, unixTime(0xffffffffu));
}

TEST(DeviceClock, HasNoTimeBefore1970)
{
    const Environment zone("TZ", "UTC");
    EXPECT_EQ(0u, unixTime(0));
    EXPECT_EQ(0u, unixTime(1));
    EXPECT_EQ(0u, unixTime(from1904To1970 - 1));
}

} // namespace
