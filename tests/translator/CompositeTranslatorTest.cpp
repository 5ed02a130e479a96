// The translators that join, clamp, gate or reshape values, each against the cases that tell its
// branches apart.

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "TranslatorTestSupport.h"
#include "translator/AudioOptimizerTranslator.h"
#include "translator/AudioRegulatorTranslator.h"
#include "translator/BassMbdrcTranslator.h"
#include "translator/ComplexEqualizerTranslator.h"
#include "translator/DeAmountTranslator.h"
#include "translator/DynamicSpeakerOptimizationTranslator.h"
#include "translator/GeqTranslator.h"
#include "translator/OutputModeTranslator.h"
#include "translator/VirtualBassEnableTranslator.h"

namespace korva {
namespace {

using test::entriesOf;
using test::Entry;
using test::TestRecord;
using test::Values;

constexpr int kDevice = 0x4000;
// In Case::after: the parameter must not be in the record at all.
const std::vector<int> kAbsent = {-999999};

using Expected = std::vector<std::pair<VexParameter, std::vector<int>>>;

struct Case {
    const char* name;
    Values input;
    Expected expected;
    // Record values after translation, for the parameters listed.
    Values after = {};
    Endpoint endpoint = ENDPOINT_SPEAKER;
    bool mono = false;
};

void runCases(Translator&& translator, const std::vector<Case>& cases,
              const std::set<Parameter>& valid = test::allParameters()) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TestRecord record(c.input, valid);
        SetParamCommand cmd(0x40000000);
        cmd.setDeviceId(kDevice);
        translator.vexTranslate(cmd, record, c.endpoint, c.mono);
        std::vector<Entry> expected;
        for (const auto& [param, values] : c.expected) expected.push_back({kDevice, param, values});
        EXPECT_EQ(expected, entriesOf(cmd));
        for (const auto& [parameter, values] : c.after) {
            SCOPED_TRACE(kParameterNames[parameter]);
            if (values == kAbsent) {
                EXPECT_EQ(0u, record.values.count(parameter));
            } else {
                ASSERT_EQ(1u, record.values.count(parameter));
                EXPECT_EQ(values, record.values[parameter]);
            }
        }
        EXPECT_FALSE(record.dirty);
    }
}

// base with extra's lists put in.
Values with(Values base, const Values& extra) {
    for (const auto& [parameter, list] : extra) base[parameter] = list;
    return base;
}

// The plain joins and pass-throughs are checked by the full translation in TranslatorTest.cpp.
TEST(CompositeTranslatorTest, ClampsCountsAndGates) {
    runCases(DeAmountTranslator(),
             {{"clamped in a copy",
               {{DIALOG_ENHANCER_AMOUNT, {13}}},
               {{DEA, {12}}},
               {{DIALOG_ENHANCER_AMOUNT, {13}}}},
              {"at the cap", {{DIALOG_ENHANCER_AMOUNT, {12}}}, {{DEA, {12}}}},
              {"no lower bound", {{DIALOG_ENHANCER_AMOUNT, {-3}}}, {{DEA, {-3}}}},
              {"first value only", {{DIALOG_ENHANCER_AMOUNT, {20, 30}}}, {{DEA, {12, 30}}}},
              {"missing", {}, {{DEA, {}}}, {{DIALOG_ENHANCER_AMOUNT, {}}}}});
    runCases(GeqTranslator(),
             {{"gains not counted",
               {{GEQ_FREQUENCY, {100, 200}}, {GEQ_GAIN, {3}}},
               {{GEBS, {2, 100, 200, 3}}}},
              {"missing", {}, {{GEBS, {0}}}, {{GEQ_FREQUENCY, {}}, {GEQ_GAIN, {}}}}});
    runCases(BassMbdrcTranslator(),
             {{"off", {{BASS_MBDRC_ENABLE, {0}}, {BASS_MBDRC_TUNING, {5}}}, {}},
              {"any non-zero is on",
               {{BASS_MBDRC_ENABLE, {2}}, {BASS_MBDRC_TUNING, {5, 6}}},
               {{BMDT, {5, 6}}}},
              {"enable missing is off", {{BASS_MBDRC_TUNING, {5}}}, {}, {{BASS_MBDRC_ENABLE, {}}}}});
    const Values bass = {{VIRTUAL_BASS_MODE, {3}}, {VIRTUAL_BASS_TYPE, {2}}};
    runCases(VirtualBassEnableTranslator(),
             {{"disabled", with(bass, {{VIRTUAL_BASS_ENABLE, {0}}}), {{VBM, {0}}, {VBON, {2}}}},
              {"enabled", with(bass, {{VIRTUAL_BASS_ENABLE, {1}}}), {{VBM, {3}}, {VBON, {2}}}},
              {"enable missing is disabled", bass, {{VBM, {0}}, {VBON, {2}}}}});
}

