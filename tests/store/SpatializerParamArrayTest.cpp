// Construction of the store, its built-in tables, its blob lookups and the choice of the tuning
// file. Each test runs in a process of its own, so each builds the store afresh from the
// properties it sets first.
#include <algorithm>

#include "StoreTest.h"
#include "platform/LocalProperties.h"
#include "store/SpatializerParamParser.h"

namespace korva::test {
namespace {

using korva::setLocalProperty;
using S = SpatializerParamArray;

constexpr const char* kOdmDefault = "/odm/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kOdmMeridane = "/odm/etc/korva/kvx-meridane-spatializer.xml";
constexpr const char* kVendorDefault = "/vendor/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kOdmFs19xx = "/odm/etc/korva/kvx-fs19xx-spatializer.xml";

TEST(SpatializerParamArrayTest, ConstructionReadsPropertiesPreselectsLoadsAndRestores) {
    setLocalProperty("ro.product.name", "quenthorn");
    setLocalProperty("persist.vendor.audio.pa.smartpa_type", "fs19xx");
    setLocalProperty("persist.vendor.audio.sfx.hd.eq", "1,2,3,4,5,6,7,8,9,10");
    ScopedHostRoot root;
    LogCapture log;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();

    const std::string path = root.path() + kOdmFs19xx;
    EXPECT_EQ((Lines{
                  "SpatializerParamArray(product_name = quenthorn)",
                  "smartpa_type: fs19xx",
                  "getXmlPath(): using tuning file " + path,
                  "loadSpatializerXMLFile(" + path + ")",
                  "restoreUserGEQ(): there're persistent user gains: 1,2,3,4,5,6,7,8,9,10",
                  "restoreUserGEQ(): store the relative gains in all profiles",
              }),
              log.messages(kStoreLogTag, ANDROID_LOG_DEBUG));
    SpatializerParamArrayTestPeer peer(store);
    EXPECT_EQ(PROFILE_MOVIE, peer.currentProfileId());
    EXPECT_EQ(0, peer.xmlTuningCount());
    EXPECT_EQ(60, peer.defaultMixMatrixLength());
    EXPECT_EQ((std::map<int, std::string>{
                  {3, "default_headphone"}, {4, "default_bluetooth"}, {5, "default_usb"}}),
              peer.selectedTuningDevices());
    // Nothing was loaded, and restoring the user's gains creates no profile of its own.
    EXPECT_TRUE(peer.profileGeqGains().empty());
}

class StoreTablesTest : public StoreTest {};

TEST_F(StoreTablesTest, BuiltinTablesAreWholeBlobsCopiedExactly) {
    const struct {
        int id;
        const int* table;
        unsigned int words;
        int entries;
    } cases[] = {
        {PROFILE_COMMON, S::mCommonParams, 456, 57},
        {PROFILE_DYNAMIC, S::mDynamicProfileParams, 117, 27},
        {PROFILE_MOVIE, S::mMovieProfileParams, 117, 27},
        {PROFILE_MUSIC, S::mMusicProfileParams, 117, 27},
        {PROFILE_CINEMA, S::mCinemaProfileParams, 117, 27},
        {PROFILE_CUSTOM, S::mCustomProfileParams, 117, 27},
        // Unknown ids copy nothing.
        {5, nullptr, 0, 0},
        {-2, nullptr, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        auto id = static_cast<KrvSpatializerProfileId>(c.id);
        ASSERT_EQ(c.words * 4, mStore.getProfileParamsSize(id));
        EXPECT_EQ(-22, mStore.getProfileParams(id, nullptr));
        // One guard word past the table shows that no more than the table is copied.
        std::vector<int> blob(c.words + 1, 0x5a5a5a5a);
        EXPECT_EQ(0, mStore.getProfileParams(id, blob.data()));
        EXPECT_TRUE(std::equal(c.table, c.table + c.words, blob.begin()));
        EXPECT_EQ(0x5a5a5a5a, blob.back());
        if (c.table == nullptr) {
            continue;
        }
        SpatializerParamParser parser(blob.data(), static_cast<int>(c.words * 4));
        EXPECT_TRUE(parser.validate());
        ASSERT_TRUE(parser.begin());
        EXPECT_EQ(c.id, parser.mProfileId);
        EXPECT_EQ(c.entries, parser.mNumParams);
        const int* end = nullptr;
        while (parser.next()) {
            end = parser.mValues + parser.mNumValues;
        }
        EXPECT_EQ(blob.data() + c.words, end) << "the last entry ends the table";
    }
}

// Blobs are handed out by reference and kept by callers, so later insertions must not move them.
TEST_F(StoreTablesTest, BlobLookupsInsertUnknownKeysAndKeepReferences) {
    mPeer.xmlProfileParams()[PROFILE_MUSIC] = {7};
    mPeer.addTuningDevice("hp", "headphone", {8});
    std::vector<int>& music = mStore.getXMLProfileParams(PROFILE_MUSIC);
    std::vector<int>& hp = mStore.getXMLTuningParams("hp");
    EXPECT_FALSE(mStore.isXMLProfileValid(7));
    EXPECT_FALSE(mStore.isXMLTuningValid("7"));
    for (int id = 7; id < 100; id++) {
        EXPECT_TRUE(mStore.getXMLProfileParams(id).empty());
        EXPECT_TRUE(mStore.getXMLTuningParams(std::to_string(id)).empty());
    }
    EXPECT_TRUE(mStore.isXMLProfileValid(7));
    EXPECT_TRUE(mStore.isXMLTuningValid("7"));
    EXPECT_EQ(&music, &mStore.getXMLProfileParams(PROFILE_MUSIC));
    EXPECT_EQ(&hp, &mStore.getXMLTuningParams("hp"));
    EXPECT_EQ((std::vector<int>{7}), music);
    EXPECT_EQ((std::vector<int>{8}), hp);
}

TEST_F(StoreTablesTest, TuningFileFollowsProductAmplifierAndWhatExists) {
    const struct {
        const char* product;
        const char* smartPa;
        std::vector<const char*> files;
        const char* expected;
    } cases[] = {
        {"", "", {}, kVendorDefault},
        {"", "", {kOdmDefault}, kOdmDefault},
        {"marlow", "", {kOdmDefault, kOdmMeridane}, kOdmDefault},
        // The meridane file replaces the ODM default even when it is missing.
        {"quenthorn", "", {kOdmDefault}, kVendorDefault},
        {"quenthorn", "", {kOdmMeridane}, kOdmMeridane},
        {"quenthorn_pro", "", {kOdmMeridane, kOdmDefault}, kOdmDefault},
        {"Quenthorn", "", {kOdmMeridane}, kVendorDefault},
        // The amplifier's file wins over everything and need not exist.
        {"", "fs19xx", {}, kOdmFs19xx},
        {"quenthorn", "fs19xx", {kOdmMeridane, kOdmDefault}, kOdmFs19xx},
        {"", "fs19xx_b", {kOdmDefault}, kOdmDefault},
        {"", "FS19XX", {}, kVendorDefault},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.product) + "/" + c.smartPa);
        for (const char* file : {kOdmDefault, kOdmMeridane, kVendorDefault, kOdmFs19xx}) {
            mRoot.removeFile(file);
        }
        for (const char* file : c.files) {
            mRoot.addFile(file);
        }
        mPeer.setProductName(c.product);
        mPeer.setSmartPaType(c.smartPa);
        mLog.clear();
        const std::string expected = mRoot.path() + c.expected;
        EXPECT_EQ(expected, mStore.getXmlPath());
        EXPECT_EQ(Lines{"getXmlPath(): using tuning file " + expected},
                  storeLines(ANDROID_LOG_DEBUG));
    }
}

}  // namespace
}  // namespace korva::test
