// The tool's own classes, where the end-to-end runs of tool_test.py do not reach: blobs the
// store's reader refuses, number texts at the int limits, answers cut to the caller's capacity,
// and wrapping that keeps every value.

#include <gtest/gtest.h>
#include <libxml/tree.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "engine/RecordingEffect.h"
#include "tools/commands/DiffCommand.h"
#include "tools/lint/UndoEdit.h"
#include "tools/load/ChildLoads.h"
#include "tools/load/StoreSession.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/HtmlWriter.h"
#include "tools/render/NumberText.h"
#include "tools/render/Printer.h"
#include "tools/render/SvgPlot.h"
#include "tools/render/TextTable.h"

namespace korva::tool {
namespace {

TEST(BlobDecoderTest, KeepsTheEntriesReadBeforeAFaultAndNamesOddOnesReadably) {
    // Header, three announced entries, the second cut short after its value count.
    const std::vector<int> words = {7, 3, 2, 0x616564, 1, 4, 8, 0x616564, 5, 1};
    const DecodedBlob blob = BlobDecoder::decode(words);
    EXPECT_FALSE(blob.valid);
    EXPECT_EQ(blob.words, words.size());
    ASSERT_EQ(blob.entries.size(), 1u);
    EXPECT_EQ(blob.entries[0].deviceId, 2);
    EXPECT_EQ(blob.entries[0].values, std::vector<int32_t>{4});
    EXPECT_FALSE(BlobDecoder::decode(std::vector<int>()).valid);
    // Unknown devices and odd codes are named readably.
    EXPECT_EQ(BlobDecoder::deviceName(0), "0x0");
    EXPECT_EQ(BlobDecoder::deviceName(0x400), "0x400");
    EXPECT_EQ(BlobDecoder::deviceName(0x8), "wired headphone");
    EXPECT_EQ(BlobDecoder::codeText(0x6d6f64), "dom");
    EXPECT_EQ(BlobDecoder::codeText(0), "");
    EXPECT_EQ(BlobDecoder::codeText(0x0a61), "a?");
}

TEST(NumberTextTest, WholeNumbersAreWhatTheReaderReadsCompletely) {
    const struct {
        const char* text;
        bool whole;
    } kInts[] = {{"-7", true},           {"+5", true},          {"  12  ", true},
                 {"2147483647", true},   {"-2147483648", true}, {"2147483648", false},
                 {"-2147483649", false}, {"", false},           {"-", false},
                 {"0x10", false},        {"1 2", false},        {"1,", false}},
      kLists[] = {{"1,2,3", true}, {"1 2 3", true}, {"1, 2, 3,", true}, {"", true},
                  {"1,,2", false}, {",1", false},   {"1;2", false},     {"1.5,2", false}};
    for (const auto& c : kInts) {
        EXPECT_EQ(NumberText::isWholeInt(c.text), c.whole) << '"' << c.text << '"';
    }
    for (const auto& c : kLists) {
        EXPECT_EQ(NumberText::isWholeIntList(c.text), c.whole) << '"' << c.text << '"';
    }
}

TEST(RecordingEffectTest, KeepingWhatItIsSentAnswersWithinTheCapacityAndRecordsEveryCall) {
    constexpr int kDom = 0x6d6f64;
    RecordingEffect effect;
    effect.setKeepsSent(true);
    const int sent[] = {1, 2, 3, 4};
    EXPECT_EQ(effect.setParam(0x2, kDom, sent, 4), 0);
    int small[2] = {};
    int count = 2;
    EXPECT_EQ(effect.getParam(0x2, kDom, small, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::vector<int>(small, small + 2), (std::vector<int>{1, 2}));
    EXPECT_EQ(effect.getParamSize(0x2, kDom), 4);
    // What was never sent fails and leaves the caller's count and buffer alone.
    int buffer[4] = {9, 9, 9, 9};
    count = 4;
    EXPECT_EQ(effect.getParam(0x8, kDom, buffer, &count), -22);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(buffer[0], 9);
    effect.commit(0x40000000);

    const std::vector<EffectCall> calls = effect.takeCalls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].kind, EffectCall::kSetParam);
    EXPECT_EQ(calls[0].values, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(calls[1].kind, EffectCall::kGetParam);
    EXPECT_EQ(calls[2].result, -22);
    EXPECT_EQ(calls[3].kind, EffectCall::kCommit);
    EXPECT_TRUE(effect.takeCalls().empty());
}

// A child here answers each text it is sent with the text and its own process; "fail" is
// answered with nothing, "end" ends the child with a failure.
int echoWork(size_t index, int parent) {
    std::string text;
    while (ChildLoads::receive(parent, &text) && text != "end") {
        const Json answer = {{"text", text}, {"index", index}, {"pid", getpid()}};
        if (!(text == "fail" ? ChildLoads::send(parent, std::string())
                             : ChildLoads::send(parent, answer))) {
            return kExitError;
        }
    }
    return text == "end" ? kExitError : kExitOk;
}

// More texts than children: each answer comes back in its text's place, from child i % count,
// and a failed one is null without holding up the others.
TEST(ChildLoadsTest, AsksEveryChildInTurnAndAnswersInOrder) {
    std::unique_ptr<ChildLoads> loads = ChildLoads::start({"a", "b"}, echoWork);
    ASSERT_NE(nullptr, loads);
    const std::vector<std::string> texts = {"a", "fail", std::string(300000, 'x'), "d", "e"};
    const std::vector<Json> answers = loads->ask(texts);
    ASSERT_EQ(texts.size(), answers.size());
    std::set<int> pids;
    for (size_t i = 0; i < texts.size(); i++) {
        SCOPED_TRACE(i);
        if (texts[i] == "fail") {
            EXPECT_TRUE(answers[i].is_null());
            continue;
        }
        ASSERT_TRUE(answers[i].is_object());
        EXPECT_EQ(texts[i], answers[i]["text"].get<std::string>());
        EXPECT_EQ(i % 2, answers[i]["index"].get<size_t>());
        EXPECT_NE(getpid(), answers[i]["pid"].get<int>());
        pids.insert(answers[i]["pid"].get<int>());
    }
    EXPECT_EQ(2u, pids.size());
    // Closing the pipes ends children waiting for a text; a child's failure is the status.
    EXPECT_EQ(kExitOk, loads->finish());
    loads = ChildLoads::start({"c"}, echoWork);
    ASSERT_NE(nullptr, loads);
    EXPECT_TRUE(loads->ask({"end"}).front().is_null());
    EXPECT_EQ(kExitError, loads->finish());
    // One work in a child of its own.
    const Json made = ChildLoads::one("x", [](Json* document) {
        *document = {{"pid", getpid()}};
        return kExitOk;
    });
    ASSERT_TRUE(made.is_object());
    EXPECT_NE(getpid(), made["pid"].get<int>());
    EXPECT_TRUE(ChildLoads::one("x", [](Json*) { return kExitError; }).is_null());
}

TEST(TextTableTest, LastColumnWrapsUnderItselfWithinTheWidth) {
    TextTable table({"name", "values"});
    std::string values;
    for (int i = 0; i < 60; i++) {
        values += (i == 0 ? "" : " ") + std::to_string(1000 + i);
    }
    table.addRow({"gebs", values});
    std::istringstream out(table.render("", 40));
    std::string line;
    std::getline(out, line);
    EXPECT_EQ(line, "name  values");
    std::string rejoined;
    int lines = 0;
    for (; std::getline(out, line); lines++) {
        EXPECT_LE(line.size(), 40u) << line;
        EXPECT_NE(line.back(), ' ');
        EXPECT_EQ(line.find_first_not_of(' '), lines == 0 ? 0u : 6u) << line;
        rejoined += lines == 0 ? line : " " + line.substr(6);
    }
    EXPECT_GT(lines, 2);
    EXPECT_EQ(rejoined, "gebs  " + values);
    // A word longer than the room stays whole on a line of its own.
    TextTable narrow({"", ""});
    narrow.addRow({"k", "a " + std::string(50, 'x') + " b"});
    EXPECT_EQ(narrow.render("", 30), "k  a\n   " + std::string(50, 'x') + "\n   b\n");
    // A name longer than the room breaks after an underscore.
    EXPECT_EQ(
        TextTable::wrap("a dynamic_speaker_optimization_speaker_interval b", 24),
        (std::vector<std::string>{"a", "dynamic_speaker_", "optimization_speaker_", "interval b"}));
    // Columns that leave the last too little room push it below them, indented; a last column
    // that fits in what is left stays on its row.
    TextTable wide({"", ""});
    wide.addRow({std::string(50, 'n'), "1 2 3 4 5 6 7 8 9"});
    EXPECT_EQ(wide.render("  ", 60), "  " + std::string(50, 'n') + "\n      1 2 3 4 5 6 7 8 9\n");
    TextTable fits({"", ""});
    fits.addRow({std::string(50, 'n'), "1 2 3"});
    EXPECT_EQ(fits.render("  ", 60), "  " + std::string(50, 'n') + "  1 2 3\n");
    // A path the user gave stays on its row, whole, whatever its blanks and length.
    TextTable facts({"", ""});
    const std::string path = "/home/a user/" + std::string(70, 'p') + "/my tuning.xml";
    facts.addPathRow({"tuning file", path});
    facts.addRow({"properties", "none"});
    EXPECT_EQ(facts.render(), "tuning file  " + path + "\nproperties   none\n");
}

// One content written once: the text printer's shape, and the JSON printer's document.
void writeContent(Printer& out) {
    out.path("file", "tuning file", "/a b/c.xml");
    out.field("gain", "game gain", 3, "3 dB");
    out.field("tool_version", "");
    {
        const auto records = out.list("records", "records");
        for (int id : {1, 2}) {
            const auto record = out.object("", "record " + std::to_string(id));
            out.field("values", "values", std::vector<int>{id, 10 * id});
            out.text("only text");
            out.json("only_json", true);
        }
    }
    Printer::Table table{{{"count", "count", true}, {"code", "code"}}, {}};
    table.addRow({1, "dea"});
    table.addRow({41, "gebs"});
    out.table("entries", table);
    out.table("none", Printer::Table{{{"x", "x"}}, {}}, "nothing");
}

TEST(PrinterTest, OneContentGivesAlignedTextAndOneJsonDocument) {
    const auto text = Printer::make(false);
    writeContent(*text);
    EXPECT_EQ(text->render(),
              "tuning file   /a b/c.xml\n"
              "game gain     3 dB\n"
              "tool version  \"\"\n"
              "\nrecords\n"
              "  record 1\n"
              "    values  1 10\n"
              "    only text\n"
              "  record 2\n"
              "    values  2 20\n"
              "    only text\n"
              "count  code\n"
              "    1  dea\n"
              "   41  gebs\n"
              "\nnothing\n"
              "  (none)\n");
    const auto json = Printer::make(true);
    writeContent(*json);
    EXPECT_EQ(Json::parse(json->render()),
              Json::parse(R"({"file": "/a b/c.xml", "gain": 3, "tool_version": "",
                  "records": [{"values": [1, 10], "only_json": true},
                              {"values": [2, 20], "only_json": true}],
                  "entries": [{"count": 1, "code": "dea"}, {"count": 41, "code": "gebs"}],
                  "none": []})"));
    // Text that is not UTF-8 is replaced, never refused.
    const auto odd = Printer::make(true);
    odd->field("name", "name", std::string("a\xff"));
    EXPECT_NE(odd->render().find("a\xef\xbf\xbd"), std::string::npos);
    // Long text lines wrap within 80 columns, continuing further in.
    const auto wrapped = Printer::make(false);
    const auto scope = wrapped->object("", "title");
    wrapped->text(std::string(50, 'a') + " " + std::string(50, 'b'));
    EXPECT_EQ(wrapped->render(),
              "title\n  " + std::string(50, 'a') + "\n    " + std::string(50, 'b') + "\n");
}

// Fields and columns meant for one format, a placed item, and a table whose line cells link.
void writePartial(Printer& out) {
    const auto item = out.placed("f.xml", 65535, true, "warning: <a> & b");
    out.field("rule", "", "R1");
    out.field("", "shown", Json(), "to people");
    Printer::Table table{{{"where", "where"},
                          {"", "line", false, "line"},
                          {"old", ""},
                          {"old_text", "old", false, "old"}},
                         {}};
    table.addRow({"band 1", 12, 3, "3 dB"});
    table.addRow({"band 2", "4/5", Json(Json::value_t::discarded), "-"});
    // A row that brings its own JSON object.
    table.addRow({"band 3", 7, 1, "x"}, {{"as", "given"}});
    out.table("values", table);
}

TEST(PrinterTest, EachFormatShowsOnlyWhatIsMeantForIt) {
    const auto text = Printer::make(false);
    writePartial(*text);
    EXPECT_EQ(text->render(),
              "f.xml:65535+: warning: <a> & b\n"
              "  shown  to people\n"
              "  where   line  old\n"
              "  band 1  12    3 dB\n"
              "  band 2  4/5   -\n"
              "  band 3  7     x\n");
    const auto json = Printer::make(true);
    writePartial(*json);
    EXPECT_EQ(Json::parse(json->render()), Json::parse(R"({"": {"line": 65535, "at_least": true,
        "rule": "R1", "values": [{"where": "band 1", "old": 3, "old_text": "3 dB"},
                                 {"where": "band 2", "old_text": "-"}, {"as": "given"}]}})"));
    const auto html =
        Printer::make(Printer::Format::kHtml, [](long line) { return "L" + std::to_string(line); });
    writePartial(*html);
    EXPECT_EQ(html->render(),
              "<div>\n<p class=\"title\"><a href=\"#L65535\">line 65535</a> or later: "
              "<span class=\"warning\">warning</span>: "
              "&lt;a&gt; &amp; b</p>\n"
              "<table class=\"fields\"><tr><th>shown</th><td>to people</td></tr></table>\n"
              "<table class=\"values\"><tr><th>where</th><th>line</th><th>old</th></tr>\n"
              "<tr><td>band 1</td><td class=\"line\"><a href=\"#L12\">line 12</a></td>"
              "<td class=\"old\">3 dB</td></tr>\n"
              "<tr><td>band 2</td><td class=\"line\">4/5</td><td class=\"old\">-</td></tr>\n"
              "<tr><td>band 3</td><td class=\"line\"><a href=\"#L7\">line 7</a></td>"
              "<td class=\"old\">x</td></tr>\n"
              "</table>\n</div>\n");
}

// A profile blob of plain entries (a code no layout reads), each a device, its words and where.
LoadedBlob plainBlob(int id, const std::vector<std::pair<int, std::vector<int>>>& entries) {
    LoadedBlob blob;
    blob.id = id;
    for (const auto& [device, values] : entries) {
        blob.entries.push_back(
            {device, 0x7a7a7a7a, values, "line " + std::to_string(device), 0, "", {}});
    }
    return blob;
}

TEST(DifferencesTest, PairsEntriesByOccurrenceAndPassesOverBlobsKnownAlike) {
    LoadedFile a;
    LoadedFile b;
    // The second occurrence of device 1 changes one word; device 2 goes, device 3 comes.
    a.blobs = {plainBlob(0, {{1, {5, 6}}, {1, {7, 8}}, {2, {9}}}), plainBlob(1, {{1, {1}}}),
               plainBlob(2, {{1, {1}}}), plainBlob(3, {{1, {1}}}), plainBlob(4, {{1, {1}}})};
    b.blobs = {plainBlob(0, {{1, {5, 6}}, {1, {7, 9}}, {3, {4}}}), plainBlob(1, {{1, {2}}}),
               plainBlob(4, {{1, {1, 2}}}), plainBlob(5, {{1, {1}}, {2, {2}}})};
    // Blob 1 differs, but a says it is alike in b: only its identity came.
    a.blobs[1].entries.clear();
    a.blobs[1].same = true;
    a.store.ports = {{"usb", "dac", "dac"}};
    b.store.ports = {{"usb", "dac other", "dac"}};
    a.store.mixMatrices["dac"].words = {1, 2, 3};
    b.store.mixMatrices["dac"].words = {1, 2};
    const Differences differences = DiffCommand::compare(a, b);

    std::vector<std::string> blobs;
    for (const Differences::Blob& blob : differences.blobs) {
        blobs.push_back(blob.change + " " + std::to_string(blob.count));
    }
    EXPECT_EQ(blobs, (std::vector<std::string>{"changed 3", "removed 1", "removed 1", "changed 1",
                                               "added 2"}));
    const std::vector<Differences::Entry>& entries = differences.blobs[0].entries;
    ASSERT_EQ(entries.size(), 3u);
    ASSERT_TRUE(entries[0].a && entries[0].b && entries[0].values);
    EXPECT_EQ(entries[0].a->values, (std::vector<int>{7, 8}));
    ASSERT_EQ(entries[0].values->size(), 1u);
    EXPECT_EQ((*entries[0].values)[0].index, 1u);
    EXPECT_EQ((*entries[0].values)[0].where, "value 2");
    // An entry only one side has comes with that side alone.
    EXPECT_TRUE(entries[1].a && !entries[1].b && entries[1].deviceId == 2);
    EXPECT_TRUE(!entries[2].a && entries[2].b && entries[2].deviceId == 3);
    // Of two lengths, an entry has no values by place.
    const Differences::Entry& longer = differences.blobs[3].entries.at(0);
    EXPECT_TRUE(longer.a && longer.b && !longer.values);
    std::vector<std::string> store;
    for (const Differences::StoreChange& change : differences.store) {
        store.push_back(change.what + ": " + change.a + " -> " + change.b);
    }
    EXPECT_EQ(store, (std::vector<std::string>{"tuning devices of usb: dac -> dac other",
                                               "mix matrix of \"dac\": 1 2 3 -> 1 2"}));
    EXPECT_TRUE(DiffCommand::compare(b, b).empty());

    // JSON keeps diff --json's shape: an entry's values hold both words, store changes name
    // the tuning device.
    const Json document = Printer::document([&](Printer& out) { differences.print(out, "a", "b"); });
    EXPECT_EQ(document["differences"][0]["entries"][0]["values"][0],
              Json::parse(R"({"index": 1, "where": "value 2", "old": 8, "new": 9,
                              "old_text": "8", "new_text": "9"})"));
    EXPECT_EQ(document["differences"][1], Json::parse(R"({"blob": "profile 2 \"\"", "change":
                                                         "removed", "entries": 1})"));
    EXPECT_EQ(document["store"][1]["tuning_device"], "dac");
}

TEST(HtmlWriterTest, TextCannotBreakOutOfItsElementOrAttribute) {
    EXPECT_EQ(HtmlWriter::escape("<a href=\"x\">'&'</a>"),
              "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;&lt;/a&gt;");
    HtmlWriter html;
    html.element("td", "</td><script>", {{"title", "\"><b>"}});
    EXPECT_EQ(html.str(), "<td title=\"&quot;&gt;&lt;b&gt;\">&lt;/td&gt;&lt;script&gt;</td>\n");
}

TEST(SvgPlotTest, AxesAreLogarithmicInFrequencyAndRoundInValue) {
    EXPECT_DOUBLE_EQ(SvgPlot::logPosition(20, 20, 20000, 300), 0);
    EXPECT_DOUBLE_EQ(SvgPlot::logPosition(200, 20, 20000, 300), 100);
    EXPECT_DOUBLE_EQ(SvgPlot::logPosition(20000, 20, 20000, 300), 300);
    const struct {
        double lo, hi;
        std::vector<double> ticks;
    } kCases[] = {{-10, 12.5, {-10, -5, 0, 5, 10, 15}},
                  {0, 2, {0, 0.5, 1, 1.5, 2}},
                  {3, 3, {2, 2.5, 3, 3.5, 4}},
                  {-0.3, 0.2, {-0.3, -0.2, -0.1, 0, 0.1, 0.2}}};
    for (const auto& c : kCases) {
        const std::vector<double> ticks = SvgPlot::niceTicks(c.lo, c.hi);
        ASSERT_EQ(ticks.size(), c.ticks.size()) << c.lo << ".." << c.hi;
        for (size_t i = 0; i < ticks.size(); i++) {
            EXPECT_NEAR(ticks[i], c.ticks[i], 1e-9) << c.lo << ".." << c.hi;
        }
    }
}

// Every number following `key="` in the markup.
std::vector<double> attributeValues(const std::string& svg, const std::string& key) {
    std::vector<double> values;
    for (size_t at = svg.find(key + "=\""); at != std::string::npos;
         at = svg.find(key + "=\"", at + 1)) {
        values.push_back(std::stod(svg.substr(at + key.size() + 2)));
    }
    return values;
}

TEST(SvgPlotTest, LongTitlesWrapAndLegendsSitBelowTheCurves) {
    std::string title = "speaker aobs:";
    for (int i = 0; i < 6; i++) {
        title += " audio_optimizer_gain_l, audio_optimizer_gain_r";
    }
    SvgPlot plot(title, "dB");
    for (const char* name : {"target A", "target B", "gain A", "gain B", "gain_l A", "gain_r B"}) {
        plot.add({name, {{20, -12}, {1000, 0}, {20000, 12}}, "#111", false});
    }
    const std::string svg = plot.render(400);
    size_t titleLines = 0;
    size_t written = 0;
    for (size_t at = svg.find("class=\"title\""); at != std::string::npos;
         at = svg.find("class=\"title\"", at + 1)) {
        const size_t text = svg.find('>', at) + 1;
        const size_t length = svg.find('<', text) - text;
        EXPECT_LE(length * 7, 400u - 8);
        written += std::count_if(svg.begin() + text, svg.begin() + text + length,
                                 [](char c) { return c != ' '; });
        titleLines++;
    }
    EXPECT_GT(titleLines, 1u);
    EXPECT_EQ(written, title.size() - std::count(title.begin(), title.end(), ' '));
    // Every legend entry lies below the lowest point of any curve and inside the picture.
    const std::vector<double> points = attributeValues(svg, "cy");
    const double lowest = *std::max_element(points.begin(), points.end());
    const double height = attributeValues(svg, "height").front();
    size_t legends = 0;
    for (size_t at = svg.find("class=\"legend\""); at != std::string::npos;
         at = svg.find("class=\"legend\"", at + 1), legends++) {
        const double y = std::stod(svg.substr(svg.find("y=\"", at) + 3));
        EXPECT_GT(y - 10, lowest);
        EXPECT_LE(y, height);
    }
    EXPECT_EQ(legends, 6u);
}

TEST(SvgPlotTest, CurvesLeaveOutWhatTheAxisCannotShowAndHeatMapsColourBySign) {
    SvgPlot plot("t", "dB");
    plot.add({"bad", {{0, 1}, {-5, 2}}, "#000", false});
    EXPECT_TRUE(plot.empty());
    plot.add({"gain", {{47, -1.5}, {1000, 0}, {19688, 3}}, "#111", true});
    const std::string svg = plot.render();
    EXPECT_EQ(svg.find("data-series=\"bad\""), std::string::npos);
    const size_t path = svg.find("data-series=\"gain\" d=\"M");
    ASSERT_NE(path, std::string::npos);
    EXPECT_NE(svg.find("stroke-dasharray", path), std::string::npos);
    const std::string map =
        SvgPlot::heatMap("m", {{1.0, -0.5}, {0, 2}}, {"in 1", "in 2"}, {"left", "right"});
    // Full red at +1, half blue at -0.5, white at 0, clipped to full red above the scale.
    for (const char* fill : {"#ff0000", "#8080ff", "#ffffff"}) {
        EXPECT_NE(map.find(std::string("fill=\"") + fill + "\""), std::string::npos) << fill;
    }
    EXPECT_NE(map.find(">-0.500<"), std::string::npos);
    // A title wider than the cells widens the picture.
    const std::string title = "B: mix matrix matrix 2 (layout 11)";
    EXPECT_GE(
        attributeValues(SvgPlot::heatMap(title, {{1, 0}}, {"<l>"}, {"left", "right"}), "width")
            .front(),
        title.size() * 7);
}

// One load of a small file whose document the library hands out, shared by the undo cases: the
// store is a process singleton, so the file is loaded once.
class UndoEditTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        // Each case runs in a process of its own, maybe beside the other: a file of its own.
        const std::string path =
            testing::TempDir() + "undo-edit-" + std::to_string(getpid()) + ".xml";
        std::ofstream(path) << "<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n"
                               "    <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n"
                               "    <profile id=\"0\" name=\"p\">\n        <data>\n"
                               "            <endpoint_type id=\"speaker\"><!-- note -->\n"
                               "                <include ieq_preset=\"2\"/>\n"
                               "                <dialog-enhancer-amount vaule=\"4\"/>\n"
                               "            </endpoint_type>\n        </data>\n    </profile>\n"
                               "</kvx_spatializer_tuning>\n";
        sSession = StoreSession::open(path, {}, false, true).release();
        std::remove(path.c_str());
    }

    static const LoadReport& report() { return sSession->report(); }

    // The reported node: the comment for "", else the element of that name.
    static int node(const std::string& name) {
        for (size_t i = 0; i < report().nodes.size(); i++) {
            const ReportedNode& at = report().nodes[i];
            if (name.empty() ? at.isComment : at.isElement && at.name == name) {
                return static_cast<int>(i);
            }
        }
        ADD_FAILURE() << "no reported node " << name;
        return -1;
    }

    static std::string document() {
        xmlChar* bytes = nullptr;
        int size = 0;
        xmlDocDumpMemory(report().document.get(), &bytes, &size);
        const std::string text(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
        xmlFree(bytes);
        return text;
    }

    static StoreSession* sSession;
};

