// A record with a chosen set of valid parameters, and a command's entries read back, for the
// translator tests.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <vector>

#include "model/ParameterValues.h"
#include "translator/SetParamCommand.h"

namespace korva::test {

using Values = std::map<Parameter, std::vector<int>>;

inline std::set<Parameter> allParameters() {
    std::set<Parameter> all;
    for (int p = 0; p < kNumParameters; p++) all.insert(static_cast<Parameter>(p));
    return all;
}

class TestRecord : public ParameterValues {
public:
    explicit TestRecord(Values initial, std::set<Parameter> valid = allParameters())
        : ParameterValues(7, false), mValid(std::move(valid)) {
        values = std::move(initial);
    }
    int64_t getId() const override { return id; }
    const std::set<Parameter>& getValidParams() const override { return mValid; }

private:
    std::set<Parameter> mValid;
};

struct Entry {
    int device;
    VexParameter param;
    std::vector<int> values;
    bool operator==(const Entry& o) const {
        return device == o.device && param == o.param && values == o.values;
    }
};

inline void PrintTo(const Entry& e, std::ostream* out) {
    *out << "{" << e.device << ", " << kVexParameterNames[e.param] << ", "
         << testing::PrintToString(e.values) << "}";
}

// The entries after the two header words; an unknown code, an entry running past the buffer or
// an entry count other than the command's fails the test.
inline std::vector<Entry> entriesOf(const SetParamCommand& cmd) {
    std::map<int, VexParameter> byCode;
    for (int i = 0; i < kNumVexParameters; i++) {
        byCode[vexParameterCode(static_cast<VexParameter>(i))] = static_cast<VexParameter>(i);
    }
    std::vector<Entry> entries;
    const std::vector<int>& w = cmd.mBuffer;
    for (size_t at = 2; at < w.size();) {
        size_t end = at + 3 + (at + 2 < w.size() ? static_cast<size_t>(w[at + 2]) : 0);
        if (end > w.size() || byCode.count(w[at + 1]) == 0) {
            ADD_FAILURE() << "bad entry at word " << at;
            break;
        }
        entries.push_back({w[at], byCode[w[at + 1]], {w.begin() + at + 3, w.begin() + end}});
        at = end;
    }
    EXPECT_EQ(static_cast<size_t>(cmd.mCount), entries.size());
    return entries;
}

}  // namespace korva::test
