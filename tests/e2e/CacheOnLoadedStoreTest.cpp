// The effect parameter cache on a store loaded from a tuning file: where what the loader filed
// meets what the cache sends.

#include <android-base/properties.h>
#include <gtest/gtest.h>

#include "E2eSupport.h"
#include "TestPaths.h"
#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

const int kDom = codeOf("dom");

TEST(CacheOnLoadedStoreTest, ContentProcessingSendsTheFileBlobWithTheSpeakerTuningsMatrix) {
    LoadedStore loaded(testDataFile("loader-profiles.xml"));
    SpatializerParamCache cache;
    RecordingEffect effect;
    cache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, false));

    // Every entry goes as it is, except the speaker's matrix: the enable word, then the words of
    // the speaker tuning bound without device id (endpoint 0, orientation 3, matrix 1 to 6).
    std::vector<EffectCall> expected;
    for (const BlobEntry& e : readBlob(loaded.store().getXMLProfileParams(PROFILE_DYNAMIC))) {
        bool speakerDom = e.device == kSpeakerDevice && e.code == "dom";
        expected.push_back(EffectCall::setParam(
            e.device, codeOf(e.code),
            speakerDom ? std::vector<int>{1, 0, 3, 1, 2, 3, 4, 5, 6} : e.values));
    }
    expected.push_back(EffectCall::commit(kAllDevices));
    ASSERT_EQ(104u, expected.size());
    EXPECT_EQ(expected, effect.calls());
}

// The user's gains persisted before the store is made replace the gains of the file's preset.
TEST(CacheOnLoadedStoreTest, RestoredUserGainsReachTheGraphicEq) {
    ASSERT_TRUE(
        android::base::SetProperty("persist.vendor.audio.sfx.hd.eq", "1,2,3,4,5,6,7,8,9,10"));
    LoadedStore loaded(testDataFile("loader-profiles.xml"));
    SpatializerParamCache cache;
    RecordingEffect effect;
    // 1 to 10 dB clamped at 6, spread over 20 bands in 1/16 dB (mean 74), made relative to
    // their mean. Profile 1 had no gains from the file and gets none.
    const std::vector<int> gains = {-58, -50, -42, -34, -26, -18, -10, -2, 6,  14,
                                    22,  22,  22,  22,  22,  22,  22,  22, 22, 22};
    EXPECT_EQ((std::map<int, std::vector<int>>{{0, gains}}), loaded.peer().profileGeqGains());

    cache.setProfile(PROFILE_DYNAMIC);
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, false));
    std::vector<int> gebs = {20};
    for (int f = 100; f <= 2000; f += 100) gebs.push_back(f);
    gebs.insert(gebs.end(), gains.begin(), gains.end());
    int sent = 0;
    for (const EffectCall& call : effect.calls(EffectCall::SET_PARAM)) {
        if (call.code == codeOf("gebs")) {
            sent++;
            EXPECT_EQ(EffectCall::setParam(kAllDevices, codeOf("gebs"), gebs), call);
        }
    }
    EXPECT_EQ(1, sent);
}

// A speaker matrix longer than the default one is read back whole when content processing is
// switched off.
TEST(CacheOnLoadedStoreTest, LongSpeakerMatrixIsReadBackWhole) {
    LoadedStore loaded(testDataFile("loader-tunings.xml"));
    SpatializerParamCache cache;
    RecordingEffect effect;
    std::vector<int> dom = {1, 0, 1};
    for (int i = 1; i <= 64; i++) dom.push_back(i);
    effect.setAnswer(kSpeakerDevice, kDom, dom);
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, false, false));

    dom[0] = 0;
    std::vector<EffectCall> expected;
    for (const auto& [code, values] :
         std::vector<std::pair<std::string, std::vector<int>>>{{"geon", {0}},
                                                               {"ieon", {0}},
                                                               {"beon", {}},
                                                               {"deon", {0}},
                                                               {"ngon", {0}},
                                                               {"vbon", {1}},
                                                               {"dvle", {0}}}) {
        expected.push_back(EffectCall::setParam(kSpeakerDevice, codeOf(code), values));
    }
    // 66 words filed for the speaker tuning device, plus the enable word.
    expected.push_back(EffectCall::getParam(kSpeakerDevice, kDom, 67));
    expected.push_back(EffectCall::setParam(kSpeakerDevice, kDom, dom));
    expected.push_back(EffectCall::commit(kAllDevices));
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
}

}  // namespace
}  // namespace korva::test
