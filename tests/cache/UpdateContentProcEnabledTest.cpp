// Re-sending the current profile's tuning-file blob when content processing switches: which rule
// decides each entry, in which order, and what goes to the effect.
#include <gtest/gtest.h>

#include "CacheTestSupport.h"
#include "LogCapture.h"
#include "RecordingEffect.h"
#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"
#include "engine/VexParamStore.h"

namespace korva {
namespace {

using test::Blob;
using test::EffectCall;
using test::kAll;
using test::kDomCapacity;
using test::kHeadphone;
using test::kSpeaker;
using test::LogCapture;
using test::RecordingEffect;

constexpr const char* kTag = "KrvSpatializerParamCache";

std::vector<int> geqEntry() {
    std::vector<int> values = {20};
    for (int i = 0; i < 20; i++) values.push_back(50 * (i + 1));
    for (int i = 0; i < 20; i++) values.push_back(100 + i);
    return values;
}

std::vector<int> userGains() {
    std::vector<int> gains;
    for (int i = 0; i < 20; i++) gains.push_back(-1 - i);
    return gains;
}

// The tuning's bands with the user's gains.
std::vector<int> mergedGeq(const std::vector<int>& gains) {
    std::vector<int> values = geqEntry();
    std::copy(gains.begin(), gains.end(), values.begin() + 21);
    return values;
}

const std::vector<int> kSpeakerDom = {1, 0, 1, 15, 24, 7};
const std::vector<int> kHeadphoneDom = {1, 1, 2};
// Longer than the speaker entry, so that the entry's own count cuts it.
const std::vector<int> kTuningMatrix = {15, 24, 9, 8, 7, 6, 5};

// One entry for each rule, and a few that two rules could claim.
std::vector<int> profileBlob() {
    return Blob()
        .add(kSpeaker, DSOE, {1})             // 0: tuned per device, and device processing
        .add(kSpeaker, VBON, {1})             // 1: tuned per device, and switched off
        .add(kAll, GEBS, geqEntry())          // 2: graphic EQ, 41 values
        .add(kAll, GEBS, {20, 1, 2})          // 3: graphic EQ of another length
        .add(kSpeaker, DOM, kSpeakerDom)      // 4: the speaker's mix matrix
        .add(kHeadphone, DOM, kHeadphoneDom)  // 5: another device's mix matrix
        .add(kSpeaker, AOON, {1})             // 6: device processing
        .add(kHeadphone, DEON, {1})           // 7: switched off with content processing
        .add(kHeadphone, IEON, {1, 2})        // 8: the same, with two values
        .add(kAll, MDLE, {1});                // 9: none of them
}

EffectCall sent(int deviceId, VexParameter param, const std::vector<int>& values) {
    return EffectCall::setParam(deviceId, test::code(param), values);
}

EffectCall sentOff(int deviceId, VexParameter param) {
    return EffectCall::setParam(deviceId, test::code(param), {0});
}

struct StoreSetup {
    int tuningCount = 1;
    int outputChannels = 3;
    bool speakerMatrix = true;
};

// A store with the blob above for the movie profile, the user's gains, and a speaker tuning
// device selected for port 0.
void prepareStore(const StoreSetup& setup) {
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = profileBlob();
    peer.profileGeqGains()[PROFILE_MOVIE] = userGains();
    peer.addTuningDevice("speaker_a", "internal_speaker", Blob().add(kSpeaker, VOL, {1}),
                         setup.speakerMatrix ? kTuningMatrix : std::vector<int>());
    peer.selectedTuningDevices()[0] = "speaker_a";
    peer.xmlTuningCount() = setup.tuningCount;
    peer.tuningParamValue() = setup.outputChannels;
}

std::vector<int> speakerDomWithMatrix() {
    std::vector<int> values = {kSpeakerDom[0]};
    values.insert(values.end(), kTuningMatrix.begin(), kTuningMatrix.end());
    values.resize(kSpeakerDom.size());
    return values;
}

// Content processing on, tunings, three channels: the blob's first five entries go out with the
// speaker tuning's matrix, whatever the engine's classes say about them.
std::vector<EffectCall> firstFiveWithTuningMatrix() {
    return {
        sent(kSpeaker, DSOE, {1}),
        sent(kSpeaker, VBON, {1}),
        sent(kAll, GEBS, mergedGeq(userGains())),
        EffectCall::setParam(kSpeaker, test::code(DOM), speakerDomWithMatrix()),
        sent(kHeadphone, DOM, kHeadphoneDom),
    };
}

TEST(UpdateContentProcEnabledTest, OnWithTuningsPutsTheSpeakerTuningsMatrixIn) {
    prepareStore({});
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setCommitResult(4);
    EXPECT_EQ(4, cache.updateContentProcEnabled(&effect, true, false));
    std::vector<EffectCall> expected = firstFiveWithTuningMatrix();
    test::append(expected, {
                               sent(kSpeaker, AOON, {1}),
                               sent(kHeadphone, DEON, {1}),
                               sent(kHeadphone, IEON, {1, 2}),
                               sent(kAll, MDLE, {1}),
                               EffectCall::commit(kAll),
                           });
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
}

// The speaker's own entry goes out as it is when the rule for the tuning's matrix does not hold:
// no matrix for the selected device, no tunings, or two output channels.
TEST(UpdateContentProcEnabledTest, OnSendsTheSpeakerEntryAsItIsWithoutATuningMatrix) {
    const struct {
        const char* name;
        StoreSetup setup;
        bool tunedPerDevice;
    } cases[] = {
        {"no matrix", {1, 3, false}, true},
        {"no tunings", {0, 3, true}, false},
        {"two channels", {1, 2, true}, true},
    };
    for (const auto& c : cases) {
        prepareStore(c.setup);
        SpatializerParamCache cache;
        RecordingEffect effect;
        EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, false)) << c.name;
        std::vector<EffectCall> expected;
        if (c.tunedPerDevice) {
            expected.push_back(sent(kSpeaker, DSOE, {1}));
            expected.push_back(sent(kSpeaker, VBON, {1}));
        }
        test::append(expected, {
                                   sent(kAll, GEBS, mergedGeq(userGains())),
                                   sent(kSpeaker, DOM, kSpeakerDom),
                                   sent(kHeadphone, DOM, kHeadphoneDom),
                                   sent(kSpeaker, AOON, {1}),
                                   sent(kHeadphone, DEON, {1}),
                                   sent(kHeadphone, IEON, {1, 2}),
                                   sent(kAll, MDLE, {1}),
                                   EffectCall::commit(kAll),
                               });
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
    }
}

