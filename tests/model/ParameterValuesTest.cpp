#include <gtest/gtest.h>

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

TEST(ParameterValuesTest, SetReplacesTheEntryAndKeepsOneEntryPerParameter) {
    GeqPreset preset(7LL, 2);
    preset.set(GEQ_GAIN, {1, 2, 3});
    EXPECT_EQ(1u, preset.values.size());
    preset.set(GEQ_GAIN, {-4});
    EXPECT_EQ(1u, preset.values.size());
    EXPECT_EQ(std::vector<int>{-4}, preset.values.at(GEQ_GAIN));
    preset.set(GEQ_FREQUENCY, {});
    EXPECT_EQ(2u, preset.values.size());
    EXPECT_TRUE(preset.values.at(GEQ_FREQUENCY).empty());
}

TEST(ParameterValuesTest, SetCopiesTheCallersVector) {
    Profile profile(3LL, 1, "movie", false);
    std::vector<int> source = {5, 6};
    profile.set(REVERB_SUPPRESSION_AMOUNT, source);
    source.push_back(7);
    EXPECT_EQ((std::vector<int>{5, 6}), profile.values.at(REVERB_SUPPRESSION_AMOUNT));
}

TEST(ParameterValuesTest, SetWithTheStoredVectorItselfKeepsItsValues) {
    Tuning tuning(1L, "spk", ENDPOINT_SPEAKER, false, false);
    tuning.set(ORIENTATION, {90, 180});
    tuning.setDirty(false);
    tuning.set(ORIENTATION, tuning.values[ORIENTATION]);
    EXPECT_EQ((std::vector<int>{90, 180}), tuning.values.at(ORIENTATION));
    EXPECT_TRUE(tuning.isDirty());
}

TEST(ParameterValuesTest, SetMarksDirtyEvenWithUnchangedValues) {
    ProfileEndpoint endpoint(4L, 0, ENDPOINT_SPEAKER, 0);
    endpoint.set(IEQ_ENABLE, {1});
    endpoint.setDirty(false);
    endpoint.set(IEQ_ENABLE, {1});
    EXPECT_TRUE(endpoint.isDirty());
}

TEST(ParameterValuesTest, SetDoesNotConsultTheValidParameters) {
    // The value setters decide what a record receives; the record itself stores anything.
    GeqPreset preset(0);
    preset.set(VIRTUAL_BASS_TYPE, {2});
    EXPECT_EQ(std::vector<int>{2}, preset.values.at(VIRTUAL_BASS_TYPE));
}

TEST(ParameterValuesTest, ValuesToStringFormats) {
    struct Case {
        const char* name;
        std::vector<std::pair<Parameter, std::vector<int>>> sets;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"empty map", {}, ""},
        {"one value", {{GEQ_GAIN, {0, -3, 12}}}, "geq_gain=0,-3,12,\n"},
        {"empty vector", {{OUTPUT_MIX_MATRIX, {}}}, "output_mix_matrix=\n"},
        {"extremes",
         {{PEAK_VALUE, {-2147483647 - 1, 2147483647}}},
         "peak_value=-2147483648,2147483647,\n"},
        {"numeric order whatever the order of setting",
         {{VOLUME_MODELER_ENABLE, {1}},
          {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, {30}},
          {VIRTUAL_BASS_MIX_FREQ_HIGH, {2}},
          {VIRTUAL_BASS_MIX_FREQUENCY, {3}}},
         "advanced_headphone_virtualizer_lr_angle=30,\n"
         "virtual_bass_mix_frequency=3,\n"
         "virtual_bass_mix_freq_high=2,\n"
         "volume_modeler_enable=1,\n"},
        {"ieq_id is never shown", {{IEQ_ID, {9}}}, ""},
        {"ieq_id between others",
         {{IEQ_TARGET, {1}}, {IEQ_ID, {9}}, {IEQ_FREQUENCY, {2}}},
         "ieq_frequency=2,\nieq_target=1,\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // A Tuning, not an IeqPreset: ieq_id is hidden for every record type.
        Tuning tuning("t", ENDPOINT_OTHER, true);
        for (const auto& [parameter, values] : c.sets) {
            tuning.set(parameter, values);
        }
        EXPECT_EQ(c.expected, tuning.valuesToString());
    }
}

TEST(ParameterValuesTest, RecordsAreDeletedThroughTheBase) {
    std::vector<ParameterValues*> records = {
        new Tuning("t", ENDPOINT_SPEAKER, false), new IeqPreset(1, "ieq"), new GeqPreset(0),
        new Profile(0, "dynamic", true), new ProfileEndpoint(0, ENDPOINT_SPEAKER, 1)};
    for (ParameterValues* record : records) {
        record->set(GEQ_GAIN, std::vector<int>(64, 1));
        EXPECT_EQ(-1, record->getId());
        delete record;
    }
}

}  // namespace
}  // namespace korva
