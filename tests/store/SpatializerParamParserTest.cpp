#include <android-base/properties.h>
#include <android/log.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "LogLines.h"
#include "store/SpatializerParamParser.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

using test::LogCapture;

constexpr const char* kTag = "KrvSpatializerParamParser";
constexpr int32_t kAll = 0x40000000;
constexpr int32_t kSpk = 0x2;
constexpr int32_t kHp = 0x8;

const int32_t kDsb = vexParameterCode(DSB);
const int32_t kVmb = vexParameterCode(VMB);
const int32_t kDom = vexParameterCode(DOM);
const int32_t kMdle = vexParameterCode(MDLE);
const int32_t kIebs = vexParameterCode(IEBS);

void setLogLevel(int level) {
    android::base::SetProperty("persist.vendor.korva.loglevel", std::to_string(level));
}

std::vector<std::string> linesAt(const LogCapture& log, int priority) {
    return test::linesAt(log, kTag, priority);
}

struct FailureCase {
    const char* name;
    std::vector<int32_t> words;
    // Bytes handed to the parser; -1 for all the words.
    int size;
    bool valid;
    std::vector<std::string> errors;
};

TEST(SpatializerParamParserTest, MalformedBlobsFailWithTheirExactErrorLines) {
    const std::string noProfileId = "begin() failed to extract profile id";
    const std::string badHeader = "validate() EFFECT_PARAM_PROFILE header is incorrect.";
    const FailureCase cases[] = {
        {"empty buffer", {1}, 0, false, {noProfileId, badHeader}},
        {"three bytes", {1}, 3, false, {noProfileId, badHeader}},
        {"header word only",
         {1},
         -1,
         false,
         {"begin() failed to extract number of parameters", badHeader}},
        {"count cut short",
         {1, 1},
         6,
         false,
         {"begin() failed to extract number of parameters", badHeader}},
        {"two announced, none there",
         {1, 2},
         -1,
         false,
         {"next() failed to extract device id for parameter #1",
          "validate() Expected 2 parameters, found 1 parameters."}},
        // An entry counts before it is read, so a missing or short last entry still
        // validates; only next() reports it.
        {"last entry missing",
         {1, 1},
         -1,
         true,
         {"next() failed to extract device id for parameter #1"}},
        {"last entry without parameter id",
         {1, 2, kSpk, kDsb, 1, 88, kSpk},
         -1,
         true,
         {"next() failed to extract parameter id for parameter #2"}},
        {"last entry without value count",
         {1, 2, kSpk, kDsb, 1, 88, kSpk, kVmb},
         -1,
         true,
         {"next() failed to extract number of values for parameter #2"}},
        {"last entry short of values",
         {1, 1, kSpk, kDom, 3, 1, 1},
         -1,
         true,
         {"next() failed to extract 3 values for parameter #1"}},
        {"middle entry short of values",
         {1, 3, kSpk, kDsb, 1, 88, kSpk, kDom, 3, 1},
         -1,
         false,
         {"next() failed to extract 3 values for parameter #2",
          "validate() Expected 3 parameters, found 2 parameters."}},
        {"negative parameter count",
         {1, -1},
         -1,
         false,
         {"validate() Expected -1 parameters, found 0 parameters."}},
        {"value count beyond any buffer",
         {1, 2, kSpk, kDom, 0x40000001},
         -1,
         false,
         {"next() failed to extract 1073741825 values for parameter #1",
          "validate() Expected 2 parameters, found 1 parameters."}},
        {"negative value count stepping before the start",
         {1, 1, kSpk, kDom, -100},
         -1,
         true,
         {"next() failed to extract -100 values for parameter #1"}},
        {"bytes after the last entry", {1, 1, kSpk, kDsb, 1, 88, 5, 6}, 30, true, {}},
        {"entry without values", {1, 1, kSpk, kDom, 0}, -1, true, {}},
        // The bounds check lets a negative count step back inside the buffer: the second
        // entry re-reads the first.
        {"negative value count stepping back", {7, 2, kSpk, kDsb, -3}, -1, true, {}},
    };
    setLogLevel(2);
    for (const FailureCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<int32_t> words = c.words;
        int size = c.size >= 0 ? c.size : static_cast<int>(words.size() * 4);
        LogCapture log;
        SpatializerParamParser parser(words.data(), size);
        EXPECT_EQ(c.valid, parser.validate());
        EXPECT_EQ(c.errors, linesAt(log, ANDROID_LOG_ERROR));
    }
}

TEST(SpatializerParamParserTest, NullBufferFailsAtTheProfileId) {
    LogCapture log;
    SpatializerParamParser parser(nullptr, 1024);
    EXPECT_FALSE(parser.validate());
    EXPECT_EQ((std::vector<std::string>{"begin() failed to extract profile id",
                                        "validate() EFFECT_PARAM_PROFILE header is incorrect."}),
              linesAt(log, ANDROID_LOG_ERROR));
    EXPECT_FALSE(parser.begin());
    EXPECT_FALSE(parser.next());
}

