#include "translator/VexParameter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace korva {
namespace {

TEST(VexParameterTest, CodesPackLowerCaseNameLittleEndian) {
    struct Case {
        VexParameter param;
        int32_t code;
    };
    const Case cases[] = {
            {DVLE, 0x656C7664},
            {IEON, 0x6E6F6569},
            {VOL, 0x006C6F76},
            {DOM, 0x006D6F64},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.code, vexParameterCode(c.param)) << kVexParameterNames[c.param];
    }
}

TEST(VexParameterTest, CodeBytesSpellTheNameInMemoryOrder) {
    for (int i = 0; i < kNumVexParameters; i++) {
        int32_t code = vexParameterCode(static_cast<VexParameter>(i));
        char text[5] = {};
        memcpy(text, &code, 4);
        std::string lower(kVexParameterNames[i]);
        for (char& c : lower) c = static_cast<char>(c | 0x20);
        EXPECT_EQ(lower, text);
    }
}

TEST(VexParameterTest, NamesAreUniqueAndThreeOrFourCharacters) {
    std::set<std::string> seen;
    int threeLetter = 0;
    for (int i = 0; i < kNumVexParameters; i++) {
        std::string name = kVexParameterNames[i];
        EXPECT_TRUE(seen.insert(name).second) << name;
        ASSERT_GE(name.size(), 3u);
        ASSERT_LE(name.size(), 4u);
        threeLetter += name.size() == 3 ? 1 : 0;
    }
    EXPECT_EQ(16, threeLetter);
}

TEST(VexParameterTest, OutOfRangeNameLengthsGiveZero) {
    EXPECT_EQ(0, vexParameterCode(""));
    EXPECT_EQ(0, vexParameterCode("ABCDE"));
    // Only ASCII capitals are folded; other bytes pass through.
    EXPECT_EQ(0x00315f61, vexParameterCode("A_1"));
}

}  // namespace
}  // namespace korva
