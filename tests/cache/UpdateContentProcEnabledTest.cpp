// Re-sending the current profile's tuning-file blob when content processing switches: which rule
// decides each entry, in which order, and what goes to the effect.

#include "CacheTestSupport.h"
#include "engine/VexParamStore.h"
#include "observer/DeliveryObserver.h"

namespace korva::test {
namespace {

// A graphic-EQ entry of the tuning: 20 bands, their frequencies, then the given gains.
std::vector<int> geqEntry(std::vector<int> gains) {
    std::vector<int> values = counting(50, 50, kGeqBands);
    values.insert(values.begin(), kGeqBands);
    gains.resize(kGeqBands, 0);
    values.insert(values.end(), gains.begin(), gains.end());
    return values;
}

const std::vector<int> kTuningGeq = geqEntry(counting(100, 1, kGeqBands));
const std::vector<int> kUserGains = counting(-1, -1, kGeqBands);
const std::vector<int> kSpeakerDom = {1, 0, 1, 15, 24, 7};
const std::vector<int> kHeadphoneDom = {1, 1, 2};

// One entry for each rule, and a few that two rules could claim.
std::vector<int> profileBlob() {
    return Blob()
        .add(kSpeaker, DSOE, {1})             // tuned per device, and device processing
        .add(kSpeaker, VBON, {1})             // tuned per device, and switched off
        .add(kAll, GEBS, kTuningGeq)          // graphic EQ, 41 values
        .add(kAll, GEBS, {20, 1, 2})          // graphic EQ of another length: never sent
        .add(kSpeaker, DOM, kSpeakerDom)      // the speaker's mix matrix
        .add(kHeadphone, DOM, kHeadphoneDom)  // another device's mix matrix
        .add(kSpeaker, AOON, {1})             // device processing
        .add(kHeadphone, DEON, {1})           // switched off with content processing
        .add(kHeadphone, IEON, {1, 2})        // the same, with two values
        .add(kAll, MDLE, {1});                // none of them
}

// A store with the blob above and the user's gains for the current movie profile, and a speaker
// tuning device selected whose matrix is longer than the speaker entry.
void prepareStore(int tuningCount = 1, int outputChannels = 3, bool speakerMatrix = true) {
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = profileBlob();
    peer.profileGeqGains()[PROFILE_MOVIE] = kUserGains;
    peer.currentProfileId() = PROFILE_MOVIE;
    peer.tuningMixMatrices().clear();
    peer.addTuningDevice(
        "speaker_a", "internal_speaker", Blob(),
        speakerMatrix ? std::vector<int>{15, 24, 9, 8, 7, 6, 5} : std::vector<int>{});
    peer.selectedTuningDevices()[0] = "speaker_a";
    peer.xmlTuningCount() = tuningCount;
    peer.tuningParamValue() = outputChannels;
}

// What multichannel content sends after the tuning's blob: the built-in common blob, then the
// profile's, each committed.
std::vector<EffectCall> builtinBlobsAfter(const int (&profileTable)[117]) {
    std::vector<EffectCall> calls = builtinSends(SpatializerParamArray::mCommonParams);
    calls.push_back(EffectCall::commit(kAll));
    append(calls, builtinSends(profileTable));
    calls.push_back(EffectCall::commit(kAll));
    return calls;
}

// Content processing on, tunings, three channels: every entry goes out as it is, but for the
// speaker's mix matrix, which is the tuning's cut to the entry's own count.
std::vector<EffectCall> onWithTuningMatrix() {
    // clang-format off
    return {sent(kSpeaker, DSOE, {1}), sent(kSpeaker, VBON, {1}),
            sent(kAll, GEBS, geqEntry(kUserGains)), sent(kSpeaker, DOM, {1, 15, 24, 9, 8, 7}),
            sent(kHeadphone, DOM, kHeadphoneDom), sent(kSpeaker, AOON, {1}),
            sent(kHeadphone, DEON, {1}), sent(kHeadphone, IEON, {1, 2}), sent(kAll, MDLE, {1}),
            EffectCall::commit(kAll)};
    // clang-format on
}

// Without tunings the entries tuned per device stay out; without tunings, a matrix or more than
// two channels the speaker's own matrix goes out.
TEST(UpdateContentProcEnabledTest, OnSendsTheSpeakerTuningsMatrixOnlyWhereItApplies) {
    // The tuning's graphic EQ takes as many of the user's gains as there are, up to twenty.
    const struct {
        int tunings, channels;
        bool matrix;
        size_t gains;
    } cases[] = {{1, 3, true, 20}, {1, 3, false, 0}, {0, 3, true, 10}, {1, 2, true, 22}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.tunings << c.channels << c.matrix << c.gains);
        prepareStore(c.tunings, c.channels, c.matrix);
        SpatializerParamArrayTestPeer().profileGeqGains()[PROFILE_MOVIE] = counting(-1, -1, c.gains);
        RecordingEffect effect;
        effect.setCommitResult(4);
        EXPECT_EQ(4, SpatializerParamCache().updateContentProcEnabled(&effect, true, false));
        std::vector<EffectCall> expected = onWithTuningMatrix();
        std::vector<int> gains = counting(100, 1, kGeqBands);
        std::copy_n(kUserGains.begin(), std::min<size_t>(c.gains, kGeqBands), gains.begin());
        expected[2] = sent(kAll, GEBS, geqEntry(gains));
        if (c.tunings == 0 || c.channels == 2 || !c.matrix) {
            expected[3] = sent(kSpeaker, DOM, kSpeakerDom);
        }
        if (c.tunings == 0) {
            expected.erase(expected.begin(), expected.begin() + 2);
        }
        EXPECT_EQ(expected, effect.calls());
    }
}

// Switching off: mix matrices are kept but disabled, the switches of content processing set to
// 0, device processing kept, everything else left to the effect.
TEST(UpdateContentProcEnabledTest, OffDisablesMixMatricesAndSwitches) {
    prepareStore();
    // A tuning matrix longer than the default widened the store's length (72 words here): the
    // effect's matrix is read back whole, in a buffer of that length plus the enable word.
    SpatializerParamArrayTestPeer().defaultMixMatrixLength() = 72;
    const int capacity = 73;
    std::vector<int> speakerDom = counting(1, 1, capacity);
    RecordingEffect effect;
    effect.setAnswer(kSpeaker, code(DOM), speakerDom);
    EXPECT_EQ(0, SpatializerParamCache().updateContentProcEnabled(&effect, false, false));
    speakerDom[0] = 0;
    // The headphone's matrix is unknown to the effect: its count stays the capacity.
    const int dom = code(DOM);
    // clang-format off
    const std::vector<EffectCall> expected = {
        sent(kSpeaker, DSOE, {1}), sent(kSpeaker, VBON, {1}),
        sent(kAll, GEBS, geqEntry(kUserGains)), EffectCall::getParam(kSpeaker, dom, capacity),
        sent(kSpeaker, DOM, speakerDom), EffectCall::getParam(kHeadphone, dom, capacity),
        sent(kHeadphone, DOM, std::vector<int>(capacity, 0)), sent(kSpeaker, AOON, {1}),
        sent(kHeadphone, DEON, {0}), sent(kHeadphone, IEON, {0}), EffectCall::commit(kAll)};
    // clang-format on
    EXPECT_EQ(expected, effect.calls());
}

// An effect whose first setParam lets another effect instance switch the profile, as another
// thread may at any moment of an update.
struct ProfileSwitchingEffect : RecordingEffect {
    int setParam(int deviceId, int code, const int* values, int count) override {
        if (calls().empty()) SpatializerParamCache().setProfile(PROFILE_MUSIC);
        return RecordingEffect::setParam(deviceId, code, values, count);
    }
};

// With multichannel content only the tuned-per-device entries, the graphic EQ and device
// processing are sent, on or off; then the built-in common and profile blobs follow. An update
// keeps to the profile it began on, gains and built-in blob alike, when another instance switches
// meanwhile: it once mixed the two.
TEST(UpdateContentProcEnabledTest, MccSendsDeviceProcessingThenTheBuiltinBlobsOfItsProfile) {
    const struct {
        const char* name;
        bool on;
        bool switchMeanwhile;
    } runs[] = {{"on", true, false}, {"off", false, false}, {"switched meanwhile", true, true}};
    for (const auto& run : runs) {
        prepareStore(1, 2);
        SpatializerParamArrayTestPeer().profileGeqGains()[PROFILE_MUSIC] = {5, 5, 5};
        RecordingEffect plain;
        ProfileSwitchingEffect switching;
        RecordingEffect& effect = run.switchMeanwhile ? switching : plain;
        effect.setCommitResult(9);
        EXPECT_EQ(9, SpatializerParamCache().updateContentProcEnabled(&effect, run.on, true));
        std::vector<EffectCall> expected = {sent(kSpeaker, DSOE, {1}), sent(kSpeaker, VBON, {1}),
                                            sent(kAll, GEBS, geqEntry(kUserGains)),
                                            sent(kSpeaker, AOON, {1}), EffectCall::commit(kAll)};
        append(expected, builtinBlobsAfter(SpatializerParamArray::mMovieProfileParams));
        EXPECT_EQ(expected, effect.calls()) << run.name;
    }
}

// Without a blob for the profile nothing is sent, but the built-in blobs with multichannel
// content; a blob that does not read is refused whole.
TEST(UpdateContentProcEnabledTest, WithoutAWholeTuningBlobOnlyTheBuiltinBlobsAreSent) {
    SpatializerParamArrayTestPeer peer;
    peer.xmlProfileParams()[PROFILE_MOVIE] = profileBlob();
    SpatializerParamCache cache;
    cache.setProfile(PROFILE_MUSIC);
    for (bool mcc : {false, true}) {
        RecordingEffect effect;
        effect.setCommitResult(9);
        EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, true, mcc));
        std::vector<EffectCall> expected;
        if (mcc) {
            expected = builtinBlobsAfter(SpatializerParamArray::mMusicProfileParams);
        }
        EXPECT_EQ(expected, effect.calls()) << mcc;
    }
    // An entry missing, values cut short, a header alone, nothing.
    for (std::vector<int> blob : std::vector<std::vector<int>>{
             {kAll, 2, kAll, code(MDLE), 1, 1}, {kAll, 1, kAll, code(MDLE), 3, 1}, {kAll}, {}}) {
        LogCapture log;
        peer.xmlProfileParams()[PROFILE_MUSIC] = blob;
        RecordingEffect effect;
        EXPECT_EQ(-22, cache.updateContentProcEnabled(&effect, true, true));
        EXPECT_TRUE(effect.calls().empty());
        EXPECT_TRUE(log.contains(
            "updateContentProcEnabled() Invalid data for setting parameter values.", kTag));
    }
}

