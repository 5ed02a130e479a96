// The built-in default blobs, read back through the blob reader and the store's queries.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "ScopedHostRoot.h"
#include "StoreTest.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"
#include "store/SpatializerParamParser.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

constexpr int kAll = 0x40000000;
constexpr int kDevices[] = {0x2, 0x8, 0x80, 0x4000};

struct Entry {
    int device;
    int code;
    std::vector<int> values;

    bool operator==(const Entry& other) const {
        return device == other.device && code == other.code && values == other.values;
    }
};

std::ostream& operator<<(std::ostream& out, const Entry& entry) {
    char name[5] = {};
    memcpy(name, &entry.code, 4);
    out << std::hex << entry.device << std::dec << " " << name << " [";
    for (size_t i = 0; i < entry.values.size(); i++) {
        out << (i > 0 ? " " : "") << entry.values[i];
    }
    return out << "]";
}

Entry entry(int device, const char* name, std::vector<int> values) {
    return {device, vexParameterCode(name), std::move(values)};
}

struct Walk {
    bool valid = false;
    int profileId = 0;
    int numParams = 0;
    std::vector<Entry> entries;
    // Words from the start of the blob to the end of its last entry.
    long consumedWords = 0;
};

Walk walk(const int* table, unsigned int size) {
    // The reader takes a writable buffer; it never writes through it.
    int* data = const_cast<int*>(table);
    Walk result;
    SpatializerParamParser parser(data, static_cast<int>(size));
    result.valid = parser.validate();
    if (!parser.begin()) {
        return result;
    }
    result.profileId = parser.mProfileId;
    result.numParams = parser.mNumParams;
    while (parser.next()) {
        result.entries.push_back(
            {parser.mDeviceId, parser.mParamId,
             std::vector<int>(parser.mValues, parser.mValues + parser.mNumValues)});
        result.consumedWords = (parser.mValues + parser.mNumValues) - data;
    }
    return result;
}

struct ProfileRow {
    const char* name;
    KrvSpatializerProfileId id;
    const int* table;
    int mdle;
    int miee;
    std::vector<int> hvrc;
    int ieon, mdee, deon, dea;
    int dsbSpeaker, dsbOthers, vmbSpeaker, vmbOthers;
};

std::vector<Entry> expectedProfileEntries(const ProfileRow& row) {
    std::vector<Entry> entries = {
        entry(kAll, "MDLE", {row.mdle}),
        entry(kAll, "MIEE", {row.miee}),
        entry(kAll, "HVRC", row.hvrc),
    };
    for (int device : kDevices) {
        bool speaker = device == 0x2;
        entries.push_back(entry(device, "IEON", {row.ieon}));
        entries.push_back(entry(device, "MDEE", {row.mdee}));
        entries.push_back(entry(device, "DEON", {row.deon}));
        entries.push_back(entry(device, "DEA", {row.dea}));
        entries.push_back(entry(device, "DSB", {speaker ? row.dsbSpeaker : row.dsbOthers}));
        entries.push_back(entry(device, "VMB", {speaker ? row.vmbSpeaker : row.vmbOthers}));
    }
    return entries;
}

class BuiltinTablesTest : public test::StoreTest {};

TEST_F(BuiltinTablesTest, ProfileTablesHoldTheirTwentySevenEntries) {
    using S = SpatializerParamArray;
    const std::vector<int> hvrcHead = {103, 32568, 11164, 5090, 0};
    auto hvrc = [&](int a, int b, int c) {
        std::vector<int> values = hvrcHead;
        values.insert(values.end(), {a, b, c});
        return values;
    };
    const ProfileRow rows[] = {
        {"dynamic", PROFILE_DYNAMIC, S::mDynamicProfileParams, 1, 1, hvrc(3, 3, 3), 1, 1, 1, 2, 64,
         0, 64, 16},
        {"movie", PROFILE_MOVIE, S::mMovieProfileParams, 0, 0, hvrc(1, 2, 2), 0, 1, 1, 4, 88, 0, 64,
         16},
        {"music", PROFILE_MUSIC, S::mMusicProfileParams, 0, 0, hvrc(3, 3, 3), 1, 0, 0, 0, 64, 0, 32,
         0},
        {"cinema", PROFILE_CINEMA, S::mCinemaProfileParams, 0, 0, hvrc(1, 2, 2), 0, 1, 1, 4, 88, 0,
         64, 16},
        {"custom", PROFILE_CUSTOM, S::mCustomProfileParams, 0, 0, hvrc(1, 1, 1), 0, 1, 1, 4, 0, 0,
         64, 16},
    };
    for (const ProfileRow& row : rows) {
        SCOPED_TRACE(row.name);
        unsigned int size = mStore.getProfileParamsSize(row.id);
        EXPECT_EQ(468u, size);
        EXPECT_EQ(468u, sizeof(S::mDynamicProfileParams));
        Walk result = walk(row.table, size);
        EXPECT_TRUE(result.valid);
        EXPECT_EQ(row.id, result.profileId);
        EXPECT_EQ(27, result.numParams);
        EXPECT_EQ(expectedProfileEntries(row), result.entries);
        EXPECT_EQ(117, result.consumedWords);
    }
}

