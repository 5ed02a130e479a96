// Sending tuning devices: all selected ones, one by name, and a change of a port's selection.

#include "CacheTestSupport.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

using Calls = std::vector<EffectCall>;

const Calls kHeadphoneCalls = {sent(kHeadphone, IEON, {1}), sent(kHeadphone, VMB, {16, 2}),
                               EffectCall::commit(kAll)};
const Calls kBluetoothCalls = {sent(kBluetooth, DEA, {4}), EffectCall::commit(kAll)};
const Calls kUsbCalls = {sent(kUsb, VOL, {}), EffectCall::commit(kAll)};
const Calls kStudioCalls = {sent(kHeadphone, DED, {2}), EffectCall::commit(kAll)};

Calls joined(std::initializer_list<Calls> parts) {
    Calls all;
    for (const Calls& part : parts) append(all, part);
    return all;
}

class CacheTuningDeviceTest : public ::testing::Test {
protected:
    // The default devices of the three tuning ports and a second one for the headphone.
    void SetUp() override {
        mPeer.addTuningDevice("default_headphone", "headphone",
                              Blob().add(kHeadphone, IEON, {1}).add(kHeadphone, VMB, {16, 2}));
        mPeer.addTuningDevice("default_bluetooth", "bluetooth", Blob().add(kBluetooth, DEA, {4}));
        mPeer.addTuningDevice("default_usb", "usb", Blob().add(kUsb, VOL, {}));
        mPeer.addTuningDevice("studio", "headphone", Blob().add(kHeadphone, DED, {2}));
    }

    SpatializerParamArrayTestPeer mPeer;
    SpatializerParamCache mCache;
};

// Every port is tried, in port order; the result is the last port's.
TEST_F(CacheTuningDeviceTest, LoadTuningSendsEachPortsSelection) {
    const struct {
        std::map<int, std::string> selections;
        int result;
        Calls calls;
    } cases[] = {
        {{}, 6, joined({kHeadphoneCalls, kBluetoothCalls, kUsbCalls})},
        {{{3, "gone"}}, 6, joined({kBluetoothCalls, kUsbCalls})},
        {{{3, "studio"}, {5, "gone"}}, -22, joined({kStudioCalls, kBluetoothCalls})},
    };
    for (const auto& c : cases) {
        for (const auto& [port, device] : c.selections) {
            mPeer.selectedTuningDevices()[port] = device;
        }
        RecordingEffect effect;
        effect.setCommitResult(6);
        EXPECT_EQ(c.result, mCache.loadTuning(&effect));
        EXPECT_EQ(c.calls, effect.calls());
    }
}

TEST_F(CacheTuningDeviceTest, LoadTuningDeviceSendsOnlyAWholeKnownBlob) {
    mPeer.addTuningDevice("nothing", "usb", Blob());
    mPeer.addTuningDevice("short", "headphone", {kAll, 2, kHeadphone, code(IEON), 1, 1});
    mPeer.addTuningDevice("cut", "headphone", {kAll, 1, kHeadphone, code(VMB), 4, 1, 2});
    mPeer.addTuningDevice("negative", "headphone", {kAll, 1, kHeadphone, code(VMB), -1});
    mPeer.addTuningDevice("empty", "headphone", {});
    RecordingEffect effect;
    effect.setCommitResult(-5);
    EXPECT_EQ(-5, mCache.loadTuningDevice("default_headphone", &effect));
    // A blob without entries still commits.
    EXPECT_EQ(-5, mCache.loadTuningDevice("nothing", &effect));
    for (const char* device :
         {"unknown", "Default_headphone", "short", "cut", "negative", "empty"}) {
        EXPECT_EQ(-22, mCache.loadTuningDevice(device, &effect)) << device;
    }
    EXPECT_EQ(joined({kHeadphoneCalls, {EffectCall::commit(kAll)}}), effect.calls());
    // Asking for an unknown device does not make it known.
    EXPECT_EQ(0u, mPeer.xmlTuningParams().count("unknown"));
}

// The store refuses a device of another port (its error lines are the store tests'); the cache
// then sends nothing, nor for the device already selected.
TEST_F(CacheTuningDeviceTest, SelectionSendsOnlyANewDeviceOfThePort) {
    const struct {
        int port;
        const char* device;
        int result;
        Calls calls;
        // As the cache's debug line names the port: a number outside the name table shows as "?",
        // as in the store's lines.
        const char* shownPort;
    } cases[] = {{3, "default_bluetooth", -22, {}, "headphone"},
                 {0, "default_headphone", -22, {}, "internal_speaker"},
                 {9, "studio", -22, {}, "?"},
                 {4, "default_bluetooth", 0, {}, "bluetooth"},
                 {3, "studio", 6, kStudioCalls, "headphone"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.device);
        LogCapture log;
        RecordingEffect effect;
        effect.setCommitResult(6);
        EXPECT_EQ(c.result, mCache.setSelectedTuningDevice(c.port, c.device, &effect));
        EXPECT_EQ(c.calls, effect.calls());
        EXPECT_TRUE(log.contains(std::string("setSelectedTuningDevice(port=") + c.shownPort +
                                     ", device=" + c.device + ")",
                                 kTag));
    }
    EXPECT_EQ("studio", mPeer.selectedTuningDevices()[3]);
    EXPECT_EQ("default_bluetooth", mPeer.selectedTuningDevices()[4]);
}

// The speaker's tunings carry mix matrices: selecting one puts its matrix into the effect's,
// behind the effect's own first word, then sends the tuning.
TEST_F(CacheTuningDeviceTest, SelectingASpeakerTuningUpdatesTheMixMatrix) {
    const std::vector<int> matrix = {15, 24, 1, 2, 3};
    const struct {
        const char* name;
        int outputChannels;
        std::vector<int> matrix;
        int getResult;
        // The first word of the effect's speaker "dom": whether its matrix is switched on.
        int effectFirst;
        bool updated;
    } cases[] = {
        {"matrix", 3, matrix, 0, 0, true},
        {"switch on kept", 3, {7, 7}, 0, 1, true},
        {"longer than the default", 4, std::vector<int>(70, 5), 0, 0, true},
        {"no matrix", 3, {}, 0, 0, false},
        {"read fails", 3, matrix, -1, 0, false},
        // Not even read.
        {"two channels", 2, matrix, 0, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        // An empty matrix files none, so drop the last case's.
        mPeer.tuningMixMatrices().clear();
        mPeer.addTuningDevice("speaker_b", "internal_speaker", Blob().add(kSpeaker, VOL, {2}),
                              c.matrix);
        mPeer.selectedTuningDevices()[0] = "speaker_a";
        mPeer.tuningParamValue() = c.outputChannels;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, code(DOM), {c.effectFirst, 9, 9}, c.getResult);
        EXPECT_EQ(0, mCache.setSelectedTuningDevice(0, "speaker_b", &effect));
        Calls expected;
        if (c.outputChannels > 2) {
            expected.push_back(EffectCall::getParam(kSpeaker, code(DOM), kDomCapacity));
        }
        if (c.updated) {
            std::vector<int> dom = {c.effectFirst};
            dom.insert(dom.end(), c.matrix.begin(), c.matrix.end());
            expected.push_back(sent(kSpeaker, DOM, dom));
        }
        append(expected, {sent(kSpeaker, VOL, {2}), EffectCall::commit(kAll)});
        EXPECT_EQ(expected, effect.calls());
        EXPECT_EQ(c.updated,
                  log.contains("setSelectedTuningDevice(): Update the mix matrix with tuning "
                               "speaker_b",
                               kTag));
    }
}

}  // namespace
}  // namespace korva::test
