// The effect parameter cache on a store loaded from a tuning file: what reaches the effect when
// the profile, content processing, a port's tuning device or the user's gains change.

#include <android-base/properties.h>
#include <gtest/gtest.h>

#include "E2eSupport.h"
#include "ExpectedCodes.h"
#include "RecordingEffect.h"
#include "TestPaths.h"
#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

const int kDom = codeOf("dom");
const int kGebs = codeOf("gebs");
// The default mix matrix length (58 + 2) plus the enable word.
constexpr int kDomCapacity = 61;

std::vector<int> range(int first, int last, int step = 1) {
    std::vector<int> values;
    for (int value = first; value <= last; value += step) {
        values.push_back(value);
    }
    return values;
}

std::vector<int> joined(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Profile 0's graphic EQ in loader-profiles.xml: 20 bands of 100 Hz, gains -10 to 9.
const std::vector<int> kBands = joined({20}, range(100, 2000, 100));

// The speaker tuning bound without device id: enable word, then endpoint 0, orientation 3 and
// the matrix 1 to 6.
const std::vector<int> kSpeakerTuningDom = {1, 0, 3, 1, 2, 3, 4, 5, 6};

class CacheOnProfilesFileTest : public ::testing::Test {
protected:
    LoadedStore mLoaded{testDataFile("loader-profiles.xml")};
    SpatializerParamCache mCache;
    RecordingEffect mEffect;
};

TEST_F(CacheOnProfilesFileTest, ContentProcessingOnSendsTheFileBlobWithTheSpeakerTuningMatrix) {
    mCache.setProfile(PROFILE_DYNAMIC);
    EXPECT_TRUE(mCache.isTuningAvailable());
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, false), 0);

    // Every entry goes as it is (the graphic EQ with the profile's gains, which are the file's),
    // except the speaker's matrix, which comes from the speaker's tuning device.
    std::vector<EffectCall> expected;
    for (const BlobEntry& entry : readBlob(mLoaded.store().getXMLProfileParams(0))) {
        if (entry.device == kSpeakerDevice && entry.code == "dom") {
            ASSERT_EQ(entry.values, (std::vector<int>{1, 0, 1, 1, 2, 3, 4, 5, 6}));
            expected.push_back(EffectCall::setParam(kSpeakerDevice, kDom, kSpeakerTuningDom));
        } else {
            expected.push_back(sendsOf({entry})[0]);
        }
    }
    expected.push_back(EffectCall::commit(kAllDevices));
    ASSERT_EQ(expected.size(), 104u);
    EXPECT_EQ(mEffect.calls(), expected);
}

TEST_F(CacheOnProfilesFileTest, ProfileSwitchSendsTheNewProfilesBlob) {
    mCache.setProfile(PROFILE_MOVIE);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, false), 0);
    // Profile 1 has no GEQ preset and no speaker endpoint: its headphone groups go as they are.
    std::vector<EffectCall> expected = sendsOf(readBlob(mLoaded.store().getXMLProfileParams(1)));
    ASSERT_EQ(expected.size(), 72u);
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(mEffect.calls(), expected);

    // The file has no music profile: nothing is sent, and the built-in blob still serves.
    mEffect.clearCalls();
    mCache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, false), 0);
    EXPECT_TRUE(mEffect.calls().empty()) << mEffect.describe();
    EXPECT_EQ(mCache.setKorvaContentProfile(PROFILE_MUSIC, &mEffect), 0);
    expected = sendsOf(readBuiltinTable(SpatializerParamArray::mMusicProfileParams,
                                        SpatializerParamArray::kProfileTableWords));
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(mEffect.calls(), expected);
}

TEST_F(CacheOnProfilesFileTest, ContentProcessingOffSwitchesContentFeaturesOff) {
    mEffect.setAnswer(kSpeakerDevice, kDom, kSpeakerTuningDom);
    mEffect.setAnswer(kA2dpDevice, kDom, {1, 1, 2});
    mEffect.setAnswer(kUsbDevice, kDom, {0, 1, 2});
    mCache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, false, false), 0);

    // Profile-level entries are left alone; the graphic EQ goes as it is. Per device: content
    // switches go to 0, device processing (beon) and the virtual bass switch (vbon) as they are,
    // and the effect's matrix comes back disabled.
    std::vector<EffectCall> expected = {
        EffectCall::setParam(kAllDevices, kGebs, joined(kBands, range(-10, 9)))};
    const std::vector<std::pair<int, std::vector<int>>> doms = {
        {kSpeakerDevice, {0, 0, 3, 1, 2, 3, 4, 5, 6}},
        {kA2dpDevice, {0, 1, 2}},
        {kUsbDevice, {0, 1, 2}}};
    for (const auto& [device, dom] : doms) {
        std::vector<EffectCall> group = {
            EffectCall::setParam(device, codeOf("geon"), {0}),
            EffectCall::setParam(device, codeOf("ieon"), {0}),
            EffectCall::setParam(device, codeOf("beon"), {}),
            EffectCall::setParam(device, codeOf("deon"), {0}),
            EffectCall::setParam(device, codeOf("ngon"), {0}),
            EffectCall::setParam(device, codeOf("vbon"), {2}),
            EffectCall::setParam(device, codeOf("dvle"), {0}),
            EffectCall::getParam(device, kDom, kDomCapacity),
            EffectCall::setParam(device, kDom, dom),
        };
        expected.insert(expected.end(), group.begin(), group.end());
    }
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(mEffect.calls(), expected) << mEffect.describe();
}

