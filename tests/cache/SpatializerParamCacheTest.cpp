// The cache's simple operations, the sending of built-in profile blobs and the graphic-EQ gains.
#include <android/log.h>
#include <gtest/gtest.h>

#include "CacheTestSupport.h"
#include "LogCapture.h"
#include "RecordingEffect.h"
#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"

namespace korva {
namespace {

using test::Blob;
using test::EffectCall;
using test::kAll;
using test::kDomCapacity;
using test::kSpeaker;
using test::LogCapture;
using test::RecordingEffect;

constexpr const char* kTag = "KrvSpatializerParamCache";

TEST(SpatializerParamCacheTest, SetProfileStoresTheProfileInTheStore) {
    test::setLogLevel(2);
    LogCapture log;
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    EXPECT_EQ(1, peer.currentProfileId());
    cache.setProfile(PROFILE_CINEMA);
    EXPECT_EQ(3, peer.currentProfileId());
    cache.setProfile(PROFILE_COMMON);
    EXPECT_EQ(-1, peer.currentProfileId());
    EXPECT_TRUE(log.contains("setProfile(profile=3)", kTag));
    EXPECT_TRUE(log.contains("setProfile(profile=-1)", kTag));
}

TEST(SpatializerParamCacheTest, DebugLinesFollowTheLogLevelAtEachCall) {
    LogCapture log;
    SpatializerParamCache cache;
    test::setLogLevel(1);
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_FALSE(log.contains("setProfile(profile=2)", kTag));
    test::setLogLevel(2);
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(1u, log.count("setProfile(profile=2)", kTag));
}

TEST(SpatializerParamCacheTest, OnlyHeadphoneBluetoothAndUsbAreTuningPorts) {
    SpatializerParamCache cache;
    for (int port = -2; port <= 8; port++) {
        EXPECT_EQ(port == 3 || port == 4 || port == 5, cache.isValidPort(port)) << port;
    }
}

TEST(SpatializerParamCacheTest, TuningIsAvailableOnlyWithAPositiveTuningCount) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    const struct {
        int count;
        bool available;
    } cases[] = {{0, false}, {1, true}, {5, true}, {-1, false}};
    for (const auto& c : cases) {
        peer.xmlTuningCount() = c.count;
        EXPECT_EQ(c.available, cache.isTuningAvailable()) << c.count;
    }
}

TEST(SpatializerParamCacheTest, GetProfileGeqGainsFollowsTheCurrentProfile) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.profileGeqGains()[1] = {1, 2, 3};
    peer.profileGeqGains()[2] = {7, 8};
    EXPECT_EQ((std::vector<int>{1, 2, 3}), cache.getProfileGeqGains());
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ((std::vector<int>{7, 8}), cache.getProfileGeqGains());
    cache.setProfile(PROFILE_CUSTOM);
    EXPECT_TRUE(cache.getProfileGeqGains().empty());
}

// With the initial output channel count of 2, every built-in entry goes out unchanged, the
// speaker's mix matrix included, then one commit whose result is the operation's.
TEST(SpatializerParamCacheTest, ContentProfileSendsEveryBuiltinEntryWithTwoChannels) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.xmlTuningCount() = 1;
    ASSERT_EQ(2, peer.tuningParamValue());
    const struct {
        KrvSpatializerProfileId id;
        const int* table;
        size_t words;
        size_t entries;
    } cases[] = {
        {PROFILE_DYNAMIC, SpatializerParamArray::mDynamicProfileParams, 117, 27},
        {PROFILE_MOVIE, SpatializerParamArray::mMovieProfileParams, 117, 27},
        {PROFILE_MUSIC, SpatializerParamArray::mMusicProfileParams, 117, 27},
        {PROFILE_CINEMA, SpatializerParamArray::mCinemaProfileParams, 117, 27},
        {PROFILE_CUSTOM, SpatializerParamArray::mCustomProfileParams, 117, 27},
        {PROFILE_COMMON, SpatializerParamArray::mCommonParams, 456, 57},
    };
    for (const auto& c : cases) {
        RecordingEffect effect;
        effect.setCommitResult(7);
        EXPECT_EQ(7, cache.setKorvaContentProfile(c.id, &effect)) << c.id;
        std::vector<EffectCall> expected = test::builtinSends(c.table, c.words);
        ASSERT_EQ(c.entries, expected.size());
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls()) << c.id << "\n" << effect.describe();
    }
}

