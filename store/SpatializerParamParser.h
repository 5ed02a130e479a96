// Validates an EFFECT_PARAM_PROFILE blob and steps through its parameter entries:
//   header, number of entries, then per entry: device id, parameter code, value count, values;
// all 32-bit words. Construct, validate(), then begin() and next() until it returns false,
// reading the public fields after each successful call. Nothing is copied: mValues points into
// the caller's buffer.
#pragma once

#include <cstdint>

#include "store/LogLevel.h"
#include "store/ParserBuffer.h"

namespace korva {

class SpatializerParamParser : public ParserBuffer {
public:
    SpatializerParamParser(void* data, int size);

    bool begin();
    bool next();
    // Walks the whole blob; leaves the cursor at its end, so call begin() before reading.
    bool validate();
    // begin(), then next() until it returns false, calling visit() after every entry read: the
    // same steps and log lines, with one read of the log level for the whole walk.
    template <typename Visit>
    void forEachEntry(Visit visit) {
        const bool verbose = isLogLevelAtLeast(kLogLevelVerbose);
        if (!beginStep(verbose)) {
            return;
        }
        while (nextStep(verbose)) {
            visit();
        }
    }

    int32_t mProfileId;
    int32_t mNumParams;
    // Entries that next() has started, counting a failed one: the 1-based number of the current.
    int32_t mParamIndex;
    int32_t mDeviceId;
    int32_t mParamId;
    int32_t mNumValues;
    int32_t* mValues;

private:
    // begin() and next() with the verbosity already read.
    bool beginStep(bool verbose);
    bool nextStep(bool verbose);
    // An entry's device id, code and value count, one bounds-checked word at a time.
    bool readHeaderByWord();
};

}  // namespace korva