TEST(SpatializerParamParserTest, WalkReadsEveryEntryInPlace) {
    std::vector<int32_t> blob = {5, 3,   kAll,  kMdle, 1,  9,  kSpk, kDom,
                                 0, kHp, kIebs, 3,     10, 20, -30};
    LogCapture log;
    SpatializerParamParser parser(blob.data(), static_cast<int>(blob.size() * 4));
    ASSERT_TRUE(parser.validate());

    ASSERT_TRUE(parser.begin());
    EXPECT_EQ(5, parser.mProfileId);
    EXPECT_EQ(3, parser.mNumParams);
    EXPECT_EQ(0, parser.mParamIndex);

    struct Entry {
        int32_t device;
        int32_t code;
        int32_t count;
        size_t valuesAt;  // word index into the blob
    };
    const Entry expected[] = {
        {kAll, kMdle, 1, 5},
        {kSpk, kDom, 0, 9},  // no values: points at the next entry's first word
        {kHp, kIebs, 3, 12},
    };
    for (size_t i = 0; i < std::size(expected); i++) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(parser.next());
        EXPECT_EQ(static_cast<int32_t>(i + 1), parser.mParamIndex);
        EXPECT_EQ(expected[i].device, parser.mDeviceId);
        EXPECT_EQ(expected[i].code, parser.mParamId);
        EXPECT_EQ(expected[i].count, parser.mNumValues);
        EXPECT_EQ(blob.data() + expected[i].valuesAt, parser.mValues);
    }
    EXPECT_FALSE(parser.next());
    EXPECT_EQ(3, parser.mParamIndex);
    EXPECT_TRUE(linesAt(log, ANDROID_LOG_ERROR).empty());
}

TEST(SpatializerParamParserTest, FieldsKeepWhatWasReadBeforeAFailure) {
    std::vector<int32_t> blob = {1, 2, kSpk, kDsb, 1, 88, kHp, kVmb};
    SpatializerParamParser parser(blob.data(), static_cast<int>(blob.size() * 4));
    ASSERT_TRUE(parser.begin());
    ASSERT_TRUE(parser.next());
    EXPECT_FALSE(parser.next());
    EXPECT_EQ(2, parser.mParamIndex);
    EXPECT_EQ(kHp, parser.mDeviceId);
    EXPECT_EQ(kVmb, parser.mParamId);
    EXPECT_EQ(1, parser.mNumValues);
    EXPECT_EQ(blob.data() + 5, parser.mValues);
}

TEST(SpatializerParamParserTest, NegativeValueCountRereadsInsideTheBuffer) {
    std::vector<int32_t> blob = {7, 2, kSpk, kDsb, -3};
    SpatializerParamParser parser(blob.data(), static_cast<int>(blob.size() * 4));
    ASSERT_TRUE(parser.begin());
    for (int entry = 1; entry <= 2; entry++) {
        ASSERT_TRUE(parser.next());
        EXPECT_EQ(kSpk, parser.mDeviceId);
        EXPECT_EQ(kDsb, parser.mParamId);
        EXPECT_EQ(-3, parser.mNumValues);
    }
    EXPECT_FALSE(parser.next());
}

TEST(SpatializerParamParserTest, VerboseTracesOnlyFromLevelFour) {
    std::vector<int32_t> blob = {-1, 3,   kAll,  kMdle, 1,  9,  kSpk, kDom,
                                 0,  kHp, kIebs, 3,     10, 20, -30};
    const std::vector<std::string> verbose = {
        "validate()",
        "begin()",
        "validate() Found profile id ffffffff with 3 parameters",
        "next()",
        "validate() Found for device 40000000 parameter mdle = 9",
        "next()",
        "validate() Found for device 2 parameter dom = {no values}",
        "next()",
        "validate() Found for device 8 parameter iebs = #3[10 ... -30]",
        "next()",
    };
    struct Level {
        int level;
        bool debug;
        bool verbose;
    };
    const Level levels[] = {{0, false, false}, {1, false, false}, {2, true, false},
                            {3, true, false},  {4, true, true},   {7, true, true}};
    for (const Level& l : levels) {
        SCOPED_TRACE(l.level);
        setLogLevel(l.level);
        LogCapture log;
        SpatializerParamParser parser(blob.data(), static_cast<int>(blob.size() * 4));
        EXPECT_TRUE(parser.validate());
        EXPECT_EQ(l.debug ? std::vector<std::string>{"SpatializerParamParser()"}
                          : std::vector<std::string>{},
                  linesAt(log, ANDROID_LOG_DEBUG));
        EXPECT_EQ(l.verbose ? verbose : std::vector<std::string>{},
                  linesAt(log, ANDROID_LOG_VERBOSE));
    }
}

TEST(SpatializerParamParserTest, ErrorsAreWrittenAtEveryLevel) {
    setLogLevel(0);
    LogCapture log;
    SpatializerParamParser parser(nullptr, 0);
    EXPECT_FALSE(parser.validate());
    EXPECT_EQ(2u, linesAt(log, ANDROID_LOG_ERROR).size());
}

TEST(SpatializerParamParserTest, DefaultLevelWritesNoVerboseLines) {
    std::vector<int32_t> blob = {0, 1, kSpk, kDsb, 1, 64};
    LogCapture log;
    SpatializerParamParser parser(blob.data(), static_cast<int>(blob.size() * 4));
    EXPECT_TRUE(parser.validate());
    EXPECT_EQ(std::vector<std::string>{"SpatializerParamParser()"}, linesAt(log, ANDROID_LOG_DEBUG));
    EXPECT_TRUE(linesAt(log, ANDROID_LOG_VERBOSE).empty());
}

}  // namespace
}  // namespace korva
