#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using test::LogCapture;
using test::testDataFile;
using Values = std::map<Parameter, std::vector<int>>;

class ParsedFile {
public:
    explicit ParsedFile(const std::string& path) : mResult(mParser.setTuningFile(path)) {}

    int result() const { return mResult; }
    TuningFileParser& parser() { return mParser; }
    DeviceData& data() { return *mParser.getDeviceData(); }

    // What the parser made of the file, one line per record, the records of each kind sorted, the
    // kinds in the order of the letters: i IEQ presets, g GEQ presets, p profiles, e profile
    // endpoints, t tunings, d device bindings.
    std::string dump(const std::string& kinds = "igpetd") {
        std::map<char, std::vector<std::string>> lines;
        for (IeqPreset* r : data().getIeqPresets()) {
            lines['i'].push_back("ieq " + std::to_string(r->getPresetId()) + " " + r->getName() +
                                 values(*r));
        }
        for (GeqPreset* r : data().getGeqPresets()) {
            lines['g'].push_back("geq " + std::to_string(r->getProfileId()) + values(*r));
        }
        for (Profile* r : data().getProfiles()) {
            lines['p'].push_back("profile " + std::to_string(r->getProfileId()) + " " +
                                 r->getName() + (r->isMobility() ? " mobility" : "") + values(*r));
        }
        for (ProfileEndpoint* r : data().getProfileEndpoints()) {
            lines['e'].push_back("endpoint " + std::to_string(r->getProfileId()) + " " +
                                 kEndpointNames[r->getEndpoint()] + " ieq " +
                                 std::to_string(r->getSelectedIeqPreset()) + values(*r));
        }
        for (Tuning* r : data().getTunings()) {
            lines['t'].push_back("tuning " + r->getName() + " " + kEndpointNames[r->getEndpoint()] +
                                 (r->isMono() ? " mono" : "") + values(*r));
        }
        for (DeviceTuning* r : data().getDeviceTunings()) {
            lines['d'].push_back("device " + r->getDevice() + " " + r->getPort() + " " +
                                 r->getTuning());
        }
        std::string out;
        for (char kind : kinds) {
            std::sort(lines[kind].begin(), lines[kind].end());
            for (const std::string& line : lines[kind]) out += line + "\n";
        }
        return out;
    }

    Values& tuning(const std::string& name) {
        for (Tuning* tuning : data().getTunings()) {
            if (tuning->getName() == name) return tuning->values;
        }
        ADD_FAILURE() << "no tuning " << name;
        static Values sNone;
        return sNone;
    }

private:
    static std::string values(const ParameterValues& record) {
        std::string text = ":";
        for (const auto& [parameter, list] : record.values) {
            text += std::string(" ") + kParameterNames[parameter] + "=";
            for (size_t i = 0; i < list.size(); ++i) {
                text += (i == 0 ? "" : ",") + std::to_string(list[i]);
            }
        }
        return text;
    }

    TuningFileParser mParser;
    int mResult;
};

