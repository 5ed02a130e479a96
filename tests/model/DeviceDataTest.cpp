#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/CreationOrder.h"
#include "model/DeviceData.h"

namespace korva {
namespace {

TEST(DeviceDataTest, ValidateDataFollowsTheIeqSwitch) {
    struct Case {
        const char* name;
        std::optional<std::vector<int>> ieqEnable;  // nullopt: no entry at all
        int selectedBefore;
        int selectedAfter;
        bool dirtyAfter;
    };
    const Case cases[] = {{"switched off", std::vector<int>{0}, 4, 0, true},
                          {"switched off and already 0", std::vector<int>{0}, 0, 0, true},
                          {"switched on", std::vector<int>{1}, 4, 4, false},
                          {"negative counts as on", std::vector<int>{-1}, 4, 4, false},
                          {"only the first value counts", std::vector<int>{0, 1}, 4, 0, true},
                          {"empty switch counts as on", std::vector<int>{}, 4, 4, false},
                          {"missing switch counts as on", std::nullopt, 4, 4, false}};
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

}  // namespace
}  // namespace korva
