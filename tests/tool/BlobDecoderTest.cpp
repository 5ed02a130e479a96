#include <gtest/gtest.h>

#include <vector>

#include "store/SpatializerParamArray.h"
#include "tools/BlobDecoder.h"

namespace korva::tool {
namespace {

TEST(BlobDecoderTest, DecodesABuiltinTableEntryByEntry) {
    const DecodedBlob blob = BlobDecoder::decode(SpatializerParamArray::mMovieProfileParams,
                                                 SpatializerParamArray::kProfileTableWords);
    EXPECT_TRUE(blob.valid);
    EXPECT_EQ(blob.header, 1);
    EXPECT_EQ(blob.numParams, 27);
    ASSERT_EQ(blob.entries.size(), 27u);
    EXPECT_EQ(blob.entries[0].deviceId, 0x40000000);
    EXPECT_EQ(BlobDecoder::codeText(blob.entries[0].code), "mdle");
    EXPECT_EQ(blob.entries[2].values, (std::vector<int32_t>{103, 32568, 11164, 5090, 0, 1, 2, 2}));
    EXPECT_EQ(BlobDecoder::codeText(blob.entries[6].code), "dea");
    EXPECT_EQ(blob.entries[6].values, std::vector<int32_t>{4});
}

TEST(BlobDecoderTest, KeepsTheEntriesReadBeforeAFault) {
    // Header, three announced entries, the second cut short after its value count.
    const std::vector<int> words = {7, 3, 2, 0x616564, 1, 4, 8, 0x616564, 5, 1};
    const DecodedBlob blob = BlobDecoder::decode(words);
    EXPECT_FALSE(blob.valid);
    EXPECT_EQ(blob.words, words.size());
    ASSERT_EQ(blob.entries.size(), 1u);
    EXPECT_EQ(blob.entries[0].deviceId, 2);
    EXPECT_EQ(blob.entries[0].values, std::vector<int32_t>{4});
}

TEST(BlobDecoderTest, EmptyBlobHasNoHeader) {
    const DecodedBlob blob = BlobDecoder::decode(std::vector<int>());
    EXPECT_FALSE(blob.valid);
    EXPECT_TRUE(blob.entries.empty());
}

TEST(BlobDecoderTest, NamesDevicesAndCodes) {
    const struct {
        int32_t device;
        const char* name;
    } kDevices[] = {{0x40000000, "all"}, {0x2, "speaker"}, {0x8, "wired headphone"}, {0x80, "a2dp"},
                    {0x4000, "usb"},     {0, "0x0"},       {0x400, "0x400"}};
    for (const auto& d : kDevices) {
        EXPECT_EQ(BlobDecoder::deviceName(d.device), d.name);
    }
    EXPECT_EQ(BlobDecoder::codeText(0x656C7664), "dvle");
    EXPECT_EQ(BlobDecoder::codeText(0x6d6f64), "dom");
    EXPECT_EQ(BlobDecoder::codeText(0), "");
    EXPECT_EQ(BlobDecoder::codeText(0x0a61), "a?");
}

}  // namespace
}  // namespace korva::tool
