// What loading falls back on: the default speaker matrix and vb mode, the refusal of every tuning
// when a default selection has no tuning device, and the built-in tables alone when the file
// cannot be read.

#include <android/log.h>
#include <gtest/gtest.h>

#include <cstring>

#include "E2eSupport.h"
#include "ExpectedCodes.h"
#include "LogCapture.h"
#include "RecordingEffect.h"
#include "TestPaths.h"
#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "tests/store/LogLines.h"

namespace korva::test {
namespace {

constexpr const char* kTag = "KrvSpatializerParamArray";

// The built-in speaker "dom" of the common table.
std::vector<int> builtinSpeakerDom() {
    for (const BlobEntry& entry : readBuiltinTable(SpatializerParamArray::mCommonParams,
                                                   SpatializerParamArray::kCommonTableWords)) {
        if (entry.device == kSpeakerDevice && entry.code == "dom") {
            return entry.values;
        }
    }
    ADD_FAILURE() << "no speaker dom in the common table";
    return {};
}

TEST(MissingDefaultDeviceTest, RefusesEveryTuningButKeepsTheProfiles) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-missing-default.xml"));
    SpatializerParamArrayTestPeer& peer = loaded.peer();

    EXPECT_EQ(linesAt(log, kTag, ANDROID_LOG_ERROR),
              std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice default_usb "
                                       "is not available for port usb."});
    EXPECT_EQ(peer.xmlTuningCount(), 0);
    EXPECT_FALSE(SpatializerParamCache().isTuningAvailable());
    // The blobs are still filed; only the count says that none may be used.
    EXPECT_EQ(peer.xmlTuningParams().size(), 4u);
    EXPECT_EQ(peer.xmlProfileCount(), 1);
    EXPECT_TRUE(loaded.store().isXMLProfileValid(2));
    // The speaker tuning says 1 output channel.
    EXPECT_EQ(peer.tuningParamValue(), 1);
}

TEST(MissingDefaultDeviceTest, SpeakerWithoutMatrixOrVbModeUsesTheDefaults) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-missing-default.xml"));

    EXPECT_TRUE(log.contains("use the default mix matrix", kTag));
    EXPECT_TRUE(log.contains("use the default vb mode", kTag));
    // The default matrix behind the enable word, the speaker endpoint and its orientation is
    // exactly the built-in speaker "dom".
    std::vector<int> dom = builtinSpeakerDom();
    ASSERT_EQ(dom.size(), 61u);
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes);
    // An empty GEQ preset: no bands.
    append(expected, entriesFor(kAllDevices, {"gebs"}, {{"gebs", {0}}}));
    append(expected,
           entriesFor(kSpeakerDevice, kEndpointCodes, {{"vbm", {3}}, {"vbon", {1}}, {"dom", dom}}));
    EXPECT_EQ(readBlob(loaded.store().getXMLProfileParams(2)), expected);
    // The tuning has no matrix of its own to file.
    EXPECT_TRUE(loaded.peer().tuningMixMatrices().empty());
    EXPECT_EQ(loaded.peer().defaultMixMatrixLength(), 60);
    // The preset gave its profile gains, none of them.
    std::map<int, std::vector<int>> gains = {{2, {}}};
    EXPECT_EQ(loaded.peer().profileGeqGains(), gains);
}

TEST(NoSpeakerDeviceTest, EmptySpeakerSelectionRefusesEveryTuning) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-no-speaker.xml"));
    SpatializerParamArrayTestPeer& peer = loaded.peer();

    EXPECT_TRUE(log.contains("use the default mix matrix", kTag));
    EXPECT_TRUE(log.contains("use the default vb mode", kTag));
    // The speaker port is met first, with the empty selection that loading filed for it.
    EXPECT_EQ(linesAt(log, kTag, ANDROID_LOG_ERROR),
              std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice  is not "
                                       "available for port internal_speaker."});
    EXPECT_EQ(peer.selectedTuningDevices().at(DEVICE_INTERNAL_SPEAKER), "");
    EXPECT_EQ(peer.xmlTuningCount(), 0);
    EXPECT_EQ(peer.xmlTuningParams().size(), 3u);
    EXPECT_EQ(peer.tuningParamValue(), 2);
}

TEST(NoSpeakerDeviceTest, OtherEndpointAddsNothingAndNoPresetMeansNoIeqEntries) {
    LoadedStore loaded(testDataFile("loader-no-speaker.xml"));
    std::vector<BlobEntry> expected = entriesFor(kAllDevices, kProfileCodes);
    for (int device : {kA2dpDevice, kUsbDevice}) {
        append(expected, entriesFor(device, kEndpointCodes,
                                    {{"vbm", {0}}, {"vbon", {1}}, {"dom", {1, 1, 2}}}));
    }
    const std::vector<int>& blob = loaded.store().getXMLProfileParams(3);
    ASSERT_GE(blob.size(), 2u);
    EXPECT_EQ(blob[1], 68);
    EXPECT_EQ(readBlob(blob), expected);
}

// A file that cannot be read leaves the built-in tables serving alone.
class UnreadableFileTest : public ::testing::TestWithParam<const char*> {};

TEST_P(UnreadableFileTest, BuiltinTablesServeAlone) {
    LogCapture log;
    std::unique_ptr<LoadedStore> loaded;
    if (strlen(GetParam()) > 0) {
        loaded = std::make_unique<LoadedStore>(testDataFile(GetParam()));
    } else {
        // No tuning file anywhere below the root.
        loaded = std::make_unique<LoadedStore>("");
    }
    SpatializerParamArrayTestPeer& peer = loaded->peer();

    EXPECT_EQ(linesAt(log, kTag, ANDROID_LOG_ERROR),
              std::vector<std::string>{"Spatializer Tuning XML parses error!"});
    EXPECT_TRUE(peer.xmlProfileParams().empty());
    EXPECT_TRUE(peer.xmlTuningParams().empty());
    EXPECT_TRUE(peer.tuningDevicePorts().empty());
    EXPECT_TRUE(peer.profileGeqGains().empty());
    EXPECT_EQ(peer.xmlProfileCount(), 0);
    EXPECT_EQ(peer.xmlTuningCount(), 0);
    EXPECT_EQ(peer.tuningParamValue(), 2);
    // Loading stopped before it looked at the speaker port.
    EXPECT_EQ(peer.selectedTuningDevices().count(DEVICE_INTERNAL_SPEAKER), 0u);

    // The effect still gets the built-in movie blob, and nothing from a file.
    SpatializerParamCache cache;
    RecordingEffect effect;
    cache.setProfile(PROFILE_MOVIE);
    EXPECT_EQ(cache.updateContentProcEnabled(&effect, true, false), 0);
    EXPECT_TRUE(effect.calls().empty()) << effect.describe();
    EXPECT_EQ(cache.setKorvaContentProfile(PROFILE_MOVIE, &effect), 0);
    EXPECT_EQ(effect.calls(EffectCall::SET_PARAM).size(), 27u);
    ASSERT_FALSE(effect.calls().empty());
    EXPECT_EQ(effect.calls().back(), EffectCall::commit(kAllDevices));
}

INSTANTIATE_TEST_SUITE_P(Files, UnreadableFileTest,
                         ::testing::Values("not-xml.xml", "truncated.xml", "empty.xml", ""));

}  // namespace
}  // namespace korva::test
