// The recording effect answers and records as the cache tests rely on.
#include <gtest/gtest.h>

#include "CacheTestSupport.h"
#include "RecordingEffect.h"

namespace korva::test {
namespace {

TEST(RecordingEffectTest, GetParamCopiesNoMoreThanTheCapacity) {
    RecordingEffect effect;
    effect.setAnswer(2, 7, {1, 2, 3, 4});
    int buffer[3] = {9, 9, 9};
    const struct {
        int capacity;
        int reported;
        std::vector<int> buffer;
    } cases[] = {{2, 2, {1, 2, 9}}, {3, 3, {1, 2, 3}}, {0, 0, {9, 9, 9}}};
    for (const auto& c : cases) {
        std::fill(buffer, buffer + 3, 9);
        int count = c.capacity;
        EXPECT_EQ(0, effect.getParam(2, 7, buffer, &count));
        EXPECT_EQ(c.reported, count);
        EXPECT_EQ(c.buffer, std::vector<int>(buffer, buffer + 3));
    }
}

TEST(RecordingEffectTest, GetParamReportsTheConfiguredCountAndResult) {
    RecordingEffect effect;
    effect.setAnswer(2, 7, {5}, -3, 41);
    int value = 0;
    int count = 1;
    EXPECT_EQ(-3, effect.getParam(2, 7, &value, &count));
    EXPECT_EQ(41, count);
    EXPECT_EQ(5, value);
}

TEST(RecordingEffectTest, UnknownParametersLeaveTheBufferAlone) {
    RecordingEffect effect;
    effect.setAnswer(2, 7, {5});
    int value = 4;
    int count = 1;
    EXPECT_EQ(-22, effect.getParam(8, 7, &value, &count));
    effect.setUnknownResult(-19);
    EXPECT_EQ(-19, effect.getParam(2, 8, &value, &count));
    EXPECT_EQ(-19, effect.getParamSize(2, 8));
    EXPECT_EQ(1, effect.getParamSize(2, 7));
    EXPECT_EQ(4, value);
    EXPECT_EQ(1, count);
}

TEST(RecordingEffectTest, RecordsEveryCallInOrder) {
    RecordingEffect effect;
    effect.setCommitResult(5);
    effect.setSetParamResult(-1);
    const int values[] = {1, 2, 3};
    int count = 10;
    EXPECT_EQ(-1, effect.setParam(8, code(DOM), values, 2));
    effect.getParam(2, code(GEBS), nullptr, &count);
    effect.getParamSize(2, code(VOL));
    EXPECT_EQ(-1, effect.setParam(8, code(VOL), nullptr, 3));
    EXPECT_EQ(5, effect.commit(kAll));
    const std::vector<EffectCall> expected = {
        EffectCall::setParam(8, code(DOM), {1, 2}),
        EffectCall::getParam(2, code(GEBS), 10),
        {EffectCall::GET_PARAM_SIZE, 2, code(VOL), {}, 0},
        {EffectCall::SET_PARAM, 8, code(VOL), {}, 3},
        EffectCall::commit(kAll),
    };
    EXPECT_EQ(expected, effect.calls());
    EXPECT_EQ(2u, effect.calls(EffectCall::SET_PARAM).size());
    EXPECT_EQ(
        "setParam(0x8, \"dom\", {1, 2}, 2)\ngetParam(0x2, \"gebs\", capacity 10)\n"
        "getParamSize(0x2, \"vol\")\nsetParam(0x8, \"vol\", {}, 3)\ncommit(0x40000000)\n",
        effect.describe());
    // A count that differs from the values listed is compared as recorded.
    EXPECT_EQ(EffectCall::setParamCounted(8, code(DOM), {1, 2, 3}, 2), effect.calls()[0]);
}

}  // namespace
}  // namespace korva::test
