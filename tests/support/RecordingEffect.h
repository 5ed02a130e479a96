// An effect that remembers every call the library makes on it, in order, and answers getParam
// from values given beforehand. Tests compare the whole recorded sequence with the one expected,
// so an extra or a missing call fails as surely as a wrong value.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cache/IEffectKrv.h"

namespace korva::test {

struct EffectCall {
    enum Kind { SET_PARAM, GET_PARAM_SIZE, GET_PARAM, COMMIT };

    Kind kind;
    int deviceId;
    int code;
    // setParam: the values passed, as many as count says. Empty for the other kinds.
    std::vector<int> values;
    // setParam: the count passed; getParam: the capacity passed in *count; otherwise 0.
    int count;

    static EffectCall setParam(int deviceId, int code, std::vector<int> values);
    // A setParam whose count differs from the number of values the test lists (the values are
    // still compared as recorded, that is the first count of them).
    static EffectCall setParamCounted(int deviceId, int code, std::vector<int> values, int count);
    static EffectCall getParam(int deviceId, int code, int capacity);
    static EffectCall commit(int deviceId);

    bool operator==(const EffectCall& other) const;
    bool operator!=(const EffectCall& other) const { return !(*this == other); }
    std::string toString() const;
};

std::ostream& operator<<(std::ostream& out, const EffectCall& call);

// The text of a parameter code: its bytes up to the first zero.
std::string codeText(int code);

class RecordingEffect : public IEffectKrv {
public:
    // What getParam answers for a (device, code): the values copied out (at most the capacity),
    // the count reported back (-1: the number of values copied) and the result returned.
    void setAnswer(int deviceId, int code, std::vector<int> values, int result = 0,
                   int reportedCount = -1);
    // The result of getParam and getParamSize for a (device, code) without an answer; *count and
    // the buffer are then left untouched.
    void setUnknownResult(int result) { mUnknownResult = result; }
    void setCommitResult(int result) { mCommitResult = result; }
    void setSetParamResult(int result) { mSetParamResult = result; }

    const std::vector<EffectCall>& calls() const { return mCalls; }
    // The calls of one kind only.
    std::vector<EffectCall> calls(EffectCall::Kind kind) const;
    void clearCalls() { mCalls.clear(); }
    // One call per line, for failure messages.
    std::string describe() const;

    int setParam(int deviceId, int code, const int* values, int count) override;
    int getParamSize(int deviceId, int code) override;
    int getParam(int deviceId, int code, int* values, int* count) override;
    int commit(int deviceId) override;

private:
    struct Answer {
        std::vector<int> values;
        int result;
        int reportedCount;
    };

    std::vector<EffectCall> mCalls;
    std::map<std::pair<int, int>, Answer> mAnswers;
    int mUnknownResult = -22;
    int mCommitResult = 0;
    int mSetParamResult = 0;
};

}  // namespace korva::test
