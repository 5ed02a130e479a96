#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "ReaderTestUtils.h"
#include "model/Parameter.h"
#include "reader/AudioOptimizerValueSetter.h"
#include "reader/DrcRowDataValueSetter.h"
#include "reader/GeqValueSetter.h"
#include "reader/IeqValueSetter.h"
#include "reader/MixMatrixValueSetter.h"
#include "reader/RegulatorTuningValueSetter.h"
#include "reader/RowDataValueSetter.h"
#include "reader/SetterCollection.h"
#include "reader/SimpleValueSetter.h"
#include "reader/TuningFileParser.h"
#include "reader/VirtualBassSubgainValueSetter.h"
#include "reader/VirtualBassValueSetter.h"

namespace korva {
namespace {

struct Setter {
    const std::type_info* setterClass;
    std::vector<Parameter> parameters;  // empty: the element's name with "_" for "-"
};

// Every element that is not a SimpleValueSetter of the parameter it is named after.
const std::map<std::string, Setter> kSpecialElements = {
    {"virtual-bass-process-enable", {&typeid(SimpleValueSetter), {VIRTUAL_BASS_ENABLE}}},
    {"drc-metadata", {&typeid(DrcRowDataValueSetter), {CUSTOM_DRC_METADATA}}},
    {"output-mode", {&typeid(MixMatrixValueSetter), {OUTPUT_MIX_MATRIX}}},
    {"virtual-bass-subgains", {&typeid(VirtualBassSubgainValueSetter), {}}},
    {"virtual-bass-mix-freqs",
     {&typeid(VirtualBassValueSetter), {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}}},
    {"virtual-bass-src-freqs",
     {&typeid(VirtualBassValueSetter), {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}}},
    {"audio-optimizer-bands",
     {&typeid(AudioOptimizerValueSetter),
      {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
       AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}}},
    {"regulator-tuning",
     {&typeid(RegulatorTuningValueSetter),
      {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
       REGULATOR_ISOLATED_BAND}}},
    {"ieq", {&typeid(IeqValueSetter), {IEQ_FREQUENCY, IEQ_TARGET}}},
    {"geq", {&typeid(GeqValueSetter), {GEQ_FREQUENCY, GEQ_GAIN}}}};

// Parameters whose value is a list, read by a RowDataValueSetter.
// clang-format off
const std::set<Parameter> kRowParameters = {
    ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG,
    REGULATOR_STRESS_AMOUNT, VIRTUAL_BASS_HARMGAINS, VIRTUAL_BASS_HYBGAINS,
    VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED, VIRTUAL_BASS_MIX_FREQUENCY,
    VIRTUAL_BASS_COMPRESSOR_TUNING, COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_RIGHT,
    COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND, BASS_MBDRC_TUNING,
    DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL};
// clang-format on

std::vector<Parameter> parameterNamed(std::string element) {
    for (char& c : element) c = c == '-' ? '_' : c;
    for (int value = 0; value < kNumParameters; ++value) {
        if (element == kParameterNames[value]) return {static_cast<Parameter>(value)};
    }
    return {};
}

// Each setter has its class and writes all of its parameters, and only those, even from an
// element that holds nothing; and it leaves the cursor on the element. The example file's test
// finds elements missing from the collection or misnamed.
TEST(NodeTableTest, EverySetterHasItsClassAndParameters) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    EXPECT_EQ(96u, SetterCollection::kAllValueSetters.size());
    EXPECT_EQ(96u, collection.size());
    test::CaseFile file("setters.xml");
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string element = setter->getNodeName();
        SCOPED_TRACE(element);
        EXPECT_EQ(setter, collection.getValueSetter(element));
        auto special = kSpecialElements.find(element);
        Setter expected = {&typeid(SimpleValueSetter), parameterNamed(element)};
        if (special != kSpecialElements.end()) {
            expected = special->second;
        } else if (expected.parameters.size() == 1 && kRowParameters.count(expected.parameters[0])) {
            expected.setterClass = &typeid(RowDataValueSetter);
        }
        if (expected.parameters.empty()) expected.parameters = parameterNamed(element);
        ASSERT_FALSE(expected.parameters.empty()) << "no parameter of that name";
        EXPECT_EQ(*expected.setterClass, typeid(*setter));

        ASSERT_TRUE(file.moveToCase("empty"));
        test::TestRecord record;
        setter->set(record, file.iterator());
        std::set<Parameter> written;
        for (const auto& [parameter, values] : record.values) written.insert(parameter);
        EXPECT_EQ(std::set<Parameter>(expected.parameters.begin(), expected.parameters.end()),
                  written);
        EXPECT_EQ("e", file.iterator().getNodeName());
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
