#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Parameter.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {
namespace {

TEST(RecordsTest, ConstructorsSetIdAndDirty) {
    struct Case {
        const char* name;
        std::function<std::unique_ptr<ParameterValues>()> make;
        int64_t id;
        bool dirty;
    };
    const std::vector<Case> cases = {
        {"Tuning without id", [] { return std::make_unique<Tuning>("a", ENDPOINT_SPEAKER, false); },
         -1, true},
        {"Tuning with id",
         [] { return std::make_unique<Tuning>(11L, "a", ENDPOINT_SPEAKER, false, false); }, 11,
         false},
        {"IeqPreset without id", [] { return std::make_unique<IeqPreset>(5, "a"); }, -1, true},
        {"IeqPreset with id is dirty too", [] { return std::make_unique<IeqPreset>(7LL, 5, "a"); },
         7, true},
        {"GeqPreset without id", [] { return std::make_unique<GeqPreset>(2); }, -1, true},
        {"GeqPreset with id", [] { return std::make_unique<GeqPreset>(8LL, 2); }, 8, false},
        {"Profile without id", [] { return std::make_unique<Profile>(1, "movie", true); }, -1, true},
        {"Profile with id", [] { return std::make_unique<Profile>(9LL, 1, "movie", true); }, 9,
         false},
        {"ProfileEndpoint without id",
         [] { return std::make_unique<ProfileEndpoint>(1, ENDPOINT_HEADPHONE, 3); }, -1, true},
        {"ProfileEndpoint with id",
         [] { return std::make_unique<ProfileEndpoint>(1LL << 40, 1, ENDPOINT_HEADPHONE, 3); },
         1LL << 40, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::unique_ptr<ParameterValues> record = c.make();
        EXPECT_EQ(c.id, record->getId());
        EXPECT_EQ(c.id, record->id);
        EXPECT_EQ(c.dirty, record->isDirty());
    }

    DeviceTuning withoutId("internal_speaker", "speaker", "spk");
    DeviceTuning withId(3LL, "internal_speaker", "speaker", "spk");
    EXPECT_EQ(-1, withoutId.getId());
    EXPECT_EQ(3, withId.getId());
    EXPECT_TRUE(withoutId.isDirty());
    EXPECT_TRUE(withId.isDirty());
}

TEST(RecordsTest, DirtyRulesOfTheSetters) {
    struct Case {
        const char* name;
        std::function<bool()> run;  // runs the setter on a clean record, returns isDirty()
        bool dirty;
    };
    auto onClean = [](auto record, auto change) {
        record->setDirty(false);
        change(*record);
        return record->isDirty();
    };
    const std::vector<Case> cases = {
        {"IeqPreset::setName",
         [&] {
             return onClean(std::make_unique<IeqPreset>(1LL, 2, "flat"),
                            [](IeqPreset& r) { r.setName("flat"); });
         },
         true},
        {"Profile::setName",
         [&] {
             return onClean(std::make_unique<Profile>(1LL, 2, "music", false),
                            [](Profile& r) { r.setName("music"); });
         },
         true},
        {"Profile::setSelectedGeqPreset with the same value",
         [&] {
             return onClean(std::make_unique<Profile>(1LL, 2, "music", false),
                            [](Profile& r) { r.setSelectedGeqPreset(2); });
         },
         true},
        {"ProfileEndpoint::setSelectedIeqPreset",
         [&] {
             return onClean(std::make_unique<ProfileEndpoint>(1L, 2, ENDPOINT_SPEAKER, 0),
                            [](ProfileEndpoint& r) { r.setSelectedIeqPreset(4); });
         },
         true},
        {"Profile::setMobility",
         [&] {
             return onClean(std::make_unique<Profile>(1LL, 2, "music", false),
                            [](Profile& r) { r.setMobility(true); });
         },
         false},
        {"Tuning::setMono",
         [&] {
             return onClean(std::make_unique<Tuning>(1L, "t", ENDPOINT_SPEAKER, false, false),
                            [](Tuning& r) { r.setMono(true); });
         },
         false},
        {"Tuning::setEndpoint",
         [&] {
             return onClean(std::make_unique<Tuning>(1L, "t", ENDPOINT_SPEAKER, false, false),
                            [](Tuning& r) { r.setEndpoint("headphone"); });
         },
         false},
        {"DeviceTuning::setDirty(false)",
         [&] {
             return onClean(std::make_unique<DeviceTuning>("usb", "usb", "t"), [](DeviceTuning&) {});
         },
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.dirty, c.run());
    }
}

TEST(RecordsTest, TuningFlagsAndEndpointLookup) {
    Tuning inMemory("hp", ENDPOINT_HEADPHONE, true);
    EXPECT_TRUE(inMemory.isReadonly());
    EXPECT_TRUE(inMemory.isMono());
    EXPECT_EQ("hp", inMemory.getName());
    EXPECT_FALSE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, false).isReadonly());
    EXPECT_TRUE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, true).isReadonly());

    struct Case {
        const char* name;
        Endpoint expected;
    };
    // Starts from headphone; unknown names, device names and other cases leave it alone.
    const std::vector<Case> cases = {
        {"speaker", ENDPOINT_SPEAKER},     {"other", ENDPOINT_OTHER},
        {"headphone", ENDPOINT_HEADPHONE}, {"Speaker", ENDPOINT_HEADPHONE},
        {"", ENDPOINT_HEADPHONE},          {"internal_speaker", ENDPOINT_HEADPHONE},
        {"speaker ", ENDPOINT_HEADPHONE},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Tuning tuning("t", ENDPOINT_HEADPHONE, false);
        tuning.setEndpoint(c.name);
        EXPECT_EQ(c.expected, tuning.getEndpoint());
    }
    EXPECT_EQ(3u, Tuning::kEndpNameToEndpoint.size());
}