TEST(UpdateContentProcEnabledTest, ASpeakerWithoutMatrixIsWarnedAbout) {
    prepareStore({1, 3, false});
    LogCapture log;
    SpatializerParamCache cache;
    RecordingEffect effect;
    cache.updateContentProcEnabled(&effect, true, false);
    EXPECT_TRUE(
        log.contains("getXMLTuningMixMatrix(): no mix matrix found with tuning device "
                     "speaker_a"));
}

// Switching off: mix matrices are kept but disabled, the switches of content processing set to
// 0, device processing kept, everything else left to the effect.
TEST(UpdateContentProcEnabledTest, OffDisablesMixMatricesAndSwitches) {
    for (int tuningCount : {1, 0}) {
        prepareStore({tuningCount, 3, true});
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, test::code(DOM), {1, 15, 24, 3});
        // The headphone's matrix is unknown to the effect: its count stays the capacity.
        EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, false, false));
        std::vector<EffectCall> expected;
        if (tuningCount > 0) {
            expected.push_back(sent(kSpeaker, DSOE, {1}));
            expected.push_back(sent(kSpeaker, VBON, {1}));
        }
        test::append(expected, {
                                   sent(kAll, GEBS, mergedGeq(userGains())),
                                   EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity),
                                   sent(kSpeaker, DOM, {0, 15, 24, 3}),
                                   EffectCall::getParam(kHeadphone, test::code(DOM), kDomCapacity),
                                   sent(kHeadphone, DOM, std::vector<int>(kDomCapacity, 0)),
                                   sent(kSpeaker, AOON, {1}),
                                   sentOff(kHeadphone, DEON),
                                   sentOff(kHeadphone, IEON),
                                   EffectCall::commit(kAll),
                               });
        EXPECT_EQ(expected, effect.calls()) << tuningCount << "\n" << effect.describe();
    }
}

