#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using test::LogCapture;
using test::testDataFile;

std::string values(const ParameterValues& record) {
    std::string text = ":";
    for (const auto& [parameter, list] : record.values) {
        text += std::string(" ") + kParameterNames[parameter] + "=";
        for (size_t i = 0; i < list.size(); ++i)
            text += (i == 0 ? "" : ",") + std::to_string(list[i]);
    }
    return text;
}

// What the parser made of the file, one line per record: the header (versions, global settings,
// profile count and names), then the IEQ presets, GEQ presets, profiles, profile endpoints,
// tunings and device bindings, each kind sorted.
std::string dump(TuningFileParser& parser) {
    DeviceData& data = *parser.getDeviceData();
    std::string out = "format=" + data.getFormatVersion() + " tool=" + data.getToolVersion() +
                      " orbex=" + std::to_string(data.getOrbexGameSystemGain()) +
                      " profiles=" + std::to_string(parser.getNumOfProfiles()) + " names:";
    for (Profile* r : data.getProfiles()) {
        out += " " + std::to_string(r->getProfileId()) + ":" +
               parser.getProfileName(r->getProfileId());
    }
    out += "\n";
    auto add = [&out](const auto& records, auto line) {
        std::vector<std::string> lines;
        for (const auto* r : records) lines.push_back(line(*r) + "\n");
        std::sort(lines.begin(), lines.end());
        for (const std::string& text : lines) out += text;
    };
    add(data.getIeqPresets(), [](const IeqPreset& r) {
        return "ieq " + std::to_string(r.getPresetId()) + " " + r.getName() + values(r);
    });
    add(data.getGeqPresets(),
        [](const GeqPreset& r) { return "geq " + std::to_string(r.getProfileId()) + values(r); });
    add(data.getProfiles(), [](const Profile& r) {
        return "profile " + std::to_string(r.getProfileId()) + " " + r.getName() +
               (r.isMobility() ? " mobility" : "") + values(r);
    });
    add(data.getProfileEndpoints(), [](const ProfileEndpoint& r) {
        return "endpoint " + std::to_string(r.getProfileId()) + " " +
               kEndpointNames[r.getEndpoint()] + " ieq " +
               std::to_string(r.getSelectedIeqPreset()) + values(r);
    });
    add(data.getTunings(), [](const Tuning& r) {
        return "tuning " + r.getName() + " " + kEndpointNames[r.getEndpoint()] +
               (r.isMono() ? " mono" : "") + values(r);
    });
    add(data.getDeviceTunings(), [](const DeviceTuning& r) {
        return "device " + r.getDevice() + " " + r.getPort() + " " + r.getTuning();
    });
    return out;
}

