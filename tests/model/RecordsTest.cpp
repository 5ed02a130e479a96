#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "model/CreationOrder.h"
#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {
namespace {

using Values = std::map<Parameter, std::vector<int>>;

TEST(RecordsTest, ConstructorsSetIdDirtyAndNumbers) {
    // Records read from a file (no id) start dirty; stored ones start clean, but for IEQ presets.
    const std::tuple<ParameterValues*, int64_t, bool> cases[] = {
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
        // Deleted through the base, as the reader does.
        std::unique_ptr<ParameterValues> record(std::get<0>(cases[i]));
        EXPECT_EQ(std::get<1>(cases[i]), record->getId()) << i;
        EXPECT_EQ(std::get<2>(cases[i]), record->isDirty()) << i;
    }
    EXPECT_EQ(-1, DeviceTuning("internal_speaker", "speaker", "spk").getId());
    EXPECT_TRUE(DeviceTuning(3LL, "internal_speaker", "speaker", "spk").isDirty());

    IeqPreset preset(7LL, -3, "warm");
    EXPECT_EQ(-3, preset.getPresetId());
    EXPECT_EQ((Values{{IEQ_ID, {-3}}}), preset.values);
    // A profile starts on its own GEQ preset; only a tuning with an id can be writable.
    EXPECT_EQ(3, Profile(3, "cinema", false).getSelectedGeqPreset());
    EXPECT_EQ(4, Profile(20LL, 4, "custom", true).getSelectedGeqPreset());
    EXPECT_TRUE(Tuning("hp", ENDPOINT_HEADPHONE, true).isReadonly());
    EXPECT_FALSE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, false).isReadonly());
    EXPECT_TRUE(Tuning(1L, "hp", ENDPOINT_HEADPHONE, false, true).isReadonly());
}

TEST(RecordsTest, WhichChangesMarkARecordDirty) {
    IeqPreset ieq(1LL, 2, "flat");
    Profile profile(1LL, 2, "music", false);
    ProfileEndpoint endpoint(1L, 2, ENDPOINT_SPEAKER, 0);
    Tuning tuning(1L, "t", ENDPOINT_SPEAKER, false, false);
    auto dirtyAfter = [](ParameterValues& record, const std::function<void()>& change) {
        record.setDirty(false);
        change();
        return record.isDirty();
    };
    // Even when nothing changes; the flags are not stored values.
    EXPECT_TRUE(dirtyAfter(ieq, [&] { ieq.setName("flat"); }));
    EXPECT_TRUE(dirtyAfter(profile, [&] { profile.setName("music"); }));
    EXPECT_TRUE(dirtyAfter(profile, [&] { profile.setSelectedGeqPreset(2); }));
    EXPECT_TRUE(dirtyAfter(endpoint, [&] { endpoint.setSelectedIeqPreset(0); }));
    EXPECT_TRUE(dirtyAfter(endpoint, [&] { endpoint.set(IEQ_ENABLE, {}); }));
    EXPECT_FALSE(dirtyAfter(profile, [&] { profile.setMobility(true); }));
    EXPECT_FALSE(dirtyAfter(tuning, [&] { tuning.setMono(true); }));
    EXPECT_TRUE(tuning.isMono());
}

TEST(RecordsTest, SetReplacesOneEntryPerParameter) {
    Tuning tuning(1L, "spk", ENDPOINT_SPEAKER, false, false);
    std::vector<int> source = {90, 180};
    tuning.set(ORIENTATION, source);
    source.push_back(7);
    // The record keeps its own copy, and stores even parameters it does not accept.
    tuning.set(GEQ_GAIN, {});
    EXPECT_EQ((Values{{GEQ_GAIN, {}}, {ORIENTATION, {90, 180}}}), tuning.values);
    tuning.set(GEQ_GAIN, {-4});
    EXPECT_EQ((Values{{GEQ_GAIN, {-4}}, {ORIENTATION, {90, 180}}}), tuning.values);
    // Setting the stored vector itself must not lose it.
    tuning.set(ORIENTATION, tuning.values[ORIENTATION]);
    EXPECT_EQ((std::vector<int>{90, 180}), tuning.values.at(ORIENTATION));
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

TEST(RecordsTest, EachRecordTypeAcceptsItsParameters) {
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

// The loader walks the record sets in creation order, so that the blobs do not depend on where
// the allocator put the records.
TEST(RecordsTest, CreationOrderIsNotAddressOrder) {
    // Records built into one block from its end to its start: creation order is the reverse of
    // address order whatever the allocator does (valgrind and ASan never reuse freed memory).
    constexpr int kCount = 8;
    alignas(DeviceTuning) unsigned char block[kCount][sizeof(DeviceTuning)];
    std::set<DeviceTuning*> records;
    std::vector<std::string> expected;
    for (int i = kCount - 1; i >= 0; --i) {
        records.insert(new (block[i]) DeviceTuning(std::to_string(i), "usb", "t"));
        expected.push_back(std::to_string(i));
    }
    std::vector<std::string> ordered;
    for (DeviceTuning* record : inCreationOrder(records)) ordered.push_back(record->getDevice());
    EXPECT_EQ(expected, ordered);
    for (DeviceTuning* record : records) record->~DeviceTuning();
    // One counter for every record type.
    Tuning tuning("t", ENDPOINT_SPEAKER, false);
    DeviceTuning binding("usb", "usb", "t");
    EXPECT_LT(tuning.getCreationSerial(), binding.getCreationSerial());
}

}  // namespace
}  // namespace korva
