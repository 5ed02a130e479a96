// Blobs, ports, matrices and gains that loading files from the test tuning files, compared with
// what was worked out by hand from those files.

#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "E2eSupport.h"
#include "LogCapture.h"
#include "TestPaths.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

constexpr const char* kTag = "KrvSpatializerParamArray";

std::vector<std::string> errors(const LogCapture& log) {
    std::vector<std::string> lines;
    for (const LogLine& line : log.lines()) {
        if (line.tag == kTag && line.priority == ANDROID_LOG_ERROR) lines.push_back(line.message);
    }
    return lines;
}

std::vector<int> range(int first, int last) {
    std::vector<int> values(last - first + 1);
    std::iota(values.begin(), values.end(), first);
    return values;
}

std::vector<int> joined(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

class ProfilesFileTest : public ::testing::Test {
protected:
    LogCapture mLog;  // from before the store exists, so that the loader's lines are seen
    LoadedStore mLoaded{testDataFile("loader-profiles.xml")};
    SpatializerParamArrayTestPeer& mPeer = mLoaded.peer();
    const std::vector<int> kWarmIebs = {2, 100, 2000, 30, -10};
};

TEST_F(ProfilesFileTest, DynamicProfileBlobHasEveryEntryInOrder) {
    // The first profile 0 of the file wins; the GEQ preset has 20 bands of 100 Hz, gains -10..9.
    std::vector<BlobEntry> expected =
        entriesFor(kAllDevices, kProfileCodes, {{"dvme", {1}}, {"drcm", {5, 6}}, {"hvm", {2}}});
    std::vector<int> frequencies;
    for (int f = 100; f <= 2000; f += 100) frequencies.push_back(f);
    append(expected, {{kAllDevices, "gebs", joined(joined({20}, frequencies), range(-10, 9))}});
    // Speaker endpoint, warm preset first; the amount 15 is clamped to 12, the vb mode and the
    // mix matrix come from the speaker tuning, the orientation is the speaker's.
    append(expected, {{kSpeakerDevice, "ieid", {4}}, {kSpeakerDevice, "iebs", kWarmIebs}});
    append(expected, entriesFor(kSpeakerDevice, kEndpointCodes,
                                {{"ieon", {1}},
                                 {"dea", {12}},
                                 {"vbm", {5}},
                                 {"vbon", {2}},
                                 {"vmb", {4}},
                                 {"dom", {1, 0, 1, 1, 2, 3, 4, 5, 6}}}));
    // Headphone endpoint, flat preset, for Bluetooth then USB (never the wired headphone);
    // virtual bass off forces mode 0; no matrix. The "other" endpoint adds nothing.
    for (int device : {kA2dpDevice, kUsbDevice}) {
        append(expected, {{device, "ieid", {7}}, {device, "iebs", {1, 500, 0}}});
        append(expected,
               entriesFor(device, kEndpointCodes,
                          {{"dea", {-3}}, {"vbm", {0}}, {"vbon", {2}}, {"dom", {0, 1, 2}}}));
    }
    const std::vector<int>& blob = mLoaded.store().getXMLProfileParams(0);
    ASSERT_GE(blob.size(), 2u);
    EXPECT_EQ(103, blob[1]);
    EXPECT_EQ(expected, readBlob(blob));
}

TEST_F(ProfilesFileTest, UnknownIeqPresetGetsThePresetTranslatedLast) {
    // Profile 1 selects preset 99: the last one translated before it was warm (4), selected by
    // the "other" endpoint of profile 0. No GEQ preset: no gebs.
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes, {});
    for (int device : {kA2dpDevice, kUsbDevice}) {
        append(expected, {{device, "ieid", {4}}, {device, "iebs", kWarmIebs}});
        append(expected,
               entriesFor(device, kEndpointCodes, {{"vbm", {0}}, {"vbon", {2}}, {"dom", {1, 2}}}));
    }
    EXPECT_EQ(expected, readBlob(mLoaded.store().getXMLProfileParams(1)));
}

