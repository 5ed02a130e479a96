// The blob reader: its bounds-checked cursor, every malformed blob with its exact error lines, the
// walk over a good blob, its traces per log level, and forEachEntry as the same walk.
#include <android/log.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "LogCapture.h"
#include "model/OutputDevice.h"
#include "platform/LocalProperties.h"
#include "store/SpatializerParamParser.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

using test::LogCapture;
using Lines = std::vector<std::string>;

constexpr int32_t kAll = kOutputDeviceAll;
constexpr int32_t kSpk = kOutputDeviceSpeaker;
constexpr int32_t kHp = kOutputDeviceWiredHeadphone;
const int32_t kDsb = vexParameterCode(DSB);
const int32_t kVmb = vexParameterCode(VMB);
const int32_t kDom = vexParameterCode(DOM);
const int32_t kMdle = vexParameterCode(MDLE);
const int32_t kIebs = vexParameterCode(IEBS);

void setLogLevel(const std::string& level) {
    korva::setLocalProperty("persist.vendor.korva.loglevel", level);
}

Lines parserLines(const LogCapture& log, int priority) {
    return log.messages("KrvSpatializerParamParser", priority);
}

// Three entries: one value, none, several.
const std::vector<int32_t> kBlob = {-1, 3,   kAll,  kMdle, 1,  9,  kSpk, kDom,
                                    0,  kHp, kIebs, 3,     10, 20, -30};

int bytesOf(const std::vector<int32_t>& words) {
    return static_cast<int>(words.size() * 4);
}

TEST(SpatializerParamParserTest, MalformedBlobsFailWithTheirExactErrorLines) {
    const std::string noId = "begin() failed to extract profile id";
    const std::string noCount = "begin() failed to extract number of parameters";
    const std::string badHeader = "validate() EFFECT_PARAM_PROFILE header is incorrect.";
    auto failed = [](const std::string& what, int entry) {
        return "next() failed to extract " + what + " for parameter #" + std::to_string(entry);
    };
    auto expected = [](int announced, int found) {
        return "validate() Expected " + std::to_string(announced) + " parameters, found " +
               std::to_string(found) + " parameters.";
    };
    const struct {
        const char* name;
        bool valid;
        // No words: a null buffer.
        std::vector<int32_t> words;
        Lines errors;
        // Bytes handed to the parser; -1 for all the words.
        int size = -1;
    } cases[] = {
        {"null, any size", false, {}, {noId, badHeader}, 1024},
        {"three bytes", false, {1}, {noId, badHeader}, 3},
        {"header word only", false, {1}, {noCount, badHeader}},
        {"none of two there", false, {1, 2}, {failed("device id", 1), expected(2, 1)}},
        // An entry counts before it is read, so a missing or short last entry still validates;
        // only next() reports it.
        {"last missing", true, {1, 1}, {failed("device id", 1)}},
        {"no code", true, {1, 2, kSpk, kDsb, 1, 8, kSpk}, {failed("parameter id", 2)}},
        {"no count", true, {1, 2, kSpk, kDsb, 1, 8, kSpk, kVmb}, {failed("number of values", 2)}},
        {"last short", true, {1, 1, kSpk, kDom, 3, 1, 1}, {failed("3 values", 1)}},
        {"mid short",
         false,
         {1, 3, kSpk, kDsb, 1, 8, kSpk, kDom, 3, 1},
         {failed("3 values", 2), expected(3, 2)}},
        {"count before the start", true, {1, 1, kSpk, kDom, -100}, {failed("-100 values", 1)}},
        {"bytes after the last entry", true, {1, 1, kSpk, kDsb, 1, 8, 5, 6}, {}, 30},
        {"entry without values", true, {1, 1, kSpk, kDom, 0}, {}},
    };
    // Errors are written whatever the level.
    setLogLevel("0");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<int32_t> words = c.words;
        LogCapture log;
        SpatializerParamParser parser(words.empty() ? nullptr : words.data(),
                                      c.size >= 0 ? c.size : bytesOf(words));
        EXPECT_EQ(c.valid, parser.validate());
        EXPECT_EQ(c.errors, parserLines(log, ANDROID_LOG_ERROR));
    }
}

