#include <gtest/gtest.h>

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

struct NodeTableEntry {
    const char* element;
    const std::type_info* setterClass;
    std::vector<Parameter> parameters;
};

// Element name, setter class and parameters of every parameter element a tuning file may hold.
const std::vector<NodeTableEntry> kNodeTable = {
    {"calibration-boost", &typeid(SimpleValueSetter), {CALIBRATION_BOOST}},
    {"mi-dialog-enhancer-steering-enable",
     &typeid(SimpleValueSetter),
     {MI_DIALOG_ENHANCER_STEERING_ENABLE}},
    {"dialog-enhancer-enable", &typeid(SimpleValueSetter), {DIALOG_ENHANCER_ENABLE}},
    {"dialog-enhancer-amount", &typeid(SimpleValueSetter), {DIALOG_ENHANCER_AMOUNT}},
    {"dialog-enhancer-ducking", &typeid(SimpleValueSetter), {DIALOG_ENHANCER_DUCKING}},
    {"mi-virtualizer-binaural-steering-enable",
     &typeid(SimpleValueSetter),
     {MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE}},
    {"peak-value", &typeid(SimpleValueSetter), {PEAK_VALUE}},
    {"surround-decoder-enable", &typeid(SimpleValueSetter), {SURROUND_DECODER_ENABLE}},
    {"surround-boost", &typeid(SimpleValueSetter), {SURROUND_BOOST}},
    {"volmax-boost", &typeid(SimpleValueSetter), {VOLMAX_BOOST}},
    {"volume-leveler-enable", &typeid(SimpleValueSetter), {VOLUME_LEVELER_ENABLE}},
    {"volume-leveler-amount", &typeid(SimpleValueSetter), {VOLUME_LEVELER_AMOUNT}},
    {"volume-leveler-in-target", &typeid(SimpleValueSetter), {VOLUME_LEVELER_IN_TARGET}},
    {"volume-leveler-out-target", &typeid(SimpleValueSetter), {VOLUME_LEVELER_OUT_TARGET}},
    {"graphic-equalizer-enable", &typeid(SimpleValueSetter), {GRAPHIC_EQUALIZER_ENABLE}},
    {"virtualizer-enable", &typeid(SimpleValueSetter), {VIRTUALIZER_ENABLE}},
    {"virtualizer-start-band", &typeid(SimpleValueSetter), {VIRTUALIZER_START_BAND}},
    {"bass-enhancer-enable", &typeid(SimpleValueSetter), {BASS_ENHANCER_ENABLE}},
    {"virtual-bass-process-enable", &typeid(SimpleValueSetter), {VIRTUAL_BASS_ENABLE}},
    {"headphone-virtualizer-steerer-source-distance",
     &typeid(SimpleValueSetter),
     {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE}},
    {"hearing-protection-enable", &typeid(SimpleValueSetter), {HEARING_PROTECTION_ENABLE}},
    {"hearing-protection-rms-averaging-time-win-len",
     &typeid(SimpleValueSetter),
     {HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN}},
    {"hearing-protection-rms-attenuation-target",
     &typeid(SimpleValueSetter),
     {HEARING_PROTECTION_RMS_ATTENUATION_TARGET}},
    {"hearing-protection-attenuation-attack-time",
     &typeid(SimpleValueSetter),
     {HEARING_PROTECTION_ATTENUATION_ATTACK_TIME}},
    {"hearing-protection-attenuation-release-time",
     &typeid(SimpleValueSetter),
     {HEARING_PROTECTION_ATTENUATION_RELEASE_TIME}},
    {"ieq-enable", &typeid(SimpleValueSetter), {IEQ_ENABLE}},
    {"ieq-amount", &typeid(SimpleValueSetter), {IEQ_AMOUNT}},
    {"headphone-virtualizer-mode", &typeid(SimpleValueSetter), {HEADPHONE_VIRTUALIZER_MODE}},
    {"advanced-headphone-virtualizer-rendering-config",
     &typeid(RowDataValueSetter),
     {ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG}},
    {"mi-dv-leveler-steering-enable", &typeid(SimpleValueSetter), {MI_DV_LEVELER_STEERING_ENABLE}},
    {"mi-ieq-steering-enable", &typeid(SimpleValueSetter), {MI_IEQ_STEERING_ENABLE}},
    {"mi-surround-compressor-steering-enable",
     &typeid(SimpleValueSetter),
     {MI_SURROUND_COMPRESSOR_STEERING_ENABLE}},
    {"mi-adaptive-virtualizer-steering-enable",
     &typeid(SimpleValueSetter),
     {MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE}},
    {"reverb-suppression-enable", &typeid(SimpleValueSetter), {REVERB_SUPPRESSION_ENABLE}},
    {"reverb-suppression-amount", &typeid(SimpleValueSetter), {REVERB_SUPPRESSION_AMOUNT}},
    {"volume-modeler-enable", &typeid(SimpleValueSetter), {VOLUME_MODELER_ENABLE}},
    {"surround-decoder-diffuse-relocating-to-front-amount",
     &typeid(SimpleValueSetter),
     {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT}},
    {"advanced-headphone-virtualizer-lr-angle",
     &typeid(SimpleValueSetter),
     {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE}},
    {"drc-metadata", &typeid(DrcRowDataValueSetter), {CUSTOM_DRC_METADATA}},
    {"speaker-virtualizer-mode", &typeid(SimpleValueSetter), {SPEAKER_VIRTUALIZER_MODE}},
    {"advanced-speaker-virtualizer-start-bin",
     &typeid(SimpleValueSetter),
     {ADVANCED_SPEAKER_VIRTUALIZER_START_BIN}},
    {"advanced-speaker-virtualizer-rendering-config",
     &typeid(RowDataValueSetter),
     {ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG}},
    {"bass-enhancer-boost", &typeid(SimpleValueSetter), {BASS_ENHANCER_BOOST}},
    {"bass-enhancer-cutoff-frequency", &typeid(SimpleValueSetter), {BASS_ENHANCER_CUTOFF_FREQUENCY}},
    {"bass-enhancer-width", &typeid(SimpleValueSetter), {BASS_ENHANCER_WIDTH}},
    {"bass-extraction-cutoff-frequency",
     &typeid(SimpleValueSetter),
     {BASS_EXTRACTION_CUTOFF_FREQUENCY}},
    {"height-filter-mode", &typeid(SimpleValueSetter), {HEIGHT_FILTER_MODE}},
    {"regulator-overdrive", &typeid(SimpleValueSetter), {REGULATOR_OVERDRIVE}},
    {"regulator-timbre-preservation", &typeid(SimpleValueSetter), {REGULATOR_TIMBRE_PRESERVATION}},
    {"regulator-stress-amount", &typeid(RowDataValueSetter), {REGULATOR_STRESS_AMOUNT}},
    {"regulator-distortion-slope", &typeid(SimpleValueSetter), {REGULATOR_DISTORTION_SLOPE}},
    {"virtual-bass-harmgains", &typeid(RowDataValueSetter), {VIRTUAL_BASS_HARMGAINS}},
    {"virtual-bass-hybgains", &typeid(RowDataValueSetter), {VIRTUAL_BASS_HYBGAINS}},
    {"virtual-bass-rolloff-gain", &typeid(SimpleValueSetter), {VIRTUAL_BASS_ROLLOFF_GAIN}},
    {"virtual-bass-blend-linear-gain", &typeid(SimpleValueSetter), {VIRTUAL_BASS_BLEND_LINEAR_GAIN}},
    {"virtual-bass-blend-linear-gain-separated",
     &typeid(RowDataValueSetter),
     {VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED}},
    {"virtual-bass-mix-frequency", &typeid(RowDataValueSetter), {VIRTUAL_BASS_MIX_FREQUENCY}},
    {"virtual-bass-compressor-tuning", &typeid(RowDataValueSetter), {VIRTUAL_BASS_COMPRESSOR_TUNING}},
    {"virtual-bass-overall-gain", &typeid(SimpleValueSetter), {VIRTUAL_BASS_OVERALL_GAIN}},
    {"virtual-bass-slope-gain", &typeid(SimpleValueSetter), {VIRTUAL_BASS_SLOPE_GAIN}},
    {"virtual-bass-mix-freqs",
     &typeid(VirtualBassValueSetter),
     {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}},
    {"virtual-bass-src-freqs",
     &typeid(VirtualBassValueSetter),
     {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}},
    {"virtual-bass-subgains", &typeid(VirtualBassSubgainValueSetter), {VIRTUAL_BASS_SUBGAINS}},
    {"virtualizer-front-speaker-angle",
     &typeid(SimpleValueSetter),
     {VIRTUALIZER_FRONT_SPEAKER_ANGLE}},
    {"virtualizer-height-speaker-angle",
     &typeid(SimpleValueSetter),
     {VIRTUALIZER_HEIGHT_SPEAKER_ANGLE}},
    {"virtualizer-rear-height-speaker-angle",
     &typeid(SimpleValueSetter),
     {VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE}},
    {"virtualizer-surround-speaker-angle",
     &typeid(SimpleValueSetter),
     {VIRTUALIZER_SURROUND_SPEAKER_ANGLE}},
    {"virtualizer-rear-surround-speaker-angle",
     &typeid(SimpleValueSetter),
     {VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE}},
    {"volume-leveler-compressor-enable",
     &typeid(SimpleValueSetter),
     {VOLUME_LEVELER_COMPRESSOR_ENABLE}},
    {"volume-modeler-calibration", &typeid(SimpleValueSetter), {VOLUME_MODELER_CALIBRATION}},
    {"audio-optimizer-enable", &typeid(SimpleValueSetter), {AUDIO_OPTIMIZER_ENABLE}},
    {"bass-extraction-enable", &typeid(SimpleValueSetter), {BASS_EXTRACTION_ENABLE}},
    {"regulator-enable", &typeid(SimpleValueSetter), {REGULATOR_ENABLE}},
    {"regulator-speaker-dist-enable", &typeid(SimpleValueSetter), {REGULATOR_SPEAKER_DIST_ENABLE}},
    {"output-mode", &typeid(MixMatrixValueSetter), {OUTPUT_MIX_MATRIX}},
    {"virtual-bass-mode", &typeid(SimpleValueSetter), {VIRTUAL_BASS_MODE}},
    {"complex-equalizer-enable", &typeid(SimpleValueSetter), {COMPLEX_EQUALIZER_ENABLE}},
    {"complex-equalizer-tuning-left", &typeid(RowDataValueSetter), {COMPLEX_EQUALIZER_TUNING_LEFT}},
    {"complex-equalizer-tuning-right", &typeid(RowDataValueSetter), {COMPLEX_EQUALIZER_TUNING_RIGHT}},
    {"complex-equalizer-tuning-left-surround",
     &typeid(RowDataValueSetter),
     {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND}},
    {"complex-equalizer-tuning-right-surround",
     &typeid(RowDataValueSetter),
     {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
    {"regulator-sibilance-suppress-enable",
     &typeid(SimpleValueSetter),
     {REGULATOR_SIBILANCE_SUPPRESS_ENABLE}},
    {"bass-mbdrc-enable", &typeid(SimpleValueSetter), {BASS_MBDRC_ENABLE}},
    {"regulator-sibilance-suppress-amounts-left",
     &typeid(RowDataValueSetter),
     {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT}},
    {"regulator-sibilance-suppress-amounts-right",
     &typeid(RowDataValueSetter),
     {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT}},
    {"regulator-sibilance-suppress-amounts-left-surround",
     &typeid(RowDataValueSetter),
     {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND}},
    {"regulator-sibilance-suppress-amounts-right-surround",
     &typeid(RowDataValueSetter),
     {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
    {"bass-mbdrc-tuning", &typeid(RowDataValueSetter), {BASS_MBDRC_TUNING}},
    {"audio-optimizer-bands",
     &typeid(AudioOptimizerValueSetter),
     {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
      AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}},
    {"regulator-tuning",
     &typeid(RegulatorTuningValueSetter),
     {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
      REGULATOR_ISOLATED_BAND}},
    {"ieq", &typeid(IeqValueSetter), {IEQ_FREQUENCY, IEQ_TARGET}},
    {"geq", &typeid(GeqValueSetter), {GEQ_FREQUENCY, GEQ_GAIN}},
    {"high-pass-filter-enable", &typeid(SimpleValueSetter), {HIGH_PASS_FILTER_ENABLE}},
    {"high-pass-filter-cutoff-frequency-index",
     &typeid(SimpleValueSetter),
     {HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX}},
    {"dynamic-speaker-optimization-amount",
     &typeid(SimpleValueSetter),
     {DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT}},
    {"dynamic-speaker-optimization-speaker-interval",
     &typeid(RowDataValueSetter),
     {DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL}},
};

TEST(NodeTableTest, CollectionHoldsExactlyTheTable) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    EXPECT_EQ(96u, kNodeTable.size());
    EXPECT_EQ(kNodeTable.size(), SetterCollection::kAllValueSetters.size());
    EXPECT_EQ(kNodeTable.size(), collection.size());
    for (const NodeTableEntry& entry : kNodeTable) {
        ValueSetter* setter = collection.getValueSetter(entry.element);
        ASSERT_NE(nullptr, setter) << entry.element;
        EXPECT_EQ(entry.element, setter->getNodeName());
        EXPECT_EQ(*entry.setterClass, typeid(*setter)) << entry.element;
        EXPECT_EQ(1u, SetterCollection::kAllValueSetters.count(setter)) << entry.element;
    }
}

TEST(NodeTableTest, UnknownNamesHaveNoSetterAndAreNotRemembered) {
    const SetterCollection& collection = *TuningFileParser::sSetterCollection;
    const size_t before = collection.size();
    for (const char* name : {"", "data", "profile", "Volume-leveler-enable",
                             "volume_leveler_enable", "volume-leveler-enable ", "band_ieq"}) {
        EXPECT_EQ(nullptr, collection.getValueSetter(name)) << '"' << name << '"';
    }
    EXPECT_EQ(before, collection.size());
}

// Single-parameter elements are their parameter's name with "-" for "_", but for three.
TEST(NodeTableTest, SingleParameterNamesFollowTheParameterNames) {
    const std::set<std::string> renamed = {"virtual-bass-process-enable", "drc-metadata",
                                           "output-mode"};
    int checked = 0;
    for (const NodeTableEntry& entry : kNodeTable) {
        if (entry.parameters.size() != 1 || renamed.count(entry.element) != 0) {
            continue;
        }
        std::string expected = kParameterNames[entry.parameters[0]];
        for (char& c : expected) {
            c = c == '_' ? '-' : c;
        }
        EXPECT_EQ(expected, entry.element);
        checked++;
    }
    EXPECT_EQ(87, checked);
}

// Every setter writes all of its parameters, and only those, even from an element that holds
// nothing; and it leaves the cursor on the element.
TEST(NodeTableTest, EachSetterWritesItsParametersFromABareElement) {
    test::CaseFile file("setters.xml");
    for (const NodeTableEntry& entry : kNodeTable) {
        ASSERT_TRUE(file.moveToCase("empty"));
        ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(entry.element);
        ASSERT_NE(nullptr, setter);
        test::TestRecord record;
        setter->set(record, file.iterator());
        std::set<Parameter> written;
        for (const auto& [parameter, values] : record.values) {
            written.insert(parameter);
        }
        EXPECT_EQ(std::set<Parameter>(entry.parameters.begin(), entry.parameters.end()), written)
            << entry.element;
        EXPECT_EQ("e", file.iterator().getNodeName()) << entry.element;
    }
}

}  // namespace
}  // namespace korva
