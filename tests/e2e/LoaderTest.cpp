// Tuning files loaded end to end: blobs, ports, matrices and gains compared with what was worked
// out by hand from the test files, the same blobs from the example in another process, and
// where the cache meets what loading filed. Every case runs in a process of its own, each with
// the store made from its file.

#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "LogCapture.h"
#include "SpatializerParamArrayTestPeer.h"
#include "TestPaths.h"
#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"
#include "store/SpatializerParamParser.h"
#include "tests/cache/CacheTestSupport.h"
#include "tests/store/ScopedHostRoot.h"
#include "translator/VexParameter.h"

namespace korva::test {
namespace {

// The parameters a profile and a profile endpoint turn into, in blob order, written out by hand
// from the translation rules: every parameter a record kind accepts is translated, held or not.
const std::vector<std::string> kProfileCodes = {"mdle", "miee", "msce", "mave", "dvme", "drcm",
                                                "rvsa", "rvse", "hvm",  "hvrc", "hlra", "sdfa"};
const std::vector<std::string> kEndpointCodes = {
    "geon", "ieon", "iea",  "mdee", "mvbe", "beon", "plb",  "dea",  "deon", "ded",
    "ngon", "dsb",  "vbm",  "vbon", "vmb",  "dvla", "dvle", "dvli", "dvlo", "dom",
    "svsb", "vssd", "dplp", "hpon", "hptw", "hpat", "hpaa", "hpar"};

// One parameter entry of a blob: device, code as text ("dom", "ieon"), values.
using BlobEntry = std::tuple<int, std::string, std::vector<int>>;

// The entries of a blob. Fails the calling test unless the blob validates, its header is kAll
// and the last entry ends at its last word.
std::vector<BlobEntry> readBlob(std::vector<int> words) {
    SpatializerParamParser parser(words.data(), static_cast<int>(words.size() * sizeof(int)));
    std::vector<BlobEntry> entries;
    if (!parser.validate()) {
        ADD_FAILURE() << "invalid blob";
        return entries;
    }
    int* end = words.data() + 2;
    parser.forEachEntry([&] {
        end = parser.mValues + parser.mNumValues;
        entries.push_back(
            {parser.mDeviceId, vexParameterText(parser.mParamId), {parser.mValues, end}});
    });
    EXPECT_EQ(kAll, parser.mProfileId);
    EXPECT_EQ(end, words.data() + words.size()) << "words after the last entry";
    return entries;
}

// Appends entries of one device for the codes given, in order: no values unless `values` names
// the code.
void add(std::vector<BlobEntry>& to, int device, const std::vector<std::string>& codes,
         const std::map<std::string, std::vector<int>>& values = {}) {
    for (const std::string& code : codes) {
        auto found = values.find(code);
        to.push_back({device, code, found != values.end() ? found->second : std::vector<int>()});
    }
}

constexpr const char* kOdmPath = "/odm/etc/korva/kvx-default-spatializer.xml";

// Lays `file` out as the ODM default tuning file below a fresh host root and creates the store,
// which loads it. Must come before anything else in the process asks for the store.
struct LoadedStore {
    explicit LoadedStore(const std::string& file) : store(load(root, file)), peer(store) {}

    static SpatializerParamArray& load(const ScopedHostRoot& root, const std::string& file) {
        EXPECT_FALSE(SpatializerParamArray::hasInstance()) << "the store was made before the file";
        root.addFile(kOdmPath);
        std::error_code error;
        std::filesystem::copy_file(file, root.path() + kOdmPath,
                                   std::filesystem::copy_options::overwrite_existing, error);
        EXPECT_FALSE(error) << "cannot lay out " << file << ": " << error.message();
        return SpatializerParamArray::getInstance();
    }

