#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tools/TextTable.h"

namespace korva::tool {
namespace {

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        out.push_back(line);
    }
    return out;
}

TEST(TextTableTest, ColumnsAreAsWideAsTheirWidestCell) {
    TextTable table({"#", "code", "values"});
    table.alignRight(0);
    table.addRow({"1", "dea", "4"});
    table.addRow({"12", "mdle", "1 2"});
    EXPECT_EQ(table.render("  "),
              "   #  code  values\n"
              "   1  dea   4\n"
              "  12  mdle  1 2\n");
}

TEST(TextTableTest, LastColumnWrapsUnderItselfWithinTheWidth) {
    TextTable table({"name", "values"});
    std::string values;
    for (int i = 0; i < 60; i++) {
        values += (i == 0 ? "" : " ") + std::to_string(1000 + i);
    }
    table.addRow({"gebs", values});
    const std::vector<std::string> out = lines(table.render("", 40));
    ASSERT_GT(out.size(), 3u);
    EXPECT_EQ(out[0], "name  values");
    std::string rejoined = out[1];
    for (size_t i = 1; i < out.size(); i++) {
        EXPECT_LE(out[i].size(), 40u) << out[i];
        EXPECT_NE(out[i].back(), ' ');
        if (i > 1) {
            EXPECT_EQ(out[i].find_first_not_of(' '), 6u) << out[i];
            rejoined += " " + out[i].substr(6);
        }
    }
    EXPECT_EQ(rejoined, "gebs  " + values);
}

TEST(TextTableTest, WordLongerThanTheRoomStaysWhole) {
    TextTable table({"", ""});
    const std::string word(50, 'x');
    table.addRow({"k", "a " + word + " b"});
    EXPECT_EQ(table.render("", 30), "k  a\n   " + word + "\n   b\n");
}

TEST(TextTableTest, EmptyHeadersPrintNoHeaderLine) {
    TextTable table({"", ""});
    EXPECT_TRUE(table.empty());
    table.addRow({"format version", "3.4.0"});
    table.addRow({"profiles", ""});
    EXPECT_EQ(table.render(), "format version  3.4.0\nprofiles\n");
}

}  // namespace
}  // namespace korva::tool
