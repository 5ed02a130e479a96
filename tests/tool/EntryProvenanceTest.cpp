// Where the entries of the bundled example's blobs come from, checked against lines read by hand
// from examples/kvx-default-spatializer.xml, and the units the list layouts give their words.
// The example is loaded once: a process holds one parameter store.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/OutputDevice.h"
#include "tools/load/EntryProvenance.h"
#include "tools/load/ExampleFile.h"
#include "tools/load/LoadedFile.h"
#include "tools/load/StoreSession.h"
#include "tools/render/EntryView.h"

namespace korva::tool {
namespace {

class ExampleProvenanceTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        sSession = StoreSession::open(ExampleFile::path());
        sFile = sSession != nullptr ? LoadedFile::of(*sSession) : LoadedFile();
    }

    static const LoadedBlob* movie() { return sFile.find(LoadedBlob::Kind::kProfile, 1); }

    // The entry of a blob with the device and code; fails the test when there is none.
    static LoadedEntry entry(const LoadedBlob* blob, int device, const char* code) {
        for (size_t i = 0; blob != nullptr && i < blob->entries.size(); i++) {
            const LoadedEntry& entry = blob->entries[i];
            if (entry.deviceId == device && entry.code == vexParameterCode(code)) {
                EXPECT_EQ(entry.entry, i);
                return entry;
            }
        }
        ADD_FAILURE() << "no entry " << code << " for device " << device;
        return {};
    }

    static std::unique_ptr<StoreSession> sSession;
    static LoadedFile sFile;
};

std::unique_ptr<StoreSession> ExampleProvenanceTest::sSession;
LoadedFile ExampleProvenanceTest::sFile;

// The first element each parameter's first file write was read from.
struct Expected {
    int device;
    const char* code;
    const char* parameter;
    const char* record;
    long line;
    const char* attribute;  // an attribute of that element, or of the first row below it
    const char* text;
};

TEST_F(ExampleProvenanceTest, EntriesNameTheParametersAndLinesTheyWereReadFrom) {
    ASSERT_NE(sSession, nullptr);
    ASSERT_NE(movie(), nullptr);

    // Lines read by hand from the example; explain's cases in tool_test.py trace the speaker's
    // dea and a tuning's entry end to end.
    const Expected kMovie[] = {
        {kOutputDeviceAll, "mdle", "mi_dv_leveler_steering_enable", "profile 1 \"movie\"", 372,
         "value", "true"},
        {kOutputDeviceBluetoothA2dp, "dea", "dialog_enhancer_amount",
         "headphone endpoint of profile 1", 417, "value", "8"},
        {kOutputDeviceSpeaker, "iebs", "ieq_frequency", "IEQ preset 1", 52, "frequency", "47"},
        {kOutputDeviceSpeaker, "iebs", "ieq_target", "IEQ preset 1", 52, "target", "80"},
    };
    for (const Expected& expected : kMovie) {
        SCOPED_TRACE(std::string(expected.code) + " " + expected.parameter);
        const LoadedEntry source = entry(movie(), expected.device, expected.code);
        const SourceParameter* found = nullptr;
        for (const SourceParameter& parameter : source.parameters) {
            found = parameter.name == expected.parameter ? &parameter : found;
        }
        ASSERT_NE(found, nullptr) << source.summary();
        EXPECT_EQ(found->recordName, expected.record);
        ASSERT_FALSE(found->steps.empty());
        const ValueStep& read = found->steps.front();
        EXPECT_EQ(read.source, ValueSource::kFile);
        ASSERT_FALSE(read.elements.empty());
        EXPECT_EQ(read.elements.front().line, expected.line);
        EXPECT_NE(source.summary().find("line " + std::to_string(expected.line)), std::string::npos)
            << source.summary();
        // The attribute text stands on the element itself or on its first row.
        bool seen = false;
        for (size_t e = 0; e < read.elements.size() && e < 2; e++) {
            for (const auto& [name, text] : read.elements[e].attributes) {
                seen = seen || (name == expected.attribute && text == expected.text);
            }
        }
        EXPECT_TRUE(seen);
    }
}

// The loader's rule that gave the speaker's "dom" the speaker tuning's matrix is traced end to end
// by explain's "dom" case in tool_test.py.
TEST_F(ExampleProvenanceTest, BuiltinTablesNameThemselves) {
    const LoadedBlob* builtin = LoadedFile::builtin().find(LoadedBlob::Kind::kBuiltin, 1);
    ASSERT_NE(builtin, nullptr);
    const LoadedEntry& first = builtin->entries.at(0);
    EXPECT_EQ(first.from, "built-in table \"movie\"");
    EXPECT_TRUE(first.parameters.empty());
}

