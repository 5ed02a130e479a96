#include <android/log.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <memory>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "reader/TagIterator.h"

namespace korva {
namespace {

using test::LogCapture;
using test::testDataFile;
using Strings = std::vector<std::string>;

// Gives the tests a way to hand the iterator a document that no file can produce.
class AdoptingIterator : public TagIterator {
public:
    using TagIterator::adoptDocument;
};

// Files that cannot be parsed are refused by the parser's tests; a document without a root
// cannot come from a file.
TEST(TagIteratorInitTest, RefusesADocumentWithoutRoot) {
    LogCapture log;
    AdoptingIterator iterator;
    EXPECT_EQ(-19, iterator.adoptDocument(xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"))));
    EXPECT_FALSE(iterator.isCurValid());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(0u, log.messages("TagIterator").at(0).find("fail to call xmlDocGetRootElement, "));
}

class TagIteratorWalkTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(0, mIterator.init(mPath)); }

    // Moves from the start to the first element with this name among the root's children.
    void moveTo(const std::string& name) {
        while (mIterator.isCurValid() && mIterator.getNodeName() != name) mIterator.next();
        ASSERT_TRUE(mIterator.isCurValid()) << name;
    }

    std::string mPath = testDataFile("iterator-walk.xml");
    TagIterator mIterator;
};

TEST_F(TagIteratorWalkTest, NextVisitsEveryNodeAndOnlyElementsHaveAttributes) {
    LogCapture log;
    Strings names, out;
    std::vector<int> ints;
    auto readAll = [&] {
        mIterator.parseNodeAll(out);
        mIterator.parseNodeWithName({"a"}, out);
        mIterator.parseNodeIntVector(ints);
    };
    for (; mIterator.isCurValid(); mIterator.next()) {
        names.push_back(mIterator.getNodeName());
        if (!mIterator.isElementNode()) {  // text and comments read silently as nothing
            readAll();
            EXPECT_TRUE(mIterator.getAttrsName().empty());
        }
    }
    EXPECT_EQ((Strings{"text", "first", "text", "comment", "text", "second", "text", "tight",
                       "text", "bare", "text", "last", "text"}),
              names);
    EXPECT_TRUE(out.empty() && ints.empty() && log.lines().empty());
    // Off the end the cursor stays null, and each reader logs it.
    mIterator.next();
    EXPECT_FALSE(mIterator.isCurValid() || mIterator.isNextValid());
    EXPECT_EQ("", mIterator.getNodeName());
    readAll();
    EXPECT_TRUE(out.empty() && ints.empty());
    EXPECT_EQ(3u, log.count("Invalid node when parsing String vector.", "TagIterator"));
}

TEST_F(TagIteratorWalkTest, ChildStepsAndTheNodeStack) {
    moveTo("first");
    mIterator.pushNode();
    moveTo("second");
    mIterator.pushNode();
    mIterator.childrenNext();  // over the blank text before the first child
    EXPECT_EQ("child", mIterator.getNodeName());
    mIterator.popNode();
    EXPECT_EQ("second", mIterator.getNodeName());
    mIterator.popNode();
    EXPECT_EQ("first", mIterator.getNodeName());
    LogCapture log;
    mIterator.popNode();
    EXPECT_EQ("first", mIterator.getNodeName());
    EXPECT_EQ(Strings{"It's empty in node stack!"}, log.messages("TagIterator"));
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
    // Where the only child is an element, stepping over it leaves nothing; and no further.
    moveTo("tight");
    mIterator.pushNode();
    mIterator.childrenNext();
    EXPECT_FALSE(mIterator.isCurValid());
    mIterator.childrenNext();
    EXPECT_FALSE(mIterator.isCurValid());
    mIterator.popNode();
    // Without children the cursor stays put.
    moveTo("bare");
    EXPECT_FALSE(mIterator.isChildrenValid());
    mIterator.childrenNext();
    EXPECT_EQ("bare", mIterator.getNodeName());
}

// xmlCleanupParser resets libxml2's last error, which makes the clean-up observable.
TEST(TagIteratorLifetimeTest, OnlyTheLastIteratorCleansUpLibxml2) {
    std::string path = testDataFile("iterator-walk.xml");
    std::string broken = testDataFile("not-xml.xml");
    ASSERT_EQ(0, TagIterator::instanceCount());
    auto first = std::make_unique<TagIterator>();
    auto second = std::make_unique<TagIterator>();
    EXPECT_EQ(2, TagIterator::instanceCount());
    ASSERT_EQ(0, first->init(path));
    ASSERT_EQ(-22, second->init(broken));
    ASSERT_NE(nullptr, xmlGetLastError());
    second.reset();
    EXPECT_NE(nullptr, xmlGetLastError());
    first.reset();
    EXPECT_EQ(0, TagIterator::instanceCount());
    EXPECT_EQ(nullptr, xmlGetLastError());
    // libxml2 starts afresh for the next iterator.
    TagIterator again;
    EXPECT_EQ(0, again.init(path));
}

// Attribute values are read as xmlGetProp gives them, including values that are not one plain
// text node (entity references, empty values) and a name that two namespaces share, where the
// first attribute is the one a lookup by name finds.
TEST(TagIteratorAttributeTest, ReadersGiveWhatXmlGetPropGives) {
    const std::string text =
        "<?xml version=\"1.0\"?>\n"
        "<!DOCTYPE root [<!ENTITY gain \"-96\">]>\n"
        "<root xmlns:a=\"urn:a\" xmlns:b=\"urn:b\">\n"
        "    <row a:value=\"1\" b:value=\"2\" plain=\"x&amp;y\" ref=\"&gain;,4\" empty=\"\"/>\n"
        "</root>\n";
    AdoptingIterator iterator;
    ASSERT_EQ(0, iterator.adoptDocument(xmlReadMemory(text.data(), static_cast<int>(text.size()),
                                                      "values.xml", nullptr, 0)));
    iterator.next();
    ASSERT_EQ("row", iterator.getNodeName());
    EXPECT_EQ((Strings{"value", "value", "plain", "ref", "empty"}), iterator.getAttrsName());
    Strings out = {"kept"};
    iterator.parseNodeAll(out);
    EXPECT_EQ((Strings{"kept", "1", "1", "x&y", "-96,4", ""}), out);
    // One slot per name asked, in that order: a missing name keeps what the slot held, extra
    // slots are dropped, names compare case-sensitively, and no names means every value.
    out = {"keep", "x", "x", "extra"};
    iterator.parseNodeWithName({"none", "ref", "empty"}, out);
    EXPECT_EQ((Strings{"keep", "-96,4", ""}), out);
    out.clear();
    iterator.parseNodeWithName({"value", "Plain", "plain"}, out);
    EXPECT_EQ((Strings{"1", "", "x&y"}), out);
    out.clear();
    iterator.parseNodeWithName({}, out);
    EXPECT_EQ((Strings{"1", "1", "x&y", "-96,4", ""}), out);
    std::vector<int> numbers = {5};
    iterator.parseNodeIntVector(numbers);
    EXPECT_EQ((std::vector<int>{5, 1, 1, 0, -96, 0}), numbers);
}

}  // namespace
}  // namespace korva
