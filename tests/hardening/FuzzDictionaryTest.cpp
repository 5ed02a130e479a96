// The tuning-file fuzzer finds the reader's deeper paths only through its dictionary: a parameter
// element added to the reader but not to the dictionary would go unfuzzed without anyone noticing.

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "reader/SetterCollection.h"

namespace korva::test {
namespace {

// The quoted values of a libFuzzer dictionary, with \" and \\ undone.
std::set<std::string> readDictionary(const std::string& path) {
    std::set<std::string> entries;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        size_t open = line.find("=\"");
        if (line.empty() || line[0] == '#' || open == std::string::npos || line.back() != '"') {
            continue;
        }
        std::string value;
        for (size_t i = open + 2; i + 1 < line.size(); i++) {
            if (line[i] == '\\' && i + 2 < line.size()) {
                i++;
            }
            value += line[i];
        }
        entries.insert(value);
    }
    return entries;
}

TEST(FuzzDictionaryTest, NamesEveryParameterElementTheReaderKnows) {
    std::set<std::string> entries = readDictionary(KORVA_FUZZ_DICTIONARY);
    ASSERT_FALSE(entries.empty()) << "cannot read " << KORVA_FUZZ_DICTIONARY;
    ASSERT_FALSE(SetterCollection::kAllValueSetters.empty());
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_EQ(1u, entries.count("<" + setter->getNodeName()))
            << "the fuzz dictionary lacks <" << setter->getNodeName();
    }
}

TEST(FuzzDictionaryTest, NamesTheStructuralElementsAndTheirAttributes) {
    std::set<std::string> entries = readDictionary(KORVA_FUZZ_DICTIONARY);
    for (const char* element :
         {"tool_version", "format_version", "authorized_technologies", "global_setting", "preset",
          "profile", "endpoint_type", "include", "tuning", "device_id", "band_ieq"}) {
        EXPECT_EQ(1u, entries.count(std::string("<") + element)) << element;
    }
    for (const char* attribute : {"major", "id", "type", "group", "ieq_preset", "mono_device",
                                  "output_channels", "endpoint_port", "value", "isolated_band"}) {
        EXPECT_EQ(1u, entries.count(std::string(" ") + attribute + "=\"")) << attribute;
    }
}

}  // namespace
}  // namespace korva::test
