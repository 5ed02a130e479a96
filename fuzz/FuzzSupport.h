// Shared set-up of the fuzz targets: the log goes nowhere (the targets run millions of inputs and
// stderr would dominate their time), but every line is still formatted, so a format argument
// that reads out of bounds is still caught.
#pragma once

#include <android/log.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/LocalProperties.h"

namespace korva::fuzz {

inline void discardLogLine(const struct __android_logger_data*, const char*) {}

inline void quietLog() {
    __android_log_set_logger(discardLogLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

// The store's log level; 4 turns on the per-entry traces that describe values.
inline void setLogLevel(int level) {
    korva::setLocalProperty("persist.vendor.korva.loglevel", std::to_string(level));
}

// Reads what the input says and leaves the rest to the caller.
class InputCursor {
public:
    InputCursor(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    uint8_t takeByte() {
        if (mSize == 0) {
            return 0;
        }
        mSize--;
        return *mData++;
    }
    const uint8_t* data() const { return mData; }
    size_t size() const { return mSize; }

private:
    const uint8_t* mData;
    size_t mSize;
};

// Keeps reads of values from being optimised away.
inline void consume(int32_t value) {
    static volatile uint32_t sSink;
    sSink = sSink ^ static_cast<uint32_t>(value);
}

}  // namespace korva::fuzz
