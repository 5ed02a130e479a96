// Sending tuning devices: all selected ones, one by name, and a change of a port's selection.
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
using test::kBluetooth;
using test::kDomCapacity;
using test::kHeadphone;
using test::kSpeaker;
using test::kUsb;
using test::LogCapture;
using test::RecordingEffect;

constexpr const char* kTag = "KrvSpatializerParamCache";

EffectCall sent(int deviceId, VexParameter param, const std::vector<int>& values) {
    return EffectCall::setParam(deviceId, test::code(param), values);
}

// The default devices of the three tuning ports and a second one for the headphone.
void fileDefaultTunings(SpatializerParamArrayTestPeer& peer) {
    peer.addTuningDevice("default_headphone", "headphone",
                         Blob().add(kHeadphone, IEON, {1}).add(kHeadphone, VMB, {16, 2}));
    peer.addTuningDevice("default_bluetooth", "bluetooth", Blob().add(kBluetooth, DEA, {4}));
    peer.addTuningDevice("default_usb", "usb", Blob().add(kUsb, VOL, {}));
    peer.addTuningDevice("studio", "headphone", Blob().add(kHeadphone, DED, {2}));
}

const std::vector<EffectCall> kHeadphoneCalls = {
    sent(kHeadphone, IEON, {1}), sent(kHeadphone, VMB, {16, 2}), EffectCall::commit(kAll)};
const std::vector<EffectCall> kBluetoothCalls = {sent(kBluetooth, DEA, {4}),
                                                 EffectCall::commit(kAll)};
const std::vector<EffectCall> kUsbCalls = {sent(kUsb, VOL, {}), EffectCall::commit(kAll)};

TEST(CacheTuningDeviceTest, LoadTuningSendsEachPortsSelectionInPortOrder) {
    test::setLogLevel(2);
    LogCapture log;
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setCommitResult(6);
    EXPECT_EQ(6, cache.loadTuning(&effect));
    std::vector<EffectCall> expected = kHeadphoneCalls;
    test::append(expected, kBluetoothCalls);
    test::append(expected, kUsbCalls);
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
    EXPECT_TRUE(log.contains("loadTuning", kTag));
    EXPECT_TRUE(log.contains("loadTuningDevice(default_bluetooth)", kTag));
}

// Every port is tried; the result is the last port's.
TEST(CacheTuningDeviceTest, LoadTuningGoesOnPastAPortWithoutTuning) {
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    peer.selectedTuningDevices()[3] = "gone";
    SpatializerParamCache cache;
    {
        RecordingEffect effect;
        EXPECT_EQ(0, cache.loadTuning(&effect));
        std::vector<EffectCall> expected = kBluetoothCalls;
        test::append(expected, kUsbCalls);
        EXPECT_EQ(expected, effect.calls()) << effect.describe();
    }
    peer.selectedTuningDevices()[3] = "studio";
    peer.selectedTuningDevices()[5] = "gone";
    {
        RecordingEffect effect;
        EXPECT_EQ(-22, cache.loadTuning(&effect));
        std::vector<EffectCall> expected = {sent(kHeadphone, DED, {2}), EffectCall::commit(kAll)};
        test::append(expected, kBluetoothCalls);
        EXPECT_EQ(expected, effect.calls()) << effect.describe();
    }
}

TEST(CacheTuningDeviceTest, LoadTuningDeviceSendsEveryEntryThenCommits) {
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    peer.addTuningDevice("nothing", "usb", Blob());
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setCommitResult(-5);
    EXPECT_EQ(-5, cache.loadTuningDevice("default_headphone", &effect));
    EXPECT_EQ(kHeadphoneCalls, effect.calls()) << effect.describe();

    // A blob without entries still commits.
    effect.clearCalls();
    EXPECT_EQ(-5, cache.loadTuningDevice("nothing", &effect));
    EXPECT_EQ(std::vector<EffectCall>{EffectCall::commit(kAll)}, effect.calls());
}

