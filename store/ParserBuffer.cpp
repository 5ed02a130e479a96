#include "store/ParserBuffer.h"

namespace korva {

ParserBuffer::ParserBuffer(void* data, int size)
    : mData(static_cast<uint8_t*>(data)), mSize(data != nullptr ? size : 0), mOffset(0) {}

bool ParserBuffer::skip(int bytes) {
    return move(bytes);
}

}  // namespace korva
