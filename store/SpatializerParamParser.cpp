#include "store/SpatializerParamParser.h"

#include <cinttypes>
#include <cstring>
#include <limits>
#include <string>

#include "store/LogLevel.h"
#include "translator/VexParameter.h"

namespace korva {

namespace {

constexpr const char* kTag = "KrvSpatializerParamParser";

int32_t valueAt(const int32_t* values, int32_t index) {
    int32_t value;
    memcpy(&value, reinterpret_cast<const uint8_t*>(values) + int64_t{index} * 4, sizeof(value));
    return value;
}

// "code = values" for a verbose trace of the current entry.
std::string describeEntry(int32_t paramId, int32_t numValues, const int32_t* values) {
    std::string text = vexParameterText(paramId);
    text += " = ";
    // Only positive counts have values behind them that were bounds-checked.
    if (numValues <= 0) {
        text += "{no values}";
    } else if (numValues == 1) {
        text += std::to_string(valueAt(values, 0));
    } else {
        text += "#" + std::to_string(numValues) + "[" + std::to_string(valueAt(values, 0)) +
                " ... " + std::to_string(valueAt(values, numValues - 1)) + "]";
    }
    return text;
}

}  // namespace

SpatializerParamParser::SpatializerParamParser(void* data, int size)
    : ParserBuffer(data, size),
      mProfileId(0),
      mNumParams(0),
      mParamIndex(0),
      mDeviceId(0),
      mParamId(0),
      mNumValues(0),
      mValues(nullptr) {
    KORVA_LOGD(kTag, "%s()", "SpatializerParamParser");
}

bool SpatializerParamParser::begin() {
    return beginStep(isLogLevelAtLeast(kLogLevelVerbose));
}

bool SpatializerParamParser::next() {
    return nextStep(isLogLevelAtLeast(kLogLevelVerbose));
}

// The steps log under the public names: they are what a trace reader knows.
bool SpatializerParamParser::beginStep(bool verbose) {
    if (verbose) {
        __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%s()", "begin");
    }
    mOffset = 0;
    mNumParams = 0;
    mParamIndex = 0;
    if (!readWord(&mProfileId)) {
        KORVA_LOGE(kTag, "%s() failed to extract profile id", "begin");
        return false;
    }
    if (!readWord(&mNumParams)) {
        KORVA_LOGE(kTag, "%s() failed to extract number of parameters", "begin");
        return false;
    }
    return true;
}

bool SpatializerParamParser::nextStep(bool verbose) {
    if (verbose) {
        __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%s()", "next");
    }
    if (mParamIndex >= mNumParams) {
        return false;
    }
    // Counted before reading, so a failed entry still counts (validate relies on this).
    mParamIndex++;
    // Every entry of every delivery passes here twice: when its three header words fit, read them
    // with one bounds check; otherwise word by word, for the log line of the one that failed.
    const int64_t headerEnd = int64_t{mOffset} + 3 * int64_t{sizeof(int32_t)};
    if (headerEnd <= mSize) {
        const uint8_t* header = mData + mOffset;
        memcpy(&mDeviceId, header, sizeof(mDeviceId));
        memcpy(&mParamId, header + sizeof(int32_t), sizeof(mParamId));
        memcpy(&mNumValues, header + 2 * sizeof(int32_t), sizeof(mNumValues));
        mOffset = static_cast<int32_t>(headerEnd);
    } else if (!readHeaderByWord()) {
        return false;
    }
    int32_t valuesAt = mOffset;
    // A count whose byte length does not fit an int cannot fit any buffer either.
    int64_t bytes = int64_t{mNumValues} * 4;
    bool fits = bytes >= std::numeric_limits<int>::min() &&
                bytes <= std::numeric_limits<int>::max() && move(bytes);
    if (!fits) {
        KORVA_LOGE(kTag, "%s() failed to extract %d values for parameter #%d", "next", mNumValues,
                   mParamIndex);
        return false;
    }
    mValues = reinterpret_cast<int32_t*>(mData + valuesAt);
    return true;
}

bool SpatializerParamParser::readHeaderByWord() {
    if (!readWord(&mDeviceId)) {
        KORVA_LOGE(kTag, "%s() failed to extract device id for parameter #%d", "next", mParamIndex);
        return false;
    }
    if (!readWord(&mParamId)) {
        KORVA_LOGE(kTag, "%s() failed to extract parameter id for parameter #%d", "next",
                   mParamIndex);
        return false;
    }
    if (!readWord(&mNumValues)) {
        KORVA_LOGE(kTag, "%s() failed to extract number of values for parameter #%d", "next",
                   mParamIndex);
        return false;
    }
    return true;
}

bool SpatializerParamParser::validate() {
    // One read of the level serves the whole walk: a property read costs more than the walk.
    const bool verbose = isLogLevelAtLeast(kLogLevelVerbose);
    if (verbose) {
        __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%s()", __func__);
    }
    if (!beginStep(verbose)) {
        KORVA_LOGE(kTag, "%s() EFFECT_PARAM_PROFILE header is incorrect.", __func__);
        return false;
    }
    if (verbose) {
        __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%s() Found profile id %x with %d parameters",
                            __func__, mProfileId, mNumParams);
    }
    while (nextStep(verbose)) {
        if (verbose) {
            std::string entry = describeEntry(mParamId, mNumValues, mValues);
            __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%s() Found for device %x parameter %s",
                                __func__, mDeviceId, entry.c_str());
        }
    }
    if (mParamIndex != mNumParams) {
        KORVA_LOGE(kTag, "%s() Expected %d parameters, found %d parameters.", __func__, mNumParams,
                   mParamIndex);
    }
    return mParamIndex == mNumParams;
}

}  // namespace korva
