// Restoring the user's persisted ten-band graphic-EQ setting into the profiles' twenty-band gains.
#include "StoreTest.h"
#include "platform/LocalProperties.h"

namespace korva::test {
namespace {

using korva::setLocalProperty;

const std::vector<int> kLoaded = {1, 2, 3};
const std::vector<int> kOneToTenAdjusted = {-58, -50, -42, -34, -26, -18, -10, -2, 6,  14,
                                            22,  22,  22,  22,  22,  22,  22,  22, 22, 22};
const std::vector<int> kOneToTenRaw = {16, 24,  32,  40,  48,  56,  64,  72,  80,  88,
                                       96, 104, 112, 120, 128, 136, 144, 152, 160, 160};

class UserGeqTest : public StoreTest {
protected:
    // Restores with the given properties over gains as loading leaves them (for the dynamic and
    // music profiles only); returns the gains then stored, the same for both.
    std::vector<int> restore(const std::string& gains, const std::string& mask = "0",
                             const std::string& product = "") {
        setLocalProperty("persist.vendor.audio.sfx.hd.eq", gains);
        setLocalProperty("ro.vendor.audio.effect.eq.featuremask", mask);
        setLocalProperty("ro.product.name", product);
        std::map<int, std::vector<int>>& stored = mPeer.profileGeqGains();
        stored = {{PROFILE_DYNAMIC, kLoaded}, {PROFILE_MUSIC, kLoaded}};
        mLog.clear();
        mStore.restoreUserGEQ();
        EXPECT_EQ(2u, stored.size());
        EXPECT_EQ(stored[PROFILE_DYNAMIC], stored[PROFILE_MUSIC]);
        return stored[PROFILE_DYNAMIC];
    }
};

TEST_F(UserGeqTest, TenGainsBecomeTwentyRelativeBands) {
    const struct {
        const char* text;
        std::vector<int> expected;
    } cases[] = {
        // Gains of 6 and above clamp to 6; the mean of the twenty values is 74.
        {"1,2,3,4,5,6,7,8,9,10", kOneToTenAdjusted},
        // Spaces and commas mix freely; leading and repeated blanks are skipped.
        {"1 2,3, 4,5 6  7,8,  9 10", kOneToTenAdjusted},
        {"  1,2,3,4,5,6,7,8,9,10,", kOneToTenAdjusted},
        // Remainders of exactly 0.25 and 0.75 go to the half; the negative mean (-3.4)
        // truncates toward zero.
        {"2.25,2.75,2.76,-2.25,-2.75,-2.8,-7,7,5.9,-5.9",
         {43, 43, 43, 47, 51, 7, -37, -37, -37, -41, -45, -69, -93, 3, 99, 99, 99, 3, -93, -93}},
        {"-6.5,-6,-5.75,0.5,1e0,0,0,0,0,0",
         {-73, -73, -73, -69, -65, -17, 31, 35, 39, 31, 23, 23, 23, 23, 23, 23, 23, 23, 23, 23}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, restore(c.text));
        EXPECT_TRUE(errors().empty());
    }
}

TEST_F(UserGeqTest, FeatureBitAndProductChooseRawGains) {
    const struct {
        const char* mask;
        const char* product;
        bool raw;
    } cases[] = {
        {"0", "quenthorn", false}, {"2", "quenthorn", false},  // only the lowest bit counts
        {"3", "quenthorn", true},  {"1", "", true},            // unset: "unknown"
        {"1", "talve", false},     {"1", "talve_x2", false},
        {"1", "talvex", false},    {"1", "talve_d", true},
        {"1", "talve_dpro", true}, {"1", "talv", true},
        {"1", "Talve", true},      {"0", "talve_d", false},
        {"x", "quenthorn", false},  // not a number: atoi gives 0
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.mask) + "/" + c.product);
        EXPECT_EQ(c.raw ? kOneToTenRaw : kOneToTenAdjusted,
                  restore("1,2,3,4,5,6,7,8,9,10", c.mask, c.product));
    }
}

TEST_F(UserGeqTest, NoOrMalformedUserGainsLeaveTheLoadedGains) {
    for (const char* text : {"", "000", "0000", "000x", "000,1,2,3,4,5,6,7,8,9"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(kLoaded, restore(text));
        EXPECT_TRUE(mLog.lines().empty());
    }
    // The count is not shown: the line stays as integrators already know it.
    const std::string error = "restoreUserGEQ(): the length of user GEQ gains(0) is not 10!";
    for (const char* text : {"1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,8,9,10,11", "1,,2,3,4,5,6,7,8,9,10",
                             "1;2;3;4;5;6;7;8;9;10", "abc", "1,2,3,4,5,6,7,8,9,1e50"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(kLoaded, restore(text));
        EXPECT_EQ(std::vector<std::string>{error}, errors());
    }
}

}  // namespace
}  // namespace korva::test
