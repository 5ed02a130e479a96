// The device and both build hosts are LP64: long is 64 bits, as wide as the int64_t ids of the
// records and the ids the reader gives them. The blob words and parameter codes stay 32 bits.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <type_traits>

#include "model/DeviceTuning.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "store/KrvSpatializerProfileId.h"
#include "translator/VexParameter.h"

namespace korva {
namespace {

static_assert(sizeof(long) == 8, "record ids taken as long must keep 64 bits");
static_assert(sizeof(long long) == 8);
static_assert(sizeof(int) == 4, "blob words are ints");
static_assert(sizeof(KrvSpatializerProfileId) == 4 &&
              std::is_signed_v<std::underlying_type_t<KrvSpatializerProfileId>>);
static_assert(std::is_same_v<decltype(vexParameterCode(VOL)), int32_t>);

TEST(DataModelTest, RecordIdsBeyond32BitsSurvive) {
    const int64_t ids[] = {INT64_C(0x100000001), INT64_MAX, INT64_C(-0x100000000)};
    for (int64_t id : ids) {
        Tuning tuning(static_cast<long>(id), "t", ENDPOINT_SPEAKER, false, false);
        ProfileEndpoint endpoint(static_cast<long>(id), 1, ENDPOINT_HEADPHONE, 0);
        DeviceTuning device(static_cast<long long>(id), "d", "headphone", "t");
        EXPECT_EQ(id, tuning.getId());
        EXPECT_EQ(id, endpoint.getId());
        EXPECT_EQ(id, device.getId());
    }
}

}  // namespace
}  // namespace korva
