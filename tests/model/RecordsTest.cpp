#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {
namespace {

TEST(RecordsTest, ConstructorsSetIdAndDirty) {
    struct Case {
        ParameterValues* record;
        int64_t id;
        bool dirty;
    };
    // Records read from a file (no id) start dirty; stored ones start clean, but for IEQ presets.
    const Case cases[] = {
        {new Tuning("a", ENDPOINT_SPEAKER, false), -1, true},
        {new Tuning(11L, "a", ENDPOINT_SPEAKER, false, false), 11, false},
        {new IeqPreset(5, "a"), -1, true},
        {new IeqPreset(7LL, 5, "a"), 7, true},
        {new GeqPreset(2), -1, true},
        {new GeqPreset(8LL, 2), 8, false},
        {new Profile(1, "movie", true), -1, true},
        {new Profile(9LL, 1, "movie", true), 9, false},
        {new ProfileEndpoint(1, ENDPOINT_HEADPHONE, 3), -1, true},
        {new ProfileEndpoint(1LL << 40, 1, ENDPOINT_HEADPHONE, 3), 1LL << 40, false}};
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        // Deleted through the base, as the reader does.
        std::unique_ptr<ParameterValues> record(cases[i].record);
        EXPECT_EQ(cases[i].id, record->getId());
        EXPECT_EQ(cases[i].dirty, record->isDirty());
    }
    EXPECT_EQ(-1, DeviceTuning("internal_speaker", "speaker", "spk").getId());
    EXPECT_TRUE(DeviceTuning(3LL, "internal_speaker", "speaker", "spk").isDirty());
}

TEST(RecordsTest, WhichChangesMarkARecordDirty) {
    IeqPreset ieq(1LL, 2, "flat");
    Profile profile(1LL, 2, "music", false);
    ProfileEndpoint endpoint(1L, 2, ENDPOINT_SPEAKER, 0);
    Tuning tuning(1L, "t", ENDPOINT_SPEAKER, false, false);
    DeviceTuning binding("usb", "usb", "t");
    endpoint.set(IEQ_ENABLE, {1});
    auto dirtyAfter = [](auto& record, const std::function<void()>& change) {
        record.setDirty(false);
        change();
        return record.isDirty();
    };
    // Even when nothing changes.
    EXPECT_TRUE(dirtyAfter(ieq, [&] { ieq.setName("flat"); }));
    EXPECT_TRUE(dirtyAfter(profile, [&] { profile.setName("music"); }));
    EXPECT_TRUE(dirtyAfter(profile, [&] { profile.setSelectedGeqPreset(2); }));
    EXPECT_TRUE(dirtyAfter(endpoint, [&] { endpoint.setSelectedIeqPreset(4); }));
    EXPECT_TRUE(dirtyAfter(endpoint, [&] { endpoint.set(IEQ_ENABLE, {1}); }));
    // The flags are not stored values.
    EXPECT_FALSE(dirtyAfter(profile, [&] { profile.setMobility(true); }));
    EXPECT_FALSE(dirtyAfter(tuning, [&] { tuning.setMono(true); }));
    EXPECT_FALSE(dirtyAfter(tuning, [&] { tuning.setEndpoint("headphone"); }));
    EXPECT_FALSE(dirtyAfter(binding, [] {}));
}

TEST(RecordsTest, TuningEndpointNamesAndReadonly) {
    Tuning inMemory("hp", ENDPOINT_HEADPHONE, true);
    EXPECT_TRUE(inMemory.isReadonly());
    EXPECT_TRUE(inMemory.isMono());
    EXPECT_FALSE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, false).isReadonly());
    EXPECT_TRUE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, true).isReadonly());
    // Only the exact names move the endpoint; anything else leaves the headphone it started as.
    const std::pair<const char*, Endpoint> cases[] = {
        {"speaker", ENDPOINT_SPEAKER},     {"other", ENDPOINT_OTHER},
        {"headphone", ENDPOINT_HEADPHONE}, {"Speaker", ENDPOINT_HEADPHONE},
        {"", ENDPOINT_HEADPHONE},          {"internal_speaker", ENDPOINT_HEADPHONE},
        {"speaker ", ENDPOINT_HEADPHONE}};
    for (const auto& [name, expected] : cases) {
        Tuning tuning("t", ENDPOINT_HEADPHONE, false);
        tuning.setEndpoint(name);
        EXPECT_EQ(expected, tuning.getEndpoint()) << '"' << name << '"';
    }
}