TEST_F(CacheOnProfilesFileTest, MultichannelContentSendsDeviceProcessingThenTheBuiltinBlobs) {
    // The effect's speaker matrix is on already: the common blob's matrix is not re-sent.
    mEffect.setAnswer(kSpeakerDevice, kDom, kSpeakerTuningDom);
    mCache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, true), 0);

    std::vector<EffectCall> expected = {
        EffectCall::setParam(kAllDevices, kGebs, joined(kBands, range(-10, 9))),
        EffectCall::setParam(kSpeakerDevice, codeOf("beon"), {}),
        EffectCall::setParam(kSpeakerDevice, codeOf("vbon"), {2}),
        EffectCall::setParam(kSpeakerDevice, kDom, kSpeakerTuningDom),
        EffectCall::setParam(kA2dpDevice, codeOf("beon"), {}),
        EffectCall::setParam(kA2dpDevice, codeOf("vbon"), {2}),
        EffectCall::setParam(kUsbDevice, codeOf("beon"), {}),
        EffectCall::setParam(kUsbDevice, codeOf("vbon"), {2}),
        EffectCall::commit(kAllDevices),
    };
    for (const BlobEntry& entry : readBuiltinTable(SpatializerParamArray::mCommonParams,
                                                   SpatializerParamArray::kCommonTableWords)) {
        if (entry.device == kSpeakerDevice && entry.code == "dom") {
            expected.push_back(EffectCall::getParam(kSpeakerDevice, kDom, kDomCapacity));
        } else {
            expected.push_back(sendsOf({entry})[0]);
        }
    }
    expected.push_back(EffectCall::commit(kAllDevices));
    std::vector<EffectCall> dynamic = sendsOf(readBuiltinTable(
        SpatializerParamArray::mDynamicProfileParams, SpatializerParamArray::kProfileTableWords));
    expected.insert(expected.end(), dynamic.begin(), dynamic.end());
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(mEffect.calls(), expected) << mEffect.describe();
}

TEST_F(CacheOnProfilesFileTest, SelectingASpeakerTuningDeviceSendsItsMatrixAndBlob) {
    mEffect.setAnswer(kSpeakerDevice, kDom, kSpeakerTuningDom);
    EXPECT_EQ(mCache.setSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER, "spk_loud", &mEffect), 0);

    // The effect's enable word, then spk_loud's words: endpoint 0, orientation 1, matrix 7 to 10.
    std::vector<EffectCall> expected = {
        EffectCall::getParam(kSpeakerDevice, kDom, kDomCapacity),
        EffectCall::setParam(kSpeakerDevice, kDom, {1, 0, 1, 7, 8, 9, 10}),
    };
    // Then spk_loud's blob: a two-channel speaker tuning with a bass-enhancer boost of 3.
    std::vector<EffectCall> blob = sendsOf(entriesFor(
        kSpeakerDevice, tuningCodes(kAudioOptimizer),
        {{"aobs", {0, 2}}, {"beb", {3}}, {"arsa", {2, 0, 0}}, {"arbs", {0}}, {"dsoe", {0}}}));
    expected.insert(expected.end(), blob.begin(), blob.end());
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(mEffect.calls(), expected) << mEffect.describe();
    EXPECT_EQ(mLoaded.store().getSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER), "spk_loud");

    // Selected already: nothing is sent. A device of another port: refused, nothing is sent.
    mEffect.clearCalls();
    EXPECT_EQ(mCache.setSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER, "spk_loud", &mEffect), 0);
    EXPECT_EQ(mCache.setSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER, "default_usb", &mEffect), -22);
    EXPECT_TRUE(mEffect.calls().empty()) << mEffect.describe();
    EXPECT_EQ(mLoaded.store().getSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER), "spk_loud");

    // Content processing now takes the new device's matrix for the speaker, with the count of
    // the profile's own entry.
    mCache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, false), 0);
    bool found = false;
    for (const EffectCall& call : mEffect.calls(EffectCall::SET_PARAM)) {
        if (call.deviceId == kSpeakerDevice && call.code == kDom) {
            found = true;
            EXPECT_EQ(call.count, 9);
            EXPECT_EQ(std::vector<int>(call.values.begin(), call.values.begin() + 7),
                      (std::vector<int>{1, 0, 1, 7, 8, 9, 10}));
        }
    }
    EXPECT_TRUE(found) << mEffect.describe();
}

