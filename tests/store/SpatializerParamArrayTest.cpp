// Construction of the store, its built-in table queries, its tuning-file blobs per profile and
// the choice of the tuning file. Each test runs in a process of its own, so each builds the
// store afresh from the properties it sets first.

#include <android-base/properties.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "LogLines.h"
#include "ScopedHostRoot.h"
#include "SpatializerParamArrayTestPeer.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {
namespace {

using android::base::SetProperty;
using test::LogCapture;

constexpr const char* kOdmDefault = "/odm/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kOdmMeridane = "/odm/etc/korva/kvx-meridane-spatializer.xml";
constexpr const char* kVendorDefault = "/vendor/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kOdmFs19xx = "/odm/etc/korva/kvx-fs19xx-spatializer.xml";

std::vector<std::string> storeLines(const LogCapture& log, int priority) {
    return test::linesAt(log, kStoreLogTag, priority);
}

TEST(SpatializerParamArrayTest, ConstructionReadsPropertiesPreselectsAndLoads) {
    SetProperty("ro.product.name", "quenthorn");
    SetProperty("persist.vendor.audio.pa.smartpa_type", "fs19xx");
    test::ScopedHostRoot root;
    LogCapture log;
    EXPECT_FALSE(SpatializerParamArray::hasInstance());
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    EXPECT_TRUE(SpatializerParamArray::hasInstance());
    EXPECT_EQ(&store, &SpatializerParamArray::getInstance());

    const std::string path = root.path() + kOdmFs19xx;
    EXPECT_EQ((std::vector<std::string>{
                  "SpatializerParamArray(product_name = quenthorn)",
                  "smartpa_type: fs19xx",
                  "getXmlPath(): using tuning file " + path,
                  "loadSpatializerXMLFile(" + path + ")",
              }),
              storeLines(log, ANDROID_LOG_DEBUG));

    SpatializerParamArrayTestPeer peer(store);
    EXPECT_EQ("quenthorn", peer.productName());
    EXPECT_EQ("fs19xx", peer.smartPaType());
    EXPECT_EQ(PROFILE_MOVIE, peer.currentProfileId());
    EXPECT_EQ(0, peer.xmlProfileCount());
    EXPECT_EQ(0, peer.xmlTuningCount());
    EXPECT_EQ(2, peer.tuningParamValue());
    EXPECT_EQ(60, peer.defaultMixMatrixLength());
    EXPECT_EQ((std::map<int, std::string>{
                  {3, "default_headphone"}, {4, "default_bluetooth"}, {5, "default_usb"}}),
              peer.selectedTuningDevices());
}

TEST(SpatializerParamArrayTest, DebugLinesNeedLevelTwo) {
    SetProperty("persist.vendor.korva.loglevel", "1");
    test::ScopedHostRoot root;
    LogCapture log;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    int buffer[117];
    EXPECT_EQ(0, store.getProfileParams(PROFILE_MUSIC, buffer));
    store.getXMLProfileParams(PROFILE_MUSIC);
    EXPECT_TRUE(storeLines(log, ANDROID_LOG_DEBUG).empty());

    SetProperty("persist.vendor.korva.loglevel", "2");
    EXPECT_EQ(0, store.getProfileParams(PROFILE_MUSIC, buffer));
    store.getXMLProfileParams(4);
    EXPECT_EQ((std::vector<std::string>{"getProfileParams(profile = 2)",
                                        "getXMLProfileParams(profile = 4)"}),
              storeLines(log, ANDROID_LOG_DEBUG));
}

TEST(SpatializerParamArrayTest, ProfileParamsCopyTheBuiltInTables) {
    test::ScopedHostRoot root;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    using S = SpatializerParamArray;
    struct Case {
        KrvSpatializerProfileId id;
        const int* table;
        unsigned int size;
    };
    const Case cases[] = {
        {PROFILE_COMMON, S::mCommonParams, 1824},
        {PROFILE_DYNAMIC, S::mDynamicProfileParams, 468},
        {PROFILE_MOVIE, S::mMovieProfileParams, 468},
        {PROFILE_MUSIC, S::mMusicProfileParams, 468},
        {PROFILE_CINEMA, S::mCinemaProfileParams, 468},
        {PROFILE_CUSTOM, S::mCustomProfileParams, 468},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        ASSERT_EQ(c.size, store.getProfileParamsSize(c.id));
        // One guard word past the table shows that no more than the table is copied.
        std::vector<int> dst(c.size / 4 + 1, 0x5a5a5a5a);
        EXPECT_EQ(0, store.getProfileParams(c.id, dst.data()));
        EXPECT_EQ(0, memcmp(dst.data(), c.table, c.size));
        EXPECT_EQ(c.id, dst[0]);
        EXPECT_EQ(0x5a5a5a5a, dst.back());
    }
}

TEST(SpatializerParamArrayTest, UnknownProfileCopiesNothingAndNullDestinationIsRefused) {
    test::ScopedHostRoot root;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    for (int id : {5, -2, 100, -100000}) {
        SCOPED_TRACE(id);
        auto profile = static_cast<KrvSpatializerProfileId>(id);
        EXPECT_EQ(0u, store.getProfileParamsSize(profile));
        int dst[4] = {7, 7, 7, 7};
        EXPECT_EQ(0, store.getProfileParams(profile, dst));
        EXPECT_EQ(7, dst[0]);
    }
    EXPECT_EQ(-22, store.getProfileParams(PROFILE_MOVIE, nullptr));
    EXPECT_EQ(-22, store.getProfileParams(static_cast<KrvSpatializerProfileId>(9), nullptr));
}

TEST(SpatializerParamArrayTest, XmlProfileLookupInsertsAndKeepsReferences) {
    test::ScopedHostRoot root;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer peer(store);
    peer.xmlProfileParams()[PROFILE_MUSIC] = {0x40000000, 0};

    EXPECT_TRUE(store.isXMLProfileValid(PROFILE_MUSIC));
    std::vector<int>& music = store.getXMLProfileParams(PROFILE_MUSIC);
    EXPECT_EQ((std::vector<int>{0x40000000, 0}), music);

    EXPECT_FALSE(store.isXMLProfileValid(7));
    EXPECT_TRUE(store.getXMLProfileParams(7).empty());
    EXPECT_TRUE(store.isXMLProfileValid(7));

    // Later insertions do not move earlier blobs.
    for (int id = 100; id < 200; id++) {
        store.getXMLProfileParams(id);
    }
    EXPECT_EQ(&music, &store.getXMLProfileParams(PROFILE_MUSIC));
}

TEST(SpatializerParamArrayTest, TuningFileFollowsProductAmplifierAndWhatExists) {
    test::ScopedHostRoot root;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer peer(store);
    struct Case {
        const char* product;
        const char* smartPa;
        std::vector<const char*> files;
        const char* expected;
    };
    const Case cases[] = {
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
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.product) + "/" + c.smartPa);
        for (const char* file : {kOdmDefault, kOdmMeridane, kVendorDefault, kOdmFs19xx}) {
            root.removeFile(file);
        }
        for (const char* file : c.files) {
            root.addFile(file);
        }
        peer.setProductName(c.product);
        peer.setSmartPaType(c.smartPa);
        LogCapture log;
        std::string expected = root.path() + c.expected;
        EXPECT_EQ(expected, store.getXmlPath());
        EXPECT_EQ(std::vector<std::string>{"getXmlPath(): using tuning file " + expected},
                  storeLines(log, ANDROID_LOG_DEBUG));
    }
}

TEST(SpatializerParamArrayTest, PathsAreUnprefixedWithoutAHostRoot) {
    struct stat info;
    if (stat(kOdmDefault, &info) == 0) {
        GTEST_SKIP() << "this machine has a real " << kOdmDefault;
    }
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer peer(store);
    for (const char* root : {static_cast<const char*>(nullptr), ""}) {
        if (root == nullptr) {
            unsetenv("KORVA_HOST_ROOT");
        } else {
            setenv("KORVA_HOST_ROOT", root, 1);
        }
        peer.setSmartPaType("");
        EXPECT_EQ(kVendorDefault, store.getXmlPath());
        peer.setSmartPaType("fs19xx");
        EXPECT_EQ(kOdmFs19xx, store.getXmlPath());
    }
    unsetenv("KORVA_HOST_ROOT");
}

}  // namespace
}  // namespace korva
