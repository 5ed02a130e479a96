#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

#include "store/ParserBuffer.h"

namespace korva {
namespace {

// Exposes the cursor so tests can see where it stands.
class Cursor : public ParserBuffer {
public:
    using ParserBuffer::ParserBuffer;
    int offset() const { return mOffset; }
    int size() const { return mSize; }
    bool read(int32_t* out) { return readWord(out); }
};

TEST(ParserBufferTest, NullDataReadsAsEmptyWhateverTheSize) {
    Cursor cursor(nullptr, 64);
    EXPECT_EQ(0, cursor.size());
    EXPECT_TRUE(cursor.skip(0));
    EXPECT_FALSE(cursor.skip(1));
    int32_t word = 7;
    EXPECT_FALSE(cursor.read(&word));
    EXPECT_EQ(7, word);
}

TEST(ParserBufferTest, SkipMovesOnlyWhenTheNewPositionIsInside) {
    uint8_t bytes[16] = {};
    struct Step {
        int bytes;
        bool moved;
        int offsetAfter;
    };
    const Step steps[] = {
        {4, true, 4},        {12, true, 16},  // exactly to the end
        {1, false, 16},                       // past the end
        {0, true, 16},       {-8, true, 8},   // backwards stays inside
        {-9, false, 8},                       // before the start
        {INT_MAX, false, 8},                  // would wrap in 32-bit arithmetic
        {INT_MIN, false, 8}, {-8, true, 0},
    };
    Cursor cursor(bytes, sizeof(bytes));
    for (const Step& step : steps) {
        EXPECT_EQ(step.moved, cursor.skip(step.bytes)) << "skip(" << step.bytes << ")";
        EXPECT_EQ(step.offsetAfter, cursor.offset()) << "skip(" << step.bytes << ")";
    }
}

TEST(ParserBufferTest, WordsReadLittleEndianAtAnyAlignment) {
    uint8_t bytes[9] = {0xAA, 0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF};
    Cursor cursor(bytes + 1, 8);
    int32_t word = 0;
    ASSERT_TRUE(cursor.read(&word));
    EXPECT_EQ(0x12345678, word);
    ASSERT_TRUE(cursor.read(&word));
    EXPECT_EQ(-1, word);
    EXPECT_FALSE(cursor.read(&word));
    EXPECT_EQ(8, cursor.offset());
}

TEST(ParserBufferTest, PartialWordIsNotRead) {
    uint8_t bytes[7] = {1, 0, 0, 0, 2, 0, 0};
    Cursor cursor(bytes, sizeof(bytes));
    int32_t word = 0;
    ASSERT_TRUE(cursor.read(&word));
    EXPECT_EQ(1, word);
    EXPECT_FALSE(cursor.read(&word));
    EXPECT_EQ(1, word);
    EXPECT_EQ(4, cursor.offset());
}

}  // namespace
}  // namespace korva