// The rules are tried in order: the graphic EQ and the speaker's matrix are decided before the
// engine's classes of device processing, and device processing before multichannel content.
TEST(UpdateContentProcEnabledTest, EarlierRulesWinOverTheEnginesClasses) {
    VexParamStore::setDeviceProcParamsInProfile({code(GEBS), code(DOM)});
    VexParamStore::setContentProcDisableParams({code(MDLE)});
    prepareStore();
    RecordingEffect effect;
    EXPECT_EQ(0, SpatializerParamCache().updateContentProcEnabled(&effect, true, true));
    std::vector<EffectCall> calls = effect.calls();
    calls.resize(7);
    std::vector<EffectCall> expected = onWithTuningMatrix();
    expected.resize(5);
    // AOON is no longer device processing: multichannel content skips it and the rest. Then the
    // built-in common blob follows.
    append(expected, {EffectCall::commit(kAll), sent(kAll, MAVE, {0})});
    EXPECT_EQ(expected, calls);

    VexParamStore::resetParamClasses();
    VexParamStore::setContentProcDisableParams({code(MDLE), code(DSOE)});
    RecordingEffect offEffect;
    EXPECT_EQ(0, SpatializerParamCache().updateContentProcEnabled(&offEffect, false, false));
    std::vector<EffectCall> offSends = offEffect.calls(EffectCall::kSetParam);
    ASSERT_FALSE(offSends.empty());
    // Tuned per device wins over switching off; the classes decide the rest.
    EXPECT_EQ(sent(kSpeaker, DSOE, {1}), offSends.front());
    EXPECT_EQ(sent(kAll, MDLE, {0}), offSends.back());
    VexParamStore::resetParamClasses();
}

