#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "reader/String2Int.h"

namespace korva {
namespace {

TEST(String2IntTest, ReadsOneDecimalIntLikeAStream) {
    struct Case {
        std::string text;
        int expected;
    };
    const Case cases[] = {
        {"0", 0},
        {"42", 42},
        {"-3", -3},
        {"+5", 5},
        {"  -7x", -7},
        {"\t\n 9", 9},
        {"12abc", 12},
        {"1.5", 1},
        {"0x10", 0},
        {"010", 10},
        {"", 0},
        {"   ", 0},
        {"abc", 0},
        {"-", 0},
        {"+-1", 0},
        {"- 1", 0},
        {"1 2", 1},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
        {"2147483648", INT_MAX},
        {"-2147483649", INT_MIN},
        {"99999999999999999999999", INT_MAX},
        {"-99999999999999999999999", INT_MIN},
        {"true", 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.expected, string2Int(c.text)) << '"' << c.text << '"';
    }
}

TEST(String2IntTest, ReadsListsUpToTheFirstNonNumber) {
    struct Case {
        std::string text;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {"1,2,3", {1, 2, 3}},
        {"1 2 3", {1, 2, 3}},
        {"1, 2, 3", {1, 2, 3}},
        {"1,2,3,", {1, 2, 3}},
        {"10, 20,30", {10, 20, 30}},
        {"  -1,\t+2 ,3", {-1, 2}},
        {"1,,2", {1}},
        {"1.5,2", {1}},
        {"10;20", {10}},
        {"1x,2", {1}},
        {"abc", {}},
        {"", {}},
        {",1", {}},
        {"1  2", {1, 2}},
        {"1\n2", {1, 2}},
        {"-2048,0,2047", {-2048, 0, 2047}},
        // An out-of-range number is a failed read: the list ends before it.
        {"1,99999999999,3", {1}},
    };
    for (const Case& c : cases) {
        std::vector<int> out;
        string2IntVector(c.text, out);
        EXPECT_EQ(c.expected, out) << '"' << c.text << '"';
    }
}

TEST(String2IntTest, ListValuesAreAppended) {
    std::vector<int> out = {7};
    string2IntVector("1,2", out);
    string2IntVector("", out);
    string2IntVector("3", out);
    EXPECT_EQ((std::vector<int>{7, 1, 2, 3}), out);
}

}  // namespace
}  // namespace korva
