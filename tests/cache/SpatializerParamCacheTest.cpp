// The cache's queries, the sending of built-in profile blobs and of the user's graphic-EQ gains.
#include <gtest/gtest.h>

#include "CacheTestSupport.h"
#include "LogCapture.h"
#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"

namespace korva::test {
namespace {

constexpr const char* kTag = "KrvSpatializerParamCache";
using S = SpatializerParamArray;

TEST(SpatializerParamCacheTest, QueriesReadTheStore) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    for (int port = -1; port <= 7; port++) {
        EXPECT_EQ(port == 3 || port == 4 || port == 5, cache.isValidPort(port)) << port;
    }
    for (int count : {-1, 0, 1, 5}) {
        peer.xmlTuningCount() = count;
        EXPECT_EQ(count > 0, cache.isTuningAvailable()) << count;
    }
    peer.profileGeqGains() = {{PROFILE_MOVIE, {1, 2, 3}}, {PROFILE_MUSIC, {7, 8}}};
    EXPECT_EQ((std::vector<int>{1, 2, 3}), cache.getProfileGeqGains());
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(PROFILE_MUSIC, peer.currentProfileId());
    EXPECT_EQ((std::vector<int>{7, 8}), cache.getProfileGeqGains());
    cache.setProfile(PROFILE_CUSTOM);
    EXPECT_TRUE(cache.getProfileGeqGains().empty());
}

// With two output channels, or without tunings, every built-in entry goes out unchanged, the
// speaker's mix matrix included, then one commit whose result is the operation's. Only the
// common table has mix matrices.
TEST(SpatializerParamCacheTest, ContentProfileSendsEveryBuiltinEntry) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    for (int channels : {2, 6}) {
        peer.tuningParamValue() = channels;
        peer.xmlTuningCount() = channels == 2 ? 1 : 0;
        RecordingEffect effect;
        effect.setCommitResult(7);
        EXPECT_EQ(7, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));
        std::vector<EffectCall> expected = builtinSends(S::mCommonParams);
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls()) << channels << "\n" << effect.describe();
    }
    LogCapture log;
    RecordingEffect effect;
    EXPECT_EQ(-22, cache.setKorvaContentProfile(static_cast<KrvSpatializerProfileId>(5), &effect));
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
    EXPECT_TRUE(
        log.contains("setKorvaContentProfile() Invalid data for profile parameter values.", kTag));
}

// With more than two output channels and tunings, the speaker's mix matrix is the tuning's: the
// built-in one is never sent, and the effect's own is only switched on when it is off.
TEST(SpatializerParamCacheTest, ContentProfileKeepsTheEffectsSpeakerMixMatrix) {
    std::vector<int> clamped(kDomCapacity, 0);
    clamped[0] = 1;
    clamped[1] = 9;
    const struct {
        const char* name;
        int getResult;
        std::vector<int> effectValues;
        int reportedCount;
        // What is sent after reading the effect's speaker "dom"; nothing when empty.
        std::vector<int> sentDom;
    } cases[] = {
        {"off: switched on", 0, {0, 15, 24, 5}, -1, {1, 15, 24, 5}},
        {"on: left alone", 0, {2, 15, 24, 5}, -1, {}},
        {"read fails: left alone", -5, {0, 15, 24, 5}, -1, {}},
        // No more is sent back than the buffer holds, whatever count the effect reports.
        {"count beyond the buffer", 0, {0, 9}, 500, clamped},
    };
    SpatializerParamArrayTestPeer peer;
    peer.tuningParamValue() = 3;
    peer.xmlTuningCount() = 1;
    for (const auto& c : cases) {
        LogCapture log;
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, code(DOM), c.effectValues, c.getResult, c.reportedCount);
        EXPECT_EQ(0, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));
        std::vector<EffectCall> expected;
        for (const EffectCall& call : builtinSends(S::mCommonParams)) {
            if (call.deviceId == kSpeaker && call.code == code(DOM)) {
                expected.push_back(EffectCall::getParam(kSpeaker, code(DOM), kDomCapacity));
                if (!c.sentDom.empty()) {
                    expected.push_back(sent(kSpeaker, DOM, c.sentDom));
                }
            } else {
                expected.push_back(call);
            }
        }
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
        EXPECT_EQ(
            1u, log.count("setKorvaContentProfile(): Hardcoded dom parameter values skipped", kTag))
            << c.name;
    }
}

