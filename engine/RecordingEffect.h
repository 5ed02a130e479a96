// A stand-in for the spatializer effect on the host, shared by the tests, the benchmarks, the
// fuzz targets and the tool. It records every setParam, getParam and commit call the library
// makes, in order, and answers getParam from the values it was given: answers set beforehand and,
// if asked to, the values it was sent, as an effect does. Set not to record, it only counts the
// calls and costs nothing per call, for benchmarks.
#pragma once

#include <map>
#include <ostream>
#include <utility>
#include <vector>

#include "cache/IEffectKrv.h"

namespace korva {

struct EffectCall {
    enum Kind { kSetParam, kGetParam, kCommit };

    Kind kind;
    int deviceId;
    int code;
    // setParam: the values passed, as many as count says. Empty for the other kinds.
    std::vector<int> values;
    // setParam: the count passed; getParam: the capacity passed in *count; commit: 0.
    int count;
    // What the effect did: getParam's values copied out and the result of the call.
    std::vector<int> answer;
    int result;
    // getParam: the count the effect wrote back (left at the capacity when it did not answer).
    int returned;

    static EffectCall setParam(int deviceId, int code, std::vector<int> values);
    static EffectCall getParam(int deviceId, int code, int capacity);
    static EffectCall commit(int deviceId);

    // The same call by the library: the effect's answer is not part of it.
    bool operator==(const EffectCall& other) const;
};

std::ostream& operator<<(std::ostream& out, const EffectCall& call);

class RecordingEffect : public IEffectKrv {
public:
    // What getParam does for a parameter it has no values for.
    enum class Unanswered {
        // Returns -EINVAL and leaves the buffer and the count alone: an effect that does not
        // know the parameter.
        kRefuse,
        // Returns 0 and leaves the buffer and the count alone: the cheapest answer, so that a
        // benchmark measures the library's side alone.
        kSucceed,
        // Returns 0 and writes the whole capacity it is told of (first value 0, which takes the
        // paths that switch a disabled mix matrix on): a capacity larger than the caller's
        // buffer is a write past its end that a sanitizer reports.
        kFillCapacity,
    };

    // Off: no call is kept, only counted.
    void setRecording(bool recording) { mRecording = recording; }
    // On: the values of every setParam become what getParam answers for that parameter.
    void setKeepsSent(bool keepsSent) { mKeepsSent = keepsSent; }
    void setUnanswered(Unanswered unanswered) { mUnanswered = unanswered; }

    // What getParam answers for a (device, code): the values copied out (at most the capacity),
    // the count reported back (-1: the number of values copied) and the result returned.
    void setAnswer(int deviceId, int code, std::vector<int> values, int result = 0,
                   int reportedCount = -1);
    void setCommitResult(int result) { mCommitResult = result; }

    const std::vector<EffectCall>& calls() const { return mCalls; }
    std::vector<EffectCall> calls(EffectCall::Kind kind) const;
    // The calls since the last take.
    std::vector<EffectCall> takeCalls();
    long setParamCount() const { return mSetParamCount; }
    long commitCount() const { return mCommitCount; }

    int setParam(int deviceId, int code, const int* values, int count) override;
    // The number of values getParam would answer with, or -EINVAL. Not recorded: the library
    // never calls it.
    int getParamSize(int deviceId, int code) override;
    int getParam(int deviceId, int code, int* values, int* count) override;
    int commit(int deviceId) override;

private:
    struct Answer {
        std::vector<int> values;
        int result;
        int reportedCount;
    };

    int answerUnknown(int deviceId, int code, int* values, int* count, EffectCall* call) const;

    bool mRecording = true;
    bool mKeepsSent = false;
    Unanswered mUnanswered = Unanswered::kRefuse;
    std::vector<EffectCall> mCalls;
    std::map<std::pair<int, int>, Answer> mAnswers;
    int mCommitResult = 0;
    long mSetParamCount = 0;
    long mCommitCount = 0;
};

}  // namespace korva