TEST(RecordsTest, IeqPresetKeepsItsNumberAsIeqId) {
    IeqPreset preset(7LL, 5, "warm");
    EXPECT_TRUE(preset.isDirty());
    EXPECT_EQ(5, preset.getPresetId());
    EXPECT_EQ(std::vector<int>{5}, preset.values.at(IEQ_ID));
    EXPECT_EQ(1u, preset.values.size());
    preset.setName("cold");
    EXPECT_EQ("cold", preset.getName());

    IeqPreset inMemory(-3, "neg");
    EXPECT_EQ(std::vector<int>{-3}, inMemory.values.at(IEQ_ID));
    EXPECT_EQ(-3, inMemory.getPresetId());
}

TEST(RecordsTest, ProfileSelectsItsOwnGeqPreset) {
    EXPECT_EQ(3, Profile(3, "cinema", false).getSelectedGeqPreset());
    EXPECT_EQ(4, Profile(20LL, 4, "custom", true).getSelectedGeqPreset());
    Profile profile(0, "dynamic", false);
    profile.setSelectedGeqPreset(2);
    EXPECT_EQ(2, profile.getSelectedGeqPreset());
    EXPECT_EQ(0, profile.getProfileId());
}

TEST(RecordsTest, ToStringFormats) {
    Tuning tuning(12L, "speaker_tuning", ENDPOINT_SPEAKER, true, false);
    tuning.set(OUTPUT_CHANNELS, {2});
    EXPECT_EQ(
        "id=12\nname=speaker_tuning\nendpoint=speaker\nmono=true\nreadonly=false\n"
        "output_channels=2,\n",
        tuning.toString());

    IeqPreset ieq(7LL, 5, "warm");
    EXPECT_EQ("id=7\npresetId=5\nname=warm\n", ieq.toString());
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

    DeviceTuning deviceTuning(9LL, "bluetooth", "bt_a2dp", "bt_tuning");
    EXPECT_EQ("id=9\ndevice=bluetooth\nport=bt_a2dp\ntuning=bt_tuning", deviceTuning.toString());
    EXPECT_EQ("bluetooth", deviceTuning.getDevice());
    EXPECT_EQ("bt_a2dp", deviceTuning.getPort());
    EXPECT_EQ("bt_tuning", deviceTuning.getTuning());
}

