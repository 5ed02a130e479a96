#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "TranslatorTestSupport.h"
#include "translator/AudioOptimizerTranslator.h"
#include "translator/AudioRegulatorTranslator.h"
#include "translator/BassImprovementTranslator.h"
#include "translator/BassMbdrcTranslator.h"
#include "translator/ComplexEqualizerTranslator.h"
#include "translator/CustomDRCTranslator.h"
#include "translator/DeAmountTranslator.h"
#include "translator/DynamicSpeakerOptimizationTranslator.h"
#include "translator/GeqTranslator.h"
#include "translator/IeqTranslator.h"
#include "translator/OutputModeTranslator.h"
#include "translator/VirtualBassEnableTranslator.h"
#include "translator/VirtualBassTranslator.h"

namespace korva {
namespace {

using test::entriesOf;
using test::Entry;
using test::TestRecord;
using test::Values;

constexpr int kDevice = 0x4000;

struct Case {
    const char* name;
    Values input;
    std::vector<Entry> expected;
    // The record's values after translation, for the parameters listed; a parameter mapped to
    // kAbsent must not be in the record.
    Values after = {};
    Endpoint endpoint = ENDPOINT_SPEAKER;
    bool mono = false;
};

const std::vector<int> kAbsent = {-999999};

std::vector<Entry> at(std::initializer_list<std::pair<VexParameter, std::vector<int>>> list) {
    std::vector<Entry> entries;
    for (const auto& [param, values] : list) {
        entries.push_back({kDevice, param, values});
    }
    return entries;
}

void runCases(Translator& translator, const std::vector<Case>& cases,
              std::set<Parameter> validParams = TestRecord::allParameters()) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TestRecord record(validParams, c.input);
        SetParamCommand cmd(0x40000000);
        cmd.setDeviceId(kDevice);
        translator.vexTranslate(cmd, record, c.endpoint, c.mono);
        EXPECT_EQ(c.expected, entriesOf(cmd));
        for (const auto& [parameter, expected] : c.after) {
            if (expected == kAbsent) {
                EXPECT_EQ(0u, record.values.count(parameter)) << kParameterNames[parameter];
            } else {
                ASSERT_EQ(1u, record.values.count(parameter)) << kParameterNames[parameter];
                EXPECT_EQ(expected, record.values[parameter]) << kParameterNames[parameter];
            }
        }
        // Translation never touches the changed flag: only set() does.
        EXPECT_FALSE(record.dirty);
    }
}

TEST(CompositeTranslatorTest, DialogEnhancerAmountIsCappedInACopy) {
    DeAmountTranslator translator;
    runCases(
        translator,
        {
            {"above",
             {{DIALOG_ENHANCER_AMOUNT, {15}}},
             at({{DEA, {12}}}),
             {{DIALOG_ENHANCER_AMOUNT, {15}}}},
            {"just above", {{DIALOG_ENHANCER_AMOUNT, {13}}}, at({{DEA, {12}}})},
            {"at the cap", {{DIALOG_ENHANCER_AMOUNT, {12}}}, at({{DEA, {12}}})},
            {"negative kept", {{DIALOG_ENHANCER_AMOUNT, {-3}}}, at({{DEA, {-3}}})},
            {"only the first value", {{DIALOG_ENHANCER_AMOUNT, {20, 30}}}, at({{DEA, {12, 30}}})},
            {"missing", {}, at({{DEA, {}}}), {{DIALOG_ENHANCER_AMOUNT, {}}}},
        });
}

TEST(CompositeTranslatorTest, EqualizerBandsLeadWithTheFrequencyCount) {
    GeqTranslator geq;
    runCases(
        geq,
        {
            {"two bands",
             {{GEQ_FREQUENCY, {100, 1000}}, {GEQ_GAIN, {3, -2}}},
             at({{GEBS, {2, 100, 1000, 3, -2}}})},
            {"gains not counted", {{GEQ_FREQUENCY, {100}}, {GEQ_GAIN, {}}}, at({{GEBS, {1, 100}}})},
            {"missing", {}, at({{GEBS, {0}}}), {{GEQ_FREQUENCY, {}}, {GEQ_GAIN, {}}}},
        });
    IeqTranslator ieq;
    runCases(ieq, {
                      {"three bands",
                       {{IEQ_FREQUENCY, {50, 60, 70}}, {IEQ_TARGET, {1, 2, 3}}},
                       at({{IEBS, {3, 50, 60, 70, 1, 2, 3}}})},
                      {"missing", {}, at({{IEBS, {0}}}), {{IEQ_FREQUENCY, {}}, {IEQ_TARGET, {}}}},
                  });
}

