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

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

class TagIteratorWalkTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string path = testDataFile("iterator-walk.xml");
        ASSERT_EQ(0, mIterator.init(path));
    }

    // Moves from the start to the first element with this name among the root's children.
    void moveTo(const std::string& name) {
        while (mIterator.isCurValid() && mIterator.getNodeName() != name) {
            mIterator.next();
        }
        ASSERT_TRUE(mIterator.isCurValid()) << name;
    }

    TagIterator mIterator;
};

TEST(TagIteratorInitTest, RefusesWhatCannotBeParsed) {
    struct Case {
        std::string path;
        std::string messagePrefix;
    };
    const Case cases[] = {
        {"", "Invalide xml file path, "},
        {testDataFile("does-not-exist.xml"), "fail to call xmlReadFile,  "},
        {testDataFile("empty.xml"), "fail to call xmlReadFile,  "},
        {testDataFile("not-xml.xml"), "fail to call xmlReadFile,  "},
        {testDataFile("truncated.xml"), "fail to call xmlReadFile,  "},
        {testDataFile("no-root.xml"), "fail to call xmlReadFile,  "},
        {test::testDataDir(), "fail to call xmlReadFile,  "},
    };
    for (const Case& c : cases) {
        LogCapture log;
        TagIterator iterator;
        std::string path = c.path;
        EXPECT_EQ(-22, iterator.init(path)) << c.path;
        EXPECT_FALSE(iterator.isCurValid()) << c.path;
        Strings messages = log.messages("TagIterator");
        ASSERT_EQ(1u, messages.size()) << c.path;
        EXPECT_TRUE(startsWith(messages[0], c.messagePrefix)) << messages[0];
        EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
    }
}

TEST(TagIteratorInitTest, DocumentWithoutRootIsNoDevice) {
    LogCapture log;
    AdoptingIterator iterator;
    xmlDoc* document = xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"));
    EXPECT_EQ(-19, iterator.adoptDocument(document));
    EXPECT_FALSE(iterator.isCurValid());
    Strings messages = log.messages("TagIterator");
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(startsWith(messages[0], "fail to call xmlDocGetRootElement, ")) << messages[0];
    // The document stays owned by the iterator and is freed with it (checked under valgrind).
}

TEST_F(TagIteratorWalkTest, StartsOnTheBlankTextBeforeTheFirstElement) {
    EXPECT_TRUE(mIterator.isCurValid());
    EXPECT_FALSE(mIterator.isElementNode());
    EXPECT_EQ("text", mIterator.getNodeName());
    mIterator.next();
    EXPECT_TRUE(mIterator.isElementNode());
    EXPECT_EQ("first", mIterator.getNodeName());
}

TEST_F(TagIteratorWalkTest, NextVisitsEveryKindOfNode) {
    Strings names;
    while (mIterator.isCurValid()) {
        names.push_back(mIterator.getNodeName());
        mIterator.next();
    }
    const Strings expected = {"text",  "first", "text", "comment", "text", "second", "text",
                              "tight", "text",  "bare", "text",    "last", "text"};
    EXPECT_EQ(expected, names);
    // Off the end the cursor stays null.
    mIterator.next();
    EXPECT_FALSE(mIterator.isCurValid());
    EXPECT_FALSE(mIterator.isNextValid());
    EXPECT_FALSE(mIterator.isElementNode());
    EXPECT_EQ("", mIterator.getNodeName());
}

TEST_F(TagIteratorWalkTest, ChildrenNextStepsOverTheLeadingBlankText) {
    moveTo("second");
    EXPECT_TRUE(mIterator.isChildrenValid());
    mIterator.childrenNext();
    EXPECT_EQ("child", mIterator.getNodeName());
    std::vector<int> values;
    mIterator.parseNodeIntVector(values);
    EXPECT_EQ((std::vector<int>{-7, 12, 0}), values);
}

TEST_F(TagIteratorWalkTest, ChildrenNextOnASingleChildLeavesNothing) {
    moveTo("tight");
    mIterator.childrenNext();
    EXPECT_FALSE(mIterator.isCurValid());
    // A further step down from nothing changes nothing.
    mIterator.childrenNext();
    EXPECT_FALSE(mIterator.isCurValid());
}

TEST_F(TagIteratorWalkTest, ChildrenNextWithoutChildrenStaysPut) {
    moveTo("bare");
    EXPECT_FALSE(mIterator.isChildrenValid());
    mIterator.childrenNext();
    EXPECT_EQ("bare", mIterator.getNodeName());
}

TEST_F(TagIteratorWalkTest, LastElementHasOnlyBlankTextAfterIt) {
    moveTo("last");
    EXPECT_TRUE(mIterator.isNextValid());
    mIterator.next();
    EXPECT_FALSE(mIterator.isNextValid());
    mIterator.next();
    EXPECT_FALSE(mIterator.isCurValid());
}

TEST_F(TagIteratorWalkTest, StackRestoresSavedNodesLastFirst) {
    moveTo("first");
    mIterator.pushNode();
    moveTo("second");
    mIterator.pushNode();
    mIterator.childrenNext();
    EXPECT_EQ("child", mIterator.getNodeName());
    mIterator.popNode();
    EXPECT_EQ("second", mIterator.getNodeName());
    mIterator.popNode();
    EXPECT_EQ("first", mIterator.getNodeName());

    // A null cursor is saved and restored like any other.
    while (mIterator.isCurValid()) mIterator.next();
    mIterator.pushNode();
    mIterator.popNode();
    EXPECT_FALSE(mIterator.isCurValid());
}