TEST(SpatializerParamCacheTest, ContentProfileOfTheMovieStartsWithItsBuiltinValues) {
    SpatializerParamCache cache;
    RecordingEffect effect;
    ASSERT_EQ(0, cache.setKorvaContentProfile(PROFILE_MOVIE, &effect));
    ASSERT_EQ(28u, effect.calls().size());
    EXPECT_EQ(EffectCall::setParam(kAll, test::code(MDLE), {0}), effect.calls()[0]);
    EXPECT_EQ(EffectCall::setParam(kAll, test::code(HVRC), {103, 32568, 11164, 5090, 0, 1, 2, 2}),
              effect.calls()[2]);
    EXPECT_EQ(EffectCall::setParam(kSpeaker, test::code(DSB), {88}), effect.calls()[7]);
}

TEST(SpatializerParamCacheTest, ContentProfileOfAnUnknownIdSendsNothing) {
    LogCapture log;
    SpatializerParamCache cache;
    RecordingEffect effect;
    EXPECT_EQ(-22, cache.setKorvaContentProfile(static_cast<KrvSpatializerProfileId>(5), &effect));
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
    EXPECT_TRUE(
        log.contains("setKorvaContentProfile() Invalid data for profile parameter values.", kTag));
}

// With more than two output channels and tunings, the speaker's mix matrix is the tuning's: the
// built-in one is never sent, and the effect's own is only switched on when it is off.
TEST(SpatializerParamCacheTest, ContentProfileKeepsTheEffectsSpeakerMixMatrix) {
    const std::vector<int> effectDom = {0, 15, 24, 5, 6};
    const std::vector<int> effectDomOn = {1, 15, 24, 5, 6};
    const struct {
        const char* name;
        int getResult;
        std::vector<int> effectValues;
        int tuningCount;
        // What replaces the built-in speaker "dom" entry in the expected calls.
        std::vector<EffectCall> domCalls;
    } cases[] = {
        {"off in the effect: switched on",
         0,
         effectDom,
         1,
         {EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity),
          EffectCall::setParam(kSpeaker, test::code(DOM), effectDomOn)}},
        {"on in the effect: left alone",
         0,
         {2, 15, 24, 5, 6},
         1,
         {EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity)}},
        {"read fails: left alone",
         -5,
         effectDom,
         3,
         {EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity)}},
    };
    for (const auto& c : cases) {
        test::setLogLevel(2);
        LogCapture log;
        SpatializerParamCache cache;
        SpatializerParamArrayTestPeer peer;
        peer.tuningParamValue() = 3;
        peer.xmlTuningCount() = c.tuningCount;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, test::code(DOM), c.effectValues, c.getResult);
        EXPECT_EQ(0, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));

        std::vector<EffectCall> expected;
        int replaced = 0;
        for (const EffectCall& call : test::builtinSends(SpatializerParamArray::mCommonParams)) {
            if (call.deviceId == kSpeaker && call.code == test::code(DOM)) {
                test::append(expected, c.domCalls);
                replaced++;
            } else {
                expected.push_back(call);
            }
        }
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(1, replaced);
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
        EXPECT_EQ(
            1u, log.count("setKorvaContentProfile(): Hardcoded dom parameter values skipped", kTag))
            << c.name;
    }
}

TEST(SpatializerParamCacheTest, ContentProfileSendsTheBuiltinMixMatrixWithoutTunings) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.tuningParamValue() = 6;
    peer.xmlTuningCount() = 0;
    RecordingEffect effect;
    EXPECT_EQ(0, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));
    std::vector<EffectCall> expected = test::builtinSends(SpatializerParamArray::mCommonParams);
    expected.push_back(EffectCall::commit(kAll));
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
}

// The effect reports more values than it was given room for: the cache must not send more
// than its buffer holds.
TEST(SpatializerParamCacheTest, ContentProfileNeverSendsPastItsMixMatrixBuffer) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.tuningParamValue() = 3;
    peer.xmlTuningCount() = 1;
    RecordingEffect effect;
    effect.setAnswer(kSpeaker, test::code(DOM), {0, 9}, 0, 500);
    EXPECT_EQ(0, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));
    std::vector<EffectCall> sets;
    for (const EffectCall& call : effect.calls(EffectCall::SET_PARAM)) {
        if (call.deviceId == kSpeaker && call.code == test::code(DOM)) {
            sets.push_back(call);
        }
    }
    std::vector<int> sent(kDomCapacity, 0);
    sent[0] = 1;
    sent[1] = 9;
    ASSERT_EQ(1u, sets.size());
    EXPECT_EQ(EffectCall::setParam(kSpeaker, test::code(DOM), sent), sets[0]);
}