// Read back, the brief form writes again what it was written from and keeps the summary and the
// rows' lines that comparing reads.
TEST_F(ExampleProvenanceTest, SourcesReadBackAsTheyWereWritten) {
    ASSERT_NE(movie(), nullptr);
    const LoadedFile brief = LoadedFile::fromJson(sFile.toJson(true));
    EXPECT_EQ(brief.toJson(true), sFile.toJson(true));
    for (const char* code : {"iebs", "dea", "dom"}) {
        SCOPED_TRACE(code);
        const LoadedEntry own = entry(movie(), kOutputDeviceSpeaker, code);
        const LoadedEntry cut =
            entry(brief.find(LoadedBlob::Kind::kProfile, 1), kOutputDeviceSpeaker, code);
        EXPECT_EQ(cut.from, own.from);
        EXPECT_EQ(cut.parameterNames(), own.parameterNames());
        for (int row : {0, 2, 19}) {
            EXPECT_EQ(cut.rowLine(row), own.rowLine(row));
        }
    }
    // The IEQ preset's third band is on line 57.
    EXPECT_EQ(entry(movie(), kOutputDeviceSpeaker, "iebs").rowLine(2), 57);
}

TEST_F(ExampleProvenanceTest, ListsReadByTheirLayoutInTheirUnits) {
    ASSERT_NE(sSession, nullptr);
    // IEQ preset "detailed" (blobs shows its first band, hand-read from line 55, in tool_test.py).
    const LoadedEntry iebs = entry(movie(), kOutputDeviceSpeaker, "iebs");
    const EntryView bands = EntryView::decode(iebs.code, iebs.values);
    ASSERT_EQ(bands.kind, EntryView::Kind::kBands);
    EXPECT_TRUE(bands.complete);
    EXPECT_EQ(bands.bands, 20);
    EXPECT_EQ(bands.place(1 + 20 + 2).where, "band 3 (234 Hz) target");

    // The speaker_stereo matrices (lines 696-724): layout 15 with 24 coefficients first, its
    // third row (c, line 699) 11583 twice, its fifth (ls, line 701) 14189 and 0.
    const LoadedEntry dom = entry(movie(), kOutputDeviceSpeaker, "dom");
    const EntryView mode = EntryView::decode(dom.code, dom.values);
    ASSERT_EQ(mode.kind, EntryView::Kind::kOutputMode);
    EXPECT_TRUE(mode.complete);
    EXPECT_EQ(mode.endpoint, 0);
    EXPECT_EQ(mode.orientation, 1);
    ASSERT_EQ(mode.matrices.size(), 3u);
    EXPECT_EQ(mode.matrices[0].layout, 15);
    EXPECT_EQ(mode.matrices[0].rows.size(), 12u);
    EXPECT_EQ(mode.matrices[1].layout, 11);
    EXPECT_EQ(mode.matrices[2].rows.size(), 6u);
    const std::vector<std::string> lines = mode.lines();
    ASSERT_GT(lines.size(), 6u);
    EXPECT_EQ(lines[1], "matrix 1: layout 15, 24 coefficients (Q14)");
    EXPECT_EQ(lines[6], "  row 5: 0.8660 0.0000  (14189 0)");
    EXPECT_EQ(mode.place(3 + 2 + 4 + 1).where, "matrix 1 (layout 15) row 3 right");
}

struct LayoutCase {
    const char* name;
    const char* code;
    std::vector<int> words;
    bool complete;
    std::vector<std::string> lines;
};

TEST(EntryViewTest, ReadsEachLayoutAndSaysWhenTheCountsDoNotMatch) {
    const std::string kMismatch = "(the words do not match the layout's counts)";
    // clang-format off
    const LayoutCase kCases[] = {
        {"stereo optimiser", "aobs", {2, 2, 100, 1000, 16, -8, 0, 4}, true,
         {"band 1: 100 Hz  gain_l 1 dB (16)  gain_r 0 dB (0)",
          "band 2: 1000 Hz  gain_l -0.5 dB (-8)  gain_r 0.25 dB (4)"}},
        {"regulator", "arbs", {1, 47, -192, -96, 1}, true,
         {"band 1: 47 Hz  threshold_low -12 dB (-192)  threshold_high -6 dB (-96)  "
          "isolated_band yes"}},
        {"gains cut short", "gebs", {2, 100, 200, 32}, false,
         {"band 1: 100 Hz  gain 2 dB (32)", "band 2: 200 Hz", kMismatch}},
        {"headphone mode", "dom", {1, 1, 2}, true, {"enable 1, endpoint 1, orientation 2"}},
        {"matrix cut short", "dom", {1, 0, 1, 15, 4, 16384, 0, 8192}, false,
         {"enable 1, endpoint 0, orientation 1", "matrix 1: layout 15, 4 coefficients (Q14)",
          "  row 1: 1.0000 0.0000  (16384 0)", "  row 2: 0.5000  (8192)", kMismatch}},
        {"no layout", "dea", {4, -1}, true, {"4 -1"}},
    };
    // clang-format on
    for (const LayoutCase& c : kCases) {
        SCOPED_TRACE(c.name);
        const EntryView view = EntryView::decode(vexParameterCode(c.code), c.words);
        EXPECT_EQ(view.complete, c.complete);
        EXPECT_EQ(view.lines(), c.lines);
        EXPECT_EQ(view.lines(true), std::vector<std::string>{NumberText::join(c.words)});
        EXPECT_EQ(view.toJson()["raw"], Json(c.words));
    }
}

}  // namespace
}  // namespace korva::tool