// With multichannel content only the tuned-per-device entries, the graphic EQ and device
// processing are sent, on or off; then the built-in common and current profile blobs follow.
TEST(UpdateContentProcEnabledTest, MccSendsDeviceProcessingThenTheBuiltinBlobs) {
    for (bool on : {true, false}) {
        prepareStore({1, 2, true});
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setCommitResult(9);
        EXPECT_EQ(9, cache.updateContentProcEnabled(&effect, on, true));
        std::vector<EffectCall> expected = {
            sent(kSpeaker, DSOE, {1}),
            sent(kSpeaker, VBON, {1}),
            sent(kAll, GEBS, mergedGeq(userGains())),
            sent(kSpeaker, AOON, {1}),
            EffectCall::commit(kAll),
        };
        test::append(expected, test::builtinSends(SpatializerParamArray::mCommonParams));
        expected.push_back(EffectCall::commit(kAll));
        test::append(expected, test::builtinSends(SpatializerParamArray::mMovieProfileParams));
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls()) << on << "\n" << effect.describe();
    }
}

TEST(UpdateContentProcEnabledTest, MccWithoutATuningBlobStillSendsTheBuiltinBlobs) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = profileBlob();
    cache.setProfile(PROFILE_MUSIC);
    RecordingEffect effect;
    effect.setCommitResult(9);
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, true));
    std::vector<EffectCall> expected = test::builtinSends(SpatializerParamArray::mCommonParams);
    expected.push_back(EffectCall::commit(kAll));
    test::append(expected, test::builtinSends(SpatializerParamArray::mMusicProfileParams));
    expected.push_back(EffectCall::commit(kAll));
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
}

TEST(UpdateContentProcEnabledTest, NothingIsSentWithoutATuningBlob) {
    SpatializerParamCache cache;
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = profileBlob();
    cache.setProfile(PROFILE_CINEMA);
    RecordingEffect effect;
    effect.setCommitResult(9);
    for (bool on : {true, false}) {
        EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, on, false));
    }
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
}

TEST(UpdateContentProcEnabledTest, AnInvalidTuningBlobIsRefusedWithNothingSent) {
    const struct {
        const char* name;
        std::vector<int> blob;
    } cases[] = {
        {"entry missing", Blob().add(kAll, MDLE, {1}).announce(2)},
        {"values cut short", {kAll, 1, kAll, test::code(MDLE), 3, 1}},
        {"header only", {kAll}},
        {"empty", {}},
    };
    for (const auto& c : cases) {
        LogCapture log;
        SpatializerParamCache cache;
        SpatializerParamArrayTestPeer peer;
        peer.xmlProfileParams()[PROFILE_MOVIE] = c.blob;
        RecordingEffect effect;
        EXPECT_EQ(-22, cache.updateContentProcEnabled(&effect, true, true)) << c.name;
        EXPECT_TRUE(effect.calls().empty()) << c.name << "\n" << effect.describe();
        EXPECT_TRUE(log.contains(
            "updateContentProcEnabled() Invalid data for setting parameter values.", kTag))
            << c.name;
    }
}

