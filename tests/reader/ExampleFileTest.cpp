// The bundled example tuning file must be complete: every element the reader knows appears in
// it, in a place where it is read, and nothing in it is foreign to the reader.
#include <android/log.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "model/CreationOrder.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"
#include "reader/XmlPtr.h"

namespace korva {
namespace {

const std::string kExample = test::examplesDir() + "/kvx-default-spatializer.xml";

// Elements that give the document its structure rather than a parameter value.
const std::set<std::string> kStructuralElements = {
    "tool_version",
    "format_version",
    "authorized_technologies",
    "global_setting",
    "preset",
    "data",
    "ieq",
    "geq",
    "band_ieq",
    "band_geq",
    "profile",
    "endpoint_type",
    "include",
    "tuning",
    "device_id",
};

// Parameter elements whose descendants are table rows, read whatever their names.
const std::set<std::string> kTableElements = {"output-mode", "regulator-tuning",
                                              "audio-optimizer-bands"};

void collectElementNames(const xmlNode* node, std::multiset<std::string>& names) {
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        const std::string name = toString(node->name);
        names.insert(name);
        if (kTableElements.count(name) == 0) {
            collectElementNames(node->children, names);
        }
    }
}

std::multiset<std::string> exampleElementNames() {
    XmlDocPtr document(xmlReadFile(kExample.c_str(), nullptr, 0));
    std::multiset<std::string> names;
    if (document == nullptr) {
        ADD_FAILURE() << "cannot read " << kExample;
        return names;
    }
    collectElementNames(xmlDocGetRootElement(document.get())->children, names);
    return names;
}

TEST(ExampleFileTest, EverySetterElementAppearsAndNothingIsForeign) {
    const std::multiset<std::string> names = exampleElementNames();
    const SetterCollection& setters = *TuningFileParser::sSetterCollection;
    for (const std::string& name : std::set<std::string>(names.begin(), names.end())) {
        EXPECT_TRUE(setters.getValueSetter(name) != nullptr || kStructuralElements.count(name))
            << "foreign element " << name;
    }
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_NE(0u, names.count(setter->getNodeName())) << setter->getNodeName();
    }
}

class ExampleFileParseTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(0, mParser.setTuningFile(kExample));
        mData = mParser.getDeviceData();
        ASSERT_NE(nullptr, mData);
    }

    // Every record with its values, for checks that apply to all of them.
    std::vector<ParameterValues*> allRecords() {
        std::vector<ParameterValues*> records;
        records.insert(records.end(), mData->getIeqPresets().begin(), mData->getIeqPresets().end());
        records.insert(records.end(), mData->getGeqPresets().begin(), mData->getGeqPresets().end());
        records.insert(records.end(), mData->getProfiles().begin(), mData->getProfiles().end());
        records.insert(records.end(), mData->getProfileEndpoints().begin(),
                       mData->getProfileEndpoints().end());
        records.insert(records.end(), mData->getTunings().begin(), mData->getTunings().end());
        return records;
    }

    Tuning* tuningNamed(const std::string& name) {
        for (Tuning* tuning : mData->getTunings()) {
            if (tuning->getName() == name) return tuning;
        }
        return nullptr;
    }

    TuningFileParser mParser;
    DeviceData* mData = nullptr;
};

TEST_F(ExampleFileParseTest, ParsesWithoutComplaint) {
    // Parse again under capture: the fixture's parse ran before the capture existed.
    test::LogCapture log;
    TuningFileParser parser;
    ASSERT_EQ(0, parser.setTuningFile(kExample));
    for (const test::LogLine& line : log.lines()) {
        EXPECT_LT(line.priority, ANDROID_LOG_WARN) << line.tag << ": " << line.message;
    }
    EXPECT_EQ("3.4.0", mData->getFormatVersion());
    EXPECT_EQ("4.2.1", mData->getToolVersion());
}

TEST_F(ExampleFileParseTest, EveryParameterIsFilledInARecordThatAcceptsIt) {
    std::set<Parameter> filled;
    for (ParameterValues* record : allRecords()) {
        for (const auto& [parameter, values] : record->values) {
            filled.insert(parameter);
            // The endpoints' virtual-bass type comes from the global settings, not a record set.
            EXPECT_TRUE(record->getValidParams().count(parameter) != 0 ||
                        parameter == VIRTUAL_BASS_TYPE)
                << kParameterNames[parameter] << " in a record that does not accept it";
            // Translators read first values: no list may be empty.
            EXPECT_FALSE(values.empty()) << kParameterNames[parameter];
        }
    }
    EXPECT_EQ(static_cast<size_t>(kNumParameters), filled.size());
}