TEST(CompositeTranslatorTest, SpeakerOptimizationIntervalLayoutFollowsChannels) {
    const Values on = {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {1}},
                       {DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT, {7}},
                       {DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}};
    const Expected one = {{DSOA, {7}}, {DSOI, {1, 5}}, {DSOE, {1}}};
    const Expected two = {{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}};
    runCases(DynamicSpeakerOptimizationTranslator(),
             {{"stereo cuts the record's interval",
               with(on, {{OUTPUT_CHANNELS, {2}}}),
               one,
               {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5}}}},
              {"three channels", with(on, {{OUTPUT_CHANNELS, {3}}}), one},
              {"four channels",
               with(on, {{OUTPUT_CHANNELS, {4}}}),
               two,
               {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}}},
              {"channels missing", on, two, {{OUTPUT_CHANNELS, {}}}},
              {"interval missing",
               {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {3}}, {OUTPUT_CHANNELS, {2}}},
               {{DSOA, {}}, {DSOI, {2}}, {DSOE, {3}}}},
              {"off sends only the switch",
               with(on, {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}}, {OUTPUT_CHANNELS, {2}}}),
               {{DSOE, {0}}},
               {{DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL, {5, 6}}}}});
}

TEST(CompositeTranslatorTest, OutputModeDependsOnEndpointAndMono) {
    const Values mode = {
        {VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}};
    runCases(OutputModeTranslator(),
             {{"mono speaker changes the record",
               mode,
               {{DOM, {0, 0, 1, 1, 2, 3, 4}}},
               {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {1}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}},
               ENDPOINT_SPEAKER,
               true},
              {"stereo speaker", mode, {{DOM, {1, 0, 0, 1, 2, 3, 4}}}, {{VIRTUALIZER_ENABLE, {1}}}},
              {"headphone: no matrix", mode, {{DOM, {1, 1, 0}}}, {}, ENDPOINT_HEADPHONE},
              {"mono ignored off the speaker",
               {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {2}}},
               {{DOM, {0, 2, 2}}},
               {{ORIENTATION, {2}}, {OUTPUT_MIX_MATRIX, kAbsent}},
               ENDPOINT_OTHER,
               true}});
    // A record type that does not carry the virtualizer gets no output mode, and is not read.
    std::set<Parameter> noVirtualizer = test::allParameters();
    noVirtualizer.erase(VIRTUALIZER_ENABLE);
    runCases(OutputModeTranslator(),
             {{"not a virtualizer record",
               mode,
               {},
               {{VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}},
               ENDPOINT_SPEAKER,
               true},
              {"nothing inserted", {}, {}, {{VIRTUALIZER_ENABLE, kAbsent}, {ORIENTATION, kAbsent}}}},
             noVirtualizer);
}

