// An effect that keeps every setParam call, so that a benchmark can replay exactly the calls an
// operation makes: the floor that any delivery of the same parameters has to pay.
#pragma once

#include <vector>

#include "cache/IEffectKrv.h"

namespace korva::bench {

struct RecordedCall {
    int deviceId;
    int code;
    std::vector<int> values;
};

class RecordingEffect : public IEffectKrv {
public:
    int setParam(int deviceId, int code, const int* values, int count) override;
    int getParamSize(int deviceId, int code) override;
    int getParam(int deviceId, int code, int* values, int* count) override;
    int commit(int deviceId) override;

    const std::vector<RecordedCall>& calls() const { return mCalls; }
    int commits() const { return mCommits; }

private:
    std::vector<RecordedCall> mCalls;
    int mCommits = 0;
};

}  // namespace korva::bench
