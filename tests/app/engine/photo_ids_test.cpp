#include "engine/photo_ids.h"

#include <gtest/gtest.h>

namespace {

TEST(PhotoIds, AreDecimalNumbers)
{
    EXPECT_TRUE(isNumber("1"));
    EXPECT_TRUE(isNumber("18446744073709551616"));
    EXPECT_FALSE(isNumber(""));
    EXPECT_FALSE(isNumber("-1"));
    EXPECT_FALSE(isNumber("1x"));
    EXPECT_FALSE(isNumber("./1"));
}

} // namespace
