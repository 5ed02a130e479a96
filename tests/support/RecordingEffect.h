// An effect that remembers every call the library makes on it, in order, and answers getParam
// from values given beforehand. Tests compare the whole recorded sequence with the one expected,
// so an extra or a missing call fails as surely as a wrong value.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "cache/IEffectKrv.h"

namespace korva::test {

// The text of a parameter code: its bytes up to the first zero.
inline std::string codeText(int code) {
    char text[5] = {};
    memcpy(text, &code, 4);
    return text;
}

struct EffectCall {
    enum Kind { SET_PARAM, GET_PARAM_SIZE, GET_PARAM, COMMIT };

    Kind kind;
    int deviceId;
    int code;
    // setParam: the values passed, as many as count says. Empty for the other kinds.
    std::vector<int> values;
    // setParam: the count passed; getParam: the capacity passed in *count; otherwise 0.
    int count;

    static EffectCall setParam(int deviceId, int code, std::vector<int> values) {
        int count = static_cast<int>(values.size());
        return {SET_PARAM, deviceId, code, std::move(values), count};
    }
    static EffectCall getParam(int deviceId, int code, int capacity) {
        return {GET_PARAM, deviceId, code, {}, capacity};
    }
    static EffectCall commit(int deviceId) { return {COMMIT, deviceId, 0, {}, 0}; }

    bool operator==(const EffectCall& o) const {
        return std::tie(kind, deviceId, code, values, count) ==
               std::tie(o.kind, o.deviceId, o.code, o.values, o.count);
    }
};

inline std::ostream& operator<<(std::ostream& out, const EffectCall& call) {
    static const char* const kKindNames[] = {"setParam", "getParamSize", "getParam", "commit"};
    out << kKindNames[call.kind] << "(0x" << std::hex << call.deviceId << std::dec;
    if (call.kind != EffectCall::COMMIT) out << ", \"" << codeText(call.code) << "\"";
    if (call.kind == EffectCall::SET_PARAM) {
        out << ", {";
        for (size_t i = 0; i < call.values.size(); i++) out << (i ? ", " : "") << call.values[i];
        out << "}";
    }
    return out << ", " << call.count << ")";
}

class RecordingEffect : public IEffectKrv {
public:
    // What getParam answers for a (device, code): the values copied out (at most the capacity),
    // the count reported back (-1: the number of values copied) and the result returned. Codes
    // without an answer get -22 and an untouched buffer.
    void setAnswer(int deviceId, int code, std::vector<int> values, int result = 0,
                   int reportedCount = -1) {
        mAnswers[{deviceId, code}] = {std::move(values), result, reportedCount};
    }
    void setCommitResult(int result) { mCommitResult = result; }

    const std::vector<EffectCall>& calls() const { return mCalls; }
    std::vector<EffectCall> calls(EffectCall::Kind kind) const {
        std::vector<EffectCall> out;
        std::copy_if(mCalls.begin(), mCalls.end(), std::back_inserter(out),
                     [kind](const EffectCall& call) { return call.kind == kind; });
        return out;
    }

    int setParam(int deviceId, int code, const int* values, int count) override {
        std::vector<int> sent;
        if (values != nullptr && count > 0) sent.assign(values, values + count);
        mCalls.push_back({EffectCall::SET_PARAM, deviceId, code, std::move(sent), count});
        return 0;
    }
    int getParamSize(int deviceId, int code) override {
        mCalls.push_back({EffectCall::GET_PARAM_SIZE, deviceId, code, {}, 0});
        auto it = mAnswers.find({deviceId, code});
        return it == mAnswers.end() ? -22 : static_cast<int>(it->second.values.size());
    }
    int getParam(int deviceId, int code, int* values, int* count) override {
        int capacity = count != nullptr ? *count : 0;
        mCalls.push_back({EffectCall::GET_PARAM, deviceId, code, {}, capacity});
        auto it = mAnswers.find({deviceId, code});
        if (it == mAnswers.end() || count == nullptr) return -22;
        const Answer& answer = it->second;
        int copied = std::min(std::max(capacity, 0), static_cast<int>(answer.values.size()));
        if (values != nullptr) std::copy_n(answer.values.begin(), copied, values);
        *count = answer.reportedCount >= 0 ? answer.reportedCount : copied;
        return answer.result;
    }
    int commit(int deviceId) override {
        mCalls.push_back(EffectCall::commit(deviceId));
        return mCommitResult;
    }

private:
    struct Answer {
        std::vector<int> values;
        int result;
        int reportedCount;
    };

    std::vector<EffectCall> mCalls;
    std::map<std::pair<int, int>, Answer> mAnswers;
    int mCommitResult = 0;
};

}  // namespace korva::test
