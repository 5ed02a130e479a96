// The bundled example tuning file must be complete: every element the reader knows appears in
// it, in a place where it is read, and nothing in it is foreign to the reader. What the store
// makes of it is checked end to end elsewhere.
#include <android/log.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <set>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TestPaths.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"
#include "reader/XmlPtr.h"

namespace korva {
namespace {

const std::string kExample = test::exampleFile();

// Elements that give the document its structure rather than a parameter value.
// clang-format off
const std::set<std::string> kStructuralElements = {
    "tool_version", "format_version", "authorized_technologies", "global_setting", "preset",
    "data", "ieq", "geq", "band_ieq", "band_geq", "profile", "endpoint_type", "include", "tuning",
    "device_id"};
// clang-format on

// Parameter elements whose descendants are table rows, read whatever their names.
const std::set<std::string> kTableElements = {"output-mode", "regulator-tuning",
                                              "audio-optimizer-bands"};

void collectElementNames(const xmlNode* node, std::set<std::string>& names) {
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE) {
            names.insert(toString(node->name));
            if (kTableElements.count(toString(node->name)) == 0) {
                collectElementNames(node->children, names);
            }
        }
    }
}

TEST(ExampleFileTest, EverySetterElementAppearsAndNothingIsForeign) {
    XmlDocPtr document(xmlReadFile(kExample.c_str(), nullptr, 0));
    ASSERT_NE(nullptr, document) << kExample;
    std::set<std::string> names;
    collectElementNames(xmlDocGetRootElement(document.get())->children, names);
    const SetterCollection& setters = *TuningFileParser::sSetterCollection;
    for (const std::string& name : names) {
        EXPECT_TRUE(setters.getValueSetter(name) != nullptr || kStructuralElements.count(name))
            << "foreign element " << name;
    }
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_EQ(1u, names.count(setter->getNodeName())) << setter->getNodeName();
    }
}

TEST(ExampleFileTest, EveryParameterIsFilledInARecordThatAcceptsIt) {
    test::LogCapture log;
    TuningFileParser parser;
    ASSERT_EQ(0, parser.setTuningFile(kExample));
    for (const test::LogLine& line : log.lines()) {
        EXPECT_LT(line.priority, ANDROID_LOG_WARN) << line.tag << ": " << line.message;
    }
    DeviceData& data = *parser.getDeviceData();
    EXPECT_EQ("3.4.0", data.getFormatVersion());
    std::set<Parameter> filled;
    auto check = [&filled](const auto& records) {
        for (const ParameterValues* record : records) {
            for (const auto& [parameter, values] : record->values) {
                filled.insert(parameter);
                // The endpoints' virtual-bass type comes from the global settings.
                EXPECT_TRUE(record->getValidParams().count(parameter) != 0 ||
                            parameter == VIRTUAL_BASS_TYPE)
                    << kParameterNames[parameter] << " in a record that does not accept it";
                // Translators read first values: no list may be empty.
                EXPECT_FALSE(values.empty()) << kParameterNames[parameter];
            }
        }
    };
    check(data.getIeqPresets());
    check(data.getGeqPresets());
    check(data.getProfiles());
    check(data.getProfileEndpoints());
    check(data.getTunings());
    EXPECT_EQ(static_cast<size_t>(kNumParameters), filled.size());
}

}  // namespace
}  // namespace korva