TEST_F(ProfilesFileTest, TablesAndLinesOfTheLoad) {
    // Every profile counts, the first of an id is kept.
    EXPECT_EQ(3, mPeer.xmlProfileCount());
    EXPECT_EQ(2u, mPeer.xmlProfileParams().size());
    EXPECT_EQ((std::map<int, std::vector<int>>{{0, range(-10, 9)}}), mPeer.profileGeqGains());
    const std::map<std::string, std::string> ports = {{"", "internal_speaker"},
                                                      {"spk_loud", "internal_speaker"},
                                                      {"default_headphone", "headphone"},
                                                      {"default_bluetooth", "bluetooth"},
                                                      {"default_usb", "usb"}};
    EXPECT_EQ(ports, mPeer.tuningDevicePorts());
    const std::map<std::string, int> bits = {{"", kSpeakerDevice},
                                             {"spk_loud", kSpeakerDevice},
                                             {"default_headphone", kWiredHeadphoneDevice},
                                             {"default_bluetooth", kA2dpDevice},
                                             {"default_usb", kUsbDevice}};
    for (const auto& [device, blob] : mPeer.xmlTuningParams()) {
        for (const BlobEntry& entry : readBlob(blob)) EXPECT_EQ(bits.at(device), entry.device);
    }
    EXPECT_EQ(5, mPeer.xmlTuningCount());
    // Endpoint, orientation, then the matrix rows; the headphone tuning has no matrix.
    EXPECT_EQ((std::map<std::string, std::vector<int>>{{"", {0, 3, 1, 2, 3, 4, 5, 6}},
                                                       {"spk_loud", {0, 1, 7, 8, 9, 10}}}),
              mPeer.tuningMixMatrices());
    EXPECT_EQ(4, mPeer.tuningParamValue());
    EXPECT_EQ(60, mPeer.defaultMixMatrixLength());
    // The empty selection filed for the speaker port is served by the binding without id.
    EXPECT_EQ((std::map<int, std::string>{
                  {0, ""}, {3, "default_headphone"}, {4, "default_bluetooth"}, {5, "default_usb"}}),
              mPeer.selectedTuningDevices());

    std::vector<std::string> lines = mLog.messages(kTag);
    auto start = std::find(lines.begin(), lines.end(),
                           "loadSpatializerXMLFile(" + mLoaded.loadedPath() + ")");
    ASSERT_NE(lines.end(), start);
    const std::vector<std::string> expected = {
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
        "Tuning id(default_usb): endpoint 1, orientation 0, mix matrices length 0"};
    EXPECT_EQ(expected, std::vector<std::string>(start + 1, lines.end()));
    for (const LogLine& line : mLog.lines()) {
        EXPECT_LT(line.priority, ANDROID_LOG_WARN) << line.tag << ": " << line.message;
    }
}

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

TEST_F(TuningsFileTest, OutputChannelsOfEachTuningReachItsTranslators) {
    struct Case {
        std::string device;
        int bit;
        std::map<std::string, std::vector<int>> values;
        std::vector<std::string> absent;
    };
    const Case cases[] = {
        {"",
         kSpeakerDevice,
         {{"arsa", {6, 7}}, {"ceqt", {2, 2, 1, 2, 3, 4}}, {"dsoi", {2, 5, 6}}},
         {"aobs"}},
        {"default_headphone",
         kWiredHeadphoneDevice,
         {{"aobs", {1, 4, 100, 1, 2, 3, 4}},
          {"arsa", {4, 1, 2, 3}},
          {"rssa", {4, 1, 1, 2, 3, 4}},
          {"ceqt", {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}},
          {"dsoi", {2, 8, 9}}},
         {}},
        // No channel count: the stress list is padded and there is no interval to lay out.
        // A port the store has no device bit for.
        {"tv", 0, {{"beb", {9}}, {"arsa", {0, 4, 0}}, {"dsoi", {2}}}, {"aobs", "ceqt"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.device);
        std::vector<BlobEntry> entries = tuningEntries(c.device);
        for (const BlobEntry& entry : entries) EXPECT_EQ(c.bit, entry.device) << entry.code;
        for (const auto& [code, values] : c.values) EXPECT_EQ(values, valuesOf(entries, code));
        for (const std::string& code : c.absent) {
            EXPECT_TRUE(std::none_of(entries.begin(), entries.end(), [&code](const BlobEntry& e) {
                return e.code == code;
            })) << code;
        }
    }
}

TEST_F(TuningsFileTest, TuningOnTwoPortsIsTranslatedAlikeForBoth) {
    // The second translation sees the record as the first one left it (stress list cut, interval
    // cut) and must give the same values.
    std::vector<BlobEntry> usb = tuningEntries("default_usb");
    for (BlobEntry& entry : usb) {
        EXPECT_EQ(kUsbDevice, entry.device);
        entry.device = kA2dpDevice;
    }
    std::vector<BlobEntry> bluetooth = tuningEntries("default_bluetooth");
    EXPECT_EQ(bluetooth, usb);
    EXPECT_EQ((std::vector<int>{2, 1, 2}), valuesOf(bluetooth, "arsa"));
    EXPECT_EQ((std::vector<int>{1, 5}), valuesOf(bluetooth, "dsoi"));
    EXPECT_EQ((std::vector<int>{9, 8}), valuesOf(bluetooth, "bmdt"));
}

TEST_F(TuningsFileTest, PortsMatricesAndTheLongSpeakerMatrix) {
    // "lost" is bound to a tuning without data, which ends the reading and is not kept.
    EXPECT_TRUE(mLog.contains("There is no <data> in Tuning section", "TuningFileParser"));
    EXPECT_EQ((std::map<std::string, std::string>{{"", "internal_speaker"},
                                                  {"default_headphone", "headphone"},
                                                  {"default_bluetooth", "bluetooth"},
                                                  {"default_usb", "usb"},
                                                  {"tv", "hdmi"}}),
              mPeer.tuningDevicePorts());
    EXPECT_EQ(5, mPeer.xmlTuningCount());
    EXPECT_EQ("tv", mLoaded.store().getAvailableTuningDevices(DEVICE_HDMI));
    // The 8 x 8 speaker matrix, 2 + 64 words, widens the default length of 60.
    EXPECT_EQ((std::map<std::string, std::vector<int>>{{"", joined({0, 1}, range(1, 64))}}),
              mPeer.tuningMixMatrices());
    EXPECT_EQ(66, mPeer.defaultMixMatrixLength());
    EXPECT_EQ(6, mPeer.tuningParamValue());
    EXPECT_TRUE(
        mLog.contains("Tuning id(): endpoint 0, orientation 1, mix matrices length 64", kTag));
    // The speaker endpoint carries the whole matrix; no IEQ preset exists, so no IEQ entries.
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes, {});
    append(expected,
           entriesFor(kSpeakerDevice, kEndpointCodes,
                      {{"vbm", {0}}, {"vbon", {1}}, {"dom", joined({1, 0, 1}, range(1, 64))}}));
    EXPECT_EQ(expected, readBlob(mLoaded.store().getXMLProfileParams(2)));
}

