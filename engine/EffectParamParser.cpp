#include "engine/EffectParamParser.h"

EffectParamParser::EffectParamParser(void* data, int size)
    : mData(static_cast<const uint8_t*>(data)), mSize(data != nullptr && size > 0 ? size : 0) {}

bool EffectParamParser::begin() {
    mOffset = 0;
    mParamIndex = 0;
    mNumParams = 0;
    return readWord(&mProfileId) && readWord(&mNumParams) && mNumParams >= 0;
}

bool EffectParamParser::next() {
    if (mParamIndex >= mNumParams) {
        return false;
    }
    if (!readWord(&mDeviceId) || !readWord(&mParamId) || !readWord(&mNumValues)) {
        return false;
    }
    if (mNumValues < 0 || mOffset + int64_t{mNumValues} * 4 > mSize) {
        return false;
    }
    mValues = reinterpret_cast<const int32_t*>(mData + mOffset);
    mOffset += int64_t{mNumValues} * 4;
    mParamIndex++;
    return true;
}

bool EffectParamParser::validate() {
    if (!begin()) {
        return false;
    }
    while (next()) {
    }
    return mParamIndex == mNumParams;
}
