// The engine stand-in answers class questions through a filter in front of a search; a wrong
// filter bit would silently drop or add a code, so membership is checked against a plain set.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "engine/VexParamStore.h"

namespace {

// Packed lower-case names, like the product's parameter codes, plus arbitrary words.
std::set<int> randomCodes(std::mt19937& random, size_t count) {
    std::set<int> codes;
    std::uniform_int_distribution<int> letter('a', 'z');
    std::uniform_int_distribution<int> any;
    while (codes.size() < count) {
        if (codes.size() % 2 == 0) {
            codes.insert(letter(random) | letter(random) << 8 | letter(random) << 16 |
                         letter(random) << 24);
        } else {
            codes.insert(any(random));
        }
    }
    return codes;
}

TEST(ParamClassesTest, MembershipMatchesTheGivenSets) {
    std::mt19937 random(7);
    for (size_t size : {0u, 1u, 6u, 21u, 300u}) {
        SCOPED_TRACE(size);
        const std::set<int> disable = randomCodes(random, size);
        const std::set<int> inProfile = randomCodes(random, size + 3);
        VexParamStore::setContentProcDisableParams(disable);
        VexParamStore::setDeviceProcParamsInProfile(inProfile);

        std::set<int> probes = randomCodes(random, 2000);
        probes.insert(disable.begin(), disable.end());
        probes.insert(inProfile.begin(), inProfile.end());
        for (int code : probes) {
            ASSERT_EQ(disable.count(code) != 0, VexParamStore::isContentProcDisableParam(code))
                << code;
            ASSERT_EQ(inProfile.count(code) != 0, VexParamStore::isDeviceProcParamInProfile(code))
                << code;
        }
    }
    VexParamStore::resetParamClasses();
    EXPECT_FALSE(VexParamStore::isDeviceProcParamInProfile(0));
}

}  // namespace