TEST(TuningFileParserTest, Format34Document) {
    LogCapture log;
    ParsedFile file(testDataFile("format-3.4.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_TRUE(file.parser().isParsed());
    EXPECT_EQ("3.4.0", file.data().getFormatVersion());
    EXPECT_EQ("2.7.13", file.data().getToolVersion());
    EXPECT_EQ(-64, file.data().getOrbexGameSystemGain());
    EXPECT_EQ(1, file.parser().getNumOfProfiles());
    EXPECT_EQ("movie", file.parser().getProfileName(1));
    // ieq-enable and ieq-amount go to the endpoints that follow them, not to the profile; the
    // steering list takes the dialog enhancer's switch, and both entries exist even without it.
    EXPECT_EQ(
        "ieq 5 bright: ieq_frequency=100,1000 ieq_id=5 ieq_target=10,-20\n"
        "geq 1: geq_frequency=63,250 geq_gain=-8,16\n"
        "profile 1 movie mobility: headphone_virtualizer_mode=2 volume_modeler_enable=1\n"
        "endpoint 1 headphone ieq 0: dialog_enhancer_enable= "
        "mi_dialog_enhancer_steering_enable= virtual_bass_type=3 virtualizer_enable=1\n"
        "endpoint 1 speaker ieq 5: dialog_enhancer_enable=1 "
        "mi_dialog_enhancer_steering_enable=1,1 virtual_bass_type=3 volume_leveler_enable=1\n"
        "tuning hp headphone: dynamic_speaker_optimization_enable=1 orientation=0 "
        "output_channels=0\n"
        "tuning mono_speaker speaker mono: dynamic_speaker_optimization_enable=1 "
        "height_filter_mode=1 orientation=0 output_channels=0\n"
        "tuning speaker_stereo speaker: dynamic_speaker_optimization_enable=1 orientation=1 "
        "output_channels=2 regulator_enable=1 speaker_virtualizer_mode=2 virtual_bass_mode=1\n"
        "device internal_speaker internal_speaker speaker_stereo\n"
        "device spk_mono internal_speaker mono_speaker\n"
        "device spk_mono_alt internal_speaker mono_speaker\n",
        file.dump());
    const std::vector<std::string> expectedLog = {
        "xml version: 3.4.0", "parseAuthorizedTechnologies(): mDsoEnable = 1",
        "parseProfileEndpoint(): speaker, parse the include ieq preset",
        "parseProfileEndpoint(): headphone, parse the include ieq preset"};
    EXPECT_EQ(expectedLog, log.messages("TuningFileParser"));
    for (const test::LogLine& line : log.lines()) {
        EXPECT_EQ(ANDROID_LOG_DEBUG, line.priority) << line.message;
    }
}

// Writes a copy of the version template with the given format version.
std::string writeVersionedFile(const std::string& major, const std::string& minor,
                               const std::string& maintenance) {
    std::ifstream in(testDataFile("versions-template.xml"));
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
        bool is32, is322, is330, before34;
    };
    const Case cases[] = {{"3", "2", "0", true, false, false, true},
                          {"3", "2", "2", true, true, false, true},
                          {"3", "2", "10", true, false, false, true},
                          {"3", "2", "22", true, true, false, true},
                          {"3", "3", "0", false, false, true, true},
                          {"3", "3", "9", false, false, false, true},
                          {"3", "4", "0", false, false, false, false},
                          {"3", "4", "", false, false, false, false},
                          {"4", "0", "0", false, false, false, false},
                          {"2", "9", "9", false, false, false, true},
                          // Versions compare as text, so 3.10 sorts before 3.4.
                          {"3", "10", "0", false, false, false, true},
                          {"", "", "", false, false, false, true}};
    for (const Case& c : cases) {
        const std::string version = c.major + "." + c.minor + "." + c.maintenance;
        SCOPED_TRACE(version);
        LogCapture log;
        ParsedFile file(writeVersionedFile(c.major, c.minor, c.maintenance));
        ASSERT_EQ(0, file.result());
        EXPECT_EQ(version, file.data().getFormatVersion());
        ASSERT_EQ(1u, file.data().getProfiles().size());
        ASSERT_EQ(1u, file.data().getProfileEndpoints().size());

        Profile& profile = **file.data().getProfiles().begin();
        EXPECT_EQ(!c.is32, profile.isMobility());
        EXPECT_EQ((Values{{HEADPHONE_VIRTUALIZER_MODE, {c.before34 ? 1 : 2}},
                          {REVERB_SUPPRESSION_AMOUNT, {c.is32 ? 0 : 5}},
                          {REVERB_SUPPRESSION_ENABLE, {c.is32 ? 0 : 1}}}),
                  profile.values);

        ProfileEndpoint& endpoint = **file.data().getProfileEndpoints().begin();
        Values endpointValues = {{DIALOG_ENHANCER_ENABLE, {}},
                                 {MI_DIALOG_ENHANCER_STEERING_ENABLE, {}},
                                 {HEARING_PROTECTION_ENABLE, {c.is322 ? 0 : 1}},
                                 {VIRTUALIZER_START_BAND, {c.is322 ? 0 : 3}},
                                 {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {c.is32 ? 4 : 9}},
                                 {VIRTUAL_BASS_TYPE, {c.is32 ? 2 : 5}}};
        if (c.is32) {
            endpointValues[IEQ_ENABLE] = {1};
            endpointValues[IEQ_AMOUNT] = {6};
        }
        EXPECT_EQ(endpointValues, endpoint.values);
        // 3.2 takes the profile's include after its data, 3.3.0 the endpoint's by name, later
        // versions the endpoint's by number.
        EXPECT_EQ(c.is32 ? 1 : c.is330 ? 2 : 7, endpoint.getSelectedIeqPreset());

        EXPECT_EQ((Values{{BASS_MBDRC_ENABLE, {c.is322 ? 0 : 1}},
                          {DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}},
                          {ORIENTATION, {0}},
                          {OUTPUT_CHANNELS, {0}},
                          {SPEAKER_VIRTUALIZER_MODE, {c.before34 ? 1 : 2}}}),
                  file.tuning("speaker"));

        // Before 3.4 the presets are named by their id text, and "7" names none.
        const bool named = c.is32 || c.is330;
        EXPECT_EQ(named ? "ieq 0 off: ieq_frequency=400 ieq_id=0 ieq_target=6\n"
                          "ieq 3 warm: ieq_frequency=200 ieq_id=3 ieq_target=3\n"
                        : "ieq 0 named: ieq_frequency=200 ieq_id=0 ieq_target=3\n"
                          "ieq 7 numbered: ieq_frequency=400 ieq_id=7 ieq_target=6\n",
                  file.dump("i"));
        EXPECT_EQ(named ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser"));
    }
}

TEST(TuningFileParserTest, SettingsBeforeTheVersionAreReadEvenFor32) {
    ParsedFile file(testDataFile("version-after-settings.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ("3.2.0", file.data().getFormatVersion());
    EXPECT_EQ(40, file.data().getOrbexGameSystemGain());
    ASSERT_EQ(1u, file.data().getProfileEndpoints().size());
    EXPECT_EQ(std::vector<int>{6},
              (*file.data().getProfileEndpoints().begin())->values[VIRTUAL_BASS_TYPE]);
    EXPECT_EQ(std::vector<int>{1}, file.tuning("speaker")[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE]);
}

TEST(TuningFileParserTest, EndpointNamesAreCaseSensitive) {
    LogCapture log;
    ParsedFile file(testDataFile("endpoint-case.xml"));
    ASSERT_EQ(0, file.result());
    // Unknown profile endpoint names are "other"; the childless endpoint does not take the
    // volume-leveler-enable that follows it.
    EXPECT_EQ(
        "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
        "surround_boost=64 virtual_bass_type=1\n"
        "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
        "virtual_bass_type=1\n"
        "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
        "virtual_bass_type=1 volume_leveler_enable=1\n",
        file.dump("e"));
    EXPECT_TRUE(log.contains("parseProfileEndpoint(): Speaker, parse the include ieq preset"));
    EXPECT_TRUE(log.contains("parseProfileEndpoint(): , parse the include ieq preset"));
    // Unknown tuning endpoint names are the speaker.
    std::map<std::string, std::string> endpoints;
    for (Tuning* tuning : file.data().getTunings()) {
        endpoints[tuning->getName()] = kEndpointNames[tuning->getEndpoint()];
    }
    EXPECT_EQ((std::map<std::string, std::string>{{"capital_speaker", "speaker"},
                                                  {"capital_headphone", "speaker"},
                                                  {"capital_other", "speaker"},
                                                  {"no_endpoint", "speaker"},
                                                  {"real_other", "other"},
                                                  {"real_headphone", "headphone"}}),
              endpoints);
}

TEST(TuningFileParserTest, TuningWithoutDataEndsTheReading) {
    LogCapture log;
    ParsedFile file(testDataFile("no-tuning-data.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_TRUE(file.parser().isParsed());
    EXPECT_EQ(1, file.parser().getNumOfProfiles());
    // The tuning is dropped, its bindings kept, and nothing after it is read.
    EXPECT_EQ(
        "profile 0 dynamic: volume_modeler_enable=1\n"
        "tuning before speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
        "output_channels=0 regulator_enable=1\n"
        "device wired headphone broken\n"
        "device wired_alt headphone broken\n",
        file.dump());
    EXPECT_EQ(
        (std::vector<std::string>{"xml version: 3.4.0", "There is no <data> in Tuning section"}),
        log.messages("TuningFileParser"));
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines().back().priority);

    LogCapture childlessLog;
    ParsedFile childless(testDataFile("childless-tuning.xml"));
    ASSERT_EQ(0, childless.result());
    EXPECT_EQ("", childless.dump());
    EXPECT_EQ(1u, childlessLog.count("There is no <data> in Tuning section", "TuningFileParser"));
}

TEST(TuningFileParserTest, RecordsWithTheSameIdAreAllKept) {
    ParsedFile file(testDataFile("duplicate-profiles.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ(2, file.parser().getNumOfProfiles());
    EXPECT_EQ("theatre", file.parser().getProfileName(3));
    EXPECT_EQ(
        "geq 3: geq_frequency=100 geq_gain=1\n"
        "geq 3: geq_frequency=100 geq_gain=2\n"
        "profile 3 cinema: volume_modeler_enable=1\n"
        "profile 3 theatre: volume_modeler_enable=0\n",
        file.dump());
}

TEST(TuningFileParserTest, BandListsWithAForeignElement) {
    LogCapture log;
    ParsedFile file(testDataFile("bands-foreign-element.xml"));
    ASSERT_EQ(0, file.result());
    // The IEQ bands end at the foreign element; the GEQ bands do not check names.
    EXPECT_EQ(
        "ieq 1 detailed: ieq_frequency=47,141,234 ieq_id=1 ieq_target=10,20,30\n"
        "geq 0: geq_frequency=32,64,125 geq_gain=-8,8,0\n",
        file.dump("ig"));
    EXPECT_EQ(std::vector<std::string>{"No attribute band_ieq was found!"},
              log.messages("ValueSetter"));
    // Any child element is a band here: the note reads as a band of zeros.
    Values& tuning = file.tuning("speaker");
    EXPECT_EQ((std::vector<int>{47, 0, 141}), tuning[AUDIO_OPTIMIZER_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{-11, 0, 6}), tuning[AUDIO_OPTIMIZER_GAIN_R]);
    EXPECT_EQ((std::vector<int>{20, 0}), tuning[REGULATOR_FREQUENCY]);
    EXPECT_EQ((std::vector<int>{0, 0}), tuning[REGULATOR_ISOLATED_BAND]);
}

TEST(TuningFileParserTest, GarbageNumbersReadAsFarAsTheyAreNumbers) {
    ParsedFile file(testDataFile("garbage-numbers.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ(0, file.data().getOrbexGameSystemGain());
    EXPECT_EQ("garbage", file.parser().getProfileName(0));
    EXPECT_EQ(
        "ieq 0 words: ieq_frequency=1 ieq_id=0 ieq_target=0\n"
        "profile 0 garbage: advanced_headphone_virtualizer_rendering_config=1 "
        "custom_drc_metadata=0 surround_decoder_diffuse_relocating_to_front_amount=2147483647 "
        "volume_modeler_enable=0\n"
        "endpoint 0 speaker ieq 0: calibration_boost=12 dialog_enhancer_enable= "
        "mi_dialog_enhancer_steering_enable= peak_value=0 virtual_bass_type=2 "
        "volume_leveler_amount=-2147483648\n"
        "tuning garbage speaker: dynamic_speaker_optimization_enable=0 orientation=-1 "
        "output_channels=0 virtual_bass_mix_freq_high=120 virtual_bass_mix_freq_low=0 "
        "virtual_bass_subgains=1,0,0,4\n",
        file.dump());
}

TEST(TuningFileParserTest, MisplacedAndDeeplyNestedElementsAreNotRead) {
    ParsedFile file(testDataFile("misplaced-elements.xml"));
    ASSERT_EQ(0, file.result());
    EXPECT_EQ(1, file.parser().getNumOfProfiles());
    EXPECT_EQ(0, file.data().getOrbexGameSystemGain());
    EXPECT_EQ(
        "profile 0 dynamic: volume_modeler_enable=1\n"
        "endpoint 0 speaker ieq 2: dialog_enhancer_enable= "
        "mi_dialog_enhancer_steering_enable= surround_boost=32 virtual_bass_type=1\n"
        "tuning speaker speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
        "output_channels=0 regulator_enable=1\n",
        file.dump());

    ParsedFile deep(testDataFile("deep-nesting.xml"));
    ASSERT_EQ(0, deep.result());
    EXPECT_EQ("profile 0 dynamic: volume_modeler_enable=1\n", deep.dump("p"));
    EXPECT_EQ(std::vector<int>{1}, deep.tuning("speaker")[REGULATOR_ENABLE]);
}

TEST(TuningFileParserTest, EmptyAndUnreadableFiles) {
    ParsedFile empty(testDataFile("empty-root.xml"));
    ASSERT_EQ(0, empty.result());
    EXPECT_TRUE(empty.parser().isParsed());
    EXPECT_EQ(0, empty.parser().getNumOfProfiles());
    EXPECT_EQ("", empty.data().getFormatVersion());
    EXPECT_EQ("", empty.dump());

    for (std::string name : {"", "missing.xml", "empty.xml", "not-xml.xml", "truncated.xml",
                             "no-root.xml", "too-deep.xml"}) {
        TuningFileParser parser;
        EXPECT_EQ(-22, parser.setTuningFile(name.empty() ? "" : testDataFile(name))) << name;
        EXPECT_EQ(nullptr, parser.getDeviceData()) << name;
        EXPECT_FALSE(parser.isParsed()) << name;
    }
}

TEST(TuningFileParserTest, IeqPresetNamesBySubstring) {
    // The first of off, balanced, warm, detailed found in the name wins.
    const std::pair<std::string, int> cases[] = {{"off", 0},
                                                 {"ieq_detailed", 1},
                                                 {"balanced", 2},
                                                 {"ieq_warm", 3},
                                                 {"warm_off", 0},
                                                 {"detailed_warm", 3},
                                                 {"balanced_warm", 2},
                                                 {"Warm", -1},
                                                 {"", -1},
                                                 {"3", -1}};
    TuningFileParser parser;
    for (const auto& [name, id] : cases) {
        LogCapture log;
        EXPECT_EQ(std::max(id, 0), parser.getIeqPresetIdByName(name)) << name;
        EXPECT_EQ(id < 0 ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser")) << name;
    }
}

}  // namespace
}  // namespace korva
