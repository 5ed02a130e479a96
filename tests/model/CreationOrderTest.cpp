#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "model/CreationOrder.h"
#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Tuning.h"

namespace korva {
namespace {

TEST(CreationOrderTest, SerialsIncreaseAcrossRecordTypes) {
    Tuning tuning("t", ENDPOINT_SPEAKER, false);
    DeviceTuning deviceTuning("usb", "usb", "t");
    IeqPreset preset(1LL, 2, "p");
    EXPECT_LT(tuning.getCreationSerial(), deviceTuning.getCreationSerial());
    EXPECT_LT(deviceTuning.getCreationSerial(), preset.getCreationSerial());
}

TEST(CreationOrderTest, OrdersRecordsByCreationNotByAddress) {
    // Allocated in one order, then handed to the set in reverse: whatever the addresses, the
    // profile numbers must come back in creation order.
    std::vector<std::unique_ptr<GeqPreset>> presets;
    for (int i = 0; i < 50; ++i) {
        presets.push_back(std::make_unique<GeqPreset>(i));
    }
    std::set<GeqPreset*> records;
    for (auto it = presets.rbegin(); it != presets.rend(); ++it) {
        records.insert(it->get());
    }
    std::vector<GeqPreset*> ordered = inCreationOrder(records);
    ASSERT_EQ(presets.size(), ordered.size());
    for (size_t i = 0; i < ordered.size(); ++i) {
        EXPECT_EQ(static_cast<int>(i), ordered[i]->getProfileId());
    }
}

TEST(CreationOrderTest, LaterRecordAtAReusedAddressComesLast) {
    // Reuse freed memory so that a later record may sit at a lower address.
    auto first = std::make_unique<DeviceTuning>("a", "a", "a");
    auto second = std::make_unique<DeviceTuning>("b", "b", "b");
    first.reset();
    auto third = std::make_unique<DeviceTuning>("c", "c", "c");
    std::set<DeviceTuning*> records = {second.get(), third.get()};
    std::vector<DeviceTuning*> ordered = inCreationOrder(records);
    ASSERT_EQ(2u, ordered.size());
    EXPECT_EQ("b", ordered[0]->getDevice());
    EXPECT_EQ("c", ordered[1]->getDevice());
}

TEST(CreationOrderTest, EmptySet) {
    EXPECT_TRUE(inCreationOrder(std::set<Tuning*>()).empty());
}

TEST(CreationOrderTest, SerialsStayUniqueWhenThreadsCreateRecords) {
    constexpr int kPerThread = 2000;
    std::vector<uint64_t> serials[2];
    auto create = [](std::vector<uint64_t>* out) {
        for (int i = 0; i < kPerThread; ++i) {
            GeqPreset preset(i);
            out->push_back(preset.getCreationSerial());
        }
    };
    std::thread a(create, &serials[0]);
    std::thread b(create, &serials[1]);
    a.join();
    b.join();
    std::set<uint64_t> all(serials[0].begin(), serials[0].end());
    all.insert(serials[1].begin(), serials[1].end());
    EXPECT_EQ(2u * kPerThread, all.size());
    for (const auto& list : serials) {
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
    }
}

}  // namespace
}  // namespace korva
