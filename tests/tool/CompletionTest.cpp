// Completion in a tuning file being typed: what is offered where the cursor stands, from the
// editor's text alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tools/load/ExampleFile.h"
#include "tools/lsp/Completion.h"
#include "tools/lsp/LspText.h"

namespace korva::tool {
namespace {

// The text with "|" where the cursor is, and the cursor's LSP position (LspTextTest holds the
// count of UTF-16 units to its own cases).
struct Typed {
    std::string text;
    int line = 0;
    int character = 0;
};

Typed typed(const std::string& marked) {
    const size_t at = marked.find('|');
    Typed t{marked.substr(0, at) + marked.substr(at + 1)};
    const Json position = LspText(t.text).position(at);
    t.line = position["line"];
    t.character = position["character"];
    return t;
}

std::vector<std::string> labels(const std::string& marked) {
    const Typed t = typed(marked);
    std::vector<std::string> out;
    for (const auto& item : Completion::items(t.text, t.line, t.character)) {
        out.push_back(item["label"].get<std::string>());
    }
    return out;
}

bool has(const std::vector<std::string>& all, const std::string& label) {
    return std::find(all.begin(), all.end(), label) != all.end();
}

const std::string kHead =
    "<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n"
    "  <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n";

TEST(CompletionTest, OffersWhatIsValidWhereTheCursorStands) {
    struct Case {
        const char* what;
        std::string text;
        std::vector<std::string> offered;
        std::vector<std::string> notOffered;
    };
    // Inside a profile's data, and inside a tuning's.
    const std::string profile = kHead + "  <profile id=\"0\" name=\"a\">\n    <data>\n      ";
    const std::string speaker = profile + "<endpoint_type id=\"speaker\">\n";
    const std::string tuning = kHead + "  <tuning>\n    <data>\n      ";
    // clang-format off
    const std::vector<Case> cases = {
        {"an empty file: the root", "<|", {"kvx_spatializer_tuning"}, {"profile"}},
        {"in the root: versions and records", kHead + "  <|",
         {"tool_version", "authorized_technologies", "preset", "profile", "tuning"},
         {"data", "volmax-boost", "band"}},
        {"in the root, a name begun", kHead + "  <pro|", {"profile"}, {}},
        {"in a profile's data: its parameters and endpoints", profile + "<|",
         {"endpoint_type", "headphone-virtualizer-mode", "ieq-enable"},
         {"include", "regulator-enable", "tuning"}},
        {"in an endpoint: the include and the endpoint's parameters",
         speaker + "        <include ieq_preset=\"0\"/>\n        <|",
         {"include", "volmax-boost", "dialog-enhancer-enable"},
         {"endpoint_type", "regulator-enable"}},
        {"a closed endpoint is left", speaker + "      </endpoint_type>\n      <|",
         {"endpoint_type"}, {"include"}},
        {"in a tuning: its bindings and data", kHead + "  <tuning name=\"t\">\n    <|",
         {"device_id", "data"}, {"volmax-boost"}},
        {"in a tuning's data: the tuning's parameters",
         kHead + "  <tuning name=\"t\">\n    <device_id id=\"\" endpoint_port=\"usb\"/>\n"
                 "    <data>\n      <|",
         {"regulator-enable", "output-mode", "audio-optimizer-bands"},
         {"endpoint_type", "volmax-boost"}},
        {"in a list parameter: its rows",
         kHead + "  <tuning name=\"t\">\n    <data>\n      <regulator-tuning>\n        <|",
         {"band"}, {"band_ieq"}},
        {"in a preset: its data, then its list",
         kHead + "  <preset id=\"0\" type=\"ieq\">\n    <data>\n      <|", {"ieq", "geq"},
         {"band_ieq"}},
        {"attributes of a record being typed", kHead + "  <tuning name=\"t\" |",
         {"endpoint_type", "mono_device", "orientation", "output_channels"}, {"name"}},
        {"attributes written after the cursor are not offered again",
         kHead + "  <tuning | name=\"t\" orientation=\"0\">", {"endpoint_type"},
         {"name", "orientation"}},
        {"attributes of a parameter", tuning + "<regulator-enable |", {"value"}, {}},
        {"a band's attributes", tuning + "<regulator-tuning>\n        <band frequency=\"4\" |",
         {"threshold_low", "threshold_high", "isolated_band"}, {"frequency"}},
        {"endpoint keywords", kHead + "  <tuning endpoint_type=\"|\"",
         {"speaker", "headphone", "other"}, {"true"}},
        {"port names", kHead + "  <tuning>\n    <device_id endpoint_port=\"u|\"",
         {"internal_speaker", "headphone", "bluetooth", "usb"}, {"speaker"}},
        {"booleans", kHead + "  <tuning mono_device='|'", {"true", "false"}, {}},
        {"preset types", kHead + "  <preset type=\"|\"", {"ieq", "geq"}, {}},
        {"a scalar parameter's value", tuning + "<regulator-enable value=\"|\"",
         {"true", "false"}, {}},
        {"after a tag left unfinished",
         kHead + "  <profile id=\"0\"\n  <tuning name=\"t\">\n    <|", {"device_id", "data"}, {}},
        {"inside a comment: nothing", kHead + "  <!-- <|", {}, {"profile", "tuning"}},
        // "é" is one UTF-16 unit in two bytes, "😀" two in four: a cursor counted in bytes would
        // land inside the comment or past the '<'.
        {"after characters of two and four bytes", kHead + "  <!-- é😀 -->  <|", {"profile"}, {}},
        {"inside a comment after them", kHead + "  <!-- é|😀 -->  <", {}, {"profile"}},
        {"after a comment that holds a tag", kHead + "  <!-- <tuning> -->\n  <|", {"profile"},
         {"device_id"}},
        {"in text between elements: nothing", kHead + "  tex|t", {}, {"profile"}},
        {"in a closing tag: nothing", kHead + "  </|", {}, {"profile"}},
        {"below an element outside the grammar: nothing", kHead + "  <unknown>\n    <|", {},
         {"profile", "data"}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::vector<std::string> offered = labels(c.text);
        for (const std::string& label : c.offered) {
            EXPECT_TRUE(has(offered, label)) << label;
        }
        for (const std::string& label : c.notOffered) {
            EXPECT_FALSE(has(offered, label)) << label;
        }
        if (c.offered.empty()) {
            EXPECT_TRUE(offered.empty());
        }
    }
}

TEST(CompletionTest, EveryElementOfTheExampleIsOfferedWhereItStands) {
    const std::string text = test::fileText(ExampleFile::path());
    std::istringstream lines(text);
    std::string line;
    int checked = 0;
    for (int number = 0; std::getline(lines, line); number++) {
        const size_t lt = line.find('<');
        if (lt == std::string::npos || !isalpha(static_cast<unsigned char>(line[lt + 1]))) {
            continue;
        }
        const std::string name = line.substr(lt + 1, line.find_first_of(" />", lt) - lt - 1);
        std::vector<std::string> offered;
        for (const auto& item : Completion::items(text, number, lt + 1)) {
            offered.push_back(item["label"]);
        }
        EXPECT_TRUE(has(offered, name)) << "line " << number + 1 << ": " << name;
        checked++;
    }
    EXPECT_GT(checked, 1000);
}

TEST(CompletionTest, ItemsCarryAKindAndTheGrammarsDocumentation) {
    const Typed t =
        typed(kHead + "  <tuning>\n    <data>\n      <regulator-tuning>\n        <band |");
    const auto items = Completion::items(t.text, t.line, t.character);
    ASSERT_FALSE(items.empty());
    for (const auto& item : items) {
        EXPECT_EQ(item["kind"], 10);  // Property
        // What the attribute fills and its unit, from the library's list layouts.
        if (item["label"] == "frequency") {
            EXPECT_NE(item["documentation"].get<std::string>().find("regulator_frequency, Hz"),
                      std::string::npos);
        }
    }
}

}  // namespace
}  // namespace korva::tool
