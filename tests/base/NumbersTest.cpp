#include "base/Text.h"

#include <gtest/gtest.h>

TEST(Numbers, WholeNumbersFollowThe32BitConversion) {
    const std::pair<const char*, int32_t> good[] = {{"", 0},
                                                    {" \t+42", 42},
                                                    {"-7", -7},
                                                    {"4294967295", -1},
                                                    {"4294967296", -1},
                                                    {"99999999999999999999999", -1},
                                                    {"-99999999999999999999999", -1},
                                                    {"2147483648", -2147483647 - 1}};
    for (const auto& [text, expected] : good) {
        int32_t value = 1234;
        EXPECT_TRUE(ParseWholeNumber(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
    for (const char* text : {" ", "-", "4 ", "4x", "0x10", "- 4"}) {
        int32_t value = 1234;
        EXPECT_FALSE(ParseWholeNumber(text, value)) << text;
        EXPECT_EQ(value, 1234) << text;
    }
}

TEST(Numbers, DecimalsAreStrict) {
    const std::string zeros(400, '0');
    const std::pair<std::string, double> good[] = {{"", 0.0},       {" -1.5e2", -150.0},
                                                   {".5", 0.5},     {"+5.", 5.0},
                                                   {"1e-999", 0.0}, {"0." + zeros + "1", 0.0}};
    for (const auto& [text, expected] : good) {
        double value = 1234.0;
        EXPECT_TRUE(ParseDecimal(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
    for (const std::string& text :
         {"1" + zeros + "e-10", std::string("1e999"), std::string("1,5"), std::string("1e"),
          std::string("--1"), std::string("0x1p3"), std::string("inf"), std::string("nan"),
          std::string("1 "), std::string(".")}) {
        double value = 1234.0;
        EXPECT_FALSE(ParseDecimal(text, value)) << text;
        EXPECT_EQ(value, 1234.0) << text;
    }
}