// Each file's records, and the messages above debug level that reading it logs.
TEST(TuningFileParserTest, DocumentsGiveTheirRecords) {
    const std::tuple<const char*, std::string, std::vector<std::string>> cases[] = {
        // ieq-enable and ieq-amount go to the endpoints that follow them, not to the profile; the
        // steering list takes the dialog enhancer's switch, and both entries exist even without
        // it; the global settings reach every endpoint and tuning.
        {"format-3.4.xml",
         "format=3.4.0 tool=2.7.13 orbex=-64 profiles=1 names: 1:movie\n"
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
         {}},
        // The versions and global settings are read first, wherever they stand.
        {"version-after-settings.xml",
         "format=3.2.0 tool= orbex=40 profiles=1 names: 0:dynamic\n"
         "profile 0 dynamic: headphone_virtualizer_mode=1 reverb_suppression_amount=0 "
         "reverb_suppression_enable=0\n"
         "endpoint 0 speaker ieq 0: dialog_enhancer_enable= "
         "headphone_virtualizer_steerer_source_distance=4 ieq_amount=0 ieq_enable=0 "
         "mi_dialog_enhancer_steering_enable= virtual_bass_type=6\n"
         "tuning speaker speaker: dynamic_speaker_optimization_enable=1 orientation=0 "
         "output_channels=0 speaker_virtualizer_mode=1\n",
         {"name is invalid, 310"}},
        // Unknown profile endpoint names are "other", unknown tuning endpoint names the speaker.
        // The childless endpoint does not take the volume-leveler-enable after it: the profile
        // does.
        {"endpoint-case.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:dynamic\n"
         "profile 0 dynamic: volume_leveler_enable=1\n"
         "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
         "surround_boost=64 virtual_bass_type=1\n"
         "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
         "virtual_bass_type=1 volume_leveler_enable=1\n"
         "endpoint 0 other ieq 0: dialog_enhancer_enable= mi_dialog_enhancer_steering_enable= "
         "virtual_bass_type=1 volume_leveler_enable=1\n"
         "tuning capital_headphone speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning capital_other speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning capital_speaker speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning no_endpoint speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning real_headphone headphone: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning real_other other: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n",
         {}},
        // A tuning without data is dropped, its bindings kept, and nothing after it is read.
        {"no-tuning-data.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:dynamic\n"
         "profile 0 dynamic: volume_modeler_enable=1\n"
         "tuning before speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0 regulator_enable=1\n"
         "device wired headphone broken\n"
         "device wired_alt headphone broken\n",
         {"There is no <data> in Tuning section"}},
        {"childless-tuning.xml",
         "format=3.4.0 tool= orbex=0 profiles=0 names:\n"
         "tuning after speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0\n"
         "tuning empty speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0 regulator_enable=1\n",
         {}},
        {"childless-elements.xml",
         "format=3.4.0 tool= orbex=-12 profiles=0 names:\n"
         "ieq 7 shallow: ieq_frequency=100,200 ieq_id=7 ieq_target=1,2\n"
         "geq 0: geq_frequency=63 geq_gain=4\n"
         "tuning spk speaker: audio_optimizer_frequency=0,0,0 audio_optimizer_gain_l=0,0,0 "
         "audio_optimizer_gain_ls=0,0,0 audio_optimizer_gain_r=0,0,0 "
         "audio_optimizer_gain_rs=0,0,0 dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=2 regulator_enable=1 regulator_frequency=0 regulator_isolated_band=0 "
         "regulator_threshold_high=0 regulator_threshold_low=0\n",
         {}},
        {"childless-profile-3.2.xml",
         "format=3.2.0 tool= orbex=0 profiles=1 names: 1:movie\n"
         "profile 1 movie: headphone_virtualizer_mode=1 reverb_suppression_amount=0 "
         "reverb_suppression_enable=0\n"
         "endpoint 1 speaker ieq 3: dialog_enhancer_enable= "
         "headphone_virtualizer_steerer_source_distance=4 ieq_amount=0 ieq_enable=0 "
         "mi_dialog_enhancer_steering_enable= virtual_bass_type=1\n",
         {}},
        // Records with the same id are all kept; the later profile name wins.
        {"duplicate-profiles.xml",
         "format=3.4.0 tool= orbex=0 profiles=2 names: 3:theatre 3:theatre\n"
         "geq 3: geq_frequency=100 geq_gain=1\n"
         "geq 3: geq_frequency=100 geq_gain=2\n"
         "profile 3 cinema: volume_modeler_enable=1\n"
         "profile 3 theatre: volume_modeler_enable=0\n",
         {}},
        // The IEQ bands end at a foreign element, the GEQ bands do not check names, and the
        // optimizer and regulator read any child element as a band.
        {"bands-foreign-element.xml",
         "format=3.4.0 tool= orbex=0 profiles=0 names:\n"
         "ieq 1 detailed: ieq_frequency=47,141,234 ieq_id=1 ieq_target=10,20,30\n"
         "geq 0: geq_frequency=32,64,125 geq_gain=-8,8,0\n"
         "tuning speaker speaker: audio_optimizer_frequency=47,0,141 "
         "audio_optimizer_gain_l=-10,0,5 audio_optimizer_gain_ls=0,0,0 "
         "audio_optimizer_gain_r=-11,0,6 audio_optimizer_gain_rs=0,0,0 "
         "dynamic_speaker_optimization_enable=0 orientation=0 output_channels=0 "
         "regulator_frequency=20,0 regulator_isolated_band=0,0 regulator_threshold_high=-80,0 "
         "regulator_threshold_low=-192,0\n",
         {"No attribute band_ieq was found!"}},
        // Numbers are read as far as they are numbers, in attributes of every kind.
        {"garbage-numbers.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:garbage\n"
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
         {}},
        // Known elements where they mean nothing are not read.
        {"misplaced-elements.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:dynamic\n"
         "profile 0 dynamic: volume_modeler_enable=1\n"
         "endpoint 0 speaker ieq 2: dialog_enhancer_enable= "
         "mi_dialog_enhancer_steering_enable= surround_boost=32 virtual_bass_type=1\n"
         "tuning speaker speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0 regulator_enable=1\n",
         {}},
        {"deep-nesting.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:dynamic\n"
         "profile 0 dynamic: volume_modeler_enable=1\n"
         "tuning speaker speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0 regulator_enable=1\n",
         {}},
        // Nodes named like a parameter that are not elements: the profile's wrapper and its
        // endpoints call their setters, which read 0; a tuning's data passes over them.
        {"processing-instructions.xml",
         "format=3.4.0 tool= orbex=0 profiles=1 names: 0:p\n"
         "profile 0 p: volume_modeler_enable=0\n"
         "endpoint 0 speaker ieq 0: dialog_enhancer_amount=0 dialog_enhancer_enable= "
         "mi_dialog_enhancer_steering_enable= surround_boost=0 virtual_bass_type=1\n"
         "tuning speaker speaker: dynamic_speaker_optimization_enable=0 orientation=0 "
         "output_channels=0 regulator_enable=1\n",
         {}},
        {"empty-root.xml", "format= tool= orbex=0 profiles=0 names:\n", {}},
    };
    for (const auto& [file, records, messages] : cases) {
        SCOPED_TRACE(file);
        LogCapture log;
        TuningFileParser parser;
        ASSERT_EQ(0, parser.setTuningFile(testDataFile(file)));
        EXPECT_TRUE(parser.isParsed());
        EXPECT_EQ(records, dump(parser));
        std::vector<std::string> logged;
        for (const test::LogLine& line : log.lines()) {
            if (line.priority > ANDROID_LOG_DEBUG) logged.push_back(line.message);
        }
        EXPECT_EQ(messages, logged);
    }
}

