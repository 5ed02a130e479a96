// Sound profiles of the spatializer. The value is also the header word of each built-in profile
// blob, so it is fixed at 32 bits and signed (the common parameters are -1).
#pragma once

#include <cstdint>

namespace korva {

enum KrvSpatializerProfileId : int32_t {
    PROFILE_COMMON = -1,
    PROFILE_DYNAMIC = 0,
    PROFILE_MOVIE = 1,
    PROFILE_MUSIC = 2,
    PROFILE_CINEMA = 3,
    PROFILE_CUSTOM = 4,
};

}  // namespace korva
