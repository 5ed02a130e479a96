// Which record type accepts which parameter decides what the translators emit, so the five sets
// are checked against an encoding of the catalogue written independently of the sources.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {
namespace {

// One letter per Parameter value, 16 to a row: T Tuning, P Profile, E ProfileEndpoint,
// I IeqPreset, G GeqPreset, - no record type.
const std::string kAcceptedBy =
    "PPTTTTTTTTTTETTT"
    "TTETTTTTPEEETTTG"
    "GEPEEEEEETTTEEII"
    "IPEPPPETTTETTTTT"
    "TTTTTTTTTTPPTEPE"
    "TTTETTTTTTTTTTTT"
    "-ETTTTETEETEEETP";

// Reading the sets through a record made while the test program itself is being initialised:
// the translators do the same from their static constructors.
const size_t kTuningParamsAtStartup =
    Tuning("startup", ENDPOINT_SPEAKER, false).getValidParams().size();

struct RecordKind {
    char letter;
    const std::set<Parameter>* validParams;
    std::unique_ptr<ParameterValues> (*make)();
    size_t expectedSize;
};

std::vector<RecordKind> recordKinds() {
    return {
        {'T', &Tuning::kValidParams,
         [] { return std::unique_ptr<ParameterValues>(new Tuning("t", ENDPOINT_SPEAKER, false)); },
         67},
        {'P', &Profile::kValidParams,
         [] { return std::unique_ptr<ParameterValues>(new Profile(0, "p", false)); }, 12},
        {'E', &ProfileEndpoint::kValidParams,
         [] {
             return std::unique_ptr<ParameterValues>(new ProfileEndpoint(0, ENDPOINT_HEADPHONE, 0));
         },
         27},
        {'I', &IeqPreset::kValidParams,
         [] { return std::unique_ptr<ParameterValues>(new IeqPreset(1, "i")); }, 3},
        {'G', &GeqPreset::kValidParams,
         [] { return std::unique_ptr<ParameterValues>(new GeqPreset(0)); }, 2},
    };
}

TEST(ValidParamsTest, EachSetHasItsSizeAndIsWhatTheRecordReturns) {
    for (const RecordKind& kind : recordKinds()) {
        SCOPED_TRACE(std::string(1, kind.letter));
        EXPECT_EQ(kind.expectedSize, kind.validParams->size());
        std::unique_ptr<ParameterValues> record = kind.make();
        EXPECT_EQ(kind.validParams, &record->getValidParams());
    }
}

TEST(ValidParamsTest, EveryParameterBelongsToTheRecordTypeTheCatalogueNames) {
    ASSERT_EQ(static_cast<size_t>(kNumParameters), kAcceptedBy.size());
    const std::vector<RecordKind> kinds = recordKinds();
    for (int value = 0; value < kNumParameters; ++value) {
        Parameter parameter = static_cast<Parameter>(value);
        std::string owners;
        for (const RecordKind& kind : kinds) {
            if (kind.validParams->count(parameter) != 0) {
                owners += kind.letter;
            }
        }
        std::string expected = kAcceptedBy[value] == '-' ? "" : std::string(1, kAcceptedBy[value]);
        EXPECT_EQ(expected, owners) << kParameterNames[value];
    }
}

TEST(ValidParamsTest, SetsAreDisjointAndCoverAllButVirtualBassType) {
    std::set<Parameter> all;
    size_t total = 0;
    for (const RecordKind& kind : recordKinds()) {
        all.insert(kind.validParams->begin(), kind.validParams->end());
        total += kind.validParams->size();
    }
    EXPECT_EQ(total, all.size());
    EXPECT_EQ(static_cast<size_t>(kNumParameters - 1), all.size());
    EXPECT_EQ(0u, all.count(VIRTUAL_BASS_TYPE));
}

TEST(ValidParamsTest, SetsAreFilledForCodeRunningAtStartup) {
    EXPECT_EQ(67u, kTuningParamsAtStartup);
}

}  // namespace
}  // namespace korva