TEST(MissingDefaultDeviceTest, RefusesEveryTuningAndSpeakersTakeTheDefaults) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-missing-default.xml"));
    SpatializerParamArrayTestPeer& peer = loaded.peer();
    EXPECT_EQ((std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice default_usb "
                                        "is not available for port usb."}),
              errors(log));
    EXPECT_EQ(0, peer.xmlTuningCount());
    // The blobs are still filed; only the count says that none may be used.
    EXPECT_EQ(4u, peer.xmlTuningParams().size());
    EXPECT_EQ(1, peer.tuningParamValue());

    // The speaker tuning has neither matrix nor vb mode: the built-in speaker "dom" and mode 3.
    EXPECT_TRUE(log.contains("use the default mix matrix", kTag));
    EXPECT_TRUE(log.contains("use the default vb mode", kTag));
    std::vector<int> builtinDom;
    for (const BlobEntry& entry :
         readBlob({SpatializerParamArray::mCommonParams,
                   SpatializerParamArray::mCommonParams + SpatializerParamArray::kCommonTableWords},
                  -1)) {
        if (entry.device == kSpeakerDevice && entry.code == "dom") builtinDom = entry.values;
    }
    ASSERT_EQ(61u, builtinDom.size());
    // An empty GEQ preset: no bands, and empty gains for its profile.
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes, {});
    append(expected, {{kAllDevices, "gebs", {0}}});
    append(expected, entriesFor(kSpeakerDevice, kEndpointCodes,
                                {{"vbm", {3}}, {"vbon", {1}}, {"dom", builtinDom}}));
    EXPECT_EQ(expected, readBlob(loaded.store().getXMLProfileParams(2)));
    EXPECT_TRUE(peer.tuningMixMatrices().empty());
    EXPECT_EQ((std::map<int, std::vector<int>>{{2, {}}}), peer.profileGeqGains());
}

TEST(NoSpeakerDeviceTest, EmptySpeakerSelectionRefusesEveryTuning) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-no-speaker.xml"));
    EXPECT_EQ((std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice  is not "
                                        "available for port internal_speaker."}),
              errors(log));
    EXPECT_EQ("", loaded.peer().selectedTuningDevices().at(DEVICE_INTERNAL_SPEAKER));
    EXPECT_EQ(0, loaded.peer().xmlTuningCount());
    EXPECT_EQ(2, loaded.peer().tuningParamValue());
}

}  // namespace
}  // namespace korva::test
