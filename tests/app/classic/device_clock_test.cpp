#include "classic/device_clock.h"

#include "support/environment.h"

#include <gtest/gtest.h>

namespace {

constexpr quint32 from1904To1970 = 2082844800;
constexpr quint32 summer2005 = 1123335296; // 2005-08-06 13:34:56 UTC

TEST(DeviceClock, ShowsTheSameTimeInEachZone)
{
    for (const char *name : {"UTC", "America/New_York", "Pacific/Kiritimati", "Asia/Kathmandu"}) {
        const Environment zone("TZ", name);
        EXPECT_EQ(summer2005, clockSecondsSince1970(from1904To1970 + summer2005)) << name;
    }
}

TEST(DeviceClock, ShowsTimesFrom1970On)
{
    EXPECT_EQ(1u, clockSecondsSince1970(from1904To1970 + 1));
    EXPECT_EQ(0xffffffffu - from1904To1970, clockSecondsSince1970(0xffffffffu));
}

TEST(DeviceClock, HasNoTimeBefore1970)
{
    EXPECT_EQ(0u, clockSecondsSince1970(0));
    EXPECT_EQ(0u, clockSecondsSince1970(1));
    EXPECT_EQ(0u, clockSecondsSince1970(from1904To1970 - 1));
}

} // namespace