// The cache's reports exist only where the listeners are built in.
#ifdef KORVA_LOAD_REPORT

// Each report of the cache as text, after the number of calls the effect had then.
struct DeliveryRecorder : DeliveryObserver {
    explicit DeliveryRecorder(const RecordingEffect& effect) : mEffect(effect) {}

    void onBlob(DeliveredBlob blob, int profileId, const std::string& device) override {
        const char* const kinds[] = {"builtin", "file", "tuning"};
        add(std::string("blob ") + kinds[static_cast<int>(blob)] + " " + std::to_string(profileId) +
            " " + device);
    }
    void onEntry(int entry, Delivery how, int profileId, const std::string& device) override {
        add("entry " + std::to_string(entry) + " " + text(how, profileId, device));
    }
    void onEffectValues(Delivery how, int profileId, const std::string& device) override {
        add("effect " + text(how, profileId, device));
    }

    static std::string text(Delivery how, int profileId, const std::string& device) {
        const char* const kinds[] = {"as_is", "gains", "matrix", "on", "off", "zero"};
        return kinds[static_cast<int>(how)] + (how == Delivery::kUserGeqGains
                                                   ? " " + std::to_string(profileId)
                                               : how == Delivery::kTuningMixMatrix ? " " + device
                                                                                   : "");
    }
    void add(const std::string& report) {
        reports.push_back(std::to_string(mEffect.calls().size()) + ": " + report);
    }

