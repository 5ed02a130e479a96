#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "TestPaths.h"
#include "model/Tuning.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"
#include "tests/tool/TempFile.h"
#include "tools/LineTrackingIterator.h"

namespace korva::tool {
namespace {

std::string nameOf(const xmlNode* node) {
    return node != nullptr && node->name != nullptr ? reinterpret_cast<const char*>(node->name) : "";
}

// Walks every element the way the reader does and checks at each stop that the tracked node is
// the one the library's cursor is on; elements with a setter are read by it on the way, so the
// setters' own moves are followed too.
void walk(LineTrackingIterator& it, int* visited) {
    for (; it.isCurValid(); it.next()) {
        ASSERT_EQ(it.getNodeName(), nameOf(it.node()));
        if (!it.isElementNode()) {
            continue;
        }
        ++*visited;
        if (ValueSetter* setter =
                TuningFileParser::sSetterCollection->getValueSetter(it.getNodeName())) {
            Tuning scratch("scratch", ENDPOINT_SPEAKER, false);
            setter->set(scratch, it);
            ASSERT_EQ(it.getNodeName(), nameOf(it.node()));
        }
        if (it.isChildrenValid()) {
            it.pushNode();
            it.childrenNext();
            walk(it, visited);
            it.popNode();
        }
    }
}

TEST(LineTrackingIteratorTest, FollowsTheLibraryCursorThroughAWholeFile) {
    LineTrackingIterator it;
    std::string error;
    int line = 0;
    ASSERT_EQ(it.open(test::examplesDir() + "/kvx-default-spatializer.xml", &error, &line), 0)
        << error;
    int visited = 0;
    walk(it, &visited);
    EXPECT_GT(visited, 1000);
}

TEST(LineTrackingIteratorTest, GivesTheLineOfEachNode) {
    TempFile file(
        "<?xml version=\"1.0\"?>\n"
        "<root>\n"
        "    <first/>\n"
        "\n"
        "    <second a=\"1\">\n"
        "        <child/>\n"
        "    </second>\n"
        "</root>\n");
    LineTrackingIterator it;
    std::string error;
    int line = 0;
    ASSERT_EQ(it.open(file.path(), &error, &line), 0);
    EXPECT_EQ(LineTrackingIterator::lineOf(it.root()), 2);
    it.next();  // the blank before <first> is the root's first child
    EXPECT_EQ(it.getNodeName(), "first");
    EXPECT_EQ(it.line(), 3);
    it.next();
    it.next();
    EXPECT_EQ(it.getNodeName(), "second");
    EXPECT_EQ(it.line(), 5);
    it.pushNode();
    it.childrenNext();
    EXPECT_EQ(it.getNodeName(), "child");
    EXPECT_EQ(it.line(), 6);
    it.popNode();
    EXPECT_EQ(it.line(), 5);
    EXPECT_TRUE(it.steppedOver().empty());
}

TEST(LineTrackingIteratorTest, RemembersElementsThatAStepDownPassesOver) {
    TempFile file("<root>\n  <data><hidden/>\n    <seen/>\n  </data>\n</root>\n");
    LineTrackingIterator it;
    std::string error;
    int line = 0;
    ASSERT_EQ(it.open(file.path(), &error, &line), 0);
    it.next();
    ASSERT_EQ(it.getNodeName(), "data");
    it.childrenNext();
    EXPECT_EQ(it.getNodeName(), "text");
    ASSERT_EQ(it.steppedOver().size(), 1u);
    EXPECT_EQ(nameOf(it.steppedOver()[0]), "hidden");
    EXPECT_EQ(LineTrackingIterator::lineOf(it.steppedOver()[0]), 2);
}

TEST(LineTrackingIteratorTest, ReportsWhyAFileIsNotXml) {
    TempFile file("<root>\n  <open>\n</root>\n");
    LineTrackingIterator it;
    std::string error;
    int line = 0;
    EXPECT_NE(it.open(file.path(), &error, &line), 0);
    EXPECT_EQ(line, 3);
    EXPECT_NE(error.find("mismatch"), std::string::npos) << error;
}

}  // namespace
}  // namespace korva::tool
