#include "store/ParserBuffer.h"

namespace korva {

ParserBuffer::ParserBuffer(void* data, int size)
    : mData(static_cast<uint8_t*>(data)), mSize(data != nullptr ? size : 0), mOffset(0) {}

bool ParserBuffer::skip(int bytes) {
    // Computed wide so that no sum can wrap. A position before the start is refused as well:
    // a blob with a negative value count may step back, but never out of the buffer.
    int64_t end = int64_t{mOffset} + bytes;
    if (end > mSize || end < 0) {
        return false;
    }
    mOffset = static_cast<int32_t>(end);
    return true;
}

}  // namespace korva