// Writes a copy of the version template with the given format version.
std::string writeVersionedFile(const std::string& major, const std::string& minor,
                               const std::string& maintenance) {
    std::ifstream in(testDataFile("versions-template.xml"));
    std::string document((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (const auto& [placeholder, value] :
         {std::pair{"@MAJOR@", major}, {"@MINOR@", minor}, {"@MAINTENANCE@", maintenance}}) {
        document.replace(document.find(placeholder), strlen(placeholder), value);
    }
    const std::string path =
        ::testing::TempDir() + "korva-version-" + major + "." + minor + "." + maintenance + ".xml";
    std::ofstream(path) << document;
    return path;
}

TEST(TuningFileParserTest, FormatVersionRules) {
    struct Case {
        std::string major, minor, maintenance;
        bool is32, is322, is330, before34;
    };
    // clang-format off
    const Case cases[] = {
        {"3", "2", "0", true, false, false, true},   {"3", "2", "2", true, true, false, true},
        {"3", "2", "10", true, false, false, true},  {"3", "2", "22", true, true, false, true},
        {"3", "3", "0", false, false, true, true},   {"3", "3", "9", false, false, false, true},
        {"3", "4", "0", false, false, false, false}, {"3", "4", "", false, false, false, false},
        {"4", "0", "0", false, false, false, false}, {"2", "9", "9", false, false, false, true},
        // Versions compare as text, so 3.10 sorts before 3.4.
        {"3", "10", "0", false, false, false, true}, {"", "", "", false, false, false, true}};
    // clang-format on
    auto when = [](bool rule, const std::string& then, const std::string& otherwise) {
        return rule ? then : otherwise;
    };
    for (const Case& c : cases) {
        const std::string version = c.major + "." + c.minor + "." + c.maintenance;
        SCOPED_TRACE(version);
        LogCapture log;
        TuningFileParser parser;
        ASSERT_EQ(0, parser.setTuningFile(writeVersionedFile(c.major, c.minor, c.maintenance)));
        // Before 3.4 the IEQ presets are named by their id text, and "7" names none (logged).
        // 3.2 takes the profile's preset from an include after its data, 3.3.0 the endpoint's by
        // name, later versions the endpoint's by number. 3.2 ignores the group and the global
        // settings; 3.2, 3.2.2 and every version before 3.4 write fixed values over the file's.
        const bool named = c.is32 || c.is330;
        EXPECT_EQ(
            "format=" + version + " tool= orbex=0 profiles=1 names: 0:dynamic\n" +
                when(named,
                     "ieq 0 off: ieq_frequency=400 ieq_id=0 ieq_target=6\n"
                     "ieq 3 warm: ieq_frequency=200 ieq_id=3 ieq_target=3\n",
                     "ieq 0 named: ieq_frequency=200 ieq_id=0 ieq_target=3\n"
                     "ieq 7 numbered: ieq_frequency=400 ieq_id=7 ieq_target=6\n") +
                "profile 0 dynamic" + when(c.is32, "", " mobility") +
                ": headphone_virtualizer_mode=" + when(c.before34, "1", "2") +
                when(c.is32, " reverb_suppression_amount=0 reverb_suppression_enable=0\n",
                     " reverb_suppression_amount=5 reverb_suppression_enable=1\n") +
                "endpoint 0 speaker ieq " + when(c.is32, "1", when(c.is330, "2", "7")) +
                ": dialog_enhancer_enable= headphone_virtualizer_steerer_source_distance=" +
                when(c.is32, "4", "9") + " hearing_protection_enable=" + when(c.is322, "0", "1") +
                when(c.is32, " ieq_amount=6 ieq_enable=1", "") +
                " mi_dialog_enhancer_steering_enable= virtual_bass_type=" + when(c.is32, "2", "5") +
                " virtualizer_start_band=" + when(c.is322, "0", "3") +
                "\ntuning speaker speaker: bass_mbdrc_enable=" + when(c.is322, "0", "1") +
                " dynamic_speaker_optimization_enable=0 orientation=0 output_channels=0 "
                "speaker_virtualizer_mode=" +
                when(c.before34, "1", "2") + "\n",
            dump(parser));
        EXPECT_EQ(named ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser"));
    }
}

// Each unusable file is refused with the iterator's one error line, and nothing is read.
TEST(TuningFileParserTest, UnreadableFilesGiveNoData) {
    const std::string kReadFailed = "fail to call xmlReadFile,  ";
    const std::pair<std::string, std::string> cases[] = {
        {"", "Invalide xml file path, "},
        {testDataFile("missing.xml"), kReadFailed},
        {testDataFile("not-xml.xml"), kReadFailed},
        {testDataFile("empty.xml"), kReadFailed},
        {testDataFile("truncated.xml"), kReadFailed},
        {testDataFile("no-root.xml"), kReadFailed},
        {testDataFile("too-deep.xml"), kReadFailed},
        {test::testDataDir(), kReadFailed}};
    for (const auto& [path, prefix] : cases) {
        SCOPED_TRACE(path);
        LogCapture log;
        TuningFileParser parser;
        EXPECT_EQ(-22, parser.setTuningFile(path));
        EXPECT_EQ(nullptr, parser.getDeviceData());
        EXPECT_FALSE(parser.isParsed());
        ASSERT_EQ(1u, log.lines().size());
        EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
        EXPECT_EQ(prefix, log.messages("TagIterator").at(0).substr(0, prefix.size()));
    }
}

TEST(TuningFileParserTest, IeqPresetNamesBySubstring) {
    // The first of off, balanced, warm, detailed found in the name wins; -1: none is found, which
    // is logged and reads as 0.
    // clang-format off
    const std::pair<std::string, int> cases[] = {
        {"off", 0}, {"ieq_detailed", 1}, {"balanced", 2}, {"ieq_warm", 3}, {"warm_off", 0},
        {"detailed_warm", 3}, {"balanced_warm", 2}, {"Warm", -1}, {"", -1}, {"3", -1}};
    // clang-format on
    TuningFileParser parser;
    for (const auto& [name, id] : cases) {
        LogCapture log;
        EXPECT_EQ(std::max(id, 0), parser.getIeqPresetIdByName(name)) << name;
        EXPECT_EQ(id < 0 ? 1u : 0u, log.count("name is invalid, 310", "TuningFileParser")) << name;
    }
}

}  // namespace
}  // namespace korva
