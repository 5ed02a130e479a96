#include <android/log.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "model/Parameter.h"
#include "model/Tuning.h"
#include "reader/NodeParseUtils.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using Values = std::map<Parameter, std::vector<int>>;

// Setters applied to the elements of setters.xml, each inside a <case id="...">.
class ValueSetterTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(0, mIterator.init(mPath));
        mIterator.pushNode();
    }

    // Puts the cursor on the element of the case.
    bool moveToCase(const std::string& id) {
        mIterator.popNode();
        mIterator.pushNode();
        for (; mIterator.isCurValid(); mIterator.next()) {
            std::vector<std::string> caseId;
            mIterator.parseNodeWithName({"id"}, caseId);
            if (caseId == std::vector<std::string>{id}) {
                mIterator.childrenNext();
                return mIterator.isElementNode();
            }
        }
        return false;
    }

    // Applies the setter of the case's element as the parser does (presets by their type), and
    // checks that the cursor is back on the element. Any record stores any parameter.
    void apply(const std::string& caseId, ParameterValues& record) {
        ASSERT_TRUE(moveToCase(caseId)) << caseId;
        const std::string element = mIterator.getNodeName();
        std::vector<std::string> type;
        mIterator.parseNodeWithName({"type"}, type);
        const std::string name = element == "preset" ? type[0] : element;
        ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(name);
        ASSERT_NE(nullptr, setter) << name;
        setter->set(record, mIterator);
        EXPECT_EQ(element, mIterator.getNodeName()) << caseId << ": cursor not restored";
    }

    std::string mPath = test::testDataFile("setters.xml");
    TagIterator mIterator;
};

// Elements not named after their one parameter ("-" for "_"), with the parameters they fill.
// What these setters read is pinned by the cases on real elements below.
const std::map<std::string, std::vector<Parameter>> kSpecialElements = {
    {"virtual-bass-process-enable", {VIRTUAL_BASS_ENABLE}},
    {"drc-metadata", {CUSTOM_DRC_METADATA}},
    {"output-mode", {OUTPUT_MIX_MATRIX}},
    {"virtual-bass-subgains", {VIRTUAL_BASS_SUBGAINS}},
    {"virtual-bass-mix-freqs", {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}},
    {"virtual-bass-src-freqs", {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}},
    {"audio-optimizer-bands",
     {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
      AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}},
    {"regulator-tuning",
     {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
      REGULATOR_ISOLATED_BAND}},
    {"ieq", {IEQ_FREQUENCY, IEQ_TARGET}},
    {"geq", {GEQ_FREQUENCY, GEQ_GAIN}}};

// Parameters whose value is a list, read whole; the other named elements read one value.
// clang-format off
const std::set<Parameter> kListParameters = {
    ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG,
    REGULATOR_STRESS_AMOUNT, CUSTOM_DRC_METADATA, VIRTUAL_BASS_HARMGAINS, VIRTUAL_BASS_HYBGAINS,
    VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED, VIRTUAL_BASS_MIX_FREQUENCY,
    VIRTUAL_BASS_COMPRESSOR_TUNING, COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_RIGHT,
    COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND, BASS_MBDRC_TUNING,
    DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL};
// clang-format on

std::vector<Parameter> parametersOf(const std::string& element) {
    auto special = kSpecialElements.find(element);
    if (special != kSpecialElements.end()) return special->second;
    std::string name = element;
    for (char& c : name) c = c == '-' ? '_' : c;
    for (int value = 0; value < kNumParameters; ++value) {
        if (name == kParameterNames[value]) return {static_cast<Parameter>(value)};
    }
    return {};
}

// Each setter writes all of its parameters, and only those, even from an element that holds
// nothing, and leaves the cursor on the element; a named element reads a list whole or its first
// value. The example file's test finds elements missing from the collection or misnamed.
TEST_F(ValueSetterTest, EverySetterFillsItsParameters) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    EXPECT_EQ(96u, SetterCollection::kAllValueSetters.size());
    EXPECT_EQ(96u, collection.size());
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string element = setter->getNodeName();
        SCOPED_TRACE(element);
        EXPECT_EQ(setter, collection.getValueSetter(element));
        const std::vector<Parameter> parameters = parametersOf(element);
        ASSERT_FALSE(parameters.empty()) << "no parameter of that name";

        ASSERT_TRUE(moveToCase("empty"));
        Tuning bare("t", ENDPOINT_SPEAKER, false);
        setter->set(bare, mIterator);
        std::set<Parameter> written;
        for (const auto& [parameter, values] : bare.values) written.insert(parameter);
        EXPECT_EQ(std::set<Parameter>(parameters.begin(), parameters.end()), written);
        EXPECT_EQ("e", mIterator.getNodeName());

        // The matrix and subgain readers take other shapes, pinned by the cases below.
        if (parameters.size() == 1 && element != "output-mode" &&
            element != "virtual-bass-subgains") {
            ASSERT_TRUE(moveToCase("row-mixed-separators"));  // value="10, 20,30"
            Tuning record("t", ENDPOINT_SPEAKER, false);
            setter->set(record, mIterator);
            const bool list = kListParameters.count(parameters[0]) != 0;
            EXPECT_EQ((list ? std::vector<int>{10, 20, 30} : std::vector<int>{10}),
                      record.values[parameters[0]]);
        }
    }
}

