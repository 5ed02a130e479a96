// Hovers and the outline of tuning files, each loaded in a child process (a process holds one
// parameter store), and the tag positions they are found at in an editor's text.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tools/load/ChildLoads.h"
#include "tools/load/ExampleFile.h"
#include "tools/load/StoreSession.h"
#include "tools/lsp/DocumentSymbols.h"
#include "tools/lsp/HoverIndex.h"
#include "tools/lsp/TagText.h"

namespace korva::tool {
namespace {

// The hover index and the outline of a text, as the server's analysing child makes them.
Json analyse(const std::string& text) {
    char path[] = "/tmp/hover-test.XXXXXX";
    const int fd = mkstemp(path);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(fd);
    const Json made = ChildLoads::one("hover test", [&](Json* document) {
        const std::unique_ptr<StoreSession> session = StoreSession::open(path);
        if (session == nullptr || !session->readable()) {
            return kExitError;
        }
        *document = {{"index", HoverIndex::build(*session)},
                     {"symbols", DocumentSymbols::build(*session, text)}};
        return kExitOk;
    });
    unlink(path);
    return made;
}

// The LSP position of the byte at offset into the first needle on a 1-based line (LspTextTest
// holds the count of UTF-16 units to its own cases).
std::pair<int, int> cursor(const std::string& text, int line, const std::string& needle,
                           int offset) {
    const LspText lines(text);
    const size_t start = lines.offset(line - 1, 0);
    const size_t found = text.find(needle, start);
    EXPECT_LT(found, start + lines.line(line - 1).size()) << needle << " is not on line " << line;
    const Json position = lines.position(found + offset);
    return {position["line"], position["character"]};
}

// The 1-based line of the first needle in text.
int lineOf(const std::string& text, const std::string& needle) {
    const size_t at = text.find(needle);
    EXPECT_NE(at, std::string::npos) << needle;
    return 1 + static_cast<int>(
                   std::count(text.begin(), text.begin() + std::min(at, text.size()), '\n'));
}

struct HoverCase {
    const char* what;
    int line;  // 1-based, as the library and a reader of the file count
    const char* needle;
    int offset;
    std::vector<std::string> says;  // empty: no hover
    std::vector<std::string> notSays;
};

void checkHovers(const std::string& text, const Json& index, const std::vector<HoverCase>& cases) {
    for (const HoverCase& c : cases) {
        SCOPED_TRACE(c.what);
        const auto [line, character] = cursor(text, c.line, c.needle, c.offset);
        const Json hover = HoverIndex::at(index, text, line, character);
        if (c.says.empty()) {
            EXPECT_TRUE(hover.is_null()) << hover.dump(1);
            continue;
        }
        ASSERT_TRUE(hover.is_object());
        const std::string value = hover["contents"]["value"].get<std::string>();
        EXPECT_EQ(hover["contents"]["kind"], "markdown");
        for (const std::string& word : c.says) {
            EXPECT_NE(value.find(word), std::string::npos) << word << " in\n" << value;
        }
        for (const std::string& word : c.notSays) {
            EXPECT_EQ(value.find(word), std::string::npos) << word << " in\n" << value;
        }
        // The range covers the cursor.
        const Json& range = hover["range"];
        EXPECT_EQ(range["start"]["line"], line);
        EXPECT_LE(range["start"]["character"].get<int>(), character);
        EXPECT_GT(range["end"]["character"].get<int>(), character);
    }
}

// The editor's copy: a misspelt element, a band written over two lines, and a character outside
// the Basic Multilingual Plane before a tag, which counts two UTF-16 units.
TEST(HoverTest, EditedTextsAreFoundWhereTheEditorPutsTheCursor) {
    std::string text = test::fileText(ExampleFile::path());
    const auto replace = [&text](const std::string& from, const std::string& to) {
        const size_t at = text.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        text.replace(at, from.size(), to);
    };
    replace("<dialog-enhancer-ducking value=\"2\"/>", "<dialog-enhancer-duckin value=\"2\"/>");
    replace("<band_ieq frequency=\"47\" target=\"80\"/>",
            "<band_ieq frequency=\"47\"\n                          target=\"80\"/>");
    replace("<dialog-enhancer-amount value=\"8\"/>",
            "<dialog-enhancer-amount value=\"8\"/><dialog-enhancer-amount value=\"9\"/>");
    replace("<volmax-boost value=\"144\"/>",
            "<!-- \xF0\x9D\x84\x9E --><volmax-boost value=\"144\"/>");
    const Json made = analyse(text);
    ASSERT_TRUE(made.is_object());
    const int again = lineOf(text, "value=\"9\"");
    // clang-format off
    checkHovers(text, made["index"], {
        {"a misspelt element", lineOf(text, "duckin"), "duckin", 0,
         {"is not read: no parameter has this name"}, {"feeds"}},
        {"an attribute on the tag's second line", 56, "\"80\"", 1, {"target: 5 dB (80)"},
         {"ieq_frequency"}},
        {"its frequency on the first", 55, "frequency", 1, {"frequency: 47"}, {"ieq_target"}},
        {"a value written again", again, "value=\"8\"", 1,
         {"`dea` 9", "written again from line " + std::to_string(again)}, {}},
        // Two UTF-16 units in four bytes before it: a cursor counted in bytes is in the comment.
        {"after a character of two units", lineOf(text, "\xF0"), "volmax-boost", 0, {"`vmb` 144"},
         {}},
    });
    // clang-format on
}

// Positions compare as the protocol orders them: by line, then character.
bool before(const Json& a, const Json& b) {
    return std::pair(a["line"].get<int>(), a["character"].get<int>()) <=
           std::pair(b["line"].get<int>(), b["character"].get<int>());
}

// The text a range covers.
std::string textOf(const std::string& text, const Json& range) {
    const LspText lines(text);
    const size_t begin = lines.offset(range["start"]["line"], range["start"]["character"]);
    const size_t end = lines.offset(range["end"]["line"], range["end"]["character"]);
    EXPECT_NE(end, std::string::npos);
    return text.substr(begin, end - begin);
}

// Each symbol's range lies in its holder's and after its elder sibling's, and names its element.
void checkRanges(const std::string& text, const Json& symbols, const Json* holder,
                 std::map<int, int>* kinds) {
    const Json* previous = nullptr;
    for (const Json& symbol : symbols) {
        SCOPED_TRACE(symbol["name"].get<std::string>());
        const Json& range = symbol["range"];
        (*kinds)[symbol["kind"].get<int>()]++;
        EXPECT_TRUE(before(range["start"], symbol["selectionRange"]["start"]));
        EXPECT_TRUE(before(symbol["selectionRange"]["end"], range["end"]));
        if (holder != nullptr) {
            EXPECT_TRUE(before((*holder)["start"], range["start"]));
            EXPECT_TRUE(before(range["end"], (*holder)["end"]));
        }
        if (previous != nullptr) {
            EXPECT_TRUE(before((*previous)["end"], range["start"]));
        }
        previous = &range;
        const std::string element = textOf(text, symbol["selectionRange"]);
        const std::string whole = textOf(text, range);
        EXPECT_EQ(whole.rfind("<" + element, 0), 0u) << whole.substr(0, 40);
        const auto endsWith = [&whole](const std::string& end) {
            return whole.size() >= end.size() &&
                   whole.compare(whole.size() - end.size(), end.size(), end) == 0;
        };
        EXPECT_TRUE(endsWith("/>") || endsWith("</" + element + ">"))
            << whole.substr(whole.size() > 40 ? whole.size() - 40 : 0);
        checkRanges(text, symbol["children"], &range, kinds);
    }
}

// One analysis of the example: its hovers say what they feed, its outline holds its records.
TEST(HoverTest, ExampleHoversSayWhatTheyFeedAndItsOutlineHoldsItsRecords) {
    const std::string text = test::fileText(ExampleFile::path());
    const Json made = analyse(text);
    ASSERT_TRUE(made.is_object());
    // Lines read by hand from the example; values as explain shows them.
    // clang-format off
    checkHovers(text, made["index"], {
        {"a simple parameter", 387, "dialog-enhancer-amount", 3,
         {"`dea` 8", "dialog_enhancer_amount of speaker endpoint of profile 1",
          "profile 1 \"movie\": speaker"},
         // The steering rule wrote mdee for the whole endpoint, not from this element.
         {"a2dp", "`mdee`"}},
        {"the same element's attribute", 387, "value=", 2, {"`dea` 8"}, {}},
        {"a band's frequency", 55, "frequency", 1,
         {"`iebs` band 1 (47 Hz) frequency: 47", "ieq_frequency of IEQ preset 1",
          "profile 1 \"movie\": speaker, a2dp, usb"}, {"target"}},
        {"the band's target", 55, "\"80\"", 1,
         {"`iebs` band 1 (47 Hz) target: 5 dB (80)", "ieq_target"}, {"ieq_frequency"}},
        {"the band element: both", 55, "band_ieq", 0, {"ieq_frequency", "ieq_target"}, {}},
        {"a mix matrix row", 697, "<l ", 1,
         {"`dom` matrix 1 (layout 15) row 1 left: 1.0000 (16384)", "row 1 right: 0.0000 (0)",
          "loader rule: the speaker tuning's mix matrix", "profile 0 \"dynamic\": speaker"}, {}},
        {"a global setting", 23, "orbex_game_system_gain", 4, {"global setting"}, {}},
        {"a tuning's own element", 682, "<tuning", 2, {}, {}},
        {"indentation", 387, "<dialog-enhancer-amount", -2, {}, {}},
        {"past the tag's end", 387, "/>", 2, {}, {}},
        {"a comment", 3, "Example", 2, {}, {}},
        {"an end tag", 75, "</ieq>", 3, {}, {}},
    });
    // clang-format on
    const auto [line, character] = cursor(text, 387, "/>", 2);
    for (const auto& [l, c] : std::vector<std::pair<int, int>>{
             {line, character + 1}, {line, 1000}, {-1, 0}, {100000, 0}, {line, -1}}) {
        EXPECT_TRUE(HoverIndex::at(made["index"], text, l, c).is_null()) << l << ":" << c;
    }
    // An index that is not one answers nothing rather than failing, whatever it refers to.
    const Json texts = {"dialog-enhancer-amount", ""};
    const Json item = {387, 0, 1, {{1, 0, 1, 0, 1}, {0, 5, 2, 9, -1}}, {1, 2}};
    for (const Json& odd :
         {Json(), Json::array(), Json::array({1, {2, "x"}}), Json("text"),
          Json::array({texts, {{"x", 1}}, item}), Json::array({texts, Json::array(), item})}) {
        EXPECT_TRUE(HoverIndex::at(odd, text, line, 20).is_null()) << odd.dump();
    }
    // The outline: each symbol's range lies in its holder's and names its element.
    const Json& symbols = made["symbols"];
    std::map<int, int> kinds;
    checkRanges(text, symbols, nullptr, &kinds);
    // 5 IEQ and 5 GEQ presets, 5 profiles of 2 endpoints, 8 tunings of one device each.
    EXPECT_EQ(kinds, (std::map<int, int>{{2, 5}, {5, 8}, {10, 10}, {11, 10}, {23, 8}}));
    ASSERT_EQ(symbols.size(), 23u);
    EXPECT_EQ(symbols[1]["name"], "IEQ preset 1");
    EXPECT_EQ(symbols[1]["detail"], "\"detailed\"");
    EXPECT_EQ(symbols[1]["range"]["start"]["line"], 51);
    EXPECT_EQ(symbols[1]["range"]["end"]["line"], 76);
    EXPECT_EQ(symbols[5]["name"], "GEQ preset of profile 0");
    const Json& movie = symbols[11];
    EXPECT_EQ(movie["name"], "profile 1 \"movie\"");
    ASSERT_EQ(movie["children"].size(), 2u);
    EXPECT_EQ(movie["children"][1]["name"], "headphone endpoint of profile 1");
    EXPECT_EQ(movie["children"][1]["range"]["start"]["line"], 411);
    const Json& tuning = symbols[15];
    EXPECT_EQ(tuning["name"], "tuning \"speaker_stereo\"");
    ASSERT_EQ(tuning["children"].size(), 1u);
    EXPECT_EQ(tuning["children"][0]["name"], "tuning device \"\"");
    EXPECT_EQ(tuning["children"][0]["detail"], "port internal_speaker");
}

// The markup at an offset with the elements open around it, and an element's or comment's extent
// from a line the library reports.
TEST(TagTextTest, FindsTagsWhereTheEditorCountsThem) {
    const std::string text =
        "\xC3\xA9\xF0\x9D\x84\x9E<a x=\"1\" y='>'>\n"
        "<a>\n<!-- <a> </a> -->\n<b\n  z=\"2\"/></a>\n</a> tail <c d=\"";
    const TagText tags(text);
    struct Case {
        size_t offset;
        Tag::Kind kind;
        const char* tag;        // "" in text
        const char* attribute;  // the one whose name or value holds the offset
        std::vector<std::string> open;
    } const kCases[] = {
        // clang-format off
        {6, Tag::Kind::kStart, "", "", {}},  // at the '<': still text
        {7, Tag::Kind::kStart, "a", "", {}},  {9, Tag::Kind::kStart, "a", "x", {}},
        {13, Tag::Kind::kStart, "a", "x", {}}, {14, Tag::Kind::kStart, "a", "", {}},
        {15, Tag::Kind::kStart, "a", "y", {}}, {20, Tag::Kind::kStart, "a", "", {}},
        {21, Tag::Kind::kStart, "", "", {"a"}}, {23, Tag::Kind::kStart, "a", "", {"a"}},
        {30, Tag::Kind::kOther, "", "", {"a", "a"}}, {38, Tag::Kind::kOther, "", "", {"a", "a"}},
        {45, Tag::Kind::kStart, "b", "", {"a", "a"}}, {49, Tag::Kind::kStart, "b", "z", {"a", "a"}},
        {text.find("</a> tail") + 1, Tag::Kind::kEnd, "a", "", {"a"}},
        {text.find(" tail"), Tag::Kind::kStart, "", "", {}},
        // A tag cut short by the text's end holds its end.
        {text.size(), Tag::Kind::kStart, "c", "", {}},
        // clang-format on
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.offset);
        std::vector<std::string> open;
        Tag tag;
        const bool found = tags.at(c.offset, &open, &tag);
        EXPECT_EQ(found, *c.tag != '\0' || c.kind == Tag::Kind::kOther);
        EXPECT_EQ(open, c.open);
        if (!found) {
            continue;
        }
        EXPECT_EQ(tag.kind, c.kind);
        EXPECT_EQ(tag.name, c.tag);
        std::string on;
        for (const Tag::Attribute& attribute : tag.attributes) {
            on = c.offset >= attribute.span.begin && c.offset < attribute.span.end ? attribute.name
                                                                                   : on;
        }
        EXPECT_EQ(on, c.attribute);
    }
    const auto bytes = [&text](TagSpan span) {
        return text.substr(span.begin, span.end - span.begin);
    };
    Tag tag;
    TagSpan extent;
    ASSERT_TRUE(tags.at(text.size(), nullptr, &tag));
    EXPECT_EQ(bytes(tag.attribute("d")->value), "");  // an unclosed value runs to the end
    // The outer <a> of line 2 ends at the last </a>, past the comment's and the inner one's.
    ASSERT_TRUE(tags.element(2, "a", &tag, &extent));
    EXPECT_EQ(bytes(extent), "<a>\n<!-- <a> </a> -->\n<b\n  z=\"2\"/></a>");
    // A start tag over two lines is found from either, with its attributes; an empty element
    // ends with its tag.
    for (long line : {4, 5}) {
        ASSERT_TRUE(tags.element(line, "b", &tag, &extent));
        EXPECT_EQ(bytes(extent), "<b\n  z=\"2\"/>");
        EXPECT_EQ(bytes(tag.attribute("z")->span), "z=\"2\"");
        EXPECT_EQ(bytes(tag.attribute("z")->value), "2");
    }
    ASSERT_TRUE(tags.comment(3, &extent));
    EXPECT_EQ(bytes(extent), "<!-- <a> </a> -->");
    EXPECT_FALSE(tags.comment(2, &extent));
    EXPECT_FALSE(tags.element(3, "b", &tag, &extent));
    EXPECT_FALSE(tags.element(2, "c", &tag, &extent));
    EXPECT_FALSE(tags.element(99, "a", &tag, &extent));
}

}  // namespace
}  // namespace korva::tool
