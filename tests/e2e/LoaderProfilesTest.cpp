// Profile blobs, GEQ gains and tuning tables built from loader-profiles.xml, compared with entries
// worked out by hand from that file.

#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "E2eSupport.h"
#include "ExpectedCodes.h"
#include "LogCapture.h"
#include "TestPaths.h"

namespace korva::test {
namespace {

class ProfilesFileTest : public ::testing::Test {
protected:
    // Captures from before the store exists, so that the loader's lines are seen.
    LogCapture mLog;
    LoadedStore mLoaded{testDataFile("loader-profiles.xml")};
    SpatializerParamArrayTestPeer& mPeer = mLoaded.peer();

    std::vector<BlobEntry> profileEntries(int id) {
        EXPECT_TRUE(mLoaded.store().isXMLProfileValid(id));
        return readBlob(mLoaded.store().getXMLProfileParams(id));
    }
    std::vector<BlobEntry> tuningEntries(const std::string& device) {
        EXPECT_TRUE(mLoaded.store().isXMLTuningValid(device));
        return readBlob(mLoaded.store().getXMLTuningParams(device));
    }
};

// The 20-band preset of profile 0: 100 Hz steps, gains -10 to 9.
std::vector<int> profile0Gains() {
    std::vector<int> gains;
    for (int gain = -10; gain <= 9; gain++) {
        gains.push_back(gain);
    }
    return gains;
}

std::vector<int> profile0Gebs() {
    std::vector<int> gebs = {20};
    for (int frequency = 100; frequency <= 2000; frequency += 100) {
        gebs.push_back(frequency);
    }
    std::vector<int> gains = profile0Gains();
    gebs.insert(gebs.end(), gains.begin(), gains.end());
    return gebs;
}

const std::vector<int> kWarmIebs = {2, 100, 2000, 30, -10};

TEST_F(ProfilesFileTest, DynamicProfileBlobHasEveryEntryInOrder) {
    std::vector<BlobEntry> expected =
        entriesFor(kAllDevices, kProfileCodes, {{"dvme", {1}}, {"drcm", {5, 6}}, {"hvm", {2}}});
    append(expected, entriesFor(kAllDevices, {"gebs"}, {{"gebs", profile0Gebs()}}));
    // Speaker endpoint, warm preset; the amount 15 is clamped to 12, the vb mode and the mix
    // matrix come from the speaker tuning, the orientation is the speaker's.
    append(expected, entriesFor(kSpeakerDevice, kIeqCodes, {{"ieid", {4}}, {"iebs", kWarmIebs}}));
    append(expected, entriesFor(kSpeakerDevice, kEndpointCodes,
                                {{"ieon", {1}},
                                 {"dea", {12}},
                                 {"vbm", {5}},
                                 {"vbon", {2}},
                                 {"vmb", {4}},
                                 {"dom", {1, 0, 1, 1, 2, 3, 4, 5, 6}}}));
    // Headphone endpoint, flat preset, once for Bluetooth and once for USB; virtual bass off
    // forces mode 0; the dom has no matrix.
    for (int device : {kA2dpDevice, kUsbDevice}) {
        append(expected, entriesFor(device, kIeqCodes, {{"ieid", {7}}, {"iebs", {1, 500, 0}}}));
        append(expected,
               entriesFor(device, kEndpointCodes,
                          {{"dea", {-3}}, {"vbm", {0}}, {"vbon", {2}}, {"dom", {0, 1, 2}}}));
    }
    // The "other" endpoint adds nothing.

    const std::vector<int>& blob = mLoaded.store().getXMLProfileParams(0);
    ASSERT_GE(blob.size(), 2u);
    EXPECT_EQ(blob[0], kAllDevices);
    EXPECT_EQ(blob[1], 103);
    EXPECT_EQ(readBlob(blob), expected);
}

TEST_F(ProfilesFileTest, HeadphoneGroupsAreBluetoothThenUsbAndNeverWired) {
    for (int id : {0, 1}) {
        std::vector<BlobEntry> entries = profileEntries(id);
        std::vector<int> groups = deviceGroups(entries);
        std::vector<int> expected = {kAllDevices};
        if (id == 0) {
            expected.push_back(kSpeakerDevice);
        }
        expected.insert(expected.end(), {kA2dpDevice, kUsbDevice});
        EXPECT_EQ(groups, expected) << "profile " << id;
        EXPECT_TRUE(std::none_of(entries.begin(), entries.end(), [](const BlobEntry& e) {
            return e.device == kWiredHeadphoneDevice;
        }));
    }
}

TEST_F(ProfilesFileTest, EndpointWithUnknownPresetGetsThePresetTranslatedLast) {
    // Profile 1 selects preset 99, which does not exist: the last preset translated before it
    // was warm (4), selected by the "other" endpoint of profile 0. No GEQ preset: no gebs.
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes);
    for (int device : {kA2dpDevice, kUsbDevice}) {
        append(expected, entriesFor(device, kIeqCodes, {{"ieid", {4}}, {"iebs", kWarmIebs}}));
        append(expected,
               entriesFor(device, kEndpointCodes, {{"vbm", {0}}, {"vbon", {2}}, {"dom", {1, 2}}}));
    }
    EXPECT_EQ(profileEntries(1), expected);
}

TEST_F(ProfilesFileTest, FirstProfileOfAnIdWinsAndEveryProfileCounts) {
    EXPECT_EQ(mPeer.xmlProfileCount(), 3);
    EXPECT_EQ(mPeer.xmlProfileParams().size(), 2u);
    // The later profile 0 has volume-modeler-enable 7.
    EXPECT_EQ(withCode(profileEntries(0), "dvme"),
              entriesFor(kAllDevices, {"dvme"}, {{"dvme", {1}}}));
    EXPECT_EQ(mLog.count("Profile 0, numParameters = 103", "KrvSpatializerParamArray"), 2u);
    EXPECT_EQ(mLog.count("Profile 1, numParameters = 72", "KrvSpatializerParamArray"), 1u);
}

TEST_F(ProfilesFileTest, GeqGainsComeFromTheFirstPresetOfTheProfile) {
    std::map<int, std::vector<int>> expected = {{0, profile0Gains()}};
    EXPECT_EQ(mPeer.profileGeqGains(), expected);
}

TEST_F(ProfilesFileTest, TuningBlobsCarryThePortDeviceBit) {
    // Speaker tuning: 4 channels, so the audio optimizer takes the 4-channel form and the
    // regulator's stress list is left as it is (empty).
    std::vector<BlobEntry> speaker =
        entriesFor(kSpeakerDevice, tuningCodes(kAudioOptimizer),
                   {{"aobs", {0, 4}}, {"arsa", {4}}, {"arbs", {0}}, {"dsoe", {0}}});
    EXPECT_EQ(tuningEntries(""), speaker);

    // Two channels: 2-channel optimizer, stress list padded to two zeros.
    EXPECT_EQ(
        tuningEntries("spk_loud"),
        entriesFor(
            kSpeakerDevice, tuningCodes(kAudioOptimizer),
            {{"aobs", {0, 2}}, {"beb", {3}}, {"arsa", {2, 0, 0}}, {"arbs", {0}}, {"dsoe", {0}}}));

    const std::map<std::string, int> headphoneDevices = {
        {"default_headphone", kWiredHeadphoneDevice},
        {"default_bluetooth", kA2dpDevice},
        {"default_usb", kUsbDevice}};
    for (const auto& [device, bit] : headphoneDevices) {
        EXPECT_EQ(
            tuningEntries(device),
            entriesFor(
                bit, tuningCodes(kAudioOptimizer),
                {{"aobs", {0, 2}}, {"arsa", {2, 0, 0}}, {"arbs", {0}}, {"dhfm", {1}}, {"dsoe", {0}}}))
            << device;
    }
    EXPECT_EQ(mPeer.xmlTuningParams().size(), 5u);
    EXPECT_EQ(mPeer.xmlTuningCount(), 5);
}

TEST_F(ProfilesFileTest, PortsMatricesAndSpeakerValuesAreFiled) {
    std::map<std::string, std::string> ports = {{"", "internal_speaker"},
                                                {"spk_loud", "internal_speaker"},
                                                {"default_headphone", "headphone"},
                                                {"default_bluetooth", "bluetooth"},
                                                {"default_usb", "usb"}};
    EXPECT_EQ(mPeer.tuningDevicePorts(), ports);
    // Endpoint, orientation, then the matrix rows; the headphone tuning has no matrix.
    std::map<std::string, std::vector<int>> matrices = {{"", {0, 3, 1, 2, 3, 4, 5, 6}},
                                                        {"spk_loud", {0, 1, 7, 8, 9, 10}}};
    EXPECT_EQ(mPeer.tuningMixMatrices(), matrices);
    EXPECT_TRUE(mLoaded.store().getXMLTuningMixMatrix("default_usb").empty());
    EXPECT_EQ(mPeer.tuningParamValue(), 4);
    EXPECT_EQ(mPeer.defaultMixMatrixLength(), 60);
    // Loading filed the empty selection of the speaker port, which the binding without a device
    // id serves.
    std::map<int, std::string> selected = {
        {0, ""}, {3, "default_headphone"}, {4, "default_bluetooth"}, {5, "default_usb"}};
    EXPECT_EQ(mPeer.selectedTuningDevices(), selected);
}

TEST_F(ProfilesFileTest, LoaderLogsEachBlobAndMatrix) {
    std::vector<std::string> lines = mLog.messages("KrvSpatializerParamArray");
    const std::string first = "loadSpatializerXMLFile(" + mLoaded.loadedPath() + ")";
    auto start = std::find(lines.begin(), lines.end(), first);
    ASSERT_NE(start, lines.end());
    std::vector<std::string> expected = {
        first,
        "Profile 0, numParameters = 103",
        "Profile 1, numParameters = 72",
        "Profile 0, numParameters = 103",
        "Tuning id(), tuningName(spk) numParameters = 41",
        "Tuning id(): endpoint 0, orientation 3, mix matrices length 6",
        "Tuning id(spk_loud), tuningName(spk2) numParameters = 41",
        "Tuning id(spk_loud): endpoint 0, orientation 1, mix matrices length 4",
        "Tuning id(default_headphone), tuningName(hp) numParameters = 41",
        "Tuning id(default_headphone): endpoint 1, orientation 0, mix matrices length 0",
        "Tuning id(default_bluetooth), tuningName(hp) numParameters = 41",
        "Tuning id(default_bluetooth): endpoint 1, orientation 0, mix matrices length 0",
        "Tuning id(default_usb), tuningName(hp) numParameters = 41",
        "Tuning id(default_usb): endpoint 1, orientation 0, mix matrices length 0",
    };
    EXPECT_EQ(std::vector<std::string>(start, lines.end()), expected);
    for (const LogLine& line : mLog.lines()) {
        EXPECT_LT(line.priority, ANDROID_LOG_WARN) << line.tag << ": " << line.message;
    }
}

}  // namespace
}  // namespace korva::test
