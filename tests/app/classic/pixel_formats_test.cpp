#include "classic/pixel_formats.h"

#include "support/row_name.h"

#include <gtest/gtest.h>

namespace {

TEST(FindPixelFormat, KnowsOnlyTheFormatsOfPhotos)
{
    for (int id : {1005, 1007, 1009, 1013, 1015, 1019, 1020, 1023, 1024, 1032, 1036, 1066,
                   1067, 1079, 1081, 1083, 1087, 1092, 1093, 3004, 3008, 3009, 3011}) {
        ASSERT_NE(nullptr, findPixelFormat(id)) << id;
        EXPECT_EQ(id, findPixelFormat(id)->id);
    }
}

TEST(FindPixelFormat, KnowsNoCoversAndNoOtherIds)
{
    for (int id : {1016, 1017, 1027, 1031, 1055, 1056, 1060, 1061, 1068, 1071, 1073,    1074,
                   1078, 1084, 2002, 2003, 3001, 3003, 3005, 3007, 0,    1,    INT_MAX, INT_MIN})
        EXPECT_EQ(nullptr, findPixelFormat(id)) << id;
}

} // namespace
