#include "engine/RecordingEffect.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <tuple>

#include "translator/VexParameter.h"

namespace korva {

EffectCall EffectCall::setParam(int deviceId, int code, std::vector<int> values) {
    const int count = static_cast<int>(values.size());
    return {kSetParam, deviceId, code, std::move(values), count, {}, 0, 0};
}

EffectCall EffectCall::getParam(int deviceId, int code, int capacity) {
    return {kGetParam, deviceId, code, {}, capacity, {}, 0, 0};
}

EffectCall EffectCall::commit(int deviceId) {
    return {kCommit, deviceId, 0, {}, 0, {}, 0, 0};
}

bool EffectCall::operator==(const EffectCall& other) const {
    return std::tie(kind, deviceId, code, values, count) ==
           std::tie(other.kind, other.deviceId, other.code, other.values, other.count);
}

std::ostream& operator<<(std::ostream& out, const EffectCall& call) {
    static const char* const kKindNames[] = {"setParam", "getParam", "commit"};
    out << kKindNames[call.kind] << "(0x" << std::hex << call.deviceId << std::dec;
    if (call.kind != EffectCall::kCommit) {
        out << ", \"" << vexParameterText(call.code) << "\"";
    }
    if (call.kind == EffectCall::kSetParam) {
        out << ", {";
        for (size_t i = 0; i < call.values.size(); i++) {
            out << (i ? ", " : "") << call.values[i];
        }
        out << "}";
    }
    return out << ", " << call.count << ")";
}

void RecordingEffect::setAnswer(int deviceId, int code, std::vector<int> values, int result,
                                int reportedCount) {
    mAnswers[{deviceId, code}] = {std::move(values), result, reportedCount};
}

std::vector<EffectCall> RecordingEffect::calls(EffectCall::Kind kind) const {
    std::vector<EffectCall> out;
    std::copy_if(mCalls.begin(), mCalls.end(), std::back_inserter(out),
                 [kind](const EffectCall& call) { return call.kind == kind; });
    return out;
}

std::vector<EffectCall> RecordingEffect::takeCalls() {
    std::vector<EffectCall> calls;
    calls.swap(mCalls);
    return calls;
}

int RecordingEffect::setParam(int deviceId, int code, const int* values, int count) {
    mSetParamCount++;
    if (!mRecording && !mKeepsSent) {
        return 0;
    }
    // Copying reads every value: a count past the caller's buffer is a read past its end.
    std::vector<int> sent;
    if (values != nullptr && count > 0) {
        sent.assign(values, values + count);
    }
    if (mKeepsSent) {
        mAnswers[{deviceId, code}] = {sent, 0, -1};
    }
    if (mRecording) {
        mCalls.push_back({EffectCall::kSetParam, deviceId, code, std::move(sent), count, {}, 0, 0});
    }
    return 0;
}

int RecordingEffect::getParamSize(int deviceId, int code) {
    auto found = mAnswers.find({deviceId, code});
    return found != mAnswers.end() ? static_cast<int>(found->second.values.size()) : -EINVAL;
}

int RecordingEffect::answerUnknown(int deviceId, int code, int* values, int* count,
                                   EffectCall* call) const {
    switch (mUnanswered) {
        case Unanswered::kSucceed:
            return 0;
        case Unanswered::kFillCapacity:
            for (int i = 0; i < *count; i++) {
                values[i] = i == 0 ? 0 : deviceId ^ code ^ i;
            }
            if (call != nullptr) {
                call->answer.assign(values, values + std::max(*count, 0));
            }
            return 0;
        case Unanswered::kRefuse:
            break;
    }
    return -EINVAL;
}

int RecordingEffect::getParam(int deviceId, int code, int* values, int* count) {
    const int capacity = count != nullptr ? *count : 0;
    EffectCall* call = nullptr;
    if (mRecording) {
        mCalls.push_back(EffectCall::getParam(deviceId, code, capacity));
        call = &mCalls.back();
    }
    int result = -EINVAL;
    auto found = mAnswers.find({deviceId, code});
    if (values == nullptr || count == nullptr) {
        // Nowhere to answer to.
    } else if (found == mAnswers.end()) {
        result = answerUnknown(deviceId, code, values, count, call);
    } else {
        const Answer& answer = found->second;
        const int copied = std::min(std::max(capacity, 0), static_cast<int>(answer.values.size()));
        std::copy_n(answer.values.begin(), copied, values);
        *count = answer.reportedCount >= 0 ? answer.reportedCount : copied;
        result = answer.result;
        if (call != nullptr) {
            call->answer.assign(values, values + copied);
        }
    }
    if (call != nullptr) {
        call->result = result;
        call->returned = count != nullptr ? *count : 0;
    }
    return result;
}

int RecordingEffect::commit(int deviceId) {
    mCommitCount++;
    if (mRecording) {
        mCalls.push_back(EffectCall::commit(deviceId));
        mCalls.back().result = mCommitResult;
    }
    return mCommitResult;
}

}  // namespace korva