TEST(CompositeTranslatorTest, PassThroughsAndGates) {
    CustomDRCTranslator drc;
    runCases(drc, {
                      {"metadata", {{CUSTOM_DRC_METADATA, {1, 2, 3}}}, at({{DRCM, {1, 2, 3}}})},
                  });
    BassMbdrcTranslator mbdrc;
    runCases(
        mbdrc,
        {
            {"off", {{BASS_MBDRC_ENABLE, {0}}, {BASS_MBDRC_TUNING, {5}}}, {}},
            {"on", {{BASS_MBDRC_ENABLE, {1}}, {BASS_MBDRC_TUNING, {5, 6}}}, at({{BMDT, {5, 6}}})},
            {"any non-zero is on",
             {{BASS_MBDRC_ENABLE, {2}}, {BASS_MBDRC_TUNING, {5}}},
             at({{BMDT, {5}}})},
            {"enable missing counts as off",
             {{BASS_MBDRC_TUNING, {5}}},
             {},
             {{BASS_MBDRC_ENABLE, {}}}},
        });
    BassImprovementTranslator improvement;
    runCases(improvement, {
                              {"all set",
                               {{VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED, {4}},
                                {HIGH_PASS_FILTER_ENABLE, {1}},
                                {HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX, {3}}},
                               at({{VBCG, {4}}, {HFON, {1}}, {HFCF, {3}}})},
                              {"missing", {}, at({{VBCG, {}}, {HFON, {}}, {HFCF, {}}})},
                          });
    VirtualBassTranslator ranges;
    runCases(ranges, {
                         {"ranges",
                          {{VIRTUAL_BASS_SRC_FREQ_LOW, {40}},
                           {VIRTUAL_BASS_SRC_FREQ_HIGH, {120}},
                           {VIRTUAL_BASS_MIX_FREQ_LOW, {100}},
                           {VIRTUAL_BASS_MIX_FREQ_HIGH, {300}}},
                          at({{VBSF, {40, 120}}, {VBMF, {100, 300}}})},
                     });
}

TEST(CompositeTranslatorTest, VirtualBassModeIsZeroWhileDisabled) {
    VirtualBassEnableTranslator translator;
    runCases(translator,
             {
                 {"disabled",
                  {{VIRTUAL_BASS_ENABLE, {0}}, {VIRTUAL_BASS_MODE, {3}}, {VIRTUAL_BASS_TYPE, {2}}},
                  at({{VBM, {0}}, {VBON, {2}}})},
                 {"enabled",
                  {{VIRTUAL_BASS_ENABLE, {1}}, {VIRTUAL_BASS_MODE, {3}}, {VIRTUAL_BASS_TYPE, {2}}},
                  at({{VBM, {3}}, {VBON, {2}}})},
                 {"enable missing counts as disabled",
                  {{VIRTUAL_BASS_MODE, {3}}},
                  at({{VBM, {0}}, {VBON, {}}}),
                  {{VIRTUAL_BASS_ENABLE, {}}}},
             });
}

TEST(CompositeTranslatorTest, SpeakerOptimizationIntervalLayoutFollowsChannels) {
    DynamicSpeakerOptimizationTranslator translator;
    const Values on = {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {1}},
                       {DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT, {7}},
                       {DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}};
    auto with = [&on](Values extra) {
        Values values = on;
        for (auto& [parameter, list] : extra) values[parameter] = list;
        return values;
    };
    runCases(
        translator,
        {
            {"stereo keeps one interval",
             with({{OUTPUT_CHANNELS, {2}}}),
             at({{DSOA, {7}}, {DSOI, {1, 5}}, {DSOE, {1}}}),
             {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5}}}},
            {"three channels", with({{OUTPUT_CHANNELS, {3}}}),
             at({{DSOA, {7}}, {DSOI, {1, 5}}, {DSOE, {1}}})},
            {"four channels",
             with({{OUTPUT_CHANNELS, {4}}}),
             at({{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}}),
             {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}}},
            {"six channels", with({{OUTPUT_CHANNELS, {6}}}),
             at({{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}})},
            {"channels missing",
             on,
             at({{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}}),
             {{OUTPUT_CHANNELS, {}}}},
            {"interval missing",
             {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {3}}, {OUTPUT_CHANNELS, {2}}},
             at({{DSOA, {}}, {DSOI, {2}}, {DSOE, {3}}}),
             {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {}}}},
            {"off sends only the switch",
             with({{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}}, {OUTPUT_CHANNELS, {2}}}),
             at({{DSOE, {0}}}),
             {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}}},
            {"enable missing", {}, at({{DSOE, {}}}), {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {}}}},
        });
}

