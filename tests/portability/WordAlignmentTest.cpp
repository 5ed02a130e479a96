// Blobs are 32-bit words, but a caller's buffer may start at any byte. Words must be read with
// memcpy, never through a cast pointer: a misaligned int load is undefined behaviour that the
// sanitizer build reports, and not every AArch64 access tolerates it. Each blob here is walked at
// the four byte offsets and must read the same everywhere.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "engine/EffectParamParser.h"
#include "store/SpatializerParamParser.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

struct Entry {
    int32_t deviceId;
    int32_t paramId;
    std::vector<int32_t> values;
};

const std::vector<Entry> kEntries = {
    {0x2, vexParameterCode(GEBS), {-1, 0x7FFFFFFF, 42}},
    {0x8, vexParameterCode(DOM), {}},
    {0x40000000, vexParameterCode(VOL), {-2147483647 - 1}},
};

std::vector<int32_t> blobWords() {
    std::vector<int32_t> words = {3, static_cast<int32_t>(kEntries.size())};
    for (const Entry& entry : kEntries) {
        words.push_back(entry.deviceId);
        words.push_back(entry.paramId);
        words.push_back(static_cast<int32_t>(entry.values.size()));
        words.insert(words.end(), entry.values.begin(), entry.values.end());
    }
    return words;
}

// The blob copied to `offset` bytes past a word boundary.
std::vector<uint8_t> placedAt(const std::vector<int32_t>& words, size_t offset) {
    std::vector<uint8_t> bytes(words.size() * 4 + 8, 0xA5);
    memcpy(bytes.data() + offset, words.data(), words.size() * 4);
    return bytes;
}

std::vector<int32_t> copyValues(const int32_t* values, int32_t count) {
    std::vector<int32_t> out(count > 0 ? count : 0);
    if (!out.empty()) {
        memcpy(out.data(), values, out.size() * 4);
    }
    return out;
}

// Both parsers expose the same fields; the store's and the engine's must agree at any offset.
template <typename Parser>
void expectSameWalkAtEveryOffset() {
    std::vector<int32_t> words = blobWords();
    for (size_t offset = 0; offset < 4; offset++) {
        SCOPED_TRACE(testing::Message() << "offset " << offset);
        std::vector<uint8_t> bytes = placedAt(words, offset);
        Parser parser(bytes.data() + offset, static_cast<int>(words.size() * 4));
        ASSERT_TRUE(parser.validate());
        ASSERT_TRUE(parser.begin());
        EXPECT_EQ(3, parser.mProfileId);
        EXPECT_EQ(static_cast<int32_t>(kEntries.size()), parser.mNumParams);
        for (const Entry& entry : kEntries) {
            ASSERT_TRUE(parser.next());
            EXPECT_EQ(entry.deviceId, parser.mDeviceId);
            EXPECT_EQ(entry.paramId, parser.mParamId);
            EXPECT_EQ(entry.values, copyValues(parser.mValues, parser.mNumValues));
        }
        EXPECT_FALSE(parser.next());
    }
}

TEST(WordAlignmentTest, StoreParserReadsTheSameAtEveryByteOffset) {
    expectSameWalkAtEveryOffset<SpatializerParamParser>();
}

TEST(WordAlignmentTest, EngineParserReadsTheSameAtEveryByteOffset) {
    expectSameWalkAtEveryOffset<EffectParamParser>();
}

TEST(WordAlignmentTest, BlobCutInsideAWordIsRefusedAtEveryByteOffset) {
    std::vector<int32_t> words = blobWords();
    // Ends one byte into the second entry's value count (header 2 words, first entry 6).
    int size = 10 * 4 + 1;
    for (size_t offset = 0; offset < 4; offset++) {
        std::vector<uint8_t> bytes = placedAt(words, offset);
        SpatializerParamParser store(bytes.data() + offset, size);
        EffectParamParser engine(bytes.data() + offset, size);
        EXPECT_FALSE(store.validate()) << "offset " << offset;
        EXPECT_EQ(2, store.mParamIndex) << "offset " << offset;
        EXPECT_FALSE(engine.validate()) << "offset " << offset;
    }
}

}  // namespace
}  // namespace korva
