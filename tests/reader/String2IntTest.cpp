#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "reader/String2Int.h"

namespace korva {
namespace {

// Numbers are read like a stream reads an int: leading blanks, a sign, decimal digits, and
// saturation on overflow; no number at all reads as 0.
TEST(String2IntTest, ReadsOneDecimalIntLikeAStream) {
    // clang-format off
    const std::pair<std::string, int> cases[] = {
        {"0", 0}, {"+5", 5}, {"  -7x", -7}, {"\t\n 9", 9}, {"1.5", 1}, {"0x10", 0}, {"010", 10},
        {"", 0}, {"   ", 0}, {"abc", 0}, {"-", 0}, {"+-1", 0}, {"- 1", 0}, {"1 2", 1}, {"true", 0},
        {"2147483647", INT_MAX}, {"-2147483648", INT_MIN}, {"2147483648", INT_MAX},
        {"-2147483649", INT_MIN}, {"-99999999999999999999999", INT_MIN}};
    // clang-format on
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(expected, string2Int(text)) << '"' << text << '"';
    }
}

// Lists are separated by commas and blanks and end at the first thing that is not a number; an
// out-of-range number is a failed read, so the list ends before it. Values are appended.
TEST(String2IntTest, ReadsListsUpToTheFirstNonNumber) {
    // clang-format off
    const std::pair<std::string, std::vector<int>> cases[] = {
        {"1,2,3,", {7, 1, 2, 3}}, {"10, 20 30", {7, 10, 20, 30}}, {"  -1,\t+2 ,3", {7, -1, 2}},
        {"1,,2", {7, 1}}, {"1.5,2", {7, 1}}, {"10;20", {7, 10}}, {"", {7}}, {",1", {7}},
        {"1\n2", {7, 1, 2}}, {"1,99999999999,3", {7, 1}}};
    // clang-format on
    for (const auto& [text, expected] : cases) {
        std::vector<int> out = {7};
        string2IntVector(text, out);
        EXPECT_EQ(expected, out) << '"' << text << '"';
    }
}

}  // namespace
}  // namespace korva
