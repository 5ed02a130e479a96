#include <android/log.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ReaderTestUtils.h"
#include "model/Parameter.h"
#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"

namespace korva {
namespace {

using Values = std::map<Parameter, std::vector<int>>;

class ValueSetterTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(0, mFile.initResult()); }

    // Applies the setter of the case's element to the record, as the parser does (presets by
    // their type), and checks that the cursor is back on the element.
    void apply(const std::string& caseId, test::TestRecord& record) {
        ASSERT_TRUE(mFile.moveToCase(caseId)) << caseId;
        TagIterator& iterator = mFile.iterator();
        const std::string element = iterator.getNodeName();
        std::vector<std::string> type;
        iterator.parseNodeWithName({"type"}, type);
        const std::string name = element == "preset" ? type[0] : element;
        ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(name);
        ASSERT_NE(nullptr, setter) << name;
        setter->set(record, iterator);
        EXPECT_EQ(element, iterator.getNodeName()) << caseId << ": cursor not restored";
    }

    test::CaseFile mFile{"setters.xml"};
};

TEST_F(ValueSetterTest, EachSetterClassOnRealElements) {
    const std::pair<std::string, Values> cases[] = {
        {"simple-true", {{VOLUME_LEVELER_ENABLE, {1}}}},
        {"simple-false", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-number", {{VOLUME_LEVELER_ENABLE, {7}}}},
        {"simple-negative", {{VOLUME_LEVELER_AMOUNT, {-3}}}},
        {"simple-capitals", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-missing", {{VOLUME_LEVELER_ENABLE, {0}}}},
        {"simple-garbage", {{PEAK_VALUE, {12}}}},
        {"row-mixed-separators", {{BASS_MBDRC_TUNING, {10, 20, 30}}}},
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
        {"vb-range", {{VIRTUAL_BASS_MIX_FREQ_LOW, {40}}, {VIRTUAL_BASS_MIX_FREQ_HIGH, {120}}}},
        {"vb-range-half", {{VIRTUAL_BASS_SRC_FREQ_LOW, {0}}, {VIRTUAL_BASS_SRC_FREQ_HIGH, {300}}}},
        // The unnamed band list is cut at the first missing value, for every column.
        {"ieq-missing-target", {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {10}}}},
        {"ieq-no-bands", {{IEQ_FREQUENCY, {}}, {IEQ_TARGET, {}}}},
        // Named bands end at a foreign element, with one message.
        {"ieq-bands", {{IEQ_FREQUENCY, {65, 136, 223}}, {IEQ_TARGET, {117, 119, -24}}}},
        {"geq-bands", {{GEQ_FREQUENCY, {32, 64, 125}}, {GEQ_GAIN, {-16, 0, 24}}}},
        {"audio-optimizer",
         {{AUDIO_OPTIMIZER_FREQUENCY, {47, 141}},
          {AUDIO_OPTIMIZER_GAIN_L, {-12, 6}},
          {AUDIO_OPTIMIZER_GAIN_R, {-10, 5}},
          {AUDIO_OPTIMIZER_GAIN_LS, {3, 0}},
          {AUDIO_OPTIMIZER_GAIN_RS, {4, 0}}}},
        {"regulator",
         {{REGULATOR_FREQUENCY, {20, 80, 4000}},
          {REGULATOR_THRESHOLD_LOW, {-192, -128, 1}},
          {REGULATOR_THRESHOLD_HIGH, {-80, 0, 0}},
          {REGULATOR_ISOLATED_BAND, {1, 0, 0}}}},
    };
    for (const auto& [id, expected] : cases) {
        test::LogCapture log;
        test::TestRecord record;
        apply(id, record);
        EXPECT_EQ(expected, record.values) << id;
        const bool foreign = id == "ieq-bands";
        EXPECT_EQ(foreign ? std::vector<std::string>{"No attribute band_ieq was found!"}
                          : std::vector<std::string>{},
                  log.messages("ValueSetter"))
            << id;
        EXPECT_TRUE(!foreign || log.lines().at(0).priority == ANDROID_LOG_INFO);
    }
}

}  // namespace
}  // namespace korva