TEST(CacheTuningDeviceTest, LoadTuningDeviceRefusesWhatItCannotSend) {
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    peer.addTuningDevice("short", "headphone", Blob().add(kHeadphone, IEON, {1}).announce(2));
    peer.addTuningDevice("cut", "headphone", {kAll, 1, kHeadphone, test::code(VMB), 4, 1, 2});
    peer.addTuningDevice("negative", "headphone", {kAll, 1, kHeadphone, test::code(VMB), -1});
    peer.addTuningDevice("empty", "headphone", {});
    SpatializerParamCache cache;
    for (const char* device :
         {"unknown", "Default_headphone", "", "short", "cut", "negative", "empty"}) {
        RecordingEffect effect;
        EXPECT_EQ(-22, cache.loadTuningDevice(device, &effect)) << device;
        EXPECT_TRUE(effect.calls().empty()) << device << "\n" << effect.describe();
    }
    // Asking for an unknown device does not make it known.
    EXPECT_EQ(0u, peer.xmlTuningParams().count("unknown"));
}

TEST(CacheTuningDeviceTest, LoadTuningDeviceTracesEntriesFromLevelThree) {
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    SpatializerParamCache cache;
    RecordingEffect effect;
    const char* const kTrace = "loadTuningDevice() deviceId=8, param=vmb, paramLength=2";
    test::setLogLevel(2);
    {
        LogCapture log;
        cache.loadTuningDevice("default_headphone", &effect);
        EXPECT_TRUE(log.contains("loadTuningDevice(default_headphone)", kTag));
        EXPECT_FALSE(log.contains(kTrace, kTag));
    }
    test::setLogLevel(3);
    {
        LogCapture log;
        cache.loadTuningDevice("default_headphone", &effect);
        EXPECT_TRUE(log.contains("loadTuningDevice() deviceId=8, param=ieon, paramLength=1", kTag));
        EXPECT_TRUE(log.contains(kTrace, kTag));
    }
}

TEST(CacheTuningDeviceTest, SelectingAnotherDeviceSendsIt) {
    test::setLogLevel(2);
    LogCapture log;
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setCommitResult(2);
    EXPECT_EQ(2, cache.setSelectedTuningDevice(3, "studio", &effect));
    const std::vector<EffectCall> expected = {sent(kHeadphone, DED, {2}), EffectCall::commit(kAll)};
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
    EXPECT_EQ("studio", peer.selectedTuningDevices()[3]);
    EXPECT_TRUE(log.contains("setSelectedTuningDevice(port=headphone, device=studio)", kTag));
}

TEST(CacheTuningDeviceTest, SelectingTheSelectedDeviceSendsNothing) {
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    SpatializerParamCache cache;
    RecordingEffect effect;
    EXPECT_EQ(0, cache.setSelectedTuningDevice(4, "default_bluetooth", &effect));
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
}

TEST(CacheTuningDeviceTest, ADeviceOfAnotherPortIsRefusedWithNothingSent) {
    const struct {
        int port;
        const char* device;
        const char* error;
    } cases[] = {
        {3, "default_bluetooth",
         "setSelectedTuningDevice tuningDevice default_bluetooth is not available for port "
         "headphone."},
        {5, "studio", "setSelectedTuningDevice tuningDevice studio is not available for port usb."},
        {4, "unknown",
         "setSelectedTuningDevice tuningDevice unknown is not available for port bluetooth."},
        {0, "default_headphone",
         "setSelectedTuningDevice tuningDevice default_headphone is not available for port "
         "internal_speaker."},
    };
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    peer.tuningParamValue() = 3;
    const std::map<int, std::string> before = peer.selectedTuningDevices();
    for (const auto& c : cases) {
        LogCapture log;
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, test::code(DOM), {1, 2, 3});
        EXPECT_EQ(-22, cache.setSelectedTuningDevice(c.port, c.device, &effect)) << c.device;
        EXPECT_TRUE(effect.calls().empty()) << c.device << "\n" << effect.describe();
        EXPECT_TRUE(log.contains(c.error, "KrvSpatializerParamArray")) << c.device;
    }
    std::map<int, std::string> after = peer.selectedTuningDevices();
    // Port 0 had no selection: asking for it filed an empty one.
    EXPECT_EQ("", after[0]);
    after.erase(0);
    EXPECT_EQ(before, after);
}