    ScopedHostRoot root;
    SpatializerParamArray& store;
    SpatializerParamArrayTestPeer peer;
};

// first, then the numbers from..to.
std::vector<int> range(std::vector<int> first, int from, int to) {
    for (int value = from; value <= to; value++) first.push_back(value);
    return first;
}

class ProfilesFileTest : public ::testing::Test {
protected:
    LogCapture mLog;  // from before the store exists, so that the loader's lines are seen
    LoadedStore mLoaded{testDataFile("loader-profiles.xml")};
    SpatializerParamArrayTestPeer& mPeer = mLoaded.peer;
    const std::vector<int> kWarmIebs = {2, 100, 2000, 30, -10};
};

TEST_F(ProfilesFileTest, DynamicProfileBlobHasEveryEntryInOrder) {
    // The first profile 0 of the file wins; its GEQ preset has 20 bands of 100 Hz, gains -10..9.
    std::vector<BlobEntry> expected;
    add(expected, kAll, kProfileCodes, {{"dvme", {1}}, {"drcm", {5, 6}}, {"hvm", {2}}});
    std::vector<int> gebs = {20};
    for (int f = 100; f <= 2000; f += 100) gebs.push_back(f);
    expected.push_back({kAll, "gebs", range(gebs, -10, 9)});
    // Speaker endpoint, warm preset first; the amount 15 is clamped to 12, the vb mode and the
    // mix matrix come from the speaker tuning, the orientation is the speaker's.
    add(expected, kSpeaker, {"ieid", "iebs"}, {{"ieid", {4}}, {"iebs", kWarmIebs}});
    // clang-format off
    add(expected, kSpeaker, kEndpointCodes, {{"ieon", {1}}, {"dea", {12}}, {"vbm", {5}},
        {"vbon", {2}}, {"vmb", {4}}, {"dom", {1, 0, 1, 1, 2, 3, 4, 5, 6}}});
    // clang-format on
    // Headphone endpoint, flat preset, for Bluetooth then USB (never the wired headphone);
    // virtual bass off forces mode 0; no matrix. The "other" endpoint adds nothing.
    for (int device : {kBluetooth, kUsb}) {
        add(expected, device, {"ieid", "iebs"}, {{"ieid", {7}}, {"iebs", {1, 500, 0}}});
        add(expected, device, kEndpointCodes,
            {{"dea", {-3}}, {"vbm", {0}}, {"vbon", {2}}, {"dom", {0, 1, 2}}});
    }
    EXPECT_EQ(expected, readBlob(mLoaded.store.getXMLProfileParams(0)));
}

TEST_F(ProfilesFileTest, UnknownIeqPresetGetsThePresetTranslatedLast) {
    // Profile 1 selects preset 99: the last one translated before it was warm (4), selected by
    // the "other" endpoint of profile 0. No GEQ preset: no gebs.
    std::vector<BlobEntry> expected;
    add(expected, kAll, kProfileCodes);
    for (int device : {kBluetooth, kUsb}) {
        add(expected, device, {"ieid", "iebs"}, {{"ieid", {4}}, {"iebs", kWarmIebs}});
        add(expected, device, kEndpointCodes, {{"vbm", {0}}, {"vbon", {2}}, {"dom", {1, 2}}});
    }
    EXPECT_EQ(expected, readBlob(mLoaded.store.getXMLProfileParams(1)));
}

TEST_F(ProfilesFileTest, TablesAndLinesOfTheLoad) {
    // Every profile counts, the first of an id is kept.
    EXPECT_EQ(3, mPeer.xmlProfileCount());
    EXPECT_EQ(2u, mPeer.xmlProfileParams().size());
    EXPECT_EQ((std::map<int, std::vector<int>>{{0, range({}, -10, 9)}}), mPeer.profileGeqGains());
    EXPECT_EQ((std::map<std::string, std::string>{{"", "internal_speaker"},
                                                  {"spk_loud", "internal_speaker"},
                                                  {"default_headphone", "headphone"},
                                                  {"default_bluetooth", "bluetooth"},
                                                  {"default_usb", "usb"}}),
              mPeer.tuningDevicePorts());
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

    std::vector<std::string> lines = mLog.messages(kStoreLogTag);
    auto start = std::find(lines.begin(), lines.end(),
                           "loadSpatializerXMLFile(" + mLoaded.root.path() + kOdmPath + ")");
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
    SpatializerParamArrayTestPeer& mPeer = mLoaded.peer;

    // The device's entries, each checked to be for `bit`, with the device left out to compare.
    std::map<std::string, std::vector<int>> tuningEntries(const std::string& device, int bit) {
        EXPECT_TRUE(mLoaded.store.isXMLTuningValid(device)) << device;
        std::map<std::string, std::vector<int>> values;
        for (auto& [entryBit, code, list] : readBlob(mLoaded.store.getXMLTuningParams(device))) {
            EXPECT_EQ(bit, entryBit) << code;
            EXPECT_TRUE(values.emplace(code, list).second) << code << " twice";
        }
        return values;
    }
};

TEST_F(TuningsFileTest, TuningOnTwoPortsIsTranslatedAlikeForBoth) {
    // Two channels: the stress list and the interval are cut in the record. The second translation
    // sees the record as the first one left it and must give the same values.
    auto values = tuningEntries("default_bluetooth", kBluetooth);
    EXPECT_EQ(values, tuningEntries("default_usb", kUsb));
    EXPECT_EQ((std::vector<int>{2, 1, 2}), values["arsa"]);
    EXPECT_EQ((std::vector<int>{1, 5}), values["dsoi"]);
    EXPECT_EQ((std::vector<int>{9, 8}), values["bmdt"]);
    // A port the store has no device bit for.
    tuningEntries("tv", 0);
    EXPECT_EQ("tv", mLoaded.store.getAvailableTuningDevices(DEVICE_HDMI));
}

TEST_F(TuningsFileTest, LongSpeakerMatrixWidensTheMixMatrixLength) {
    // "lost" is bound to a tuning without data, which ends the reading and is not kept.
    EXPECT_TRUE(mLog.contains("There is no <data> in Tuning section", "TuningFileParser"));
    EXPECT_EQ(0u, mPeer.tuningDevicePorts().count("lost") + mPeer.xmlTuningParams().count("lost"));
    EXPECT_EQ(5, mPeer.xmlTuningCount());
    // The 8 x 8 speaker matrix, 2 + 64 words, widens the default length of 60.
    EXPECT_EQ((std::map<std::string, std::vector<int>>{{"", range({0, 1}, 1, 64)}}),
              mPeer.tuningMixMatrices());
    EXPECT_EQ(66, mPeer.defaultMixMatrixLength());
    EXPECT_EQ(6, mPeer.tuningParamValue());
    // The speaker endpoint carries the whole matrix; no IEQ preset exists, so no IEQ entries.
    std::vector<BlobEntry> expected;
    add(expected, kAll, kProfileCodes);
    add(expected, kSpeaker, kEndpointCodes,
        {{"vbm", {0}}, {"vbon", {1}}, {"dom", range({1, 0, 1}, 1, 64)}});
    EXPECT_EQ(expected, readBlob(mLoaded.store.getXMLProfileParams(2)));

    // With content processing off, the cache reads the effect's matrix back whole.
    SpatializerParamCache cache;
    RecordingEffect effect;
    const int dom = vexParameterCode("dom");
    effect.setAnswer(kSpeaker, dom, range({1, 0, 1}, 1, 64));
    cache.setProfile(PROFILE_MUSIC);
    EXPECT_EQ(0, cache.updateContentProcEnabled(&effect, false, false));
    std::vector<EffectCall> calls;
    for (const EffectCall& call : effect.calls()) {
        if (call.code == dom) calls.push_back(call);
    }
    EXPECT_EQ(
        (std::vector<EffectCall>{EffectCall::getParam(kSpeaker, dom, 67),
                                 EffectCall::setParam(kSpeaker, dom, range({0, 0, 1}, 1, 64))}),
        calls);
}

TEST(MissingDefaultDeviceTest, RefusesEveryTuningAndSpeakersTakeTheDefaults) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-missing-default.xml"));
    SpatializerParamArrayTestPeer& peer = loaded.peer;
    EXPECT_EQ((std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice default_usb "
                                        "is not available for port usb."}),
              log.messages(kStoreLogTag, ANDROID_LOG_ERROR));
    EXPECT_EQ(0, peer.xmlTuningCount());
    // The blobs are still filed; only the count says that none may be used.
    EXPECT_EQ(4u, peer.xmlTuningParams().size());
    EXPECT_EQ(1, peer.tuningParamValue());