TEST(CompositeTranslatorTest, OutputModeDependsOnEndpointAndMono) {
    OutputModeTranslator translator;
    const Values mode = {
        {VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}};
    runCases(
        translator,
        {
            {"mono speaker",
             mode,
             at({{DOM, {0, 0, 1, 1, 2, 3, 4}}}),
             {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {1}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}},
             ENDPOINT_SPEAKER,
             true},
            {"stereo speaker",
             mode,
             at({{DOM, {1, 0, 0, 1, 2, 3, 4}}}),
             {{VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}},
             ENDPOINT_SPEAKER,
             false},
            {"headphone has no matrix", mode, at({{DOM, {1, 1, 0}}}), {}, ENDPOINT_HEADPHONE, false},
            {"mono ignored off the speaker",
             {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {2}}},
             at({{DOM, {0, 2, 2}}}),
             {{ORIENTATION, {2}}, {OUTPUT_MIX_MATRIX, kAbsent}},
             ENDPOINT_OTHER,
             true},
            {"missing on the speaker",
             {},
             at({{DOM, {0}}}),
             {{VIRTUALIZER_ENABLE, {}}, {ORIENTATION, {}}, {OUTPUT_MIX_MATRIX, {}}}},
        });
    // A record type that does not carry the virtualizer gets no output mode at all.
    std::set<Parameter> noVirtualizer = TestRecord::allParameters();
    noVirtualizer.erase(VIRTUALIZER_ENABLE);
    runCases(
        translator,
        {
            {"not a virtualizer record",
             mode,
             {},
             {{VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}},
             ENDPOINT_SPEAKER,
             true},
            {"nothing inserted", {}, {}, {{VIRTUALIZER_ENABLE, kAbsent}, {ORIENTATION, kAbsent}}},
        },
        noVirtualizer);
}

TEST(CompositeTranslatorTest, AudioOptimizerOnlyForStereoAndFourChannels) {
    AudioOptimizerTranslator translator;
    const Values bands = {{AUDIO_OPTIMIZER_FREQUENCY, {100, 200, 300}},
                          {AUDIO_OPTIMIZER_GAIN_L, {1, 2, 3}},
                          {AUDIO_OPTIMIZER_GAIN_R, {4, 5, 6}},
                          {AUDIO_OPTIMIZER_GAIN_LS, {7}},
                          {AUDIO_OPTIMIZER_GAIN_RS, {8}}};
    auto with = [&bands](std::vector<int> channels) {
        Values values = bands;
        values[OUTPUT_CHANNELS] = channels;
        return values;
    };
    runCases(translator,
             {
                 {"stereo", with({2}), at({{AOBS, {3, 2, 100, 200, 300, 1, 2, 3, 4, 5, 6}}})},
                 {"four channels: left, right, then surrounds", with({4}),
                  at({{AOBS, {3, 4, 100, 200, 300, 1, 2, 3, 4, 5, 6, 7, 8}}})},
                 {"six channels", with({6}), {}},
                 {"mono", with({1}), {}},
                 {"channels missing", bands, {}, {{OUTPUT_CHANNELS, {}}}},
                 {"stereo reads no surround gains",
                  {{OUTPUT_CHANNELS, {2}}},
                  at({{AOBS, {0, 2}}}),
                  {{AUDIO_OPTIMIZER_GAIN_LS, kAbsent}, {AUDIO_OPTIMIZER_GAIN_L, {}}}},
             });
}

TEST(CompositeTranslatorTest, ComplexEqualizerFallsBackToStereo) {
    ComplexEqualizerTranslator translator;
    const Values tunings = {{COMPLEX_EQUALIZER_ENABLE, {1}},
                            {COMPLEX_EQUALIZER_TUNING_LEFT, {1, 2}},
                            {COMPLEX_EQUALIZER_TUNING_RIGHT, {3, 4}},
                            {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, {5, 6}},
                            {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, {7, 8}}};
    auto with = [&tunings](Values extra) {
        Values values = tunings;
        for (auto& [parameter, list] : extra) values[parameter] = list;
        return values;
    };
    runCases(
        translator,
        {
            {"four channels", with({{OUTPUT_CHANNELS, {4}}}),
             at({{CEQT, {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}}})},
            {"stereo", with({{OUTPUT_CHANNELS, {2}}}), at({{CEQT, {2, 2, 1, 2, 3, 4}}})},
            {"six channels", with({{OUTPUT_CHANNELS, {6}}}), at({{CEQT, {2, 2, 1, 2, 3, 4}}})},
            {"channels missing", tunings, at({{CEQT, {2, 2, 1, 2, 3, 4}}})},
            {"off", with({{COMPLEX_EQUALIZER_ENABLE, {0}}, {OUTPUT_CHANNELS, {4}}}), {}},
            {"only 1 means on", with({{COMPLEX_EQUALIZER_ENABLE, {2}}, {OUTPUT_CHANNELS, {4}}}), {}},
            {"enable missing",
             {{OUTPUT_CHANNELS, {4}}},
             {},
             {{COMPLEX_EQUALIZER_ENABLE, {}}, {COMPLEX_EQUALIZER_TUNING_LEFT, kAbsent}}},
        });
}