TEST_F(CacheOnProfilesFileTest, LoadTuningSendsEachDefaultDeviceWithItsPortBit) {
    EXPECT_EQ(mCache.loadTuning(&mEffect), 0);
    std::vector<EffectCall> expected;
    for (int device : {kWiredHeadphoneDevice, kA2dpDevice, kUsbDevice}) {
        std::vector<EffectCall> blob = sendsOf(entriesFor(
            device, tuningCodes(kAudioOptimizer),
            {{"aobs", {0, 2}}, {"arsa", {2, 0, 0}}, {"arbs", {0}}, {"dhfm", {1}}, {"dsoe", {0}}}));
        expected.insert(expected.end(), blob.begin(), blob.end());
        expected.push_back(EffectCall::commit(kAllDevices));
    }
    EXPECT_EQ(mEffect.calls(), expected) << mEffect.describe();
}

// The user's gains persisted before the store is made replace the file's gains.
class UserGainsOnProfilesFileTest : public ::testing::Test {
protected:
    static bool persistUserGains() {
        return android::base::SetProperty("persist.vendor.audio.sfx.hd.eq", "1,2,3,4,5,6,7,8,9,10");
    }

    bool mPersisted = persistUserGains();
    LoadedStore mLoaded{testDataFile("loader-profiles.xml")};
    SpatializerParamCache mCache;
    RecordingEffect mEffect;
};

// 1 to 10 dB clamped at 6, spread over 20 bands in 1/16 dB (sum 1480, mean 74) and made
// relative to their mean.
const std::vector<int> kRestoredGains = {-58, -50, -42, -34, -26, -18, -10, -2, 6,  14,
                                         22,  22,  22,  22,  22,  22,  22,  22, 22, 22};

TEST_F(UserGainsOnProfilesFileTest, RestoredGainsReachTheGraphicEq) {
    ASSERT_TRUE(mPersisted);
    // Only profile 0 had gains from the file; profile 1 gets none.
    std::map<int, std::vector<int>> gains = {{0, kRestoredGains}};
    EXPECT_EQ(mLoaded.peer().profileGeqGains(), gains);

    mCache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(mCache.getProfileGeqGains(), kRestoredGains);
    EXPECT_EQ(mCache.updateContentProcEnabled(&mEffect, true, false), 0);
    std::vector<EffectCall> geq;
    for (const EffectCall& call : mEffect.calls(EffectCall::SET_PARAM)) {
        if (call.code == kGebs) {
            geq.push_back(call);
        }
    }
    EXPECT_EQ(geq, (std::vector<EffectCall>{
                       EffectCall::setParam(kAllDevices, kGebs, joined(kBands, kRestoredGains))}));
}

TEST_F(UserGainsOnProfilesFileTest, NewGainsGoIntoTheEffectsGraphicEq) {
    ASSERT_TRUE(mPersisted);
    mEffect.setAnswer(kAllDevices, kGebs, joined(kBands, kRestoredGains));
    mCache.setProfile(PROFILE_DYNAMIC);
    std::vector<int> newGains = range(1, 20);
    EXPECT_EQ(mCache.setProfileGeqGains(newGains, &mEffect), 0);
    EXPECT_EQ(mEffect.calls(),
              (std::vector<EffectCall>{
                  EffectCall::getParam(kAllDevices, kGebs, 41),
                  EffectCall::setParam(kAllDevices, kGebs, joined(kBands, newGains)),
                  EffectCall::commit(kAllDevices),
              }));
    EXPECT_EQ(mLoaded.peer().profileGeqGains().at(0), newGains);
}

// A speaker matrix longer than the default one is read back whole when content processing is
// switched off.
TEST(CacheOnTuningsFileTest, LongSpeakerMatrixIsReadBackWhole) {
    LoadedStore loaded(testDataFile("loader-tunings.xml"));
    SpatializerParamCache cache;
    RecordingEffect effect;
    std::vector<int> dom = joined({1, 0, 1}, range(1, 64));
    effect.setAnswer(kSpeakerDevice, kDom, dom);
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(cache.updateContentProcEnabled(&effect, false, false), 0);

    dom[0] = 0;
    std::vector<EffectCall> expected = {
        EffectCall::setParam(kSpeakerDevice, codeOf("geon"), {0}),
        EffectCall::setParam(kSpeakerDevice, codeOf("ieon"), {0}),
        EffectCall::setParam(kSpeakerDevice, codeOf("beon"), {}),
        EffectCall::setParam(kSpeakerDevice, codeOf("deon"), {0}),
        EffectCall::setParam(kSpeakerDevice, codeOf("ngon"), {0}),
        EffectCall::setParam(kSpeakerDevice, codeOf("vbon"), {1}),
        EffectCall::setParam(kSpeakerDevice, codeOf("dvle"), {0}),
        // 66 words filed for the speaker tuning device, plus the enable word.
        EffectCall::getParam(kSpeakerDevice, kDom, 67),
        EffectCall::setParam(kSpeakerDevice, kDom, dom),
        EffectCall::commit(kAllDevices),
    };
    EXPECT_EQ(effect.calls(), expected) << effect.describe();
}

}  // namespace
}  // namespace korva::test