    const RecordingEffect& mEffect;
    std::vector<std::string> reports;
};

// The cache says which blob and which entry the calls that follow carry, and what it put in the
// entry's place: the indices skip the entries it does not send.
TEST(DeliveryObserverTest, ReportsTheBlobEntryOfEachCallAndWhatReplacedIt) {
    // clang-format off
    const std::vector<std::string> on = {
        "0: blob file 1 ", "0: entry 0 as_is", "1: entry 1 as_is", "2: entry 2 gains 1",
        "3: entry 4 matrix speaker_a", "4: entry 5 as_is", "5: entry 6 as_is", "6: entry 7 as_is",
        "7: entry 8 as_is", "8: entry 9 as_is"};
    const std::vector<std::string> off = {
        "0: blob file 1 ", "0: entry 0 as_is", "1: entry 1 as_is", "2: entry 2 gains 1",
        "3: entry 4 off", "5: entry 5 off", "7: entry 6 as_is", "8: entry 7 zero",
        "9: entry 8 zero"};
    // clang-format on
    for (bool contentOn : {true, false}) {
        prepareStore();
        RecordingEffect effect;
        DeliveryRecorder recorder(effect);
        {
            const DeliveryObserver::Scope listening(&recorder);
            SpatializerParamCache().updateContentProcEnabled(&effect, contentOn, false);
        }
        EXPECT_EQ(contentOn ? on : off, recorder.reports);
        // Nobody listens once the scope is left.
        SpatializerParamCache().updateContentProcEnabled(&effect, contentOn, false);
        EXPECT_EQ(contentOn ? on : off, recorder.reports);
    }

    // The user's gains into the effect's own graphic EQ; a speaker tuning's matrix into the
    // effect's own mix matrix, then the tuning device's blob; the built-in blobs with mcc.
    prepareStore();
    SpatializerParamArrayTestPeer().addTuningDevice(
        "speaker_b", "internal_speaker", Blob().add(kSpeaker, AOON, {1}).add(kSpeaker, VBON, {0}),
        {15, 24, 1});
    RecordingEffect effect;
    effect.setAnswer(kAll, code(GEBS), std::vector<int>(kGeqWords, 0));
    effect.setAnswer(kSpeaker, code(DOM), {1, 0, 1});
    DeliveryRecorder recorder(effect);
    const DeliveryObserver::Scope listening(&recorder);
    std::vector<int> gains = counting(1, 1, kGeqBands);
    SpatializerParamCache cache;
    EXPECT_EQ(0, cache.setProfileGeqGains(gains, &effect));
    EXPECT_EQ(0, cache.setSelectedTuningDevice(0, "speaker_b", &effect));
    EXPECT_EQ((std::vector<std::string>{"0: effect gains 1", "3: effect matrix speaker_b",
                                        "5: blob tuning 0 speaker_b", "5: entry 0 as_is",
                                        "6: entry 1 as_is"}),
              recorder.reports);
    recorder.reports.clear();
    effect.takeCalls();
    // Five entries and a commit (the speaker's matrix is the tuning's here), then the built-ins.
    cache.updateContentProcEnabled(&effect, true, true);
    std::vector<std::string> blobs;
    for (const std::string& report : recorder.reports) {
        if (report.find("blob") != std::string::npos) blobs.push_back(report);
    }
    const size_t common = builtinSends(SpatializerParamArray::mCommonParams).size();
    EXPECT_EQ((std::vector<std::string>{"0: blob file 1 ", "6: blob builtin -1 ",
                                        std::to_string(7 + common) + ": blob builtin 1 "}),
              blobs);
}

#endif  // KORVA_LOAD_REPORT

}  // namespace
}  // namespace korva::test
