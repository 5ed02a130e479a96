#include <gtest/gtest.h>

#include "tools/NumberText.h"

namespace korva::tool {
namespace {

TEST(NumberTextTest, WholeIntIsWhatString2IntReadsCompletely) {
    const struct {
        const char* text;
        bool whole;
    } kCases[] = {
        {"0", true},
        {"-7", true},
        {"+5", true},
        {"  12  ", true},
        {"007", true},
        {"2147483647", true},
        {"-2147483648", true},
        {"2147483648", false},
        {"-2147483649", false},
        {"99999999999", false},
        {"000000000000001", true},
        {"", false},
        {" ", false},
        {"-", false},
        {"1.5", false},
        {"0x10", false},
        {"12abc", false},
        {"1 2", false},
        {"true", false},
        {"1,", false},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(NumberText::isWholeInt(c.text), c.whole) << '"' << c.text << '"';
    }
}

TEST(NumberTextTest, WholeListIsOneWhoseEveryNumberIsRead) {
    const struct {
        const char* text;
        bool whole;
    } kCases[] = {
        {"1,2,3", true}, {"1 2 3", true}, {"1, 2, 3", true}, {"1,2,3,", true},
        {"", true},      {"-1,+2", true}, {"1,,2", false},   {"1.5,2", false},
        {"abc", false},  {",1", false},   {"1;2", false},    {"10, 20,30", true},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(NumberText::isWholeIntList(c.text), c.whole) << '"' << c.text << '"';
    }
}

TEST(NumberTextTest, JoinAndBracket) {
    EXPECT_EQ(NumberText::join({}), "");
    EXPECT_EQ(NumberText::join({1, -2, 30}), "1 -2 30");
    EXPECT_EQ(NumberText::bracketed({}), "[]");
    EXPECT_EQ(NumberText::bracketed({4, -5}), "[4, -5]");
}

}  // namespace
}  // namespace korva::tool
