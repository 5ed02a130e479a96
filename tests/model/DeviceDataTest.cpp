#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "model/CreationOrder.h"
#include "model/DeviceData.h"

namespace korva {
namespace {

// A set setter copies the pointers: the records are shared, the caller's set is left alone, the
// container's own set handed back stays whole and a second call replaces the content.
template <typename T, typename... Args>
void checkSetCopy(std::set<T*>& (DeviceData::*get)(), void (DeviceData::*put)(std::set<T*>&),
                  Args... args) {
    std::vector<std::unique_ptr<T>> records;
    std::set<T*> source;
    for (int i = 0; i < 3; ++i) {
        records.push_back(std::make_unique<T>(args...));
        source.insert(records.back().get());
    }
    DeviceData data;
    (data.*put)(source);
    EXPECT_EQ(source, (data.*get)());
    source.clear();
    EXPECT_EQ(3u, (data.*get)().size());
    (data.*put)((data.*get)());
    EXPECT_EQ(3u, (data.*get)().size());
    std::set<T*> one = {records.front().get()};
    (data.*put)(one);
    EXPECT_EQ(one, (data.*get)());
    // Destroying the container leaves the records to their owner (checked under valgrind).
}

TEST(DeviceDataTest, SetSettersCopyThePointers) {
    checkSetCopy(&DeviceData::getIeqPresets, &DeviceData::setIeqPresets, 1, "ieq");
    checkSetCopy(&DeviceData::getGeqPresets, &DeviceData::setGeqPresets, 1);
    checkSetCopy(&DeviceData::getProfiles, &DeviceData::setProfiles, 1, "p", false);
    checkSetCopy(&DeviceData::getProfileEndpoints, &DeviceData::setProfileEndPoints, 1,
                 ENDPOINT_SPEAKER, 0);
    checkSetCopy(&DeviceData::getTunings, &DeviceData::setTunings, "t", ENDPOINT_SPEAKER, false);
    checkSetCopy(&DeviceData::getDeviceTunings, &DeviceData::setDeviceTunings, "usb", "usb", "t");
}

TEST(DeviceDataTest, ValidateDataFollowsTheIeqSwitch) {
    struct Case {
        const char* name;
        std::optional<std::vector<int>> ieqEnable;  // nullopt: no entry at all
        int selectedBefore;
        int selectedAfter;
        bool dirtyAfter;
    };
    const Case cases[] = {
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
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(cases[i].selectedAfter, records[i]->getSelectedIeqPreset());
        EXPECT_EQ(cases[i].dirtyAfter, records[i]->isDirty());
        // A missing switch is left behind as an empty entry.
        EXPECT_EQ(1u, records[i]->values.count(IEQ_ENABLE));
    }
}

// The loader walks the record sets in creation order, so that the blobs do not depend on where
// the allocator put the records.
TEST(CreationOrderTest, OrdersRecordsByCreationNotByAddress) {
    std::vector<std::unique_ptr<DeviceTuning>> created;
    for (int i = 0; i < 50; ++i) {
        created.push_back(std::make_unique<DeviceTuning>(std::to_string(i), "usb", "t"));
        if (i % 3 == 0) {
            created[i / 2].reset();  // freed memory that later records may reuse
        }
    }
    std::set<DeviceTuning*> records;
    std::vector<std::string> expected;
    for (auto& record : created) {
        if (record) {
            records.insert(record.get());
            expected.push_back(record->getDevice());
        }
    }
    std::vector<std::string> byAddress, ordered;
    for (DeviceTuning* record : records) byAddress.push_back(record->getDevice());
    for (DeviceTuning* record : inCreationOrder(records)) ordered.push_back(record->getDevice());
    ASSERT_NE(expected, byAddress) << "the allocator reused no memory: the test proves nothing";
    EXPECT_EQ(expected, ordered);
    // One counter for every record type.
    Tuning tuning("t", ENDPOINT_SPEAKER, false);
    DeviceTuning binding("usb", "usb", "t");
    EXPECT_LT(tuning.getCreationSerial(), binding.getCreationSerial());
}

TEST(CreationOrderTest, SerialsStayUniqueWhenThreadsCreateRecords) {
    constexpr int kPerThread = 2000;
    std::vector<uint64_t> serials[2];
    auto create = [](std::vector<uint64_t>* out) {
        for (int i = 0; i < kPerThread; ++i) out->push_back(GeqPreset(i).getCreationSerial());
    };
    std::thread a(create, &serials[0]);
    std::thread b(create, &serials[1]);
    a.join();
    b.join();
    std::set<uint64_t> all(serials[0].begin(), serials[0].end());
    all.insert(serials[1].begin(), serials[1].end());
    EXPECT_EQ(2u * kPerThread, all.size());
    EXPECT_TRUE(std::is_sorted(serials[0].begin(), serials[0].end()));
}

}  // namespace
}  // namespace korva