// The rules are tried in order: the graphic EQ and the speaker's matrix are decided before the
// engine's classes of device processing, and device processing before multichannel content.
TEST(UpdateContentProcEnabledTest, EarlierRulesWinOverTheEnginesClasses) {
    VexParamStore::setDeviceProcParamsInProfile({test::code(GEBS), test::code(DOM)});
    VexParamStore::setContentProcDisableParams({test::code(MDLE)});
    prepareStore({});
    SpatializerParamCache cache;
    RecordingEffect effect;
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, true));
    std::vector<EffectCall> calls = effect.calls();
    calls.resize(7);
    std::vector<EffectCall> expected = firstFiveWithTuningMatrix();
    test::append(
        expected,
        {
            // AOON is no longer device processing: multichannel content skips it, and the rest.
            EffectCall::commit(kAll),
            // The built-in common blob follows; with three channels and tunings its speaker
            // matrix is read from the effect first (which does not know it here).
            sent(kAll, MAVE, {0}),
        });
    EXPECT_EQ(expected, calls) << effect.describe();

    VexParamStore::resetParamClasses();
    VexParamStore::setContentProcDisableParams({test::code(MDLE), test::code(DSOE)});
    RecordingEffect offEffect;
    EXPECT_EQ(0, cache.updateContentProcEnabled(&offEffect, false, false));
    std::vector<EffectCall> offSends = offEffect.calls(EffectCall::SET_PARAM);
    ASSERT_FALSE(offSends.empty());
    // Tuned per device wins over switching off; the classes decide the rest.
    EXPECT_EQ(sent(kSpeaker, DSOE, {1}), offSends.front());
    EXPECT_EQ(sentOff(kAll, MDLE), offSends.back());
    VexParamStore::resetParamClasses();
}

TEST(UpdateContentProcEnabledTest, TheGraphicEqTakesWhatUserGainsThereAre) {
    const struct {
        const char* name;
        std::vector<int> gains;
        std::vector<int> sentGeq;
    } cases[] = {
        {"none", {}, geqEntry()},
        {"ten",
         {-1, -2, -3, -4, -5, -6, -7, -8, -9, -10},
         [] {
             std::vector<int> values = geqEntry();
             for (int i = 0; i < 10; i++) values[21 + i] = -1 - i;
             return values;
         }()},
        {"twenty-two", std::vector<int>(22, 5),
         [] {
             std::vector<int> values = geqEntry();
             std::fill(values.begin() + 21, values.end(), 5);
             return values;
         }()},
    };
    for (const auto& c : cases) {
        SpatializerParamCache cache;
        SpatializerParamArrayTestPeer peer;
        peer.xmlProfileParams()[PROFILE_CUSTOM] = Blob().add(kAll, GEBS, geqEntry());
        peer.profileGeqGains()[PROFILE_CUSTOM] = c.gains;
        cache.setProfile(PROFILE_CUSTOM);
        RecordingEffect effect;
        EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, false));
        const std::vector<EffectCall> expected = {sent(kAll, GEBS, c.sentGeq),
                                                  EffectCall::commit(kAll)};
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
    }
}

TEST(UpdateContentProcEnabledTest, TracesEveryEntryFromLevelThree) {
    prepareStore({});
    SpatializerParamCache cache;
    const char* const kFirstTrace =
        "updateContentProcEnabled() deviceId=2, param=dsoe, paramLength=1";
    const char* const kDebug =
        "updateContentProcEnabled(profile=1, isContentProcEnabled=1, isKorvaContentWithMcc=0)";
    {
        test::setLogLevel(2);
        LogCapture log;
        RecordingEffect effect;
        cache.updateContentProcEnabled(&effect, true, false);
        EXPECT_TRUE(log.contains(kDebug, kTag));
        EXPECT_FALSE(log.contains(kFirstTrace, kTag));
    }
    {
        test::setLogLevel(3);
        LogCapture log;
        RecordingEffect effect;
        cache.updateContentProcEnabled(&effect, true, false);
        EXPECT_TRUE(log.contains(kFirstTrace, kTag));
        EXPECT_TRUE(
            log.contains("updateContentProcEnabled() deviceId=1073741824, param=gebs, "
                         "paramLength=41",
                         kTag));
        size_t traces = 0;
        for (const std::string& line : log.messages(kTag)) {
            traces += line.find("paramLength=") != std::string::npos ? 1 : 0;
        }
        EXPECT_EQ(10u, traces);
    }
    {
        test::setLogLevel(1);
        LogCapture log;
        RecordingEffect effect;
        cache.updateContentProcEnabled(&effect, true, false);
        EXPECT_TRUE(log.messages(kTag).empty());
    }
}

}  // namespace
}  // namespace korva