// The optimizer writes only for 2 or 4 channels; the complex equalizer falls back to stereo.
TEST(CompositeTranslatorTest, ChannelLayoutsOfOptimizerAndComplexEqualizer) {
    const Values bands = {{AUDIO_OPTIMIZER_FREQUENCY, {100, 200, 300}},
                          {AUDIO_OPTIMIZER_GAIN_L, {1, 2, 3}},
                          {AUDIO_OPTIMIZER_GAIN_R, {4, 5, 6}},
                          {AUDIO_OPTIMIZER_GAIN_LS, {7}},
                          {AUDIO_OPTIMIZER_GAIN_RS, {8}}};
    runCases(AudioOptimizerTranslator(),
             {{"stereo",
               with(bands, {{OUTPUT_CHANNELS, {2}}}),
               {{AOBS, {3, 2, 100, 200, 300, 1, 2, 3, 4, 5, 6}}}},
              {"four: left, right, surrounds",
               with(bands, {{OUTPUT_CHANNELS, {4}}}),
               {{AOBS, {3, 4, 100, 200, 300, 1, 2, 3, 4, 5, 6, 7, 8}}}},
              {"six channels", with(bands, {{OUTPUT_CHANNELS, {6}}}), {}},
              {"channels missing", bands, {}, {{OUTPUT_CHANNELS, {}}}},
              {"stereo reads no surround gains",
               {{OUTPUT_CHANNELS, {2}}},
               {{AOBS, {0, 2}}},
               {{AUDIO_OPTIMIZER_GAIN_LS, kAbsent}, {AUDIO_OPTIMIZER_GAIN_L, {}}}}});
    const Values tunings = {{COMPLEX_EQUALIZER_ENABLE, {1}},
                            {COMPLEX_EQUALIZER_TUNING_LEFT, {1, 2}},
                            {COMPLEX_EQUALIZER_TUNING_RIGHT, {3, 4}},
                            {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, {5, 6}},
                            {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, {7, 8}}};
    runCases(
        ComplexEqualizerTranslator(),
        {{"four channels",
          with(tunings, {{OUTPUT_CHANNELS, {4}}}),
          {{CEQT, {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}}}},
         {"six channels", with(tunings, {{OUTPUT_CHANNELS, {6}}}), {{CEQT, {2, 2, 1, 2, 3, 4}}}},
         {"channels missing", tunings, {{CEQT, {2, 2, 1, 2, 3, 4}}}},
         {"only 1 is on", with(tunings, {{COMPLEX_EQUALIZER_ENABLE, {2}}}), {}},
         {"enable missing",
          {{OUTPUT_CHANNELS, {4}}},
          {},
          {{COMPLEX_EQUALIZER_ENABLE, {}}, {COMPLEX_EQUALIZER_TUNING_LEFT, kAbsent}}}});
}

TEST(CompositeTranslatorTest, RegulatorStressBandsAndSibilance) {
    const Values bands = {{REGULATOR_FREQUENCY, {100, 200}},
                          {REGULATOR_THRESHOLD_LOW, {1, 2}},
                          {REGULATOR_THRESHOLD_HIGH, {3, 4}},
                          {REGULATOR_ISOLATED_BAND, {5}}};
    const std::vector<int> arbs = {2, 100, 200, 1, 2, 3, 4, 5};
    const Values sibilance = with(bands, {{REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {1}},
                                          {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, {1, 2}},
                                          {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT, {3, 4}},
                                          {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND, {5}},
                                          {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND, {6}},
                                          {REGULATOR_STRESS_AMOUNT, {9}}});
    runCases(AudioRegulatorTranslator(),
             {{"stereo pads the record's stress list",
               with(bands, {{OUTPUT_CHANNELS, {2}}, {REGULATOR_STRESS_AMOUNT, {7}}}),
               {{ARSA, {2, 7, 0}}, {ARBS, arbs}},
               {{REGULATOR_STRESS_AMOUNT, {7, 0}}}},
              {"mono cuts it",
               with(bands, {{OUTPUT_CHANNELS, {1}}, {REGULATOR_STRESS_AMOUNT, {1, 2, 3}}}),
               {{ARSA, {1, 1, 2}}, {ARBS, arbs}},
               {{REGULATOR_STRESS_AMOUNT, {1, 2}}}},
              {"three channels keep it and send the whole channel list",
               with(bands, {{OUTPUT_CHANNELS, {3, 9}}, {REGULATOR_STRESS_AMOUNT, {7}}}),
               {{ARSA, {3, 9, 7}}, {ARBS, arbs}},
               {{REGULATOR_STRESS_AMOUNT, {7}}}},
              {"channels missing keep it",
               with(bands, {{REGULATOR_STRESS_AMOUNT, {1, 2, 3}}}),
               {{ARSA, {1, 2, 3}}, {ARBS, arbs}},
               {{OUTPUT_CHANNELS, {}}}},
              {"sibilance, four channels",
               with(sibilance, {{OUTPUT_CHANNELS, {4}}}),
               {{ARSA, {4, 9}}, {ARBS, arbs}, {RSSA, {4, 2, 1, 2, 3, 4, 5, 6}}}},
              {"sibilance, six channels",
               with(sibilance, {{OUTPUT_CHANNELS, {6}}}),
               {{ARSA, {6, 9}}, {ARBS, arbs}, {RSSA, {2, 2, 1, 2, 3, 4}}}},
              {"sibilance switch must be exactly 1",
               with(sibilance, {{OUTPUT_CHANNELS, {6}}, {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {2}}}),
               {{ARSA, {6, 9}}, {ARBS, arbs}}}});
}

}  // namespace
}  // namespace korva
