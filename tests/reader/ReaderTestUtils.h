// Helpers shared by the reader tests.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "model/ParameterValues.h"
#include "reader/NodeParseUtils.h"
#include "reader/TagIterator.h"

namespace korva::test {

// A record that accepts anything, for setters tried outside a tuning file's structure.
class TestRecord : public ParameterValues {
public:
    TestRecord() : ParameterValues(-1, false) {}
    int64_t getId() const override { return id; }
    const std::set<Parameter>& getValidParams() const override {
        static const std::set<Parameter> kNone;
        return kNone;
    }
};

// A test file made of <case id="..."> elements, each holding the element under test.
class CaseFile {
public:
    explicit CaseFile(const std::string& name) {
        std::string path = testDataFile(name);
        mInitResult = mIterator.init(path);
        mIterator.pushNode();
    }

    int initResult() const { return mInitResult; }
    TagIterator& iterator() { return mIterator; }

    // Puts the cursor on the first element of the case.
    bool moveToCase(const std::string& id) {
        mIterator.popNode();
        mIterator.pushNode();
        for (; mIterator.isCurValid(); mIterator.next()) {
            std::vector<std::string> caseId;
            mIterator.parseNodeWithName({"id"}, caseId);
            if (mIterator.getNodeName() == "case" && caseId == std::vector<std::string>{id}) {
                return NodeParseUtils::descend(mIterator, 1);
            }
        }
        return false;
    }

private:
    TagIterator mIterator;
    int mInitResult;
};

}  // namespace korva::test
