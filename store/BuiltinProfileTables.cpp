// The built-in default blobs: what the effect gets for a profile before, or without, a tuning
// file. Each is a complete EFFECT_PARAM_PROFILE blob (header word = profile id, entry count,
// entries of device id, parameter code, value count and values).

#include "model/OutputDevice.h"
#include "store/SpatializerParamArray.h"
#include "translator/VexParameter.h"

namespace korva {

// One entry with a single value.
#define KORVA_ONE(device, name, value) device, vexParameterCode(name), 1, value

// The six per-device entries of a profile table.
#define KORVA_PROFILE_DEVICE(device, ieon, mdee, deon, dea, dsb, vmb)   \
    KORVA_ONE(device, "ieon", ieon), KORVA_ONE(device, "mdee", mdee),   \
        KORVA_ONE(device, "deon", deon), KORVA_ONE(device, "dea", dea), \
        KORVA_ONE(device, "dsb", dsb), KORVA_ONE(device, "vmb", vmb)

// A profile table: 27 entries. The speaker has its own DSB and VMB; the three headphone-like
// devices share theirs. The headphone virtualiser config differs only in its last three words.
#define KORVA_PROFILE_TABLE(id, mdle, miee, hvrc5, hvrc6, hvrc7, ieon, mdee, deon, dea,            \
                            dsbSpeaker, vmbSpeaker, dsbOthers, vmbOthers)                          \
    {                                                                                              \
        id, 27, KORVA_ONE(kOutputDeviceAll, "mdle", mdle),                                         \
            KORVA_ONE(kOutputDeviceAll, "miee", miee), kOutputDeviceAll, vexParameterCode("hvrc"), \
            8, 103, 32568, 11164, 5090, 0, hvrc5, hvrc6, hvrc7,                                    \
            KORVA_PROFILE_DEVICE(kOutputDeviceSpeaker, ieon, mdee, deon, dea, dsbSpeaker,          \
                                 vmbSpeaker),                                                      \
            KORVA_PROFILE_DEVICE(kOutputDeviceWiredHeadphone, ieon, mdee, deon, dea, dsbOthers,    \
                                 vmbOthers),                                                       \
            KORVA_PROFILE_DEVICE(kOutputDeviceBluetoothA2dp, ieon, mdee, deon, dea, dsbOthers,     \
                                 vmbOthers),                                                       \
            KORVA_PROFILE_DEVICE(kOutputDeviceUsb, ieon, mdee, deon, dea, dsbOthers, vmbOthers)    \
    }

// clang-format off
const int SpatializerParamArray::mDynamicProfileParams[kProfileTableWords] =
        KORVA_PROFILE_TABLE(PROFILE_DYNAMIC, 1, 1, 3, 3, 3, 1, 1, 1, 2, 64, 64, 0, 16);
const int SpatializerParamArray::mMovieProfileParams[kProfileTableWords] =
        KORVA_PROFILE_TABLE(PROFILE_MOVIE,   0, 0, 1, 2, 2, 0, 1, 1, 4, 88, 64, 0, 16);
const int SpatializerParamArray::mMusicProfileParams[kProfileTableWords] =
        KORVA_PROFILE_TABLE(PROFILE_MUSIC,   0, 0, 3, 3, 3, 1, 0, 0, 0, 64, 32, 0, 0);
const int SpatializerParamArray::mCinemaProfileParams[kProfileTableWords] =
        KORVA_PROFILE_TABLE(PROFILE_CINEMA,  0, 0, 1, 2, 2, 0, 1, 1, 4, 88, 64, 0, 16);
const int SpatializerParamArray::mCustomProfileParams[kProfileTableWords] =
        KORVA_PROFILE_TABLE(PROFILE_CUSTOM,  0, 0, 1, 1, 1, 0, 1, 1, 4, 0,  64, 0, 16);
// clang-format on

// Intelligent-EQ bands: count, 20 centre frequencies in Hz, 20 target gains.
#define KORVA_IEBS_VALUES                                                                       \
    20, 47, 141, 234, 328, 469, 656, 844, 1031, 1313, 1688, 2250, 3000, 3750, 4688, 5813, 7125, \
        9000, 11250, 13875, 19688, 157, 167, 218, 218, 203, 188, 192, 192, 205, 213, 218, 209,  \
        193, 159, 134, 97, 71, 22, -90, -283

// The twelve per-device entries of the common table; only the mix matrix ("dom") differs.
#define KORVA_COMMON_DEVICE(device, domCount, ...)                                                \
    device, vexParameterCode("iebs"), 41, KORVA_IEBS_VALUES, KORVA_ONE(device, "iea", 6),         \
        KORVA_ONE(device, "plb", 0), KORVA_ONE(device, "ded", 2), KORVA_ONE(device, "mvbe", 0),   \
        KORVA_ONE(device, "ngon", 1), KORVA_ONE(device, "dvle", 0), KORVA_ONE(device, "dvla", 0), \
        KORVA_ONE(device, "dvli", -256), KORVA_ONE(device, "dvlo", -256), device,                 \
        vexParameterCode("dom"), domCount, __VA_ARGS__, KORVA_ONE(device, "vssd", 4)

// clang-format off
const int SpatializerParamArray::mCommonParams[kCommonTableWords] = {
        PROFILE_COMMON, 57,
        KORVA_ONE(kOutputDeviceAll, "mave", 0),
        KORVA_ONE(kOutputDeviceAll, "msce", 0),
        KORVA_ONE(kOutputDeviceAll, "dvme", 0),
        KORVA_ONE(kOutputDeviceAll, "rvse", 0),
        KORVA_ONE(kOutputDeviceAll, "rvsa", 0),
        KORVA_ONE(kOutputDeviceAll, "sdfa", 0),
        KORVA_ONE(kOutputDeviceAll, "hlra", 45),
        KORVA_ONE(kOutputDeviceAll, "hvm", 2),
        KORVA_ONE(kOutputDeviceAll, "drcm", 0),
        // Speaker: enabled, endpoint 0 (speaker), orientation 1, then three mix matrices in Q14
        // (16384 = 1.0, 11583 ~ 0.7071, 8192 = 0.5), each led by two words.
        KORVA_COMMON_DEVICE(kOutputDeviceSpeaker, 61,
                1, 0, 1,
                15, 24,
                16384, 0, 0, 16384, 11583, 11583, 8192, 8192, 16384, 0, 0, 16384,
                16384, 0, 0, 16384, 16384, 0, 0, 16384, 16384, 0, 0, 16384,
                11, 16,
                16384, 0, 0, 16384, 11583, 11583, 8192, 8192, 16384, 0, 0, 16384,
                16384, 0, 0, 16384,
                10, 12,
                16384, 0, 0, 16384, 11583, 11583, 8192, 8192, 16384, 0, 0, 16384),
        KORVA_COMMON_DEVICE(kOutputDeviceWiredHeadphone, 3, 1, 1, 2),
        KORVA_COMMON_DEVICE(kOutputDeviceBluetoothA2dp, 3, 1, 1, 2),
        KORVA_COMMON_DEVICE(kOutputDeviceUsb, 3, 1, 1, 2),
};
// clang-format on

}  // namespace korva
