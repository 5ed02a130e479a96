#include "tools/SimulatedEffect.h"

#include <algorithm>
#include <cerrno>

namespace korva::tool {

int SimulatedEffect::setParam(int deviceId, int code, const int* values, int count) {
    std::vector<int> sent;
    if (values != nullptr && count > 0) {
        sent.assign(values, values + count);
    }
    mParams[{deviceId, code}] = sent;
    mCalls.push_back({EffectCall::kSetParam, deviceId, code, count, std::move(sent), 0});
    return 0;
}

int SimulatedEffect::getParamSize(int deviceId, int code) {
    auto found = mParams.find({deviceId, code});
    return found != mParams.end() ? static_cast<int>(found->second.size()) : -EINVAL;
}

int SimulatedEffect::getParam(int deviceId, int code, int* values, int* count) {
    const int capacity = count != nullptr ? *count : 0;
    auto found = mParams.find({deviceId, code});
    if (found == mParams.end() || values == nullptr || count == nullptr) {
        // An effect knows nothing of a parameter it was never given.
        mCalls.push_back({EffectCall::kGetParam, deviceId, code, capacity, {}, -EINVAL});
        return -EINVAL;
    }
    const size_t copied = std::min(found->second.size(), static_cast<size_t>(std::max(capacity, 0)));
    std::copy(found->second.begin(), found->second.begin() + copied, values);
    *count = static_cast<int>(copied);
    mCalls.push_back({EffectCall::kGetParam, deviceId, code, capacity,
                      std::vector<int>(values, values + copied), 0});
    return 0;
}

int SimulatedEffect::commit(int deviceId) {
    mCalls.push_back({EffectCall::kCommit, deviceId, 0, 0, {}, 0});
    return 0;
}

std::vector<EffectCall> SimulatedEffect::takeCalls() {
    std::vector<EffectCall> calls;
    calls.swap(mCalls);
    return calls;
}

}  // namespace korva::tool
