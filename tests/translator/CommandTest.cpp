// The command buffer every blob is made of, and its hand-over to the engine.

#include <android/log.h>
#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "engine/VexParamStore.h"
#include "translator/SetParamCommand.h"
#include "translator/VexEffect.h"

namespace korva {
namespace {

using Words = std::vector<int>;

TEST(SetParamCommandTest, EveryOverloadAppendsOneEntryInTheBlobLayout) {
    SetParamCommand cmd(3);
    EXPECT_EQ((Words{3, 0}), cmd.mBuffer);
    Words a = {1, 2}, empty, c = {7};
    cmd.add(DVLE, 5);
    cmd.add(IEON, &a);
    cmd.add(IEON, &empty);
    cmd.setDeviceId(0x8);
    cmd.add(GEBS, {&a, &empty, &c});
    cmd.add(GEBS, {&empty, &empty});
    cmd.add(IEBS, 9, {&a, &empty});
    cmd.add(IEBS, -4, {&empty});
    // Earlier entries keep their device id, a repeated parameter is a second entry, and the count
    // word is left for execute() to write.
    const int ieon = vexParameterCode(IEON), gebs = vexParameterCode(GEBS);
    const int iebs = vexParameterCode(IEBS);
    // clang-format off
    EXPECT_EQ((Words{3, 0, -1, 0x656C7664, 1, 5, -1, ieon, 2, 1, 2, -1, ieon, 0,
                     8, gebs, 3, 1, 2, 7, 8, gebs, 0, 8, iebs, 3, 9, 1, 2, 8, iebs, 1, -4}),
              cmd.mBuffer);
    // clang-format on
    EXPECT_EQ(7, cmd.mCount);
}

TEST(SetParamCommandTest, ExecuteHandsTheEntriesToTheEngineAndCommitsOnce) {
    VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
    store.clear();
    VexEffect effect(0, android::String16());
    test::LogCapture log;
    SetParamCommand cmd(2);
    EXPECT_EQ(0, cmd.execute(effect));
    EXPECT_EQ((Words{2, 0}), cmd.mBuffer);
    EXPECT_EQ(0, store.commitCount());

    Words gains = {3, -2}, none;
    cmd.setDeviceId(0x2);
    cmd.add(DVLE, 1);
    cmd.add(GEON, &none);
    cmd.setDeviceId(0x8);
    cmd.add(DVLE, 2, {&gains});
    // send() reports -22 whether or not the engine took the blob.
    EXPECT_EQ(-22, cmd.execute(effect));
    EXPECT_EQ(3, cmd.mBuffer[1]);
    EXPECT_EQ((Words{1}), store.getParam(0x2, vexParameterCode(DVLE)));
    EXPECT_EQ((Words{2, 3, -2}), store.getParam(0x8, vexParameterCode(DVLE)));
    EXPECT_TRUE(store.hasParam(0x2, vexParameterCode(GEON)));
    EXPECT_EQ(3u, store.paramCount());
    EXPECT_EQ(1, store.commitCount());
    // A blob without entries still commits.
    Words empty = {0, 0};
    EXPECT_EQ(0, effect.sendSharedStore(empty.data(), 8));
    EXPECT_EQ(2, store.commitCount());
    EXPECT_TRUE(log.lines().empty());

    // A blob whose second entry runs past its end is refused whole, with one error line.
    const int dvle = vexParameterCode(DVLE);
    Words cut = {0, 2, 0x4, dvle, 1, 1, 0x4, dvle, 3, 1};
    EXPECT_EQ(-22, effect.send(0, cut));
    EXPECT_EQ(3u, store.paramCount());
    EXPECT_EQ(2, store.commitCount());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
    EXPECT_EQ(
        1u, log.count("sendSharedStore() Invalid data for setting parameter values.", "VexEffect"));
}

}  // namespace
}  // namespace korva
