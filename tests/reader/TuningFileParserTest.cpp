#include <android/log.h>
#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using test::LogCapture;
using test::testDataFile;
using Values = std::map<Parameter, std::vector<int>>;

// The one record of the set that matches, failing the test unless there is exactly one.
template <typename T>
T& only(const std::set<T*>& records, const std::function<bool(const T&)>& matches,
        const std::string& what) {
    T* found = nullptr;
    int count = 0;
    for (T* record : records) {
        if (matches(*record)) {
            found = record;
            count++;
        }
    }
    if (count != 1) {
        ADD_FAILURE() << count << " records match " << what;
    }
    static T* sMissing = nullptr;
    return found != nullptr ? *found : *sMissing;
}

class ParsedFile {
public:
    explicit ParsedFile(const std::string& name) { mResult = mParser.setTuningFile(name); }

    int result() const { return mResult; }
    TuningFileParser& parser() { return mParser; }
    DeviceData& data() { return *mParser.getDeviceData(); }

    Profile& profile(const std::string& name) {
        return only<Profile>(
            data().getProfiles(), [&](const Profile& p) { return p.getName() == name; },
            "profile " + name);
    }
    ProfileEndpoint& endpoint(int profileId, Endpoint endpoint) {
        return only<ProfileEndpoint>(
            data().getProfileEndpoints(),
            [&](const ProfileEndpoint& e) {
                return e.getProfileId() == profileId && e.getEndpoint() == endpoint;
            },
            "endpoint " + std::to_string(endpoint));
    }
    Tuning& tuning(const std::string& name) {
        return only<Tuning>(
            data().getTunings(), [&](const Tuning& t) { return t.getName() == name; },
            "tuning " + name);
    }
    IeqPreset& ieqPreset(int presetId) {
        return only<IeqPreset>(
            data().getIeqPresets(), [&](const IeqPreset& p) { return p.getPresetId() == presetId; },
            "IEQ preset " + std::to_string(presetId));
    }

    // Device bindings as (device, port, tuning) triples.
    std::set<std::vector<std::string>> bindings() {
        std::set<std::vector<std::string>> out;
        for (DeviceTuning* binding : data().getDeviceTunings()) {
            out.insert({binding->getDevice(), binding->getPort(), binding->getTuning()});
        }
        return out;
    }

private:
    TuningFileParser mParser;
    int mResult;
};

std::string dataFile(const std::string& name) {
    return testDataFile(name);
}