    // The speaker tuning has neither matrix nor vb mode: the speaker "dom" takes the built-in
    // matrix behind the enable word, endpoint and orientation, and vb mode is 3.
    EXPECT_TRUE(log.contains("use the default mix matrix", kStoreLogTag));
    EXPECT_TRUE(log.contains("use the default vb mode", kStoreLogTag));
    std::vector<int> dom = {1, 0, 1};
    dom.insert(dom.end(), kDefaultMixMatrix.begin(), kDefaultMixMatrix.end());
    // An empty GEQ preset: no bands, and empty gains for its profile.
    std::vector<BlobEntry> expected;
    add(expected, kAll, kProfileCodes);
    expected.push_back({kAll, "gebs", {0}});
    add(expected, kSpeaker, kEndpointCodes, {{"vbm", {3}}, {"vbon", {1}}, {"dom", dom}});
    EXPECT_EQ(expected, readBlob(loaded.store.getXMLProfileParams(2)));
    EXPECT_TRUE(peer.tuningMixMatrices().empty());
    EXPECT_EQ((std::map<int, std::vector<int>>{{2, {}}}), peer.profileGeqGains());
}

TEST(NoSpeakerDeviceTest, EmptySpeakerSelectionRefusesEveryTuning) {
    LogCapture log;
    LoadedStore loaded(testDataFile("loader-no-speaker.xml"));
    EXPECT_EQ((std::vector<std::string>{"loadSpatializerXMLFile() default tuningDevice  is not "
                                        "available for port internal_speaker."}),
              log.messages(kStoreLogTag, ANDROID_LOG_ERROR));
    EXPECT_EQ("", loaded.peer.selectedTuningDevices().at(DEVICE_INTERNAL_SPEAKER));
    EXPECT_EQ(0, loaded.peer.xmlTuningCount());
    EXPECT_EQ(2, loaded.peer.tuningParamValue());
}

