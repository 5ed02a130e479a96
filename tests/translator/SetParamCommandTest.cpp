#include <gtest/gtest.h>

#include <vector>

#include "engine/VexParamStore.h"
#include "translator/SetParamCommand.h"
#include "translator/VexEffect.h"

namespace korva {
namespace {

using Words = std::vector<int>;

// Buffer words after the two header words.
Words entries(const SetParamCommand& cmd) {
    return Words(cmd.mBuffer.begin() + 2, cmd.mBuffer.end());
}

TEST(SetParamCommandTest, NewCommandHoldsOnlyTheHeader) {
    SetParamCommand cmd(0x40000000);
    EXPECT_EQ((Words{0x40000000, 0}), cmd.mBuffer);
    EXPECT_EQ(0, cmd.mCount);
    EXPECT_EQ(-1, cmd.mDeviceId);
}

TEST(SetParamCommandTest, EntryLayoutOfEachOverload) {
    Words a = {1, 2};
    Words b;
    Words c = {7};
    struct Case {
        const char* name;
        void (*build)(SetParamCommand&, Words&, Words&, Words&);
        Words expected;
    };
    const Case cases[] = {
        {"single value",
         [](SetParamCommand& cmd, Words&, Words&, Words&) { cmd.add(DVLE, 5); },
         {-1, 0x656C7664, 1, 5}},
        {"one list",
         [](SetParamCommand& cmd, Words& a, Words&, Words&) { cmd.add(IEON, &a); },
         {-1, 0x6E6F6569, 2, 1, 2}},
        {"empty list",
         [](SetParamCommand& cmd, Words&, Words& b, Words&) { cmd.add(IEON, &b); },
         {-1, 0x6E6F6569, 0}},
        {"lists joined",
         [](SetParamCommand& cmd, Words& a, Words& b, Words& c) {
             cmd.add(GEBS, {&a, &b, &c});
         },
         {-1, vexParameterCode(GEBS), 3, 1, 2, 7}},
        {"all lists empty",
         [](SetParamCommand& cmd, Words&, Words& b, Words&) {
             cmd.add(GEBS, {&b, &b});
         },
         {-1, vexParameterCode(GEBS), 0}},
        {"first value before lists",
         [](SetParamCommand& cmd, Words& a, Words& b, Words&) {
             cmd.add(IEBS, 9, {&a, &b});
         },
         {-1, vexParameterCode(IEBS), 3, 9, 1, 2}},
        {"first value alone",
         [](SetParamCommand& cmd, Words&, Words& b, Words&) { cmd.add(IEBS, -4, {&b}); },
         {-1, vexParameterCode(IEBS), 1, -4}},
    };
    for (const Case& c_ : cases) {
        SetParamCommand cmd(3);
        c_.build(cmd, a, b, c);
        EXPECT_EQ(c_.expected, entries(cmd)) << c_.name;
        EXPECT_EQ(1, cmd.mCount) << c_.name;
        // The count word is written only by execute().
        EXPECT_EQ(0, cmd.mBuffer[1]) << c_.name;
    }
    // The source lists are read, never changed.
    EXPECT_EQ((Words{1, 2}), a);
    EXPECT_TRUE(b.empty());
}

TEST(SetParamCommandTest, ThreeCharacterNameLeavesTopByteZero) {
    SetParamCommand cmd(0);
    cmd.add(VOL, 1);
    ASSERT_EQ(6u, cmd.mBuffer.size());
    EXPECT_EQ(0x006C6F76, cmd.mBuffer[3]);
    EXPECT_EQ(0, static_cast<uint32_t>(cmd.mBuffer[3]) >> 24);
}

TEST(SetParamCommandTest, DeviceIdAppliesOnlyToLaterEntries) {
    SetParamCommand cmd(1);
    cmd.add(DEON, 1);
    cmd.setDeviceId(0x8);
    cmd.add(DEON, 0);
    EXPECT_EQ((Words{-1, vexParameterCode(DEON), 1, 1, 0x8, vexParameterCode(DEON), 1, 0}),
              entries(cmd));
    EXPECT_EQ(0x8, cmd.mDeviceId);
}

TEST(SetParamCommandTest, SameParameterTwiceGivesTwoEntries) {
    SetParamCommand cmd(1);
    cmd.add(DEA, 3);
    cmd.add(DEA, 4);
    EXPECT_EQ(2, cmd.mCount);
    EXPECT_EQ((Words{-1, vexParameterCode(DEA), 1, 3, -1, vexParameterCode(DEA), 1, 4}),
              entries(cmd));
}

TEST(SetParamCommandTest, ExecuteOnEmptyCommandSendsNothing) {
    VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
    store.clear();
    VexEffect effect(0, android::String16());
    SetParamCommand cmd(2);
    EXPECT_EQ(0, cmd.execute(effect));
    EXPECT_EQ((Words{2, 0}), cmd.mBuffer);
    EXPECT_EQ(0, store.commitCount());
}

TEST(SetParamCommandTest, ExecuteWritesCountAndSendsToTheStore) {
    VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
    store.clear();
    VexEffect effect(0, android::String16());
    SetParamCommand cmd(2);
    cmd.setDeviceId(0x2);
    cmd.add(DVLE, 1);
    Words gains = {3, -2};
    cmd.add(GEBS, 2, {&gains});
    // send() reports -22 whether or not the store took the blob.
    EXPECT_EQ(-22, cmd.execute(effect));
    EXPECT_EQ(2, cmd.mBuffer[1]);
    EXPECT_EQ(2, cmd.mCount);
    EXPECT_EQ((Words{1}), store.getParam(0x2, vexParameterCode(DVLE)));
    EXPECT_EQ((Words{2, 3, -2}), store.getParam(0x2, vexParameterCode(GEBS)));
    EXPECT_EQ(1, store.commitCount());
}

}  // namespace
}  // namespace korva
