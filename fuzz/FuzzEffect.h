// An effect for the fuzz targets: reads every value the library hands it, so a count that runs
// past the library's buffer is an out-of-bounds read, and answers getParam by filling the whole
// capacity it is given.
#pragma once

#include "cache/IEffectKrv.h"
#include "fuzz/FuzzSupport.h"

namespace korva::fuzz {

class FuzzEffect : public IEffectKrv {
public:
    int setParam(int deviceId, int code, const int* values, int count) override {
        consume(deviceId ^ code);
        for (int i = 0; i < count; i++) {
            consume(values[i]);
        }
        return 0;
    }
    int getParamSize(int, int) override { return -22; }
    int getParam(int deviceId, int code, int* values, int* count) override {
        // The first value 0 takes the paths that switch a disabled mix matrix on.
        for (int i = 0; i < *count; i++) {
            values[i] = i == 0 ? 0 : deviceId ^ code ^ i;
        }
        return 0;
    }
    int commit(int deviceId) override {
        consume(deviceId);
        return 0;
    }
};

}  // namespace korva::fuzz