TEST(TuningFileParserTest, Format34Document) {
    LogCapture log;
    ParsedFile file(dataFile("format-3.4.xml"));
    ASSERT_EQ(0, file.result());
    TuningFileParser& parser = file.parser();
    DeviceData& data = file.data();
    EXPECT_TRUE(parser.isParsed());
    EXPECT_EQ("3.4.0", data.getFormatVersion());
    EXPECT_EQ("2.7.13", data.getToolVersion());
    EXPECT_EQ(-64, data.getOrbexGameSystemGain());
    EXPECT_EQ(1, parser.getNumOfProfiles());
    EXPECT_EQ("movie", parser.getProfileName(1));
    EXPECT_EQ("", parser.getProfileName(42));

    ASSERT_EQ(1u, data.getIeqPresets().size());
    IeqPreset& ieq = file.ieqPreset(5);
    EXPECT_EQ("bright", ieq.getName());
    EXPECT_EQ((Values{{IEQ_FREQUENCY, {100, 1000}}, {IEQ_ID, {5}}, {IEQ_TARGET, {10, -20}}}),
              ieq.values);
    ASSERT_EQ(1u, data.getGeqPresets().size());
    GeqPreset& geq = **data.getGeqPresets().begin();
    EXPECT_EQ(1, geq.getProfileId());
    EXPECT_EQ((Values{{GEQ_FREQUENCY, {63, 250}}, {GEQ_GAIN, {-8, 16}}}), geq.values);

    Profile& movie = file.profile("movie");
    EXPECT_EQ(1, movie.getProfileId());
    EXPECT_TRUE(movie.isMobility());
    // ieq-enable and ieq-amount go to the endpoints that follow them, not to the profile.
    EXPECT_EQ((Values{{HEADPHONE_VIRTUALIZER_MODE, {2}}, {VOLUME_MODELER_ENABLE, {1}}}),
              movie.values);

    ASSERT_EQ(2u, data.getProfileEndpoints().size());
    ProfileEndpoint& speaker = file.endpoint(1, ENDPOINT_SPEAKER);
    EXPECT_EQ(5, speaker.getSelectedIeqPreset());
    EXPECT_EQ((Values{{DIALOG_ENHANCER_ENABLE, {1}},
                      {MI_DIALOG_ENHANCER_STEERING_ENABLE, {1, 1}},
                      {VIRTUAL_BASS_TYPE, {3}},
                      {VOLUME_LEVELER_ENABLE, {1}}}),
              speaker.values);
    ProfileEndpoint& headphone = file.endpoint(1, ENDPOINT_HEADPHONE);
    EXPECT_EQ(0, headphone.getSelectedIeqPreset());
    // The steering rule looks both entries up, leaving them empty when the file has neither.
    EXPECT_EQ((Values{{DIALOG_ENHANCER_ENABLE, {}},
                      {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
                      {VIRTUAL_BASS_TYPE, {3}},
                      {VIRTUALIZER_ENABLE, {1}}}),
              headphone.values);

    ASSERT_EQ(3u, data.getTunings().size());
    Tuning& stereo = file.tuning("speaker_stereo");
    EXPECT_EQ(ENDPOINT_SPEAKER, stereo.getEndpoint());
    EXPECT_FALSE(stereo.isMono());
    EXPECT_EQ((Values{{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {1}},
                      {ORIENTATION, {1}},
                      {OUTPUT_CHANNELS, {2}},
                      {REGULATOR_ENABLE, {1}},
                      {SPEAKER_VIRTUALIZER_MODE, {2}},
                      {VIRTUAL_BASS_MODE, {1}}}),
              stereo.values);
    Tuning& mono = file.tuning("mono_speaker");
    EXPECT_TRUE(mono.isMono());
    EXPECT_EQ((Values{{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {1}},
                      {HEIGHT_FILTER_MODE, {1}},
                      {ORIENTATION, {0}},
                      {OUTPUT_CHANNELS, {0}}}),
              mono.values);
    EXPECT_EQ(ENDPOINT_HEADPHONE, file.tuning("hp").getEndpoint());

    const std::set<std::vector<std::string>> bindings = {
        {"internal_speaker", "internal_speaker", "speaker_stereo"},
        {"spk_mono", "internal_speaker", "mono_speaker"},
        {"spk_mono_alt", "internal_speaker", "mono_speaker"},
    };
    EXPECT_EQ(bindings, file.bindings());

    const std::vector<std::string> expectedLog = {
        "xml version: 3.4.0",
        "parseAuthorizedTechnologies(): mDsoEnable = 1",
        "parseProfileEndpoint(): speaker, parse the include ieq preset",
        "parseProfileEndpoint(): headphone, parse the include ieq preset",
    };
    EXPECT_EQ(expectedLog, log.messages("TuningFileParser"));
    for (const test::LogLine& line : log.lines()) {
        EXPECT_EQ(ANDROID_LOG_DEBUG, line.priority) << line.message;
    }
}

// Writes a copy of the version template with the given format version.
std::string writeVersionedFile(const std::string& major, const std::string& minor,
                               const std::string& maintenance) {
    std::ifstream in(dataFile("versions-template.xml"));
    std::stringstream text;
    text << in.rdbuf();
    std::string document = text.str();
    for (const auto& [placeholder, value] : std::vector<std::pair<std::string, std::string>>{
             {"@MAJOR@", major}, {"@MINOR@", minor}, {"@MAINTENANCE@", maintenance}}) {
        document.replace(document.find(placeholder), placeholder.size(), value);
    }
    const std::string path =
        ::testing::TempDir() + "korva-version-" + major + "-" + minor + "-" + maintenance + ".xml";
    std::ofstream(path) << document;
    return path;
}

TEST(TuningFileParserTest, FormatVersionRules) {
    struct Case {
        std::string major, minor, maintenance;
        std::string version;
        bool is32, is322, is330, before34;
    };
    const Case cases[] = {
        {"3", "2", "0", "3.2.0", true, false, false, true},
        {"3", "2", "2", "3.2.2", true, true, false, true},
        {"3", "2", "10", "3.2.10", true, false, false, true},
        {"3", "2", "22", "3.2.22", true, true, false, true},
        {"3", "3", "0", "3.3.0", false, false, true, true},
        {"3", "3", "9", "3.3.9", false, false, false, true},
        {"3", "4", "0", "3.4.0", false, false, false, false},
        {"3", "4", "", "3.4.", false, false, false, false},
        {"4", "0", "0", "4.0.0", false, false, false, false},
        {"2", "9", "9", "2.9.9", false, false, false, true},
        // Versions compare as text, so 3.10 sorts before 3.4.
        {"3", "10", "0", "3.10.0", false, false, false, true},
        {"", "", "", "..", false, false, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.version);
        LogCapture log;
        ParsedFile file(writeVersionedFile(c.major, c.minor, c.maintenance));
        ASSERT_EQ(0, file.result());
        EXPECT_EQ(c.version, file.data().getFormatVersion());

        Profile& profile = file.profile("dynamic");
        EXPECT_EQ(!c.is32, profile.isMobility());
        Values profileValues = {
            {HEADPHONE_VIRTUALIZER_MODE, {c.before34 ? 1 : 2}},
            {REVERB_SUPPRESSION_AMOUNT, {c.is32 ? 0 : 5}},
            {REVERB_SUPPRESSION_ENABLE, {c.is32 ? 0 : 1}},
        };
        EXPECT_EQ(profileValues, profile.values);

        ProfileEndpoint& endpoint = file.endpoint(0, ENDPOINT_SPEAKER);
        Values endpointValues = {
            {DIALOG_ENHANCER_ENABLE, {}},
            {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
            {HEARING_PROTECTION_ENABLE, {c.is322 ? 0 : 1}},
            {VIRTUALIZER_START_BAND, {c.is322 ? 0 : 3}},
            {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {c.is32 ? 4 : 9}},
            {VIRTUAL_BASS_TYPE, {c.is32 ? 2 : 5}},
        };
        if (c.is32) {
            endpointValues[IEQ_ENABLE] = {1};
            endpointValues[IEQ_AMOUNT] = {6};
        }
        EXPECT_EQ(endpointValues, endpoint.values);
        EXPECT_EQ(c.is32 ? 1 : c.is330 ? 2 : 7, endpoint.getSelectedIeqPreset());

        Tuning& tuning = file.tuning("speaker");
        Values tuningValues = {
            {BASS_MBDRC_ENABLE, {c.is322 ? 0 : 1}},
            {DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}},
            {ORIENTATION, {0}},
            {OUTPUT_CHANNELS, {0}},
            {SPEAKER_VIRTUALIZER_MODE, {c.before34 ? 1 : 2}},
        };
        EXPECT_EQ(tuningValues, tuning.values);

        std::set<std::pair<int, std::string>> presets;
        for (IeqPreset* preset : file.data().getIeqPresets()) {
            presets.insert({preset->getPresetId(), preset->getName()});
        }
        const bool namedPresets = c.is32 || c.is330;
        const std::set<std::pair<int, std::string>> expectedPresets =
            namedPresets ? std::set<std::pair<int, std::string>>{{3, "warm"}, {0, "off"}}
                         : std::set<std::pair<int, std::string>>{{0, "named"}, {7, "numbered"}};
        EXPECT_EQ(expectedPresets, presets);
        // The preset whose id text is "7" names no preset.
        EXPECT_EQ(namedPresets ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser"));
    }
}

TEST(TuningFileParserTest, Format32Document) {
    ParsedFile file(dataFile("format-3.2.xml"));
    ASSERT_EQ(0, file.result());
    DeviceData& data = file.data();
    // 3.2 files have no global settings.
    EXPECT_EQ(0, data.getOrbexGameSystemGain());

    std::map<int, std::string> presetNames;
    for (IeqPreset* preset : data.getIeqPresets()) {
        presetNames[preset->getPresetId()] = preset->getName();
    }
    EXPECT_EQ(
        (std::map<int, std::string>{{0, "off"}, {1, "detailed"}, {2, "balanced"}, {3, "warm"}}),
        presetNames);
    EXPECT_EQ((std::vector<int>{40}), file.ieqPreset(1).values[IEQ_TARGET]);

    Profile& music = file.profile("music");
    EXPECT_FALSE(music.isMobility());
    EXPECT_EQ((Values{{HEADPHONE_VIRTUALIZER_MODE, {1}},
                      {REVERB_SUPPRESSION_AMOUNT, {0}},
                      {REVERB_SUPPRESSION_ENABLE, {0}}}),
              music.values);

    // Both endpoints select the profile's preset: the endpoint's own include is not read.
    ProfileEndpoint& speaker = file.endpoint(2, ENDPOINT_SPEAKER);
    EXPECT_EQ(3, speaker.getSelectedIeqPreset());
    EXPECT_EQ((Values{{DIALOG_ENHANCER_ENABLE, {}},
                      {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {4}},
                      {HEARING_PROTECTION_ENABLE, {0}},
                      {IEQ_AMOUNT, {10}},
                      {IEQ_ENABLE, {1}},
                      {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
                      {VIRTUAL_BASS_TYPE, {2}},
                      {VIRTUALIZER_START_BAND, {0}},
                      {VOLUME_LEVELER_ENABLE, {1}}}),
              speaker.values);
    ProfileEndpoint& headphone = file.endpoint(2, ENDPOINT_HEADPHONE);
    EXPECT_EQ(3, headphone.getSelectedIeqPreset());
    EXPECT_EQ((std::vector<int>{0}), headphone.values[VIRTUALIZER_START_BAND]);

    Tuning& tuning = file.tuning("speaker");
    EXPECT_EQ((Values{{BASS_MBDRC_ENABLE, {0}},
                      {DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}},
                      {ORIENTATION, {0}},
                      {OUTPUT_CHANNELS, {2}},
                      {SPEAKER_VIRTUALIZER_MODE, {1}}}),
              tuning.values);
}

TEST(TuningFileParserTest, Format330Document) {
    LogCapture log;
    ParsedFile file(dataFile("format-3.3.0.xml"));
    ASSERT_EQ(0, file.result());
    std::map<int, std::string> presetNames;
    for (IeqPreset* preset : file.data().getIeqPresets()) {
        presetNames[preset->getPresetId()] = preset->getName();
    }
    // "mystery" names no preset and falls back to 0; the name attribute is not used.
    EXPECT_EQ((std::map<int, std::string>{{0, "off"}, {3, "warm"}}), presetNames);

    Profile& music = file.profile("music");
    EXPECT_TRUE(music.isMobility());
    EXPECT_EQ((Values{{HEADPHONE_VIRTUALIZER_MODE, {1}}}), music.values);
    ProfileEndpoint& headphone = file.endpoint(2, ENDPOINT_HEADPHONE);
    EXPECT_EQ(3, headphone.getSelectedIeqPreset());
    EXPECT_EQ((std::vector<int>{0}), headphone.values[VIRTUAL_BASS_TYPE]);
    // A numbered include means nothing in 3.3.0: the missing name selects preset 0.
    EXPECT_EQ(0, file.endpoint(2, ENDPOINT_SPEAKER).getSelectedIeqPreset());
    EXPECT_EQ(2u, log.count("name is invalid, 310", "TuningFileParser"));
    EXPECT_TRUE(log.contains("parseAuthorizedTechnologies(): mDsoEnable = 0"));

    Tuning& tuning = file.tuning("speaker");
    EXPECT_EQ((std::vector<int>{1}), tuning.values[SPEAKER_VIRTUALIZER_MODE]);
    EXPECT_EQ((std::vector<int>{0}), tuning.values[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE]);
}

TEST(TuningFileParserTest, SettingsBeforeTheVersionAreReadEvenFor32) {
    ParsedFile file(dataFile("version-after-settings.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ("3.2.0", file.data().getFormatVersion());
    EXPECT_EQ(40, file.data().getOrbexGameSystemGain());
    EXPECT_EQ((std::vector<int>{6}), file.endpoint(0, ENDPOINT_SPEAKER).values[VIRTUAL_BASS_TYPE]);
    EXPECT_EQ((std::vector<int>{1}),
              file.tuning("speaker").values[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE]);
}

TEST(TuningFileParserTest, EndpointNamesAreCaseSensitive) {
    LogCapture log;
    ParsedFile file(dataFile("endpoint-case.xml"));
    ASSERT_EQ(0, file.result());
    // Every profile endpoint of the file has an unknown name, so all three are "other".
    std::vector<Values> others;
    for (ProfileEndpoint* endpoint : file.data().getProfileEndpoints()) {
        EXPECT_EQ(ENDPOINT_OTHER, endpoint->getEndpoint());
        others.push_back(endpoint->values);
    }
    const Values base = {{DIALOG_ENHANCER_ENABLE, {}},
                         {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
                         {VIRTUAL_BASS_TYPE, {1}}};
    Values capitalSpeaker = base;
    capitalSpeaker[VOLUME_LEVELER_ENABLE] = {1};
    Values noId = base;
    noId[SURROUND_BOOST] = {64};
    // The childless endpoint does not take the volume-leveler-enable that follows it.
    std::vector<Values> expected = {capitalSpeaker, base, noId};
    std::sort(others.begin(), others.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, others);
    EXPECT_TRUE(log.contains("parseProfileEndpoint(): Speaker, parse the include ieq preset"));
    EXPECT_TRUE(log.contains("parseProfileEndpoint(): , parse the include ieq preset"));

    const std::map<std::string, Endpoint> tunings = {
        {"capital_speaker", ENDPOINT_SPEAKER}, {"capital_headphone", ENDPOINT_SPEAKER},
        {"capital_other", ENDPOINT_SPEAKER},   {"no_endpoint", ENDPOINT_SPEAKER},
        {"real_other", ENDPOINT_OTHER},        {"real_headphone", ENDPOINT_HEADPHONE},
    };
    EXPECT_EQ(tunings.size(), file.data().getTunings().size());
    for (const auto& [name, endpoint] : tunings) {
        EXPECT_EQ(endpoint, file.tuning(name).getEndpoint()) << name;
    }
}

TEST(TuningFileParserTest, TuningWithoutDataEndsTheReading) {
    LogCapture log;
    ParsedFile file(dataFile("no-tuning-data.xml"));
    ASSERT_EQ(0, file.result());
    TuningFileParser& parser = file.parser();
    EXPECT_TRUE(parser.isParsed());
    EXPECT_EQ(1, parser.getNumOfProfiles());
    EXPECT_EQ("", parser.getProfileName(1));
    EXPECT_EQ(1u, file.data().getProfiles().size());
    EXPECT_TRUE(file.data().getGeqPresets().empty());
    ASSERT_EQ(1u, file.data().getTunings().size());
    EXPECT_EQ("before", (*file.data().getTunings().begin())->getName());
    const std::set<std::vector<std::string>> bindings = {{"wired", "headphone", "broken"},
                                                         {"wired_alt", "headphone", "broken"}};
    EXPECT_EQ(bindings, file.bindings());
    EXPECT_EQ(
        (std::vector<std::string>{"xml version: 3.4.0", "There is no <data> in Tuning section"}),
        log.messages("TuningFileParser"));
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines().back().priority);
}

TEST(TuningFileParserTest, ChildlessTuningHasNoData) {
    LogCapture log;
    ParsedFile file(dataFile("childless-tuning.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_TRUE(file.data().getTunings().empty());
    EXPECT_EQ(1u, log.count("There is no <data> in Tuning section", "TuningFileParser"));
}

TEST(TuningFileParserTest, RecordsWithTheSameIdAreAllKept) {
    ParsedFile file(dataFile("duplicate-profiles.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ(2, file.parser().getNumOfProfiles());
    EXPECT_EQ("theatre", file.parser().getProfileName(3));
    std::multiset<std::string> names;
    for (Profile* profile : file.data().getProfiles()) {
        EXPECT_EQ(3, profile->getProfileId());
        names.insert(profile->getName());
    }
    EXPECT_EQ((std::multiset<std::string>{"cinema", "theatre"}), names);
    EXPECT_EQ((std::vector<int>{0}), file.profile("theatre").values[VOLUME_MODELER_ENABLE]);
    std::multiset<std::vector<int>> gains;
    for (GeqPreset* preset : file.data().getGeqPresets()) {
        EXPECT_EQ(3, preset->getProfileId());
        gains.insert(preset->values[GEQ_GAIN]);
    }
    EXPECT_EQ((std::multiset<std::vector<int>>{{1}, {2}}), gains);
}

TEST(TuningFileParserTest, BandListsWithAForeignElement) {
    LogCapture log;
    ParsedFile file(dataFile("bands-foreign-element.xml"));
    ASSERT_EQ(0, file.result());
    IeqPreset& ieq = file.ieqPreset(1);
    EXPECT_EQ((std::vector<int>{47, 141, 234}), ieq.values[IEQ_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{10, 20, 30}), ieq.values[IEQ_TARGET]);
    EXPECT_EQ(std::vector<std::string>{"No attribute band_ieq was found!"},
              log.messages("ValueSetter"));

    GeqPreset& geq = **file.data().getGeqPresets().begin();
    EXPECT_EQ((std::vector<int>{32, 64, 125}), geq.values[GEQ_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{-8, 8, 0}), geq.values[GEQ_GAIN]);

    // Any child element is a band here: the note reads as a band of zeros.
    Tuning& tuning = file.tuning("speaker");
    EXPECT_EQ((std::vector<int>{47, 0, 141}), tuning.values[AUDIO_OPTIMIZER_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{-11, 0, 6}), tuning.values[AUDIO_OPTIMIZER_GAIN_R]);
    EXPECT_EQ((std::vector<int>{20, 0}), tuning.values[REGULATOR_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{0, 0}), tuning.values[REGULATOR_ISOLATED_BAND]);
}

TEST(TuningFileParserTest, MixMatrices) {
    ParsedFile file(dataFile("matrices.xml"));
    ASSERT_EQ(0, file.result());
    const std::map<std::string, std::vector<int>> expected = {
        {"stereo", {16384, 0, 0, 16384}},
        {"downmix", {16384, 0, 0, 16384, 11585, 11585, 0, 0, 11585, 0, 0, 11585}},
        {"no_rows", {}},
        {"one_line", {}},
    };
    for (const auto& [name, matrix] : expected) {
        EXPECT_EQ(matrix, file.tuning(name).values[OUTPUT_MIX_MATRIX]) << name;
    }
}

TEST(TuningFileParserTest, GarbageNumbersReadAsFarAsTheyAreNumbers) {
    ParsedFile file(dataFile("garbage-numbers.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ(0, file.data().getOrbexGameSystemGain());

    IeqPreset& ieq = file.ieqPreset(0);
    EXPECT_EQ("words", ieq.getName());
    EXPECT_EQ((std::vector<int>{1}), ieq.values[IEQ_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{0}), ieq.values[IEQ_TARGET]);

    EXPECT_EQ("garbage", file.parser().getProfileName(0));
    Profile& profile = file.profile("garbage");
    EXPECT_EQ(0, profile.getProfileId());
    EXPECT_EQ((Values{{ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, {1}},
                      {CUSTOM_DRC_METADATA, {0}},
                      {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, {INT_MAX}},
                      {VOLUME_MODELER_ENABLE, {0}}}),
              profile.values);

    ProfileEndpoint& endpoint = file.endpoint(0, ENDPOINT_SPEAKER);
    EXPECT_EQ(0, endpoint.getSelectedIeqPreset());
    EXPECT_EQ((std::vector<int>{INT_MIN}), endpoint.values[VOLUME_LEVELER_AMOUNT]);
    EXPECT_EQ((std::vector<int>{0}), endpoint.values[PEAK_VALUE]);
    EXPECT_EQ((std::vector<int>{12}), endpoint.values[CALIBRATION_BOOST]);
    EXPECT_EQ((std::vector<int>{2}), endpoint.values[VIRTUAL_BASS_TYPE]);

    Tuning& tuning = file.tuning("garbage");
    EXPECT_EQ((std::vector<int>{-1}), tuning.values[ORIENTATION]);
    EXPECT_EQ((std::vector<int>{0}), tuning.values[OUTPUT_CHANNELS]);
    EXPECT_EQ((std::vector<int>{1, 0, 0, 4}), tuning.values[VIRTUAL_BASS_SUBGAINS]);
    EXPECT_EQ((std::vector<int>{0}), tuning.values[VIRTUAL_BASS_MIX_FREQ_LOW]);
    EXPECT_EQ((std::vector<int>{120}), tuning.values[VIRTUAL_BASS_MIX_FREQ_HIGH]);
}

TEST(TuningFileParserTest, MisplacedElementsAreNotRead) {
    ParsedFile file(dataFile("misplaced-elements.xml"));
    ASSERT_EQ(0, file.result());
    DeviceData& data = file.data();
    EXPECT_EQ(1, file.parser().getNumOfProfiles());
    EXPECT_EQ(0, data.getOrbexGameSystemGain());
    EXPECT_TRUE(data.getDeviceTunings().empty());
    ASSERT_EQ(1u, data.getProfiles().size());
    EXPECT_EQ((Values{{VOLUME_MODELER_ENABLE, {1}}}), file.profile("dynamic").values);
    ASSERT_EQ(1u, data.getProfileEndpoints().size());
    ProfileEndpoint& endpoint = file.endpoint(0, ENDPOINT_SPEAKER);
    EXPECT_EQ(2, endpoint.getSelectedIeqPreset());
    EXPECT_EQ((Values{{DIALOG_ENHANCER_ENABLE, {}},
                      {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
                      {SURROUND_BOOST, {32}},
                      {VIRTUAL_BASS_TYPE, {1}}}),
              endpoint.values);
    ASSERT_EQ(1u, data.getTunings().size());
    EXPECT_EQ((Values{{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}},
                      {ORIENTATION, {0}},
                      {OUTPUT_CHANNELS, {0}},
                      {REGULATOR_ENABLE, {1}}}),
              file.tuning("speaker").values);
}

TEST(TuningFileParserTest, DeepNestingIsSkipped) {
    ParsedFile file(dataFile("deep-nesting.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ((Values{{VOLUME_MODELER_ENABLE, {1}}}), file.profile("dynamic").values);
    EXPECT_EQ((std::vector<int>{1}), file.tuning("speaker").values[REGULATOR_ENABLE]);
}

TEST(TuningFileParserTest, EmptyDocumentGivesEmptyData) {
    ParsedFile file(dataFile("empty-root.xml"));
    ASSERT_EQ(0, file.result());
    ASSERT_NE(nullptr, file.parser().getDeviceData());
    DeviceData& data = file.data();
    EXPECT_TRUE(file.parser().isParsed());
    EXPECT_EQ(0, file.parser().getNumOfProfiles());
    EXPECT_EQ("", data.getFormatVersion());
    EXPECT_EQ("", data.getToolVersion());
    EXPECT_TRUE(data.getIeqPresets().empty());
    EXPECT_TRUE(data.getGeqPresets().empty());
    EXPECT_TRUE(data.getProfiles().empty());
    EXPECT_TRUE(data.getProfileEndpoints().empty());
    EXPECT_TRUE(data.getTunings().empty());
    EXPECT_TRUE(data.getDeviceTunings().empty());
}

TEST(TuningFileParserTest, UnreadableFilesAreRefused) {
    for (const std::string& path :
         {std::string(), dataFile("missing.xml"), dataFile("empty.xml"), dataFile("not-xml.xml"),
          dataFile("truncated.xml"), dataFile("no-root.xml"), dataFile("too-deep.xml")}) {
        TuningFileParser parser;
        EXPECT_EQ(-22, parser.setTuningFile(path)) << path;
        EXPECT_EQ(nullptr, parser.getDeviceData()) << path;
        EXPECT_FALSE(parser.isParsed()) << path;
        EXPECT_EQ(0, parser.getNumOfProfiles()) << path;
    }
}

TEST(TuningFileParserTest, IeqPresetNamesBySubstring) {
    struct Case {
        std::string name;
        int id;
        bool logged;
    };
    const Case cases[] = {
        {"off", 0, false},
        {"ieq_detailed", 1, false},
        {"balanced", 2, false},
        {"ieq_warm", 3, false},
        {"warm_off", 0, false},
        {"detailed_warm", 3, false},
        {"balanced_warm", 2, false},
        {"Warm", 0, true},
        {"", 0, true},
        {"3", 0, true},
    };
    TuningFileParser parser;
    for (const Case& c : cases) {
        LogCapture log;
        EXPECT_EQ(c.id, parser.getIeqPresetIdByName(c.name)) << c.name;
        EXPECT_EQ(c.logged ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser"))
            << c.name;
    }
}

}  // namespace
}  // namespace korva