// An entry as read: device, code, count, values; the walk ends with the profile id, the number of
// entries and the index reached, in place of device, code and count.
using Entry = std::tuple<int32_t, int32_t, int32_t, int32_t*>;
using Walk = std::pair<std::vector<Entry>, Lines>;

// Walks with begin() and next(), or with forEachEntry(), which must be the same steps.
Walk walk(void* blob, int size, bool forEach) {
    SpatializerParamParser parser(blob, size);
    Walk out;
    auto read = [&] {
        out.first.emplace_back(parser.mDeviceId, parser.mParamId, parser.mNumValues, parser.mValues);
    };
    LogCapture log;
    if (forEach) {
        parser.forEachEntry(read);
    } else if (parser.begin()) {
        while (parser.next()) read();
    }
    out.first.emplace_back(parser.mProfileId, parser.mNumParams, parser.mParamIndex, nullptr);
    out.second = log.messages("KrvSpatializerParamParser");
    return out;
}

// Nothing is copied, a caller's buffer need not be word-aligned, and forEachEntry reads and logs
// as begin() and next() do, a cut-short last entry included.
TEST(SpatializerParamParserTest, WalkReadsEveryEntryInPlaceAtAnyAlignment) {
    std::vector<uint8_t> bytes(bytesOf(kBlob) + 1);
    uint8_t* blob = bytes.data() + 1;
    memcpy(blob, kBlob.data(), bytesOf(kBlob));
    auto at = [blob](size_t word) { return reinterpret_cast<int32_t*>(blob + 4 * word); };
    setLogLevel("4");
    const Walk whole = walk(blob, bytesOf(kBlob), false);
    // An entry without values points at the next entry's first word.
    EXPECT_EQ((std::vector<Entry>{{kAll, kMdle, 1, at(5)},
                                  {kSpk, kDom, 0, at(9)},
                                  {kHp, kIebs, 3, at(12)},
                                  {-1, 3, 3, nullptr}}),
              whole.first);
    EXPECT_EQ(whole, walk(blob, bytesOf(kBlob), true));

    std::vector<int32_t> cut = {1, 2, kSpk, kDsb, 1, 8, kSpk, kDom, 3, 1};
    const Walk cutShort = walk(cut.data(), bytesOf(cut), false);
    EXPECT_EQ((std::vector<Entry>{{kSpk, kDsb, 1, &cut[5]}, {1, 2, 2, nullptr}}), cutShort.first);
    EXPECT_EQ("next() failed to extract 3 values for parameter #2", cutShort.second.back());
    EXPECT_EQ(cutShort, walk(cut.data(), bytesOf(cut), true));
}

TEST(SpatializerParamParserTest, DebugFromLevelTwoVerboseFromLevelFour) {
    std::vector<int32_t> blob = kBlob;
    const Lines verbose = {
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
    // "": unset, the default level 2.
    const struct {
        const char* level;
        bool debug;
        bool verbose;
    } levels[] = {{"", true, false}, {"1", false, false}, {"3", true, false}, {"4", true, true}};
    for (const auto& l : levels) {
        SCOPED_TRACE(l.level);
        setLogLevel(l.level);
        LogCapture log;
        SpatializerParamParser parser(blob.data(), bytesOf(blob));
        EXPECT_TRUE(parser.validate());
        EXPECT_EQ(l.debug ? Lines{"SpatializerParamParser()"} : Lines{},
                  parserLines(log, ANDROID_LOG_DEBUG));
        EXPECT_EQ(l.verbose ? verbose : Lines{}, parserLines(log, ANDROID_LOG_VERBOSE));
    }
}

}  // namespace
}  // namespace korva
