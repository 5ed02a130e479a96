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
    // skip() for the readers' own steps, inline: every delivery takes four per entry.
    bool move(int64_t bytes) {
        // Wide, so that no sum can wrap. A position before the start is refused as well: a blob
        // with a negative value count may step back, but never out of the buffer.
        int64_t end = int64_t{mOffset} + bytes;
        if (end > mSize || end < 0) {
            return false;
        }
        mOffset = static_cast<int32_t>(end);
        return true;
    }

    // Reads the 32-bit word at the cursor and steps past it; false when it does not fit.
    bool readWord(int32_t* out) {
        int32_t at = mOffset;
        if (!move(sizeof(*out))) {
            return false;
        }
        // memcpy: a blob handed in by a caller need not be word-aligned.
        memcpy(out, mData + at, sizeof(*out));
        return true;
    }

    uint8_t* mData;
    int32_t mSize;
    int32_t mOffset;
};

}  // namespace korva