TEST(RecordsTest, GeqPresetEquality) {
    struct Case {
        const char* name;
        std::function<void(GeqPreset&)> changeOther;
        bool equal;
    };
    const std::vector<Case> cases = {
        {"same content", [](GeqPreset&) {}, true},
        {"id and dirty do not count",
         [](GeqPreset& o) {
             o.id = 99;
             o.setDirty(false);
         },
         true},
        {"other value",
         [](GeqPreset& o) {
             o.set(GEQ_GAIN, {1, 2, 4});
         },
         false},
        {"longer vector",
         [](GeqPreset& o) {
             o.set(GEQ_GAIN, {1, 2, 3, 0});
         },
         false},
        {"shorter vector",
         [](GeqPreset& o) {
             o.set(GEQ_GAIN, {1, 2});
         },
         false},
        {"extra entry", [](GeqPreset& o) { o.set(VIRTUAL_BASS_TYPE, {}); }, false},
        {"missing entry", [](GeqPreset& o) { o.values.erase(GEQ_FREQUENCY); }, false},
        {"same values set in the other order",
         [](GeqPreset& o) {
             o.values.clear();
             o.set(GEQ_GAIN, {1, 2, 3});
             o.set(GEQ_FREQUENCY, {100, 1000});
         },
         true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GeqPreset mine(1);
        mine.set(GEQ_FREQUENCY, {100, 1000});
        mine.set(GEQ_GAIN, {1, 2, 3});
        GeqPreset other(5LL, 1);
        other.set(GEQ_FREQUENCY, {100, 1000});
        other.set(GEQ_GAIN, {1, 2, 3});
        c.changeOther(other);
        EXPECT_EQ(c.equal, mine.equals(other));
        EXPECT_EQ(c.equal, other.equals(mine));
    }
    GeqPreset alone(3);
    EXPECT_TRUE(alone.equals(alone));
    EXPECT_FALSE(alone.equals(GeqPreset(4)));
}

TEST(RecordsTest, ProfileEqualityComparesProfileIdAndValuesOnly) {
    Profile mine(1, "movie", false);
    mine.set(REVERB_SUPPRESSION_ENABLE, {1});
    Profile other(8LL, 1, "film", true);
    other.setSelectedGeqPreset(3);
    other.set(REVERB_SUPPRESSION_ENABLE, {1});
    EXPECT_TRUE(mine.equals(other));
    other.set(REVERB_SUPPRESSION_ENABLE, {0});
    EXPECT_FALSE(mine.equals(other));
    Profile otherId(2, "movie", false);
    otherId.set(REVERB_SUPPRESSION_ENABLE, {1});
    EXPECT_FALSE(mine.equals(otherId));
}

TEST(RecordsTest, ProfileEndpointEqualityComparesItsKeys) {
    struct Case {
        const char* name;
        int profileId;
        Endpoint endpoint;
        int selectedIeqPreset;
        bool equal;
    };
    const std::vector<Case> cases = {
        {"same keys", 2, ENDPOINT_HEADPHONE, 4, true},
        {"other profile", 3, ENDPOINT_HEADPHONE, 4, false},
        {"other endpoint", 2, ENDPOINT_SPEAKER, 4, false},
        {"other selected preset", 2, ENDPOINT_HEADPHONE, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ProfileEndpoint mine(2, ENDPOINT_HEADPHONE, 4);
        mine.set(VOLMAX_BOOST, {3});
        ProfileEndpoint other(30L, c.profileId, c.endpoint, c.selectedIeqPreset);
        other.set(VOLMAX_BOOST, {3});
        EXPECT_EQ(c.equal, mine.equals(other));
    }
    ProfileEndpoint mine(2, ENDPOINT_HEADPHONE, 4);
    ProfileEndpoint other(2, ENDPOINT_HEADPHONE, 4);
    other.set(VOLMAX_BOOST, {3});
    EXPECT_FALSE(mine.equals(other));
}

}  // namespace
}  // namespace korva
