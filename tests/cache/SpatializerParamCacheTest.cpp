// The cache's queries, the sending of built-in profile blobs and of the user's graphic-EQ gains.

#include "CacheTestSupport.h"

namespace korva::test {
namespace {

using S = SpatializerParamArray;

TEST(SpatializerParamCacheTest, QueriesReadTheStore) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    for (int port = -1; port <= 7; port++) {
        EXPECT_EQ(port == 3 || port == 4 || port == 5, cache.isValidPort(port)) << port;
    }
    for (int count : {-1, 0, 1}) {
        peer.xmlTuningCount() = count;
        EXPECT_EQ(count > 0, cache.isTuningAvailable()) << count;
    }
    peer.profileGeqGains() = {{PROFILE_MOVIE, {1, 2, 3}}, {PROFILE_MUSIC, {7, 8}}};
    EXPECT_EQ((std::vector<int>{1, 2, 3}), cache.getProfileGeqGains());
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ((std::vector<int>{7, 8}), cache.getProfileGeqGains());
}

// With two output channels, or without tunings, every built-in entry goes out unchanged, then one
// commit whose result is the operation's. Otherwise the speaker's mix matrix is the tuning's: the
// built-in one is never sent, and the effect's own is only switched on when it is off. Only the
// common table has mix matrices.
TEST(SpatializerParamCacheTest, ContentProfileSendsTheBuiltinEntriesButTheSpeakersMatrix) {
    std::vector<int> clamped(kDomCapacity, 0);
    clamped[0] = 1;
    clamped[1] = 9;
    const std::vector<int> off = {0, 15, 24, 5};
    const struct {
        const char* name;
        int channels, tunings;
        bool keepsMatrix;
        int getResult;
        std::vector<int> effectValues;
        int reportedCount;
        // What is sent after reading the effect's speaker "dom"; nothing when empty.
        std::vector<int> sentDom;
    } cases[] = {
        {"two channels", 2, 1, false, 0, off, -1, {}},
        {"no tunings", 6, 0, false, 0, off, -1, {}},
        {"off: switched on", 3, 1, true, 0, off, -1, {1, 15, 24, 5}},
        {"on: left alone", 3, 1, true, 0, {2, 15, 24, 5}, -1, {}},
        {"read fails: left alone", 3, 1, true, -5, off, -1, {}},
        // No more is sent back than the buffer holds, whatever count the effect reports.
        {"count beyond the buffer", 3, 1, true, 0, {0, 9}, 500, clamped},
    };
    SpatializerParamArrayTestPeer peer;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        peer.tuningParamValue() = c.channels;
        peer.xmlTuningCount() = c.tunings;
        LogCapture log;
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, code(DOM), c.effectValues, c.getResult, c.reportedCount);
        effect.setCommitResult(7);
        EXPECT_EQ(7, cache.setKorvaContentProfile(PROFILE_COMMON, &effect));
        std::vector<EffectCall> expected;
        for (const EffectCall& call : builtinSends(S::mCommonParams)) {
            if (c.keepsMatrix && call.deviceId == kSpeaker && call.code == code(DOM)) {
                expected.push_back(EffectCall::getParam(kSpeaker, code(DOM), kDomCapacity));
                if (!c.sentDom.empty()) expected.push_back(sent(kSpeaker, DOM, c.sentDom));
            } else {
                expected.push_back(call);
            }
        }
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls());
        EXPECT_EQ(
            c.keepsMatrix ? 1u : 0u,
            log.count("setKorvaContentProfile(): Hardcoded dom parameter values skipped", kTag));
    }
    LogCapture log;
    RecordingEffect effect;
    EXPECT_EQ(-22, SpatializerParamCache().setKorvaContentProfile(
                       static_cast<KrvSpatializerProfileId>(5), &effect));
    EXPECT_TRUE(effect.calls().empty());
    EXPECT_TRUE(
        log.contains("setKorvaContentProfile() Invalid data for profile parameter values.", kTag));
}

// The gains go into the effect's own bands, at most twenty of them, when the effect has the 41
// values of its graphic EQ; the store keeps them whole either way, for the current profile.
TEST(SpatializerParamCacheTest, GeqGainsAreStoredAndSentIntoTheEffectsBands) {
    const std::vector<int> effectGeq = counting(1000, 1, kGeqWords);
    const struct {
        const char* name;
        size_t bands;
        std::vector<int> answer;
        int result;
        int reportedCount;
        bool sent;
    } cases[] = {{"ten gains", 10, effectGeq, 0, -1, true},
                 {"twenty", 20, effectGeq, 0, -1, true},
                 {"twenty-five", 25, effectGeq, 0, -1, true},
                 {"20 values", 20, counting(1, 0, 20), 0, -1, false},
                 {"42 reported", 20, effectGeq, 0, 42, false},
                 {"read fails", 20, effectGeq, -1, -1, false}};
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    cache.setProfile(PROFILE_MUSIC);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        std::vector<int> gains = counting(0, -1, c.bands);
        RecordingEffect effect;
        effect.setAnswer(kAll, code(GEBS), c.answer, c.result, c.reportedCount);
        effect.setCommitResult(3);
        EXPECT_EQ(c.sent ? 3 : -22, cache.setProfileGeqGains(gains, &effect));
        std::vector<EffectCall> expected = {EffectCall::getParam(kAll, code(GEBS), kGeqWords)};
        if (c.sent) {
            std::vector<int> geq = effectGeq;
            std::copy_n(gains.begin(), std::min<size_t>(c.bands, kGeqBands),
                        geq.begin() + kGeqGainsOffset);
            append(expected, {sent(kAll, GEBS, geq), EffectCall::commit(kAll)});
        }
        EXPECT_EQ(expected, effect.calls());
        EXPECT_EQ(gains, peer.profileGeqGains()[PROFILE_MUSIC]);
        EXPECT_EQ(!c.sent,
                  log.contains("setProfileGeqGains(): could not get proper GEQ parameters!", kTag));
    }
    EXPECT_EQ(0u, peer.profileGeqGains().count(PROFILE_MOVIE));
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
