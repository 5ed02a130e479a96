#include <gtest/gtest.h>

#include <vector>

#include "tools/SimulatedEffect.h"

namespace korva::tool {
namespace {

constexpr int kDom = 0x6d6f64;

TEST(SimulatedEffectTest, AnswersWhatItWasSentWithinTheCapacity) {
    SimulatedEffect effect;
    const int sent[] = {1, 2, 3, 4};
    EXPECT_EQ(effect.setParam(0x2, kDom, sent, 4), 0);

    int buffer[8] = {};
    int count = 8;
    EXPECT_EQ(effect.getParam(0x2, kDom, buffer, &count), 0);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(std::vector<int>(buffer, buffer + 4), (std::vector<int>{1, 2, 3, 4}));

    int small[2] = {};
    count = 2;
    EXPECT_EQ(effect.getParam(0x2, kDom, small, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::vector<int>(small, small + 2), (std::vector<int>{1, 2}));
    EXPECT_EQ(effect.getParamSize(0x2, kDom), 4);
}

TEST(SimulatedEffectTest, UnknownParameterFailsAndLeavesTheCount) {
    SimulatedEffect effect;
    int buffer[4] = {9, 9, 9, 9};
    int count = 4;
    EXPECT_EQ(effect.getParam(0x8, kDom, buffer, &count), -22);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(buffer[0], 9);
    EXPECT_EQ(effect.getParamSize(0x8, kDom), -22);
}

TEST(SimulatedEffectTest, RecordsEveryCallInOrder) {
    SimulatedEffect effect;
    const int one[] = {5};
    effect.setParam(0x40000000, kDom, one, 1);
    int buffer[3];
    int count = 3;
    effect.getParam(0x2, kDom, buffer, &count);
    effect.commit(0x40000000);

    const std::vector<EffectCall> calls = effect.takeCalls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].kind, EffectCall::kSetParam);
    EXPECT_EQ(calls[0].values, std::vector<int>{5});
    EXPECT_EQ(calls[1].kind, EffectCall::kGetParam);
    EXPECT_EQ(calls[1].count, 3);
    EXPECT_EQ(calls[1].result, -22);
    EXPECT_EQ(calls[2].kind, EffectCall::kCommit);
    EXPECT_EQ(calls[2].deviceId, 0x40000000);
    EXPECT_TRUE(effect.takeCalls().empty());
}

}  // namespace
}  // namespace korva::tool