TEST_F(TagIteratorWalkTest, PopOnAnEmptyStackLogsAndKeepsTheCursor) {
    moveTo("second");
    LogCapture log;
    mIterator.popNode();
    EXPECT_EQ("second", mIterator.getNodeName());
    EXPECT_EQ(Strings{"It's empty in node stack!"}, log.messages("TagIterator"));
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
}

TEST_F(TagIteratorWalkTest, AttributeNamesAndValuesInDocumentOrder) {
    moveTo("first");
    EXPECT_EQ((Strings{"a", "b", "c"}), mIterator.getAttrsName());
    Strings all = {"kept"};
    mIterator.parseNodeAll(all);
    EXPECT_EQ((Strings{"kept", "1", "2", "3"}), all);
    Strings unnamed;
    mIterator.parseNodeWithName({}, unnamed);
    EXPECT_EQ((Strings{"1", "2", "3"}), unnamed);
}

TEST_F(TagIteratorWalkTest, ParseNodeWithNameFillsOneSlotPerName) {
    moveTo("second");  // b="2" c="3"
    struct Case {
        Strings names;
        Strings before;
        Strings expected;
    };
    const Case cases[] = {
        {{"a", "b"}, {}, {"", "2"}},
        {{"c", "b"}, {}, {"3", "2"}},
        // Listed names that are missing keep what the slot held; extra slots are dropped.
        {{"a", "b"}, {"keep", "x", "extra"}, {"keep", "2"}},
        {{"b", "b", "z"}, {}, {"2", "2", ""}},
        // Names compare case-sensitively.
        {{"B"}, {}, {""}},
    };
    for (const Case& c : cases) {
        Strings out = c.before;
        mIterator.parseNodeWithName(c.names, out);
        EXPECT_EQ(c.expected, out);
    }
}

TEST_F(TagIteratorWalkTest, ReadersOnAnElementWithoutAttributes) {
    moveTo("bare");
    EXPECT_TRUE(mIterator.getAttrsName().empty());
    Strings all = {"x"};
    mIterator.parseNodeAll(all);
    EXPECT_EQ(Strings{"x"}, all);
    std::vector<int> ints = {5};
    mIterator.parseNodeIntVector(ints);
    EXPECT_EQ(std::vector<int>{5}, ints);
    Strings named;
    mIterator.parseNodeWithName({"value"}, named);
    EXPECT_EQ(Strings{""}, named);
}

TEST_F(TagIteratorWalkTest, ReadersIgnoreTextSilentlyAndLogANullCursor) {
    LogCapture log;
    // On the leading blank text node.
    Strings out;
    std::vector<int> ints;
    mIterator.parseNodeAll(out);
    mIterator.parseNodeWithName({"a"}, out);
    mIterator.parseNodeIntVector(ints);
    EXPECT_TRUE(mIterator.getAttrsName().empty());
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(ints.empty());
    EXPECT_TRUE(log.lines().empty());

    while (mIterator.isCurValid()) mIterator.next();
    mIterator.parseNodeAll(out);
    mIterator.parseNodeWithName({"a"}, out);
    mIterator.parseNodeIntVector(ints);
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(ints.empty());
    EXPECT_EQ(3u, log.count("Invalid node when parsing String vector.", "TagIterator"));
}

TEST_F(TagIteratorWalkTest, ClearAllForgetsTheDocument) {
    moveTo("first");
    mIterator.clearAll();
    EXPECT_FALSE(mIterator.isCurValid());
    EXPECT_EQ("", mIterator.getNodeName());
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
    EXPECT_EQ(1, TagIterator::instanceCount());
    EXPECT_NE(nullptr, xmlGetLastError());
    first.reset();
    EXPECT_EQ(0, TagIterator::instanceCount());
    EXPECT_EQ(nullptr, xmlGetLastError());

    // libxml2 starts afresh for the next iterator.
    TagIterator again;
    EXPECT_EQ(0, again.init(path));
    EXPECT_TRUE(again.isCurValid());
}

// Attribute values are read as xmlGetProp gives them, including the cases where the value is not
// one plain text node (entity references, empty values) or where an earlier attribute in another
// namespace has the same name and so is the one a lookup by name finds.
TEST(TagIteratorValueTest, ValuesAreThoseXmlGetPropGives) {
    const std::string text =
        "<?xml version=\"1.0\"?>\n"
        "<!DOCTYPE root [<!ENTITY gain \"-96\">]>\n"
        "<root xmlns:a=\"urn:a\" xmlns:b=\"urn:b\">\n"
        "    <row a:value=\"1\" b:value=\"2\" plain=\"x&amp;y\" ref=\"&gain;,4\" "
        "empty=\"\"/>\n"
        "</root>\n";
    xmlDoc* document =
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "values.xml", nullptr, 0);
    ASSERT_NE(nullptr, document);
    AdoptingIterator iterator;
    ASSERT_EQ(0, iterator.adoptDocument(document));
    iterator.next();
    ASSERT_EQ("row", iterator.getNodeName());

    Strings all;
    iterator.parseNodeAll(all);
    EXPECT_EQ((Strings{"1", "1", "x&y", "-96,4", ""}), all);

    Strings named;
    iterator.parseNodeWithName({"value", "ref", "empty"}, named);
    EXPECT_EQ((Strings{"1", "-96,4", ""}), named);

    std::vector<int> numbers;
    iterator.parseNodeIntVector(numbers);
    EXPECT_EQ((std::vector<int>{1, 1, 0, -96, 0}), numbers);
}

}  // namespace
}  // namespace korva
