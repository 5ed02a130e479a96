// An effect that takes every call and does nothing with it but count, so that a delivery
// benchmark measures the library's side of the calls alone. Its operations are defined in a
// file of their own, so the compiler cannot inline them into either side of a comparison.
#pragma once

#include "cache/IEffectKrv.h"

namespace korva::bench {

class NullEffect : public IEffectKrv {
public:
    int setParam(int deviceId, int code, const int* values, int count) override;
    int getParamSize(int deviceId, int code) override;
    // Reports success and leaves the values and their count as they are.
    int getParam(int deviceId, int code, int* values, int* count) override;
    int commit(int deviceId) override;

    long setParamCalls() const { return mSetParamCalls; }
    long commitCalls() const { return mCommitCalls; }

private:
    long mSetParamCalls = 0;
    long mCommitCalls = 0;
};

}  // namespace korva::bench