TEST(CacheTuningDeviceTest, APortOutsideTheTableIsRefused) {
    test::setLogLevel(2);
    LogCapture log;
    SpatializerParamArrayTestPeer peer;
    fileDefaultTunings(peer);
    SpatializerParamCache cache;
    RecordingEffect effect;
    EXPECT_EQ(-22, cache.setSelectedTuningDevice(9, "studio", &effect));
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
    EXPECT_TRUE(log.contains("setSelectedTuningDevice(port=unknown, device=studio)", kTag));
}

// The speaker's tunings carry mix matrices: selecting one puts its matrix into the effect's
// behind the effect's own first word, then sends the tuning.
struct SpeakerCase {
    const char* name;
    int outputChannels;
    std::vector<int> matrix;
    int getResult;
    std::vector<EffectCall> domCalls;
};

std::vector<int> withFirst(int first, const std::vector<int>& matrix) {
    std::vector<int> values = {first};
    values.insert(values.end(), matrix.begin(), matrix.end());
    return values;
}

TEST(CacheTuningDeviceTest, SelectingASpeakerTuningUpdatesTheMixMatrix) {
    const std::vector<int> matrix = {15, 24, 1, 2, 3};
    std::vector<int> longMatrix(70);
    for (int i = 0; i < 70; i++) longMatrix[i] = i;
    const EffectCall read = EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity);
    const SpeakerCase cases[] = {
        {"matrix",
         3,
         matrix,
         0,
         {read, EffectCall::setParam(kSpeaker, test::code(DOM), withFirst(0, matrix))}},
        {"longer than the default",
         4,
         longMatrix,
         0,
         {read, EffectCall::setParam(kSpeaker, test::code(DOM), withFirst(0, longMatrix))}},
        {"no matrix", 3, {}, 0, {read}},
        {"read fails", 3, matrix, -1, {read}},
        {"two channels", 2, matrix, 0, {}},
    };
    for (const SpeakerCase& c : cases) {
        test::setLogLevel(2);
        LogCapture log;
        SpatializerParamArrayTestPeer peer;
        // The cases share one store: an empty matrix files none, so drop the last case's.
        peer.tuningMixMatrices().clear();
        peer.addTuningDevice("speaker_a", "internal_speaker", Blob().add(kSpeaker, VOL, {1}));
        peer.addTuningDevice("speaker_b", "internal_speaker", Blob().add(kSpeaker, VOL, {2}),
                             c.matrix);
        peer.selectedTuningDevices()[0] = "speaker_a";
        peer.tuningParamValue() = c.outputChannels;
        SpatializerParamCache cache;
        RecordingEffect effect;
        effect.setAnswer(kSpeaker, test::code(DOM), {0, 9, 9}, c.getResult);
        EXPECT_EQ(0, cache.setSelectedTuningDevice(0, "speaker_b", &effect)) << c.name;
        std::vector<EffectCall> expected = c.domCalls;
        expected.push_back(sent(kSpeaker, VOL, {2}));
        expected.push_back(EffectCall::commit(kAll));
        EXPECT_EQ(expected, effect.calls()) << c.name << "\n" << effect.describe();
        EXPECT_EQ(c.domCalls.size() == 2,
                  log.contains("setSelectedTuningDevice(): Update the mix matrix with tuning "
                               "speaker_b",
                               kTag))
            << c.name;
        EXPECT_EQ("speaker_b", peer.selectedTuningDevices()[0]);
    }
}

TEST(CacheTuningDeviceTest, TheEffectsMatrixSwitchIsKept) {
    SpatializerParamArrayTestPeer peer;
    peer.addTuningDevice("speaker_b", "internal_speaker", Blob(), {7, 7});
    peer.tuningParamValue() = 3;
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setAnswer(kSpeaker, test::code(DOM), {1, 0, 0, 0});
    EXPECT_EQ(0, cache.setSelectedTuningDevice(0, "speaker_b", &effect));
    const std::vector<EffectCall> expected = {
        EffectCall::getParam(kSpeaker, test::code(DOM), kDomCapacity),
        sent(kSpeaker, DOM, {1, 7, 7}),
        EffectCall::commit(kAll),
    };
    EXPECT_EQ(expected, effect.calls()) << effect.describe();
}

}  // namespace
}  // namespace korva
