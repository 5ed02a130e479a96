#include <android/log.h>
#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "engine/VexParamStore.h"
#include "translator/VexEffect.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

using Words = std::vector<int>;

constexpr const char* kInvalidMessage =
    "sendSharedStore() Invalid data for setting parameter values.";

VexParamStore& freshStore() {
    VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
    store.clear();
    return store;
}

unsigned int byteSize(const Words& words) {
    return static_cast<unsigned int>(words.size() * sizeof(int));
}

TEST(VexEffectTest, SendSharedStoreStoresEveryEntryAndCommitsOnce) {
    VexParamStore& store = freshStore();
    const int dvle = vexParameterCode(DVLE);
    const int geon = vexParameterCode(GEON);
    Words blob = {0x40000000, 3, 0x2, dvle, 1, 1, 0x8, dvle, 2, 4, 5, 0x2, geon, 0};
    VexEffect effect(0, android::String16());
    test::LogCapture log;
    EXPECT_EQ(0, effect.sendSharedStore(blob.data(), byteSize(blob)));
    EXPECT_EQ((Words{1}), store.getParam(0x2, dvle));
    EXPECT_EQ((Words{4, 5}), store.getParam(0x8, dvle));
    EXPECT_TRUE(store.hasParam(0x2, geon));
    EXPECT_TRUE(store.getParam(0x2, geon).empty());
    EXPECT_EQ(3u, store.paramCount());
    EXPECT_EQ(1, store.commitCount());
    EXPECT_TRUE(log.messages("VexEffect").empty());
}

TEST(VexEffectTest, BlobWithoutEntriesStillCommits) {
    VexParamStore& store = freshStore();
    Words blob = {0, 0};
    VexEffect effect(0, android::String16());
    EXPECT_EQ(0, effect.sendSharedStore(blob.data(), byteSize(blob)));
    EXPECT_EQ(0u, store.paramCount());
    EXPECT_EQ(1, store.commitCount());
}

TEST(VexEffectTest, InvalidBlobsAreRejectedWhole) {
    const int dvle = vexParameterCode(DVLE);
    struct Case {
        const char* name;
        Words blob;
    };
    const Case cases[] = {
        {"count beyond entries", {0, 2, 0x2, dvle, 1, 1}},
        {"values cut short", {0, 1, 0x2, dvle, 3, 1, 2}},
        {"negative value count", {0, 1, 0x2, dvle, -1}},
        {"negative entry count", {0, -1}},
        {"header only half there", {0}},
    };
    for (const Case& c : cases) {
        VexParamStore& store = freshStore();
        VexEffect effect(0, android::String16());
        test::LogCapture log;
        Words blob = c.blob;
        EXPECT_EQ(-22, effect.sendSharedStore(blob.data(), byteSize(blob))) << c.name;
        EXPECT_EQ(0u, store.paramCount()) << c.name;
        EXPECT_EQ(0, store.commitCount()) << c.name;
        ASSERT_EQ(1u, log.lines().size()) << c.name;
        EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority) << c.name;
        EXPECT_EQ(1u, log.count(kInvalidMessage, "VexEffect")) << c.name;
    }
}

TEST(VexEffectTest, SendReportsMinus22WhateverTheStoreDid) {
    VexParamStore& store = freshStore();
    VexEffect effect(0, android::String16());
    Words valid = {0, 1, 0x80, vexParameterCode(VOL), 1, 9};
    EXPECT_EQ(-22, effect.send(0, valid));
    EXPECT_EQ((Words{9}), store.getParam(0x80, vexParameterCode(VOL)));
    EXPECT_EQ(1, store.commitCount());

    test::LogCapture log;
    Words invalid = {0, 5};
    EXPECT_EQ(-22, effect.send(0, invalid));
    EXPECT_EQ(1, store.commitCount());
    EXPECT_EQ(1u, log.count(kInvalidMessage, "VexEffect"));
}

TEST(VexEffectTest, TrivialOperations) {
    VexEffect effect(7, android::String16("ignored"));
    Words out = {1};
    EXPECT_EQ(0, effect.receive(0, out));
    EXPECT_EQ((Words{1}), out);
    EXPECT_TRUE(effect.hasControl());
    EXPECT_EQ(0, effect.setEnabled(true));
}

}  // namespace
}  // namespace korva
