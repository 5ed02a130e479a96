#include "RecordingEffect.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace korva::test {

EffectCall EffectCall::setParam(int deviceId, int code, std::vector<int> values) {
    int count = static_cast<int>(values.size());
    return {SET_PARAM, deviceId, code, std::move(values), count};
}

EffectCall EffectCall::setParamCounted(int deviceId, int code, std::vector<int> values, int count) {
    values.resize(std::max(count, 0));
    return {SET_PARAM, deviceId, code, std::move(values), count};
}

EffectCall EffectCall::getParam(int deviceId, int code, int capacity) {
    return {GET_PARAM, deviceId, code, {}, capacity};
}

EffectCall EffectCall::commit(int deviceId) {
    return {COMMIT, deviceId, 0, {}, 0};
}

bool EffectCall::operator==(const EffectCall& other) const {
    return kind == other.kind && deviceId == other.deviceId && code == other.code &&
           values == other.values && count == other.count;
}

std::string codeText(int code) {
    char text[5] = {};
    memcpy(text, &code, 4);
    return text;
}

std::string EffectCall::toString() const {
    static const char* const kKindNames[] = {"setParam", "getParamSize", "getParam", "commit"};
    std::ostringstream out;
    out << kKindNames[kind] << "(0x" << std::hex << deviceId << std::dec;
    if (kind != COMMIT) {
        out << ", \"" << codeText(code) << "\"";
    }
    if (kind == SET_PARAM) {
        out << ", {";
        for (size_t i = 0; i < values.size(); i++) {
            out << (i == 0 ? "" : ", ") << values[i];
        }
        out << "}, " << count;
    } else if (kind == GET_PARAM) {
        out << ", capacity " << count;
    }
    out << ")";
    return out.str();
}

std::ostream& operator<<(std::ostream& out, const EffectCall& call) {
    return out << call.toString();
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

std::string RecordingEffect::describe() const {
    std::string out;
    for (const EffectCall& call : mCalls) {
        out += call.toString() + "\n";
    }
    return out;
}

int RecordingEffect::setParam(int deviceId, int code, const int* values, int count) {
    std::vector<int> sent;
    if (values != nullptr && count > 0) {
        sent.assign(values, values + count);
    }
    mCalls.push_back({EffectCall::SET_PARAM, deviceId, code, std::move(sent), count});
    return mSetParamResult;
}

int RecordingEffect::getParamSize(int deviceId, int code) {
    mCalls.push_back({EffectCall::GET_PARAM_SIZE, deviceId, code, {}, 0});
    auto it = mAnswers.find({deviceId, code});
    if (it == mAnswers.end()) {
        return mUnknownResult;
    }
    return static_cast<int>(it->second.values.size());
}

int RecordingEffect::getParam(int deviceId, int code, int* values, int* count) {
    int capacity = count != nullptr ? *count : 0;
    mCalls.push_back({EffectCall::GET_PARAM, deviceId, code, {}, capacity});
    auto it = mAnswers.find({deviceId, code});
    if (it == mAnswers.end() || count == nullptr) {
        return mUnknownResult;
    }
    const Answer& answer = it->second;
    int copied = std::min(std::max(capacity, 0), static_cast<int>(answer.values.size()));
    if (values != nullptr) {
        std::copy_n(answer.values.begin(), copied, values);
    }
    *count = answer.reportedCount >= 0 ? answer.reportedCount : copied;
    return answer.result;
}

int RecordingEffect::commit(int deviceId) {
    mCalls.push_back({EffectCall::COMMIT, deviceId, 0, {}, 0});
    return mCommitResult;
}

}  // namespace korva::test
