#ifndef PHOTOLIB_TESTS_SUPPORT_ROW_NAME_H
#define PHOTOLIB_TESTS_SUPPORT_ROW_NAME_H

#include <gtest/gtest.h>

#include <string>

/// Names the instances of a parameterised test after the field `name` of their rows.
template <class Row>
std::string rowName(const testing::TestParamInfo<Row> &info)
{
    return info.param.name;
}

#endif // PHOTOLIB_TESTS_SUPPORT_ROW_NAME_H
