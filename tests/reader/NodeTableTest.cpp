#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ReaderTestUtils.h"
#include "model/Parameter.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

// Elements not named after their one parameter ("-" for "_"), with the parameters they fill.
// What these setters read is pinned by the value setter cases.
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
TEST(NodeTableTest, EverySetterFillsItsParameters) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    EXPECT_EQ(96u, SetterCollection::kAllValueSetters.size());
    EXPECT_EQ(96u, collection.size());
    test::CaseFile file("setters.xml");
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string element = setter->getNodeName();
        SCOPED_TRACE(element);
        EXPECT_EQ(setter, collection.getValueSetter(element));
        const std::vector<Parameter> parameters = parametersOf(element);
        ASSERT_FALSE(parameters.empty()) << "no parameter of that name";

        ASSERT_TRUE(file.moveToCase("empty"));
        test::TestRecord bare;
        setter->set(bare, file.iterator());
        std::set<Parameter> written;
        for (const auto& [parameter, values] : bare.values) written.insert(parameter);
        EXPECT_EQ(std::set<Parameter>(parameters.begin(), parameters.end()), written);
        EXPECT_EQ("e", file.iterator().getNodeName());

        // The matrix and subgain readers take other shapes, pinned by the value setter cases.
        if (parameters.size() == 1 && element != "output-mode" &&
            element != "virtual-bass-subgains") {
            ASSERT_TRUE(file.moveToCase("row-mixed-separators"));  // value="10, 20,30"
            test::TestRecord record;
            setter->set(record, file.iterator());
            const bool list = kListParameters.count(parameters[0]) != 0;
            EXPECT_EQ((list ? std::vector<int>{10, 20, 30} : std::vector<int>{10}),
                      record.values[parameters[0]]);
        }
    }
}

TEST(NodeTableTest, UnknownNamesHaveNoSetterAndAreNotRemembered) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    for (const char* name : {"", "data", "profile", "Volume-leveler-enable",
                             "volume_leveler_enable", "volume-leveler-enable ", "band_ieq"}) {
        EXPECT_EQ(nullptr, collection.getValueSetter(name)) << '"' << name << '"';
    }
    EXPECT_EQ(96u, collection.size());
}

}  // namespace
}  // namespace korva
