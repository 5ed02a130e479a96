// Tuning-device blobs, ports and mix matrices built from loader-tunings.xml, compared with entries
// worked out by hand from that file.

#include <gtest/gtest.h>

#include "E2eSupport.h"
#include "ExpectedCodes.h"
#include "LogCapture.h"
#include "TestPaths.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva::test {
namespace {

class TuningsFileTest : public ::testing::Test {
protected:
    LogCapture mLog;
    LoadedStore mLoaded{testDataFile("loader-tunings.xml")};
    SpatializerParamArrayTestPeer& mPeer = mLoaded.peer();

    std::vector<BlobEntry> tuningEntries(const std::string& device) {
        EXPECT_TRUE(mLoaded.store().isXMLTuningValid(device)) << device;
        return readBlob(mLoaded.store().getXMLTuningParams(device));
    }
};

// The 8 x 8 matrix of the speaker tuning: its rows hold 1 to 64 in order.
std::vector<int> speakerMatrix() {
    std::vector<int> matrix;
    for (int value = 1; value <= 64; value++) {
        matrix.push_back(value);
    }
    return matrix;
}

TEST_F(TuningsFileTest, SixChannelSpeakerTakesTheGeneralBranches) {
    // 6 channels: no optimizer bands, stress list kept, 2-channel complex equalizer, one interval
    // per speaker pair (layout 2, the whole list).
    EXPECT_EQ(tuningEntries(""),
              entriesFor(kSpeakerDevice, tuningCodes(kComplexEqualizer | kSpeakerOptimization),
                         {{"aoon", {1}},
                          {"arsa", {6, 7}},
                          {"arbs", {0}},
                          {"ceon", {1}},
                          {"ceqt", {2, 2, 1, 2, 3, 4}},
                          {"dsoa", {5}},
                          {"dsoi", {2, 5, 6}},
                          {"dsoe", {1}}}));
}

TEST_F(TuningsFileTest, FourChannelHeadphoneTakesTheFourChannelForms) {
    EXPECT_EQ(tuningEntries("default_headphone"),
              entriesFor(kWiredHeadphoneDevice,
                         tuningCodes(kAudioOptimizer | kSibilanceSuppression | kComplexEqualizer |
                                     kSpeakerOptimization),
                         {{"aobs", {1, 4, 100, 1, 2, 3, 4}},
                          {"arsa", {4, 1, 2, 3}},
                          {"arbs", {0}},
                          {"rssa", {4, 1, 1, 2, 3, 4}},
                          {"rsse", {1}},
                          {"ceon", {1}},
                          {"ceqt", {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}},
                          {"dsoa", {3}},
                          {"dsoi", {2, 8, 9}},
                          {"dsoe", {1}}}));
}

TEST_F(TuningsFileTest, TwoChannelTuningServesTwoPortsWithTheSameValues) {
    // 2 channels: stress list cut to two values, a single interval, and the complex equalizer
    // switched off leaves out its coefficients. The second translation sees the record as the
    // first one left it and gives the same values.
    for (const auto& [device, bit] : std::map<std::string, int>{{"default_bluetooth", kA2dpDevice},
                                                                {"default_usb", kUsbDevice}}) {
        EXPECT_EQ(tuningEntries(device),
                  entriesFor(bit,
                             tuningCodes(kAudioOptimizer | kSibilanceSuppression | kBassMbdrc |
                                         kSpeakerOptimization),
                             {{"aobs", {1, 2, 100, 1, 2}},
                              {"arsa", {2, 1, 2}},
                              {"arbs", {2, 100, 200, -10, -20, -5, -15, 1, 0}},
                              {"rssa", {2, 1, 1, 2}},
                              {"rsse", {1}},
                              {"vbsf", {40, 120}},
                              {"ceon", {0}},
                              {"bmde", {1}},
                              {"bmdt", {9, 8}},
                              {"dsoi", {1, 5}},
                              {"dsoe", {1}}}))
            << device;
    }
}

TEST_F(TuningsFileTest, PortUnknownToTheStoreIsFiledWithoutDeviceBit) {
    // No output channels given: no optimizer bands, stress list padded to two values, and no
    // interval to lay out.
    EXPECT_EQ(tuningEntries("tv"),
              entriesFor(
                  0, tuningCodes(kSpeakerOptimization),
                  {{"beb", {9}}, {"arsa", {0, 4, 0}}, {"arbs", {0}}, {"dsoi", {2}}, {"dsoe", {1}}}));
    ASSERT_EQ(kPortNameToDevice.count("hdmi"), 1u);
    EXPECT_EQ(kPortNameToDevice.at("hdmi"), 0);
    EXPECT_EQ(mLoaded.store().getAvailableTuningDevices(DEVICE_HDMI), "tv");
}

TEST_F(TuningsFileTest, BindingWithoutTuningGetsNothing) {
    // "lost" is bound to a tuning without data, which ends the reading and is not kept.
    EXPECT_TRUE(mLog.contains("There is no <data> in Tuning section", "TuningFileParser"));
    EXPECT_EQ(mPeer.xmlTuningParams().count("lost"), 0u);
    EXPECT_EQ(mPeer.tuningDevicePorts().count("lost"), 0u);
    std::map<std::string, std::string> ports = {{"", "internal_speaker"},
                                                {"default_headphone", "headphone"},
                                                {"default_bluetooth", "bluetooth"},
                                                {"default_usb", "usb"},
                                                {"tv", "hdmi"}};
    EXPECT_EQ(mPeer.tuningDevicePorts(), ports);
    EXPECT_EQ(mPeer.xmlTuningCount(), 5);
}

TEST_F(TuningsFileTest, LongSpeakerMatrixWidensTheMixMatrixLength) {
    std::vector<int> words = {0, 1};
    std::vector<int> matrix = speakerMatrix();
    words.insert(words.end(), matrix.begin(), matrix.end());
    std::map<std::string, std::vector<int>> matrices = {{"", words}};
    EXPECT_EQ(mPeer.tuningMixMatrices(), matrices);
    // 2 + 64 words, above the default 60.
    EXPECT_EQ(mPeer.defaultMixMatrixLength(), 66);
    EXPECT_EQ(mPeer.tuningParamValue(), 6);
    EXPECT_TRUE(mLog.contains("Tuning id(): endpoint 0, orientation 1, mix matrices length 64",
                              "KrvSpatializerParamArray"));
}

TEST_F(TuningsFileTest, SpeakerEndpointCarriesTheSpeakerMatrix) {
    // No IEQ preset exists: the endpoint's group has no IEQ entries. Virtual bass is not enabled,
    // so its mode is 0; the process mode is the default 1.
    std::vector<int> dom = {1, 0, 1};
    std::vector<int> matrix = speakerMatrix();
    dom.insert(dom.end(), matrix.begin(), matrix.end());
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes);
    append(expected,
           entriesFor(kSpeakerDevice, kEndpointCodes, {{"vbm", {0}}, {"vbon", {1}}, {"dom", dom}}));
    EXPECT_EQ(readBlob(mLoaded.store().getXMLProfileParams(2)), expected);
}

}  // namespace
}  // namespace korva::test
