// Host replacement of the effect engine's closed blob parser. The engine library is not ours and
// is not available off-device; this one reads the same blob layout (header word, entry count,
// then device id, parameter code, value count and values per entry) strictly: every announced
// entry must be complete and no value count may be negative.
#pragma once

#include <cstdint>
#include <cstring>

class EffectParamParser {
public:
    EffectParamParser(void* data, int size);

    // Walks the whole blob once; callers call begin() again before reading entries.
    bool validate();
    // Positions at the start and reads the header.
    bool begin();
    // Reads the next entry into the fields below.
    bool next();

    int32_t mProfileId = 0;
    int32_t mNumParams = 0;
    int32_t mParamIndex = 0;
    int32_t mDeviceId = 0;
    int32_t mParamId = 0;
    int32_t mNumValues = 0;
    const int32_t* mValues = nullptr;

private:
    // Inline: the delivery loops call it three times per entry.
    bool readWord(int32_t* out) {
        if (mOffset + 4 > mSize) {
            return false;
        }
        // memcpy: the blob may sit at any byte offset.
        memcpy(out, mData + mOffset, sizeof(*out));
        mOffset += 4;
        return true;
    }

    const uint8_t* mData;
    int64_t mSize;
    int64_t mOffset = 0;
};
