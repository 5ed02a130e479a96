// The user's gains go from float dB to int 1/16 dB. A float-to-int conversion of a value outside
// the int range is undefined, and the hardware differs: x86_64 gives INT_MIN for any of them,
// AArch64 saturates. Raw gains are unbounded, so the store must saturate by itself for both to
// agree; in range, every conversion and the mean truncate toward zero, never round or floor.

#include <android-base/properties.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "store/SpatializerParamArray.h"
#include "tests/store/ScopedHostRoot.h"

namespace korva {
namespace {

using android::base::SetProperty;

struct Case {
    const char* name;
    // ro.vendor.audio.effect.eq.featuremask: "1" with a product outside talve keeps gains raw.
    const char* featureMask;
    const char* gains;
    std::vector<int> stored;
};

TEST(UserGainTruncationTest, GainsConvertAlikeOnEveryArchitecture) {
    const std::vector<Case> cases = {
        {"raw: toward zero, and saturated beyond the int range",
         "1",
         "0.1,-0.1,1e30,-1e30,0.03125,-0.03125,3.99,-3.99,0,5",
         {1, 0,  -1, INT_MAX, INT_MAX, 0,   INT_MIN, INT_MIN, 0,  0,
          0, 31, 63, 0,       -63,     -31, 0,       40,      80, 80}},
        {"adjusted: a negative mean of -0.6 truncates to 0",
         "0",
         "-0.5,0,0,0,0,0,0,0,0,0",
         {-8, -4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"adjusted: negative fractions quantise from floor, the mean -16.4 gives -16",
         "0",
         "-0.1,-5.3,-5.8,-7,6.2,2.3,2.2,2.8,-2.6,-2.9",
         {16, -28, -72, -76, -80, -80, -80, 16,  112, 84,
          56, 52,  48,  56,  64,  20,  -24, -28, -32, -32}},
    };
    test::ScopedHostRoot root;
    SetProperty("ro.product.name", "portable");
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<int> seed(20, 7);
        store.setProfileGeqGains(PROFILE_MOVIE, seed);
        SetProperty("ro.vendor.audio.effect.eq.featuremask", c.featureMask);
        SetProperty("persist.vendor.audio.sfx.hd.eq", c.gains);
        store.restoreUserGEQ();
        EXPECT_EQ(c.stored, store.getProfileGeqGains(PROFILE_MOVIE));
    }
}

}  // namespace
}  // namespace korva
