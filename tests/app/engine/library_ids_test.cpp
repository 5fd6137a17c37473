#include "engine/library_ids.h"

#include "support/row_name.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

namespace {

struct Arguments {
    const char *name;
    std::vector<std::string> given;
    std::optional<std::string> device;
    std::vector<std::string> ids;
};

void PrintTo(const Arguments &row, std::ostream *stream)
{
    *stream << row.name;
}

class DeviceAndIdsOf : public testing::TestWithParam<Arguments>
{
};

TEST_P(DeviceAndIdsOf, AreToldApart)
{
    const DeviceAndIds result = splitDeviceAndIds(GetParam().given);
    EXPECT_EQ(GetParam().device, result.device);
    EXPECT_EQ(GetParam().ids, result.ids);
}

INSTANTIATE_TEST_SUITE_P(
    EachOrder, DeviceAndIdsOf,
    testing::Values(Arguments{"Nothing", {}, std::nullopt, {}},
                    Arguments{"Ids", {"1", "22", "1"}, std::nullopt, {"1", "22", "1"}},
                    Arguments{"DeviceFirst", {"phone", "1", "2"}, "phone", {"1", "2"}},
                    Arguments{"DeviceLast", {"1", "2", "phone"}, "phone", {"1", "2"}},
                    Arguments{"DeviceAlone", {"phone"}, "phone", {}},
                    Arguments{"DeviceOfDigits", {"./2018", "1"}, "./2018", {"1"}},
                    Arguments{"EmptyDevice", {"", "1"}, "", {"1"}}),
    rowName<Arguments>);

TEST(DeviceAndIds, AreNotFoundAmongOtherWords)
{
    EXPECT_THROW(splitDeviceAndIds({"1", "phone", "2"}), CLI::ValidationError);
    EXPECT_THROW(splitDeviceAndIds({"phone", "1", "phone"}), CLI::ValidationError);
    EXPECT_THROW(splitDeviceAndIds({"1", "-2", "3"}), CLI::ValidationError);
}

} // namespace
