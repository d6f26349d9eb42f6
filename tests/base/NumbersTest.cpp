#include "base/Numbers.h"

#include <gtest/gtest.h>

#include <optional>

TEST(Numbers, WholeNumbersFollowThe32BitConversion) {
    const struct {
        const char* text;
        std::optional<int32_t> value;
    } cases[] = {
        {"", 0},
        {"42", 42},
        {" \t+42", 42},
        {"-7", -7},
        {"4294967295", -1},
        {"4294967296", -1},
        {"99999999999999999999999", -1},
        {"-99999999999999999999999", -1},
        {"2147483648", -2147483647 - 1},
        {" ", {}},
        {"-", {}},
        {"4 ", {}},
        {"4x", {}},
        {"0x10", {}},
        {"- 4", {}},
    };
    for (const auto& [text, expected] : cases) {
        int32_t value = 1234;
        EXPECT_EQ(ParseWholeNumber(text, value), expected.has_value()) << text;
        EXPECT_EQ(value, expected.value_or(1234)) << text;
    }
}

TEST(Numbers, DecimalsAreStrict) {
    const std::string manyZeros(400, '0');
    const struct {
        std::string text;
        std::optional<double> value;
    } cases[] = {
        {"", 0.0},
        {" -1.5e2", -150.0},
        {".5", 0.5},
        {"5.", 5.0},
        {"1e-999", 0.0},
        {"0." + manyZeros + "1", 0.0},
        {"1" + manyZeros + "e-10", {}},
        {"1e999", {}},
        {"1,5", {}},
        {"1e", {}},
        {"--1", {}},
        {"0x1p3", {}},
        {"inf", {}},
        {"nan", {}},
        {"1 ", {}},
        {".", {}},
    };
    for (const auto& [text, expected] : cases) {
        double value = 1234.0;
        EXPECT_EQ(ParseDecimal(text, value), expected.has_value()) << text;
        EXPECT_EQ(value, expected.value_or(1234.0)) << text;
    }
}

TEST(Numbers, LeadingIntegersSaturateAndTellWhereTheyEnd) {
    const struct {
        const char* text;
        bool read;
        int32_t value;
        size_t rest;
    } cases[] = {
        {" 12px", true, 12, 3},
        {"-99999999999", true, -2147483647 - 1, 12},
        {"99999999999,", true, 2147483647, 11},
        {"px", false, 1234, 9},
        {"-", false, 1234, 9},
    };
    for (const auto& [text, read, expected, expectedRest] : cases) {
        int32_t value = 1234;
        size_t rest = 9;
        EXPECT_EQ(ParseLeadingInteger(text, value, rest), read) << text;
        EXPECT_EQ(value, expected) << text;
        EXPECT_EQ(rest, expectedRest) << text;
    }
}
