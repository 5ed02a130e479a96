// A bounds-checked read cursor over a byte buffer that the caller owns and keeps alive.
#pragma once

#include <cstdint>
#include <cstring>

namespace korva {

class ParserBuffer {
public:
    // A null buffer reads as empty, whatever size comes with it.
    ParserBuffer(void* data, int size);

    // Moves the cursor by `bytes` when the new position stays inside the buffer; otherwise
    // leaves it where it was and returns false. Negative moves are allowed.
    bool skip(int bytes);

protected:
    // Reads the 32-bit word at the cursor and steps past it; false when it does not fit.
    // Inline: every delivery reads three words per entry.
    bool readWord(int32_t* out) {
        // Wide, so that no sum can wrap; the cursor itself never leaves the buffer.
        if (int64_t{mOffset} + int64_t{sizeof(*out)} > mSize) {
            return false;
        }
        // memcpy: a blob handed in by a caller need not be word-aligned.
        memcpy(out, mData + mOffset, sizeof(*out));
        mOffset += sizeof(*out);
        return true;
    }

    uint8_t* mData;
    int32_t mSize;
    int32_t mOffset;
};

}  // namespace korva
