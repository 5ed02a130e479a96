#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Parameter.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {
namespace {

TEST(ParameterValuesTest, SetReplacesOneEntryPerParameter) {
    Tuning tuning(1L, "spk", ENDPOINT_SPEAKER, false, false);
    std::vector<int> source = {90, 180};
    tuning.set(ORIENTATION, source);
    source.push_back(7);
    // The record keeps its own copy, and stores even parameters it does not accept.
    tuning.set(GEQ_GAIN, {});
    EXPECT_EQ((std::map<Parameter, std::vector<int>>{{GEQ_GAIN, {}}, {ORIENTATION, {90, 180}}}),
              tuning.values);
    tuning.set(GEQ_GAIN, {-4});
    EXPECT_EQ(2u, tuning.values.size());
    EXPECT_EQ(std::vector<int>{-4}, tuning.values.at(GEQ_GAIN));
    // Setting the stored vector itself must not lose it.
    tuning.set(ORIENTATION, tuning.values[ORIENTATION]);
    EXPECT_EQ((std::vector<int>{90, 180}), tuning.values.at(ORIENTATION));
}

TEST(ParameterValuesTest, ValuesToStringFormats) {
    struct Case {
        std::vector<std::pair<Parameter, std::vector<int>>> sets;
        std::string expected;
    };
    const Case cases[] = {
        {{}, ""},
        {{{GEQ_GAIN, {0, -3, 12}}}, "geq_gain=0,-3,12,\n"},
        {{{OUTPUT_MIX_MATRIX, {}}}, "output_mix_matrix=\n"},
        {{{PEAK_VALUE, {-2147483647 - 1, 2147483647}}}, "peak_value=-2147483648,2147483647,\n"},
        // Numeric order of the parameters, whatever the order of setting.
        {{{VOLUME_MODELER_ENABLE, {1}},
          {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, {30}},
          {VIRTUAL_BASS_MIX_FREQ_HIGH, {2}},
          {VIRTUAL_BASS_MIX_FREQUENCY, {3}}},
         "advanced_headphone_virtualizer_lr_angle=30,\nvirtual_bass_mix_frequency=3,\n"
         "virtual_bass_mix_freq_high=2,\nvolume_modeler_enable=1,\n"},
        // ieq_id is never shown, whatever the record type.
        {{{IEQ_TARGET, {1}}, {IEQ_ID, {9}}, {IEQ_FREQUENCY, {2}}},
         "ieq_frequency=2,\nieq_target=1,\n"}};
    for (const Case& c : cases) {
        Tuning tuning("t", ENDPOINT_OTHER, true);
        for (const auto& [parameter, values] : c.sets) {
            tuning.set(parameter, values);
        }
        EXPECT_EQ(c.expected, tuning.valuesToString());
    }
}

// Which record type accepts which parameter decides what the translators emit, so the five sets
// are checked against an encoding of the catalogue written independently of the sources: one
// letter per Parameter value, 16 to a row: T Tuning, P Profile, E ProfileEndpoint, I IeqPreset,
// G GeqPreset, - no record type.
const std::string kAcceptedBy =
    "PPTTTTTTTTTTETTT"
    "TTETTTTTPEEETTTG"
    "GEPEEEEEETTTEEII"
    "IPEPPPETTTETTTTT"
    "TTTTTTTTTTPPTEPE"
    "TTTETTTTTTTTTTTT"
    "-ETTTTETEETEEETP";

// Read while the program is being initialised, as the translators' static constructors do.
const size_t kTuningParamsAtStartup =
    Tuning("startup", ENDPOINT_SPEAKER, false).getValidParams().size();

TEST(ParameterValuesTest, EachRecordTypeAcceptsItsParameters) {
    std::vector<std::pair<char, std::unique_ptr<ParameterValues>>> kinds;
    kinds.emplace_back('T', new Tuning("t", ENDPOINT_SPEAKER, false));
    kinds.emplace_back('P', new Profile(0, "p", false));
    kinds.emplace_back('E', new ProfileEndpoint(0, ENDPOINT_HEADPHONE, 0));
    kinds.emplace_back('I', new IeqPreset(1, "i"));
    kinds.emplace_back('G', new GeqPreset(0));
    EXPECT_EQ(&Tuning::kValidParams, &kinds[0].second->getValidParams());
    EXPECT_EQ(67u, kTuningParamsAtStartup);
    ASSERT_EQ(static_cast<size_t>(kNumParameters), kAcceptedBy.size());
    for (int value = 0; value < kNumParameters; ++value) {
        std::string owners;
        for (const auto& [letter, record] : kinds) {
            if (record->getValidParams().count(static_cast<Parameter>(value)) != 0) {
                owners += letter;
            }
        }
        EXPECT_EQ(kAcceptedBy[value] == '-' ? "" : std::string(1, kAcceptedBy[value]), owners)
            << kParameterNames[value];
    }
}

}  // namespace
}  // namespace korva
