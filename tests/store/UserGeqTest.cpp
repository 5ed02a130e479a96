// The user's graphic-EQ gains: restoring the persisted ten-band setting into the profiles'
// twenty-band gains, and the gain getter and setter.

#include <android-base/properties.h>
#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "LogLines.h"
#include "ScopedHostRoot.h"
#include "SpatializerParamArrayTestPeer.h"
#include "StoreTest.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {
namespace {

using android::base::SetProperty;
using test::LogCapture;

constexpr const char* kGainsProperty = "persist.vendor.audio.sfx.hd.eq";
constexpr const char* kFeatureMaskProperty = "ro.vendor.audio.effect.eq.featuremask";

const std::vector<int> kLoaded = {1, 2, 3};
const std::vector<int> kOneToTenAdjusted = {-58, -50, -42, -34, -26, -18, -10, -2, 6,  14,
                                            22,  22,  22,  22,  22,  22,  22,  22, 22, 22};
const std::vector<int> kOneToTenRaw = {16, 24,  32,  40,  48,  56,  64,  72,  80,  88,
                                       96, 104, 112, 120, 128, 136, 144, 152, 160, 160};

class UserGeqTest : public test::StoreTest {
protected:
    // Gains as loading would leave them: for the dynamic and music profiles only.
    void seedLoadedGains() {
        mPeer.profileGeqGains().clear();
        mPeer.profileGeqGains()[PROFILE_DYNAMIC] = kLoaded;
        mPeer.profileGeqGains()[PROFILE_MUSIC] = kLoaded;
    }

