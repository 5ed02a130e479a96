#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/DeviceData.h"

namespace korva {
namespace {

TEST(DeviceDataTest, StartsEmpty) {
    DeviceData data;
    EXPECT_EQ("", data.getFormatVersion());
    EXPECT_EQ("", data.getToolVersion());
    EXPECT_EQ("", data.getSignature());
    EXPECT_EQ(0, data.getOrbexGameSystemGain());
    EXPECT_TRUE(data.getIeqPresets().empty());
    EXPECT_TRUE(data.getGeqPresets().empty());
    EXPECT_TRUE(data.getProfiles().empty());
    EXPECT_TRUE(data.getProfileEndpoints().empty());
    EXPECT_TRUE(data.getTunings().empty());
    EXPECT_TRUE(data.getDeviceTunings().empty());
}

TEST(DeviceDataTest, HeaderFields) {
    DeviceData data;
    data.setFormatVersion("2.1");
    data.setToolVersion("tool 5.0.3");
    data.setSignature("c2lnbmF0dXJl");
    data.setOrbexGameSystemGain(-6);
    EXPECT_EQ("2.1", data.getFormatVersion());
    EXPECT_EQ("tool 5.0.3", data.getToolVersion());
    EXPECT_EQ("c2lnbmF0dXJl", data.getSignature());
    EXPECT_EQ(-6, data.getOrbexGameSystemGain());
    data.setFormatVersion(data.getFormatVersion());
    EXPECT_EQ("2.1", data.getFormatVersion());
}

// Every set setter must copy the pointers, share the records and leave the caller's set alone.
template <typename T>
void checkSetCopy(std::set<T*>& (DeviceData::*get)(), void (DeviceData::*put)(std::set<T*>&),
                  std::vector<std::unique_ptr<T>>& records) {
    DeviceData data;
    std::set<T*> source;
    for (auto& record : records) {
        source.insert(record.get());
    }
    (data.*put)(source);
    EXPECT_EQ(source, (data.*get)());
    EXPECT_NE(&source, &(data.*get)());

    source.clear();
    EXPECT_EQ(records.size(), (data.*get)().size());

    // The container's own set handed back to it stays as it is.
    (data.*put)((data.*get)());
    EXPECT_EQ(records.size(), (data.*get)().size());

    // A second call replaces the content rather than adding to it.
    std::set<T*> one = {records.front().get()};
    (data.*put)(one);
    EXPECT_EQ(one, (data.*get)());
}

TEST(DeviceDataTest, SetSettersCopyThePointers) {
    std::vector<std::unique_ptr<IeqPreset>> ieq;
    std::vector<std::unique_ptr<GeqPreset>> geq;
    std::vector<std::unique_ptr<Profile>> profiles;
    std::vector<std::unique_ptr<ProfileEndpoint>> endpoints;
    std::vector<std::unique_ptr<Tuning>> tunings;
    std::vector<std::unique_ptr<DeviceTuning>> deviceTunings;
    for (int i = 0; i < 3; ++i) {
        ieq.push_back(std::make_unique<IeqPreset>(i, "ieq"));
        geq.push_back(std::make_unique<GeqPreset>(i));
        profiles.push_back(std::make_unique<Profile>(i, "p", false));
        endpoints.push_back(std::make_unique<ProfileEndpoint>(i, ENDPOINT_SPEAKER, 0));
        tunings.push_back(std::make_unique<Tuning>("t", ENDPOINT_SPEAKER, false));
        deviceTunings.push_back(std::make_unique<DeviceTuning>("usb", "usb", "t"));
    }
    checkSetCopy(&DeviceData::getIeqPresets, &DeviceData::setIeqPresets, ieq);
    checkSetCopy(&DeviceData::getGeqPresets, &DeviceData::setGeqPresets, geq);
    checkSetCopy(&DeviceData::getProfiles, &DeviceData::setProfiles, profiles);
    checkSetCopy(&DeviceData::getProfileEndpoints, &DeviceData::setProfileEndPoints, endpoints);
    checkSetCopy(&DeviceData::getTunings, &DeviceData::setTunings, tunings);
    checkSetCopy(&DeviceData::getDeviceTunings, &DeviceData::setDeviceTunings, deviceTunings);
}

TEST(DeviceDataTest, DestroyingTheContainerLeavesTheRecords) {
    auto tuning = std::make_unique<Tuning>("t", ENDPOINT_SPEAKER, false);
    tuning->set(ORIENTATION, {1});
    {
        auto data = std::make_unique<DeviceData>();
        std::set<Tuning*> tunings = {tuning.get()};
        data->setTunings(tunings);
        data->getTunings().clear();
    }
    EXPECT_EQ(std::vector<int>{1}, tuning->values.at(ORIENTATION));
}

TEST(DeviceDataTest, ValidateDataFollowsTheIeqSwitch) {
    struct Case {
        const char* name;
        std::optional<std::vector<int>> ieqEnable;  // nullopt: no entry at all
        int selectedBefore;
        int selectedAfter;
        bool dirtyAfter;
    };
    const std::vector<Case> cases = {
        {"switched off", std::vector<int>{0}, 4, 0, true},
        {"switched off and already 0", std::vector<int>{0}, 0, 0, true},
        {"switched on", std::vector<int>{1}, 4, 4, false},
        {"negative counts as on", std::vector<int>{-1}, 4, 4, false},
        {"only the first value counts", std::vector<int>{0, 1}, 4, 0, true},
        {"empty switch counts as on", std::vector<int>{}, 4, 4, false},
        {"missing switch counts as on", std::nullopt, 4, 4, false},
    };
    std::vector<std::unique_ptr<ProfileEndpoint>> records;
    std::set<ProfileEndpoint*> endpoints;
    for (const Case& c : cases) {
        records.push_back(
            std::make_unique<ProfileEndpoint>(1L, 0, ENDPOINT_SPEAKER, c.selectedBefore));
        if (c.ieqEnable) {
            records.back()->set(IEQ_ENABLE, *c.ieqEnable);
        }
        records.back()->setDirty(false);
        endpoints.insert(records.back().get());
    }
    DeviceData data;
    data.setProfileEndPoints(endpoints);
    data.validateData();
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(cases[i].selectedAfter, records[i]->getSelectedIeqPreset());
        EXPECT_EQ(cases[i].dirtyAfter, records[i]->isDirty());
        // A missing switch is left behind as an empty entry.
        EXPECT_EQ(1u, records[i]->values.count(IEQ_ENABLE));
    }
}

TEST(DeviceDataTest, ValidateDataWithoutProfileEndpointsChangesNothing) {
    IeqPreset preset(1LL, 0, "off");
    preset.setDirty(false);
    std::set<IeqPreset*> presets = {&preset};
    DeviceData data;
    data.setIeqPresets(presets);
    data.validateData();
    EXPECT_FALSE(preset.isDirty());
    EXPECT_EQ(1u, data.getIeqPresets().size());
    EXPECT_TRUE(data.getProfileEndpoints().empty());
}

}  // namespace
}  // namespace korva