TEST(CompositeTranslatorTest, RegulatorStressBandsAndSibilance) {
    AudioRegulatorTranslator translator;
    const Values bands = {{REGULATOR_FREQUENCY, {100, 200}},
                          {REGULATOR_THRESHOLD_LOW, {1, 2}},
                          {REGULATOR_THRESHOLD_HIGH, {3, 4}},
                          {REGULATOR_ISOLATED_BAND, {5}}};
    const std::vector<int> bandWords = {2, 100, 200, 1, 2, 3, 4, 5};
    auto with = [&bands](Values extra) {
        Values values = bands;
        for (auto& [parameter, list] : extra) values[parameter] = list;
        return values;
    };
    const Values sibilance = {{REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {1}},
                              {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, {1, 2}},
                              {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT, {3, 4}},
                              {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND, {5, 6}},
                              {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND, {7, 8}}};
    auto withSibilance = [&with, &sibilance](std::vector<int> channels) {
        Values values = with(sibilance);
        values[OUTPUT_CHANNELS] = channels;
        values[REGULATOR_STRESS_AMOUNT] = {9};
        return values;
    };
    runCases(translator,
             {
                 {"stereo pads the stress list",
                  with({{OUTPUT_CHANNELS, {2}}, {REGULATOR_STRESS_AMOUNT, {7}}}),
                  at({{ARSA, {2, 7, 0}}, {ARBS, bandWords}}),
                  {{REGULATOR_STRESS_AMOUNT, {7, 0}}}},
                 {"mono cuts the stress list",
                  with({{OUTPUT_CHANNELS, {1}}, {REGULATOR_STRESS_AMOUNT, {1, 2, 3}}}),
                  at({{ARSA, {1, 1, 2}}, {ARBS, bandWords}}),
                  {{REGULATOR_STRESS_AMOUNT, {1, 2}}}},
                 {"six channels keep the stress list",
                  with({{OUTPUT_CHANNELS, {6}}, {REGULATOR_STRESS_AMOUNT, {7}}}),
                  at({{ARSA, {6, 7}}, {ARBS, bandWords}}),
                  {{REGULATOR_STRESS_AMOUNT, {7}}}},
                 {"whole channel list is sent",
                  with({{OUTPUT_CHANNELS, {4, 9}}, {REGULATOR_STRESS_AMOUNT, {1, 2, 3}}}),
                  at({{ARSA, {4, 9, 1, 2, 3}}, {ARBS, bandWords}})},
                 {"channels missing keep the stress list",
                  with({{REGULATOR_STRESS_AMOUNT, {1, 2, 3}}}),
                  at({{ARSA, {1, 2, 3}}, {ARBS, bandWords}}),
                  {{REGULATOR_STRESS_AMOUNT, {1, 2, 3}}, {OUTPUT_CHANNELS, {}}}},
                 {"stereo with nothing else",
                  {{OUTPUT_CHANNELS, {2}}},
                  at({{ARSA, {2, 0, 0}}, {ARBS, {0}}}),
                  {{REGULATOR_STRESS_AMOUNT, {0, 0}}, {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {}}}},
                 {"sibilance, four channels", withSibilance({4}),
                  at({{ARSA, {4, 9}}, {ARBS, bandWords}, {RSSA, {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}}})},
                 {"sibilance, stereo", withSibilance({2}),
                  at({{ARSA, {2, 9, 0}}, {ARBS, bandWords}, {RSSA, {2, 2, 1, 2, 3, 4}}})},
                 {"sibilance, six channels", withSibilance({6}),
                  at({{ARSA, {6, 9}}, {ARBS, bandWords}, {RSSA, {2, 2, 1, 2, 3, 4}}})},
                 {"sibilance switch must be exactly 1",
                  with({{OUTPUT_CHANNELS, {6}},
                        {REGULATOR_STRESS_AMOUNT, {9}},
                        {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {2}}}),
                  at({{ARSA, {6, 9}}, {ARBS, bandWords}})},
             });
}

}  // namespace
}  // namespace korva