StoreSession* UndoEditTest::sSession = nullptr;

TEST_F(UndoEditTest, EachEditIsMadeInTheCopyAndTakenBackAfterward) {
    using Action = Undo::Action;
    ASSERT_NE(sSession, nullptr);
    ASSERT_NE(report().document, nullptr);
    const std::string original = document();
    const struct {
        Undo undo;
        std::string made;    // in the edited text
        std::string unmade;  // no longer in it
        std::string described;
        Json shown;  // more of its JSON: the tag an edit leaves is the start tag of an element
    } cases[] = {
        // clang-format off
        {{Action::kRemove, node("")}, "\"speaker\">\n", "<!-- note -->",
         "remove the comment on line 6", Json::object()},
        {{Action::kMoveBefore, node("include"), "", "", node("")},
         "\"speaker\"><include ieq_preset=\"2\"/><!-- note -->", "",
         "move <include> on line 7 before line 6",
         {{"moves", "<include ieq_preset=\"2\"/>"}, {"before_line", 6}}},
        {{Action::kRename, node("dialog-enhancer-amount"), "", "dea"}, "<dea vaule=\"4\"/>",
         "<dialog-enhancer-amount", "rename <dialog-enhancer-amount> on line 8 to <dea>",
         Json::object()},
        {{Action::kRename, node("dialog-enhancer-amount"), "vaule", "value"},
         "<dialog-enhancer-amount value=\"4\"/>", "vaule",
         "rename attribute \"vaule\" of <dialog-enhancer-amount> on line 8 to \"value\"",
         Json::object()},
        {{Action::kReplace, node("endpoint_type"), "id", "headphone"},
         "<endpoint_type id=\"headphone\">", "\"speaker\"",
         "set id of <endpoint_type> on line 6 to \"headphone\"",
         {{"becomes", "<endpoint_type id=\"headphone\">"}}},
        {{Action::kRemoveAttribute, node("include"), "ieq_preset"}, "<include/>", "ieq_preset",
         "remove attribute \"ieq_preset\" of <include> on line 7",
         {{"becomes", "<include/>"}, {"removes", "ieq_preset"}}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.described);
        std::string text;
        std::string why;
        ASSERT_TRUE(UndoEdit::apply(report(), {c.undo}, &text, &why)) << why;
        EXPECT_NE(text.find(c.made), std::string::npos) << text;
        if (!c.unmade.empty()) {
            EXPECT_EQ(text.find(c.unmade), std::string::npos) << text;
        }
        const Json json = UndoEdit::toJson(report(), c.undo);
        EXPECT_EQ(json["description"], c.described);
        for (const auto& [key, value] : c.shown.items()) {
            EXPECT_EQ(json[key], value) << key;
        }
        EXPECT_EQ(document(), original);
    }
    // Edits of two nodes at once, and an edit that cannot be made, which leaves no edit behind.
    std::string text;
    std::string why;
    ASSERT_TRUE(
        UndoEdit::apply(report(),
                        {{Action::kRemove, node("")},
                         {Action::kRename, node("dialog-enhancer-amount"), "vaule", "value"}},
                        &text, &why));
    EXPECT_EQ(text.find("<!--"), std::string::npos);
    EXPECT_NE(text.find("value=\"4\""), std::string::npos);
    EXPECT_FALSE(UndoEdit::apply(
        report(), {{Action::kRemove, node("")}, {Action::kRename, node("include"), "absent", "x"}},
        &text, &why));
    EXPECT_EQ(why, "the edit could not be made on the copy");
    EXPECT_EQ(document(), original);
}

}  // namespace
}  // namespace korva::tool