const std::string kExample = exampleFile();

// Everything loading filed, as text.
std::string dump(SpatializerParamArrayTestPeer& peer) {
    std::ostringstream out;
    auto list = [&out](const char* what, const auto& key, const std::vector<int>& values) {
        out << what << ' ' << key << ':';
        for (int value : values) out << ' ' << value;
        out << '\n';
    };
    out << peer.xmlProfileCount() << " profiles, " << peer.xmlTuningCount() << " tunings, "
        << peer.tuningParamValue() << " channels, matrix length " << peer.defaultMixMatrixLength()
        << '\n';
    for (const auto& [id, blob] : peer.xmlProfileParams()) list("profile", id, blob);
    for (const auto& [name, blob] : peer.xmlTuningParams()) list("tuning", name, blob);
    for (const auto& [name, port] : peer.tuningDevicePorts()) out << name << " on " << port << '\n';
    for (const auto& [name, words] : peer.tuningMixMatrices()) list("mix", name, words);
    for (const auto& [id, gains] : peer.profileGeqGains()) list("gains", id, gains);
    return out.str();
}

// Loads the example in a forked process whose heap was laid out differently first (blocks freed
// in an order unrelated to the one they were taken in), and returns its dump; empty when the
// child failed. The fork comes before this process makes its own store.
std::string dumpFromChildProcess() {
    int fds[2];
    if (pipe(fds) != 0) return "";
    pid_t pid = fork();
    if (pid == 0) {
        std::vector<void*> blocks;
        for (int i = 0; i < 4000; i++) blocks.push_back(malloc(16 + (i * 97) % 480));
        for (size_t i = 0; i < blocks.size(); i += 3) free(blocks[i]);
        for (size_t i = blocks.size(); i-- > 0;) {
            if (i % 3 != 0) free(blocks[i]);
        }
        std::string text;
        {
            LoadedStore loaded(kExample);
            text = dump(loaded.peer);
        }
        _exit(write(fds[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(fds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof(buffer))) > 0;) text.append(buffer, n);
    close(fds[0]);
    int status = 0;
    bool done =
        pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return done ? text : "";
}

TEST(ExampleFileTest, EveryBlobIsReadableAndAnotherProcessLoadsTheSameBytes) {
    const std::string theirs = dumpFromChildProcess();
    ASSERT_FALSE(theirs.empty()) << "the child process failed";
    LoadedStore loaded(kExample);
    SpatializerParamArrayTestPeer& peer = loaded.peer;
    EXPECT_EQ(theirs, dump(peer));

    // Five profiles and eight tuning devices, every blob readable.
    EXPECT_EQ(5u, peer.xmlProfileParams().size());
    for (const auto& [id, blob] : peer.xmlProfileParams()) EXPECT_FALSE(readBlob(blob).empty());
    EXPECT_EQ(8u, peer.xmlTuningParams().size());
    for (const auto& [name, blob] : peer.xmlTuningParams()) EXPECT_FALSE(readBlob(blob).empty());
}

}  // namespace
}  // namespace korva::test