TEST(SpatializerParamCacheTest, GeqGainsGoIntoTheEffectsBands) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    cache.setProfile(PROFILE_MUSIC);
    std::vector<int> effectGeq(41);
    for (int i = 0; i < 41; i++) effectGeq[i] = 1000 + i;
    std::vector<int> gains(20);
    for (int i = 0; i < 20; i++) gains[i] = -i;

    RecordingEffect effect;
    effect.setAnswer(kAll, test::code(GEBS), effectGeq);
    effect.setCommitResult(3);
    EXPECT_EQ(3, cache.setProfileGeqGains(gains, &effect));

    std::vector<int> sent(effectGeq.begin(), effectGeq.begin() + 21);
    sent.insert(sent.end(), gains.begin(), gains.end());
    const std::vector<EffectCall> expected = {
        EffectCall::getParam(kAll, test::code(GEBS), 41),
        EffectCall::setParam(kAll, test::code(GEBS), sent),
        EffectCall::commit(kAll),
    };
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
    EXPECT_EQ(gains, peer.profileGeqGains()[2]);
    EXPECT_FALSE(peer.profileGeqGains().count(1));
}

// A gain list longer than the effect's 20 bands is stored whole but only 20 are sent.
TEST(SpatializerParamCacheTest, GeqGainsBeyondTwentyBandsAreNotSent) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    std::vector<int> gains(25, 4);
    RecordingEffect effect;
    effect.setAnswer(kAll, test::code(GEBS), std::vector<int>(41, 2));
    EXPECT_EQ(0, cache.setProfileGeqGains(gains, &effect));
    std::vector<int> sent(21, 2);
    sent.insert(sent.end(), 20, 4);
    ASSERT_EQ(3u, effect.calls().size());
    EXPECT_EQ(EffectCall::setParam(kAll, test::code(GEBS), sent), effect.calls()[1]);
    EXPECT_EQ(gains, peer.profileGeqGains()[1]);
}

TEST(SpatializerParamCacheTest, GeqGainsAreRefusedWhenTheEffectsBandsAreNotRight) {
    const std::vector<int> gains(20, 16);
    const struct {
        const char* name;
        std::vector<int> values;
        int result;
        int reportedCount;
        bool known;
    } cases[] = {
        {"20 values", std::vector<int>(20, 1), 0, -1, true},
        {"42 reported", std::vector<int>(41, 1), 0, 42, true},
        {"read fails", std::vector<int>(41, 1), -1, -1, true},
        {"unknown to the effect", {}, 0, -1, false},
    };
    for (const auto& c : cases) {
        LogCapture log;
        SpatializerParamCache cache;
        SpatializerParamArrayTestPeer peer;
        peer.profileGeqGains().clear();
        RecordingEffect effect;
        if (c.known) {
            effect.setAnswer(kAll, test::code(GEBS), c.values, c.result, c.reportedCount);
        }
        std::vector<int> mine = gains;
        EXPECT_EQ(-22, cache.setProfileGeqGains(mine, &effect)) << c.name;
        const std::vector<EffectCall> expected = {EffectCall::getParam(kAll, test::code(GEBS), 41)};
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
        // The store took the gains before the effect was asked.
        EXPECT_EQ(gains, peer.profileGeqGains()[1]) << c.name;
        EXPECT_TRUE(log.contains("setProfileGeqGains(): could not get proper GEQ parameters!", kTag))
            << c.name;
    }
}

TEST(SpatializerParamCacheTest, ANullEffectIsRefusedBeforeAnythingIsRead) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[1] = Blob().add(kAll, VOL, {1});
    EXPECT_EQ(-22, cache.setKorvaContentProfile(PROFILE_MOVIE, nullptr));
    EXPECT_EQ(-22, cache.updateContentProcEnabled(nullptr, true, true));
    EXPECT_EQ(-22, cache.loadTuningDevice("default_headphone", nullptr));
    EXPECT_EQ(-22, cache.setSelectedTuningDevice(3, "x", nullptr));
    std::vector<int> gains(20, 1);
    EXPECT_EQ(-22, cache.setProfileGeqGains(gains, nullptr));
}

}  // namespace
}  // namespace korva