TEST(SetterCollectionTest, NearMissNamesHaveNoSetter) {
    for (const char* name : {"", "data", "profile", "Volume-leveler-enable",
                             "volume_leveler_enable", "volume-leveler-enable ", "band_ieq"}) {
        EXPECT_EQ(nullptr, TuningFileParser::sSetterCollection->getValueSetter(name)) << name;
    }
}

TEST_F(ValueSetterTest, EachSetterClassOnRealElements) {
    const std::pair<std::string, Values> cases[] = {
        {"simple-true", {{VOLUME_LEVELER_ENABLE, {1}}}},
        {"simple-false", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-number", {{VOLUME_LEVELER_ENABLE, {7}}}},
        {"simple-negative", {{VOLUME_LEVELER_AMOUNT, {-3}}}},
        {"simple-capitals", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-missing", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-garbage", {{PEAK_VALUE, {12}}}},
        // Names that repeat in another namespace read as libxml2's lookup by name finds them.
        {"simple-namespaced", {{VOLUME_LEVELER_AMOUNT, {5}}}},
        {"row-namespaced", {{BASS_MBDRC_TUNING, {1, 2}}}},
        {"row-mixed-separators", {{BASS_MBDRC_TUNING, {10, 20, 30}}}},
        {"row-first-attribute-only", {{REGULATOR_STRESS_AMOUNT, {4, 5, 6}}}},
        {"row-empty", {{COMPLEX_EQUALIZER_TUNING_LEFT, {}}}},
        {"drc-row", {{CUSTOM_DRC_METADATA, {1, 0, -12}}}},
        {"drc-empty", {{CUSTOM_DRC_METADATA, {0}}}},
        {"drc-garbage", {{CUSTOM_DRC_METADATA, {0}}}},
        {"matrix-identity", {{OUTPUT_MIX_MATRIX, {1, 0, 0, 1}}}},
        {"matrix-no-rows", {{OUTPUT_MIX_MATRIX, {}}}},
        {"matrix-childless", {{OUTPUT_MIX_MATRIX, {}}}},
        {"subgains", {{VIRTUAL_BASS_SUBGAINS, {-96, -48, 0, 0}}}},
        {"subgains-none", {{VIRTUAL_BASS_SUBGAINS, {}}}},
        {"vb-range", {{VIRTUAL_BASS_MIX_FREQ_LOW, {40}}, {VIRTUAL_BASS_MIX_FREQ_HIGH, {120}}}},
        {"vb-range-half", {{VIRTUAL_BASS_SRC_FREQ_LOW, {0}}, {VIRTUAL_BASS_SRC_FREQ_HIGH, {300}}}},
        // The unnamed band list is cut at the first missing value, for every column.
        {"ieq-missing-target", {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {10}}}},
        {"ieq-no-bands", {{IEQ_FREQUENCY, {}}, {IEQ_TARGET, {}}}},
        // Named bands end at a foreign element, with one message.
        {"ieq-bands", {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {117, 119, -24}}}},
        {"geq-bands", {{GEQ_FREQUENCY, {32, 64, 125}}, {GEQ_GAIN, {-16, 0, 24}}}},
        {"audio-optimizer",
         {{AUDIO_OPTIMIZER_FREQUENCY, {47, 141}},
          {AUDIO_OPTIMIZER_GAIN_L, {-12, 6}},
          {AUDIO_OPTIMIZER_GAIN_R, {-10, 5}},
          {AUDIO_OPTIMIZER_GAIN_LS, {3, 0}},
          {AUDIO_OPTIMIZER_GAIN_RS, {4, 0}}}},
        {"regulator",
         {{REGULATOR_FREQUENCY, {20, 80, 4000}},
          {REGULATOR_THRESHOLD_LOW, {-192, -128, 1}},
          {REGULATOR_THRESHOLD_HIGH, {-80, 0, 0}},
          {REGULATOR_ISOLATED_BAND, {1, 0, 0}}}},
    };
    for (const auto& [id, expected] : cases) {
        test::LogCapture log;
        Tuning record("t", ENDPOINT_SPEAKER, false);
        apply(id, record);
        EXPECT_EQ(expected, record.values) << id;
        // A preset whose bands are not three levels down ends on the level it stopped at.
        const bool foreign = id == "ieq-bands" || id == "ieq-no-bands";
        EXPECT_EQ(foreign ? std::vector<std::string>{"No attribute band_ieq was found!"}
                          : std::vector<std::string>{},
                  log.messages("ValueSetter"))
            << id;
        EXPECT_TRUE(!foreign || log.lines().at(0).priority == ANDROID_LOG_INFO);
    }
}

}  // namespace
}  // namespace korva
