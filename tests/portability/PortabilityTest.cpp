// What can differ between the x86_64 host and the AArch64 device: char signedness, word reads
// from byte buffers, the size of long, and float-to-int conversions.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "engine/EffectParamParser.h"
#include "platform/LocalProperties.h"
#include "reader/String2Int.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"
#include "tests/store/ScopedHostRoot.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

// char is signed on x86_64 and unsigned on AArch64: bytes from 0x80 up must be taken as unsigned
// on both, never sign-extended into the upper bytes. Only A-Z are lowered (0xC9, Latin-1 capital
// E acute, stays), and names of no code length give 0.
TEST(CharSignednessTest, ParameterCodesPackLowerCasedBytesAsUnsigned) {
    const std::pair<const char*, uint32_t> kCases[] = {
        {"\xE9", 0x000000E9u},   {"\xFF\xFF", 0x0000FFFFu}, {"A\x80", 0x00008061u},
        {"\xC9ON", 0x006E6FC9u}, {"DE\xFFN", 0x6EFF6564u},  {"\x80\x80\x80\x80", 0x80808080u},
        {"DVLE", 0x656C7664u},   {"A_1", 0x00315f61u},      {"", 0u},
        {"ABCDE", 0u},
    };
    for (const auto& [name, code] : kCases) {
        EXPECT_EQ(code, static_cast<uint32_t>(vexParameterCode(name))) << std::hex << code;
    }
}

TEST(CharSignednessTest, NumbersStopAtHighBytes) {
    // UTF-8 digits of other scripts and Latin-1 superscripts are not decimal digits.
    const std::pair<std::string, std::vector<int>> kCases[] = {
        {"1,\xE9,2", {1}}, {"\xD9\xA1\xD9\xA2", {}}, {"3 \xB2", {3}}, {"-4,5\xFF", {-4, 5}}};
    for (const auto& [text, expected] : kCases) {
        std::vector<int> values;
        string2IntVector(text, values);
        EXPECT_EQ(expected, values) << text;
    }
    EXPECT_EQ(0, string2Int("\xB9"));
    EXPECT_EQ(7, string2Int("7\xB9"));
}

// The header, then each entry as device, code and values; empty if the blob does not validate.
template <typename Parser>
std::vector<std::vector<int32_t>> walk(uint8_t* bytes, int size) {
    Parser parser(bytes, size);
    if (!parser.validate() || !parser.begin()) return {};
    std::vector<std::vector<int32_t>> out = {{parser.mProfileId, parser.mNumParams}};
    while (parser.next()) {
        out.push_back({parser.mDeviceId, parser.mParamId});
        out.back().resize(2 + std::max(parser.mNumValues, 0));
        if (parser.mNumValues > 0) memcpy(&out.back()[2], parser.mValues, parser.mNumValues * 4);
    }
    return out;
}

// Blobs are 32-bit words, but a caller's buffer may start at any byte: words must be read with
// memcpy, never through a cast pointer (undefined behaviour that the sanitizer build reports, and
// not every AArch64 access tolerates it). Each reader must walk a blob alike at all four offsets.
TEST(WordAlignmentTest, BothReadersReadTheSameAtEveryByteOffset) {
    const int32_t gebs = vexParameterCode(GEBS), dom = vexParameterCode(DOM);
    const int32_t vol = vexParameterCode(VOL);
    const std::vector<std::vector<int32_t>> entries = {
        {3, 3}, {0x2, gebs, -1, INT_MAX, 42}, {0x8, dom}, {0x40000000, vol, INT_MIN}};
    const std::vector<int32_t> words = {3,   3,   0x2, gebs,       3,   -1, INT_MAX, 42,
                                        0x8, dom, 0,   0x40000000, vol, 1,  INT_MIN};
    for (size_t offset = 0; offset < 4; offset++) {
        SCOPED_TRACE(testing::Message() << "offset " << offset);
        std::vector<uint8_t> bytes(words.size() * 4 + 8, 0xA5);
        memcpy(bytes.data() + offset, words.data(), words.size() * 4);
        const int size = static_cast<int>(words.size() * 4);
        EXPECT_EQ(entries, walk<SpatializerParamParser>(bytes.data() + offset, size));
        EXPECT_EQ(entries, walk<EffectParamParser>(bytes.data() + offset, size));
        // Ends one byte into the second entry's value count (header 2 words, first entry 6).
        EXPECT_TRUE(walk<SpatializerParamParser>(bytes.data() + offset, 10 * 4 + 1).empty());
        EXPECT_TRUE(walk<EffectParamParser>(bytes.data() + offset, 10 * 4 + 1).empty());
    }
}

// The device and both build hosts are LP64: long is as wide as the int64_t ids of the records.
// The blob words and parameter codes stay 32 bits.
static_assert(sizeof(long) == 8 && sizeof(int) == 4);
static_assert(sizeof(KrvSpatializerProfileId) == 4 &&
              std::is_signed_v<std::underlying_type_t<KrvSpatializerProfileId>>);
static_assert(std::is_same_v<decltype(vexParameterCode(VOL)), int32_t>);

// A float-to-int conversion of a value outside the int range is undefined and the hardware
// differs (x86_64 gives INT_MIN, AArch64 saturates): raw gains are unbounded, so the store must
// saturate by itself. In range, every conversion and the mean truncate toward zero.
TEST(UserGainTruncationTest, GainsConvertAlikeOnEveryArchitecture) {
    const struct {
        const char* name;
        // ro.vendor.audio.effect.eq.featuremask: "1" with a product outside talve keeps gains raw.
        const char* featureMask;
        const char* gains;
        std::vector<int> stored;
    } kCases[] = {
        {"raw: toward zero, and saturated beyond the int range",
         "1",
         "0.1,-0.1,1e30,-1e30,0.03125,-0.03125,3.99,-3.99,0,5",
         {1, 0,  -1, INT_MAX, INT_MAX, 0,   INT_MIN, INT_MIN, 0,  0,
          0, 31, 63, 0,       -63,     -31, 0,       40,      80, 80}},
        {"adjusted: a negative mean of -0.6 truncates to 0",
         "0",
         "-0.5,0,0,0,0,0,0,0,0,0",
         {-8, -4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"adjusted: negative fractions quantise from floor, the mean -16.4 gives -16",
         "0",
         "-0.1,-5.3,-5.8,-7,6.2,2.3,2.2,2.8,-2.6,-2.9",
         {16, -28, -72, -76, -80, -80, -80, 16,  112, 84,
          56, 52,  48,  56,  64,  20,  -24, -28, -32, -32}},
    };
    test::ScopedHostRoot root;
    korva::setLocalProperty("ro.product.name", "portable");
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        std::vector<int> seed(20, 7);
        store.setProfileGeqGains(PROFILE_MOVIE, seed);
        korva::setLocalProperty("ro.vendor.audio.effect.eq.featuremask", c.featureMask);
        korva::setLocalProperty("persist.vendor.audio.sfx.hd.eq", c.gains);
        store.restoreUserGEQ();
        EXPECT_EQ(c.stored, store.getProfileGeqGains(PROFILE_MOVIE));
    }
}

}  // namespace
}  // namespace korva