// The gains go into the effect's own bands, at most twenty of them; the store keeps them whole.
TEST(SpatializerParamCacheTest, GeqGainsGoIntoTheEffectsBands) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    cache.setProfile(PROFILE_MUSIC);
    std::vector<int> effectGeq(41);
    for (int i = 0; i < 41; i++) effectGeq[i] = 1000 + i;
    for (int bands : {10, 20, 25}) {
        std::vector<int> gains(bands);
        for (int i = 0; i < bands; i++) gains[i] = -i;
        RecordingEffect effect;
        effect.setAnswer(kAll, code(GEBS), effectGeq);
        effect.setCommitResult(3);
        EXPECT_EQ(3, cache.setProfileGeqGains(gains, &effect));
        std::vector<int> sent = effectGeq;
        std::copy_n(gains.begin(), std::min(bands, 20), sent.begin() + 21);
        const std::vector<EffectCall> expected = {
            EffectCall::getParam(kAll, code(GEBS), 41),
            EffectCall::setParam(kAll, code(GEBS), sent),
            EffectCall::commit(kAll),
        };
        EXPECT_EQ(expected, effect.calls()) << bands << "\n" << effect.describe();
        EXPECT_EQ(gains, peer.profileGeqGains()[PROFILE_MUSIC]);
    }
    EXPECT_EQ(0u, peer.profileGeqGains().count(PROFILE_MOVIE));
}

TEST(SpatializerParamCacheTest, GeqGainsAreStoredButNotSentWhenTheEffectsBandsAreNotRight) {
    const struct {
        const char* name;
        std::vector<int> values;
        int result;
        int reportedCount;
    } cases[] = {
        {"20 values", std::vector<int>(20, 1), 0, -1},
        {"42 reported", std::vector<int>(41, 1), 0, 42},
        {"read fails", std::vector<int>(41, 1), -1, -1},
    };
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    for (const auto& c : cases) {
        LogCapture log;
        peer.profileGeqGains().clear();
        RecordingEffect effect;
        effect.setAnswer(kAll, code(GEBS), c.values, c.result, c.reportedCount);
        std::vector<int> gains(20, 16);
        EXPECT_EQ(-22, cache.setProfileGeqGains(gains, &effect)) << c.name;
        EXPECT_EQ(std::vector<EffectCall>{EffectCall::getParam(kAll, code(GEBS), 41)}, effect.calls())
            << c.name << "\n"
            << effect.describe();
        EXPECT_EQ(gains, peer.profileGeqGains()[PROFILE_MOVIE]) << c.name;
        EXPECT_TRUE(log.contains("setProfileGeqGains(): could not get proper GEQ parameters!", kTag))
            << c.name;
    }
}

TEST(SpatializerParamCacheTest, ANullEffectIsRefusedBeforeAnythingIsRead) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = Blob().add(kAll, VOL, {1});
    EXPECT_EQ(-22, cache.setKorvaContentProfile(PROFILE_MOVIE, nullptr));
    EXPECT_EQ(-22, cache.updateContentProcEnabled(nullptr, true, true));
    EXPECT_EQ(-22, cache.loadTuningDevice("default_headphone", nullptr));
    EXPECT_EQ(-22, cache.setSelectedTuningDevice(3, "x", nullptr));
    std::vector<int> gains(20, 1);
    EXPECT_EQ(-22, cache.setProfileGeqGains(gains, nullptr));
}

}  // namespace
}  // namespace korva::test