TEST(RecordsTest, PresetAndProfileNumbers) {
    IeqPreset preset(7LL, -3, "warm");
    EXPECT_EQ(-3, preset.getPresetId());
    EXPECT_EQ((std::map<Parameter, std::vector<int>>{{IEQ_ID, {-3}}}), preset.values);
    // A profile starts on its own GEQ preset.
    EXPECT_EQ(3, Profile(3, "cinema", false).getSelectedGeqPreset());
    EXPECT_EQ(4, Profile(20LL, 4, "custom", true).getSelectedGeqPreset());
}

TEST(RecordsTest, ToStringFormats) {
    Tuning tuning(12L, "speaker_tuning", ENDPOINT_SPEAKER, true, false);
    tuning.set(OUTPUT_CHANNELS, {2});
    EXPECT_EQ(
        "id=12\nname=speaker_tuning\nendpoint=speaker\nmono=true\nreadonly=false\n"
        "output_channels=2,\n",
        tuning.toString());
    IeqPreset ieq(7LL, 5, "warm");
    ieq.set(IEQ_TARGET, {-1, 0});
    EXPECT_EQ("id=7\npresetId=5\nname=warm\nieq_target=-1,0,\n", ieq.toString());
    GeqPreset geq(1);
    geq.set(GEQ_GAIN, {0, -3, 12});
    EXPECT_EQ("id=-1\nprofileId=1\ngeq_gain=0,-3,12,\n", geq.toString());
    Profile profile(4LL, 2, "music", false);
    profile.setSelectedGeqPreset(0);
    EXPECT_EQ("id=4\nprofileId=2\nname=music\nmobility=false\nselectedGeqPreset=0\n",
              profile.toString());
    ProfileEndpoint endpoint(1, ENDPOINT_OTHER, 6);
    endpoint.set(IEQ_ENABLE, {});
    EXPECT_EQ("id=-1\nprofileId=1\nendpoint=other\nselectedIeqPreset=6\nieq_enable=\n",
              endpoint.toString());
    EXPECT_EQ("id=9\ndevice=bluetooth\nport=bt_a2dp\ntuning=bt_tuning",
              DeviceTuning(9LL, "bluetooth", "bt_a2dp", "bt_tuning").toString());
}

// Equality looks at the record's keys and values, never at its id, dirty flag, name or flags.
TEST(RecordsTest, EqualityComparesKeysAndValues) {
    using Values = std::map<Parameter, std::vector<int>>;
    const Values base = {{GEQ_FREQUENCY, {100, 1000}}, {GEQ_GAIN, {1, 2, 3}}};
    const Values longer = {{GEQ_FREQUENCY, {100, 1000}}, {GEQ_GAIN, {1, 2, 3, 0}}};
    const Values changed = {{GEQ_FREQUENCY, {100, 1000}}, {GEQ_GAIN, {1, 2, 4}}};
    const Values fewer = {{GEQ_GAIN, {1, 2, 3}}};
    for (const Values* values : {&base, &longer, &changed, &fewer}) {
        GeqPreset mine(1);
        mine.values = base;
        GeqPreset other(99LL, 1);
        other.values = *values;
        EXPECT_EQ(values == &base, mine.equals(other));
        EXPECT_EQ(values == &base, other.equals(mine));
    }
    EXPECT_FALSE(GeqPreset(3).equals(GeqPreset(4)));

    Profile movie(1, "movie", false);
    Profile film(8LL, 1, "film", true);
    film.setSelectedGeqPreset(3);
    EXPECT_TRUE(movie.equals(film));
    film.values = base;
    EXPECT_FALSE(movie.equals(film));
    EXPECT_FALSE(movie.equals(Profile(2, "movie", false)));

    ProfileEndpoint endpoint(2, ENDPOINT_HEADPHONE, 4);
    EXPECT_TRUE(endpoint.equals(ProfileEndpoint(30L, 2, ENDPOINT_HEADPHONE, 4)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(3, ENDPOINT_HEADPHONE, 4)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_SPEAKER, 4)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_HEADPHONE, 0)));
    endpoint.values = base;
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_HEADPHONE, 4)));
}

}  // namespace
}  // namespace korva