TEST_F(BuiltinTablesTest, CommonTableHoldsItsFiftySevenEntries) {
    const std::vector<int> iebs = {
        20,   47,   141,  234,  328,   469,   656,   844, 1031, 1313, 1688, 2250, 3000, 3750,
        4688, 5813, 7125, 9000, 11250, 13875, 19688, 157, 167,  218,  218,  203,  188,  192,
        192,  205,  213,  218,  209,   193,   159,   134, 97,   71,   22,   -90,  -283};
    const std::vector<int> speakerDom = {
        1,     0,     1,     15,    24,    16384, 0, 0,     16384, 11583, 11583, 8192,  8192,
        16384, 0,     0,     16384, 16384, 0,     0, 16384, 16384, 0,     0,     16384, 16384,
        0,     0,     16384, 11,    16,    16384, 0, 0,     16384, 11583, 11583, 8192,  8192,
        16384, 0,     0,     16384, 16384, 0,     0, 16384, 10,    12,    16384, 0,     0,
        16384, 11583, 11583, 8192,  8192,  16384, 0, 0,     16384};

    std::vector<Entry> expected = {
        entry(kAll, "MAVE", {0}),  entry(kAll, "MSCE", {0}), entry(kAll, "DVME", {0}),
        entry(kAll, "RVSE", {0}),  entry(kAll, "RVSA", {0}), entry(kAll, "SDFA", {0}),
        entry(kAll, "HLRA", {45}), entry(kAll, "HVM", {2}),  entry(kAll, "DRCM", {0}),
    };
    for (int device : kDevices) {
        expected.push_back(entry(device, "IEBS", iebs));
        expected.push_back(entry(device, "IEA", {6}));
        expected.push_back(entry(device, "PLB", {0}));
        expected.push_back(entry(device, "DED", {2}));
        expected.push_back(entry(device, "MVBE", {0}));
        expected.push_back(entry(device, "NGON", {1}));
        expected.push_back(entry(device, "DVLE", {0}));
        expected.push_back(entry(device, "DVLA", {0}));
        expected.push_back(entry(device, "DVLI", {-256}));
        expected.push_back(entry(device, "DVLO", {-256}));
        expected.push_back(entry(device, "DOM", device == 0x2 ? speakerDom : std::vector{1, 1, 2}));
        expected.push_back(entry(device, "VSSD", {4}));
    }

    unsigned int size = mStore.getProfileParamsSize(PROFILE_COMMON);
    EXPECT_EQ(1824u, size);
    EXPECT_EQ(1824u, sizeof(SpatializerParamArray::mCommonParams));
    Walk result = walk(SpatializerParamArray::mCommonParams, size);
    EXPECT_TRUE(result.valid);
    EXPECT_EQ(-1, result.profileId);
    EXPECT_EQ(57, result.numParams);
    EXPECT_EQ(expected, result.entries);
    EXPECT_EQ(456, result.consumedWords);
}

TEST_F(BuiltinTablesTest, DefaultMixMatrixIsTheSpeakerDomWithoutItsFirstThreeWords) {
    Walk common =
        walk(SpatializerParamArray::mCommonParams, mStore.getProfileParamsSize(PROFILE_COMMON));
    const Entry* speakerDom = nullptr;
    for (const Entry& e : common.entries) {
        if (e.device == 0x2 && e.code == vexParameterCode(DOM)) {
            speakerDom = &e;
        }
    }
    ASSERT_NE(nullptr, speakerDom);
    ASSERT_EQ(61u, speakerDom->values.size());
    EXPECT_EQ(std::vector<int>(speakerDom->values.begin() + 3, speakerDom->values.end()),
              kDefaultMixMatrix);
    EXPECT_EQ(std::vector<int>{3}, kDefaultVbMode);

    ASSERT_EQ(58u, kDefaultMixMatrix.size());
    struct Matrix {
        size_t at;
        int first;
        int second;
        size_t coefficients;
    };
    const Matrix matrices[] = {{0, 15, 24, 24}, {26, 11, 16, 16}, {44, 10, 12, 12}};
    for (const Matrix& m : matrices) {
        EXPECT_EQ(m.first, kDefaultMixMatrix[m.at]);
        EXPECT_EQ(m.second, kDefaultMixMatrix[m.at + 1]);
        // Each matrix starts and ends on unity gain.
        EXPECT_EQ(16384, kDefaultMixMatrix[m.at + 2]);
        EXPECT_EQ(16384, kDefaultMixMatrix[m.at + 1 + m.coefficients]);
    }
}

}  // namespace
}  // namespace korva
