#include "bench/RecordingEffect.h"

namespace korva::bench {

int RecordingEffect::setParam(int deviceId, int code, const int* values, int count) {
    std::vector<int> copy;
    if (values != nullptr && count > 0) copy.assign(values, values + count);
    mCalls.push_back({deviceId, code, std::move(copy)});
    return 0;
}

int RecordingEffect::getParamSize(int, int) {
    return 0;
}

// Answers like NullEffect, so that a recorded operation takes the same path as a measured one.
int RecordingEffect::getParam(int, int, int*, int*) {
    return 0;
}

int RecordingEffect::commit(int) {
    mCommits++;
    return 0;
}

}  // namespace korva::bench