TEST_F(ExampleFileParseTest, ProfilesPresetsAndEndpoints) {
    std::map<int, std::string> profiles;
    for (Profile* profile : mData->getProfiles()) {
        profiles[profile->getProfileId()] = profile->getName();
        EXPECT_TRUE(profile->isMobility());
    }
    const std::map<int, std::string> expected = {
        {0, "dynamic"}, {1, "movie"}, {2, "music"}, {3, "cinema"}, {4, "custom"}};
    EXPECT_EQ(expected, profiles);
    EXPECT_EQ(5, mParser.getNumOfProfiles());

    std::set<int> geqProfiles;
    for (GeqPreset* preset : mData->getGeqPresets()) {
        geqProfiles.insert(preset->getProfileId());
        EXPECT_EQ(20u, preset->values[GEQ_FREQUENCY].size());
        EXPECT_EQ(20u, preset->values[GEQ_GAIN].size());
    }
    EXPECT_EQ((std::set<int>{0, 1, 2, 3, 4}), geqProfiles);
    EXPECT_EQ(5u, mData->getGeqPresets().size());

    std::set<int> ieqPresets;
    for (IeqPreset* preset : mData->getIeqPresets()) {
        ieqPresets.insert(preset->getPresetId());
        EXPECT_EQ(20u, preset->values[IEQ_FREQUENCY].size()) << preset->getName();
        EXPECT_EQ(20u, preset->values[IEQ_TARGET].size()) << preset->getName();
    }
    EXPECT_GE(ieqPresets.size(), 4u);

    std::set<std::pair<int, Endpoint>> endpoints;
    for (ProfileEndpoint* endpoint : mData->getProfileEndpoints()) {
        endpoints.insert({endpoint->getProfileId(), endpoint->getEndpoint()});
        EXPECT_EQ(1u, ieqPresets.count(endpoint->getSelectedIeqPreset()))
            << "profile " << endpoint->getProfileId() << " selects a missing IEQ preset";
    }
    for (int id = 0; id < 5; id++) {
        EXPECT_EQ(1u, endpoints.count({id, ENDPOINT_SPEAKER})) << id;
        EXPECT_EQ(1u, endpoints.count({id, ENDPOINT_HEADPHONE})) << id;
    }
    EXPECT_EQ(10u, mData->getProfileEndpoints().size());
}

TEST_F(ExampleFileParseTest, TuningDevicesServeEveryPort) {
    std::map<std::string, std::set<std::string>> devicesByPort;
    std::map<std::string, std::string> tuningOfDevice;
    for (DeviceTuning* binding : inCreationOrder(mData->getDeviceTunings())) {
        devicesByPort[binding->getPort()].insert(binding->getDevice());
        tuningOfDevice[binding->getDevice()] = binding->getTuning();
        EXPECT_NE(nullptr, tuningNamed(binding->getTuning())) << binding->getDevice();
    }
    for (const auto& [port, defaultDevice] :
         std::map<std::string, std::string>{{"headphone", "default_headphone"},
                                            {"bluetooth", "default_bluetooth"},
                                            {"usb", "default_usb"}}) {
        EXPECT_EQ(1u, devicesByPort[port].count(defaultDevice)) << port;
        EXPECT_GE(devicesByPort[port].size(), 2u) << port;
    }
    ASSERT_GE(devicesByPort["internal_speaker"].size(), 2u);
    for (const std::string& device : devicesByPort["internal_speaker"]) {
        Tuning* speaker = tuningNamed(tuningOfDevice[device]);
        ASSERT_NE(nullptr, speaker) << device;
        EXPECT_EQ(ENDPOINT_SPEAKER, speaker->getEndpoint());
        EXPECT_EQ((std::vector<int>{2}), speaker->values[OUTPUT_CHANNELS]);
        // Three downmixes to two speakers, each led by its layout and coefficient count.
        EXPECT_EQ(2u + 24 + 2 + 16 + 2 + 12, speaker->values[OUTPUT_MIX_MATRIX].size());
        EXPECT_EQ(20u, speaker->values[REGULATOR_FREQUENCY].size());
        EXPECT_EQ(20u, speaker->values[AUDIO_OPTIMIZER_FREQUENCY].size());
        EXPECT_EQ(1u, speaker->values[VIRTUAL_BASS_MODE].size());
    }
}

}  // namespace
}  // namespace korva
