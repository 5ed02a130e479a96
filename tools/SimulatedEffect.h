// A stand-in for the spatializer effect: it keeps what it is sent, answers getParam from that as
// an effect would, and records every call the library makes, in order, for the tool to print.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "cache/IEffectKrv.h"

namespace korva::tool {

struct EffectCall {
    enum Kind { kSetParam, kGetParam, kCommit };

    Kind kind;
    int deviceId;
    int code;
    // setParam: the count passed; getParam: the capacity passed in *count.
    int count;
    // setParam: the values sent; getParam: the values answered.
    std::vector<int> values;
    int result;
};

class SimulatedEffect : public IEffectKrv {
public:
    int setParam(int deviceId, int code, const int* values, int count) override;
    int getParamSize(int deviceId, int code) override;
    int getParam(int deviceId, int code, int* values, int* count) override;
    int commit(int deviceId) override;

    // The calls since the last take.
    std::vector<EffectCall> takeCalls();

private:
    std::map<std::pair<int, int>, std::vector<int>> mParams;
    std::vector<EffectCall> mCalls;
};

}  // namespace korva::tool