    // Restores with the given properties; returns the gains then stored for every profile, or
    // kLoaded when the restore changed nothing.
    std::vector<int> restore(const std::string& gains, const std::string& mask = "0",
                             const std::string& product = "") {
        SetProperty(kGainsProperty, gains);
        SetProperty(kFeatureMaskProperty, mask);
        SetProperty("ro.product.name", product);
        seedLoadedGains();
        mStore.restoreUserGEQ();
        std::map<int, std::vector<int>>& stored = mPeer.profileGeqGains();
        EXPECT_EQ(2u, stored.size());
        EXPECT_EQ(stored[PROFILE_DYNAMIC], stored[PROFILE_MUSIC]);
        return stored[PROFILE_DYNAMIC];
    }
};

TEST_F(UserGeqTest, TenGainsBecomeTwentyRelativeBands) {
    struct Case {
        const char* text;
        std::vector<int> expected;
    };
    const Case cases[] = {
        // Gains of 6 and above clamp to 6; the mean of the twenty values is 74.
        {"1,2,3,4,5,6,7,8,9,10", kOneToTenAdjusted},
        {"0,0,0,0,0,0,0,0,0,0", std::vector<int>(20, 0)},
        // Spaces and commas mix freely; leading and repeated blanks are skipped.
        {"1 2,3, 4,5 6  7,8,  9 10", kOneToTenAdjusted},
        {"  1,2,3,4,5,6,7,8,9,10,", kOneToTenAdjusted},
        // 2.3 -> 2.5, 2.2 -> 2.0, 2.8 -> 3.0, -0.1 -> 0.0 (floor -1, remainder 0.9).
        {"2.3,2.2,2.8,-0.1,0,0,0,0,0,0", {29,  25,  21,  29,  37,  13,  -11, -11, -11, -11,
                                          -11, -11, -11, -11, -11, -11, -11, -11, -11, -11}},
        // Remainders of exactly 0.25 and 0.75 go to the half; the negative mean (-3.4)
        // truncates toward zero.
        {"2.25,2.75,2.76,-2.25,-2.75,-2.8,-7,7,5.9,-5.9",
         {43, 43, 43, 47, 51, 7, -37, -37, -37, -41, -45, -69, -93, 3, 99, 99, 99, 3, -93, -93}},
        {"-6.5,-6,-5.75,0.5,1e0,0,0,0,0,0",
         {-73, -73, -73, -69, -65, -17, 31, 35, 39, 31, 23, 23, 23, 23, 23, 23, 23, 23, 23, 23}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        mLog.clear();
        EXPECT_EQ(c.expected, restore(c.text));
        EXPECT_TRUE(errors().empty());
    }
}

TEST_F(UserGeqTest, RawModeKeepsTheUsersValuesAndTheirMean) {
    struct Case {
        const char* text;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {"1,2,3,4,5,6,7,8,9,10", kOneToTenRaw},
        // 0.1 -> trunc(1.6) = 1 and -0.1 -> trunc(-1.6) = -1; no grid, no mean.
        {"0.1,-0.1,1,1,1,1,1,1,1,1",
         {1, 0, -1, 7, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16}},
        // Unbounded values saturate rather than overflow the conversion.
        {"1e38,0,0,0,0,0,0,0,0,-1e38", {2147483647,
                                        2147483647,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        0,
                                        -2147483647 - 1,
                                        -2147483647 - 1,
                                        -2147483647 - 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, restore(c.text, "1", "quenthorn"));
    }
}

TEST_F(UserGeqTest, FeatureBitAndProductChooseTheMode) {
    struct Case {
        const char* mask;
        const char* product;
        bool raw;
    };
    const Case cases[] = {
        {"0", "quenthorn", false}, {"2", "quenthorn", false},  // only the lowest bit counts
        {"1", "quenthorn", true},  {"3", "quenthorn", true},
        {"1", "", true},  // unset: "unknown"
        {"1", "talve", false},     {"1", "talve_x2", false},
        {"1", "talvex", false},    {"1", "talve_d", true},
        {"1", "talve_dpro", true}, {"1", "talv", true},
        {"1", "Talve", true},      {"0", "talve_d", false},
        {"x", "quenthorn", false},  // not a number: atoi gives 0
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.mask) + "/" + c.product);
        EXPECT_EQ(c.raw ? kOneToTenRaw : kOneToTenAdjusted,
                  restore("1,2,3,4,5,6,7,8,9,10", c.mask, c.product));
    }
}

TEST_F(UserGeqTest, NoUserGainsLeaveTheLoadedGains) {
    for (const char* text : {"", "000", "0000", "000x", "000,1,2,3,4,5,6,7,8,9"}) {
        SCOPED_TRACE(text);
        mLog.clear();
        EXPECT_EQ(kLoaded, restore(text));
        EXPECT_TRUE(mLog.lines().empty());
    }
}

TEST_F(UserGeqTest, WrongCountIsReportedWithoutItsCountAndStoresNothing) {
    const std::string error = "restoreUserGEQ(): the length of user GEQ gains(0) is not 10!";
    for (const char* text :
         {"1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,8,9,10,11", "1 2,3, 4", "1,,2,3,4,5,6,7,8,9,10",
          "1;2;3;4;5;6;7;8;9;10", "abc", "1,2,3,4,5,6,7,8,9,1e50"}) {
        SCOPED_TRACE(text);
        mLog.clear();
        EXPECT_EQ(kLoaded, restore(text));
        EXPECT_EQ(std::vector<std::string>{error}, errors());
    }
}

TEST_F(UserGeqTest, RestoreLogsTheTextAndOnlyFillsLoadedProfiles) {
    SetProperty("persist.vendor.korva.loglevel", "2");
    restore("1,2,3,4,5,6,7,8,9,10");
    EXPECT_EQ((std::vector<std::string>{
                  "restoreUserGEQ(): there're persistent user gains: 1,2,3,4,5,6,7,8,9,10",
                  "restoreUserGEQ(): store the relative gains in all profiles"}),
              storeLines(ANDROID_LOG_DEBUG));
    EXPECT_EQ(0u, mPeer.profileGeqGains().count(PROFILE_MOVIE));
    EXPECT_EQ(0u, mPeer.profileGeqGains().count(PROFILE_COMMON));
}

TEST_F(UserGeqTest, GetterInsertsAndSetterCopies) {
    std::vector<int>& movie = mStore.getProfileGeqGains(PROFILE_MOVIE);
    EXPECT_TRUE(movie.empty());
    EXPECT_EQ(1u, mPeer.profileGeqGains().count(PROFILE_MOVIE));

    std::vector<int> gains = {5, -5, 999999};
    EXPECT_EQ(0, mStore.setProfileGeqGains(PROFILE_MOVIE, gains));
    gains[0] = 0;
    EXPECT_EQ((std::vector<int>{5, -5, 999999}), movie);
    EXPECT_EQ(&movie, &mStore.getProfileGeqGains(PROFILE_MOVIE));

    // The store's own vector handed back is left as it is.
    EXPECT_EQ(0, mStore.setProfileGeqGains(PROFILE_MOVIE, movie));
    EXPECT_EQ((std::vector<int>{5, -5, 999999}), movie);

    std::vector<int> none;
    EXPECT_EQ(0, mStore.setProfileGeqGains(PROFILE_CUSTOM, none));
    EXPECT_EQ(1u, mPeer.profileGeqGains().count(PROFILE_CUSTOM));
}

// Construction restores the gains after loading; with no tuning file nothing was loaded, and
// the restore creates no profile of its own.
TEST(UserGeqConstructionTest, RestoreRunsAtConstructionAndCreatesNoProfiles) {
    SetProperty(kGainsProperty, "1,2,3,4,5,6,7,8,9,10");
    test::ScopedHostRoot root;
    LogCapture log;
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    EXPECT_TRUE(log.contains(
        "restoreUserGEQ(): there're persistent user gains: 1,2,3,4,5,6,7,8,9,10", kStoreLogTag));
    SpatializerParamArrayTestPeer peer(store);
    EXPECT_TRUE(peer.profileGeqGains().empty());
}

}  // namespace
}  // namespace korva
