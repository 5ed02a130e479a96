// A record with a chosen set of valid parameters, and a reader of a command's entries, for the
// translator tests.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <vector>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "translator/SetParamCommand.h"
#include "translator/VexParameter.h"

namespace korva::test {

using Values = std::map<Parameter, std::vector<int>>;

class TestRecord : public ParameterValues {
public:
    TestRecord(std::set<Parameter> validParams, Values initial)
        : ParameterValues(7, false), mValidParams(std::move(validParams)) {
        values = std::move(initial);
    }
    int64_t getId() const override { return id; }
    const std::set<Parameter>& getValidParams() const override { return mValidParams; }

    static std::set<Parameter> allParameters() {
        std::set<Parameter> all;
        for (int p = 0; p < kNumParameters; p++) {
            all.insert(static_cast<Parameter>(p));
        }
        return all;
    }

private:
    std::set<Parameter> mValidParams;
};

struct Entry {
    int device;
    VexParameter param;
    std::vector<int> values;

    bool operator==(const Entry& other) const {
        return device == other.device && param == other.param && values == other.values;
    }
};

inline void PrintTo(const Entry& entry, std::ostream* out) {
    *out << "{" << entry.device << ", " << kVexParameterNames[entry.param] << ", {";
    for (int value : entry.values) {
        *out << value << ",";
    }
    *out << "}}";
}

// Decodes the entries after the two header words; a code that is no VexParameter or a value
// count that runs past the buffer fails the test.
inline std::vector<Entry> entriesOf(const SetParamCommand& cmd) {
    std::map<int, VexParameter> byCode;
    for (int i = 0; i < kNumVexParameters; i++) {
        byCode[vexParameterCode(static_cast<VexParameter>(i))] = static_cast<VexParameter>(i);
    }
    std::vector<Entry> entries;
    const std::vector<int>& words = cmd.mBuffer;
    size_t at = 2;
    while (at < words.size()) {
        EXPECT_LE(at + 3, words.size()) << "truncated entry header";
        if (at + 3 > words.size()) break;
        auto code = byCode.find(words[at + 1]);
        EXPECT_NE(byCode.end(), code) << "unknown code " << words[at + 1];
        size_t count = static_cast<size_t>(words[at + 2]);
        EXPECT_LE(at + 3 + count, words.size()) << "values run past the buffer";
        if (code == byCode.end() || at + 3 + count > words.size()) break;
        entries.push_back(
            {words[at], code->second,
             std::vector<int>(words.begin() + at + 3, words.begin() + at + 3 + count)});
        at += 3 + count;
    }
    EXPECT_EQ(static_cast<size_t>(cmd.mCount), entries.size());
    return entries;
}

inline std::vector<VexParameter> paramsOf(const std::vector<Entry>& entries) {
    std::vector<VexParameter> params;
    for (const Entry& entry : entries) {
        params.push_back(entry.param);
    }
    return params;
}

}  // namespace korva::test
