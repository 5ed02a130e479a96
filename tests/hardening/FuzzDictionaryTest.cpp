// The tuning-file fuzzer finds the reader's deeper paths only through its dictionary: a parameter
// element added to the reader but not to the dictionary would go unfuzzed without anyone noticing.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "reader/SetterCollection.h"

namespace korva::test {
namespace {

TEST(FuzzDictionaryTest, NamesEveryParameterElementTheReaderKnows) {
    std::ostringstream text;
    text << std::ifstream(KORVA_FUZZ_DICTIONARY).rdbuf();
    const std::string dictionary = text.str();
    ASSERT_FALSE(dictionary.empty()) << "cannot read " << KORVA_FUZZ_DICTIONARY;
    ASSERT_FALSE(SetterCollection::kAllValueSetters.empty());
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        // Entries are name="<element"; the closing quote rules out longer names.
        EXPECT_NE(std::string::npos, dictionary.find("=\"<" + setter->getNodeName() + "\""))
            << "the fuzz dictionary lacks <" << setter->getNodeName();
    }
}

}  // namespace
}  // namespace korva::test
