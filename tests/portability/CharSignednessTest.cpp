// char is signed on x86_64 and unsigned on AArch64: bytes from 0x80 up must give the same
// result on both, i.e. be taken as unsigned and never sign-extended into the upper bytes.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "reader/String2Int.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

TEST(CharSignednessTest, ParameterCodesTakeHighBytesAsUnsigned) {
    struct Case {
        const char* name;
        uint32_t code;
    };
    // Only A-Z are lowered: 0xC9 (Latin-1 capital E acute) stays as it is.
    const std::vector<Case> cases = {
        {"\xE9", 0x000000E9u},   {"\xFF\xFF", 0x0000FFFFu}, {"A\x80", 0x00008061u},
        {"\xC9ON", 0x006E6FC9u}, {"DE\xFFN", 0x6EFF6564u},  {"\x80\x80\x80\x80", 0x80808080u},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.code, static_cast<uint32_t>(vexParameterCode(c.name)))
            << "name bytes " << std::hex << static_cast<unsigned>(c.name[0] & 0xFF);
    }
}

TEST(CharSignednessTest, NumbersStopAtHighBytes) {
    struct Case {
        std::string text;
        std::vector<int> values;
    };
    // UTF-8 digits of other scripts and Latin-1 superscripts are not decimal digits.
    const std::vector<Case> cases = {
        {"1,\xE9"
         "2",
         {1}},
        {"\xD9\xA1\xD9\xA2", {}},
        {"3 \xB2", {3}},
        {"-4,5\xFF", {-4, 5}},
    };
    for (const Case& c : cases) {
        std::vector<int> values;
        string2IntVector(c.text, values);
        EXPECT_EQ(c.values, values) << c.text;
    }
    EXPECT_EQ(0, string2Int("\xB9"));
    EXPECT_EQ(7, string2Int("7\xB9"));
}

}  // namespace
}  // namespace korva
