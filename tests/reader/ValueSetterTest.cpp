#include <android/log.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ReaderTestUtils.h"
#include "model/Parameter.h"
#include "reader/NodeParseUtils.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using Values = std::map<Parameter, std::vector<int>>;

class ValueSetterTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(0, mFile.initResult()); }

    // Applies the setter registered for the case's element and returns what it wrote.
    Values apply(const std::string& caseId) {
        test::TestRecord record;
        if (!mFile.moveToCase(caseId)) {
            ADD_FAILURE() << "no case " << caseId;
            return record.values;
        }
        TagIterator& iterator = mFile.iterator();
        const std::string element = iterator.getNodeName();
        // Presets are read by the setter of their type, as the parser does.
        std::vector<std::string> type;
        iterator.parseNodeWithName({"type"}, type);
        const std::string name = element == "preset" ? type[0] : element;
        ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(name);
        if (setter == nullptr) {
            ADD_FAILURE() << "no setter for " << name;
            return record.values;
        }
        setter->set(record, iterator);
        EXPECT_EQ(element, iterator.getNodeName()) << caseId << ": cursor not restored";
        return record.values;
    }

    test::CaseFile mFile{"setters.xml"};
};

TEST_F(ValueSetterTest, SingleParameterSetters) {
    struct Case {
        std::string id;
        Values expected;
    };
    const Case cases[] = {
        {"simple-true", {{VOLUME_LEVELER_ENABLE, {1}}}},
        {"simple-false", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-number", {{VOLUME_LEVELER_ENABLE, {7}}}},
        {"simple-negative", {{VOLUME_LEVELER_AMOUNT, {-3}}}},
        {"simple-capitals", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-missing", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-garbage", {{PEAK_VALUE, {12}}}},
        {"row-mixed-separators", {{BASS_MBDRC_TUNING, {10, 20, 30}}}},
        {"row-semicolons", {{BASS_MBDRC_TUNING, {10}}}},
        {"row-first-attribute-only", {{REGULATOR_STRESS_AMOUNT, {4, 5, 6}}}},
        {"row-empty", {{COMPLEX_EQUALIZER_TUNING_LEFT, {}}}},
        {"drc-row", {{CUSTOM_DRC_METADATA, {1, 0, -12}}}},
        {"drc-empty", {{CUSTOM_DRC_METADATA, {0}}}},
        {"drc-garbage", {{CUSTOM_DRC_METADATA, {0}}}},
        {"matrix-identity", {{OUTPUT_MIX_MATRIX, {1, 0, 0, 1}}}},
        {"matrix-no-rows", {{OUTPUT_MIX_MATRIX, {}}}},
        {"matrix-childless", {{OUTPUT_MIX_MATRIX, {}}}},
        {"subgains", {{VIRTUAL_BASS_SUBGAINS, {-96, -48, 0, 0}}}},
        {"subgains-none", {{VIRTUAL_BASS_SUBGAINS, {}}}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.expected, apply(c.id)) << c.id;
    }
}

TEST_F(ValueSetterTest, MultiParameterSetters) {
    struct Case {
        std::string id;
        Values expected;
    };
    const Case cases[] = {
        {"vb-range", {{VIRTUAL_BASS_MIX_FREQ_LOW, {40}}, {VIRTUAL_BASS_MIX_FREQ_HIGH, {120}}}},
        {"vb-range-half", {{VIRTUAL_BASS_SRC_FREQ_LOW, {0}}, {VIRTUAL_BASS_SRC_FREQ_HIGH, {300}}}},
        // The unnamed band list is cut at the first missing value, for every column.
        {"ieq-missing-target", {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {10}}}},
        {"ieq-no-bands", {{IEQ_FREQUENCY, {}}, {IEQ_TARGET, {}}}},
        {"geq-bands", {{GEQ_FREQUENCY, {32, 64, 125}}, {GEQ_GAIN, {-16, 0, 24}}}},
        {"audio-optimizer",
         {{AUDIO_OPTIMIZER_FREQUENCY, {47, 141}},
          {AUDIO_OPTIMIZER_GAIN_L, {-12, 6}},
          {AUDIO_OPTIMIZER_GAIN_R, {-10, 5}},
          {AUDIO_OPTIMIZER_GAIN_LS, {3, 0}},
          {AUDIO_OPTIMIZER_GAIN_RS, {4, 0}}}},
        {"audio-optimizer-childless",
         {{AUDIO_OPTIMIZER_FREQUENCY, {}},
          {AUDIO_OPTIMIZER_GAIN_L, {}},
          {AUDIO_OPTIMIZER_GAIN_R, {}},
          {AUDIO_OPTIMIZER_GAIN_LS, {}},
          {AUDIO_OPTIMIZER_GAIN_RS, {}}}},
        {"regulator",
         {{REGULATOR_FREQUENCY, {20, 80, 4000}},
          {REGULATOR_THRESHOLD_LOW, {-192, -128, 1}},
          {REGULATOR_THRESHOLD_HIGH, {-80, 0, 0}},
          {REGULATOR_ISOLATED_BAND, {1, 0, 0}}}},
        {"regulator-childless",
         {{REGULATOR_FREQUENCY, {}},
          {REGULATOR_THRESHOLD_LOW, {}},
          {REGULATOR_THRESHOLD_HIGH, {}},
          {REGULATOR_ISOLATED_BAND, {}}}},
    };
    for (const Case& c : cases) {
        test::LogCapture log;
        EXPECT_EQ(c.expected, apply(c.id)) << c.id;
        EXPECT_TRUE(log.messages("ValueSetter").empty()) << c.id;
    }
}

TEST_F(ValueSetterTest, IeqBandsEndAtAForeignElementWithOneMessage) {
    test::LogCapture log;
    const Values expected = {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {117, 119, -24}}};
    EXPECT_EQ(expected, apply("ieq-bands"));
    EXPECT_EQ(std::vector<std::string>{"No attribute band_ieq was found!"},
              log.messages("ValueSetter"));
    EXPECT_EQ(ANDROID_LOG_INFO, log.lines().at(0).priority);
}

TEST_F(ValueSetterTest, SettingAgainReplacesTheValues) {
    test::TestRecord record;
    record.values[BASS_MBDRC_TUNING] = {1, 2, 3, 4};
    record.values[PEAK_VALUE] = {5};
    ASSERT_TRUE(mFile.moveToCase("row-semicolons"));
    TuningFileParser::sSetterCollection->getValueSetter("bass-mbdrc-tuning")
        ->set(record, mFile.iterator());
    const Values expected = {{BASS_MBDRC_TUNING, {10}}, {PEAK_VALUE, {5}}};
    EXPECT_EQ(expected, record.values);
    EXPECT_TRUE(record.isDirty());
}

TEST_F(ValueSetterTest, ParseValueOffAnElementIsZero) {
    ASSERT_TRUE(mFile.moveToCase("simple-number"));
    TagIterator& iterator = mFile.iterator();
    EXPECT_EQ(7, NodeParseUtils::parseValue(iterator));
    iterator.next();  // the blank text after the element
    ASSERT_FALSE(iterator.isElementNode());
    EXPECT_EQ(0, NodeParseUtils::parseValue(iterator));
    EXPECT_TRUE(NodeParseUtils::parseDataRow(iterator).empty());
    EXPECT_TRUE(NodeParseUtils::parseMixMatrix(iterator).empty());
}

}  // namespace
}  // namespace korva
