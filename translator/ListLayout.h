// The layouts of the effect's list parameters: the band lists ("iebs", "gebs", "aobs", "arbs") and
// the output mode with its mix matrices ("dom"). The translators build the lists from these
// tables, and whoever shows a list reads it back by them.
#pragma once

#include <cstdint>

#include "model/Parameter.h"
#include "translator/VexParameter.h"

namespace korva {

// The unit of a band list's values.
enum class ListUnit : uint8_t {
    kHz,
    kSixteenthDb,  // the engine's levels: 16 = 1 dB
    kFlag,         // 0 or 1
};

// One run of a band list: a value per band, taken from one tuning parameter.
struct ListColumn {
    const char* name;
    Parameter source;
    ListUnit unit;
};

// A band list: the band count, then for a per-channel list the channel count, then one run of
// band values per column. A per-channel list carries the frequencies and one gain run per
// channel, in the order of its columns.
struct BandListLayout {
    VexParameter code;
    bool perChannel;
    const ListColumn* columns;
    int numColumns;
};

inline constexpr ListColumn kIebsColumns[] = {
    {"frequency", IEQ_FREQUENCY, ListUnit::kHz},
    {"target", IEQ_TARGET, ListUnit::kSixteenthDb},
};
inline constexpr ListColumn kGebsColumns[] = {
    {"frequency", GEQ_FREQUENCY, ListUnit::kHz},
    {"gain", GEQ_GAIN, ListUnit::kSixteenthDb},
};
inline constexpr ListColumn kAobsColumns[] = {
    {"frequency", AUDIO_OPTIMIZER_FREQUENCY, ListUnit::kHz},
    {"gain_l", AUDIO_OPTIMIZER_GAIN_L, ListUnit::kSixteenthDb},
    {"gain_r", AUDIO_OPTIMIZER_GAIN_R, ListUnit::kSixteenthDb},
    {"gain_ls", AUDIO_OPTIMIZER_GAIN_LS, ListUnit::kSixteenthDb},
    {"gain_rs", AUDIO_OPTIMIZER_GAIN_RS, ListUnit::kSixteenthDb},
};
inline constexpr ListColumn kArbsColumns[] = {
    {"frequency", REGULATOR_FREQUENCY, ListUnit::kHz},
    {"threshold_low", REGULATOR_THRESHOLD_LOW, ListUnit::kSixteenthDb},
    {"threshold_high", REGULATOR_THRESHOLD_HIGH, ListUnit::kSixteenthDb},
    {"isolated_band", REGULATOR_ISOLATED_BAND, ListUnit::kFlag},
};

inline constexpr BandListLayout kBandListLayouts[] = {
    {IEBS, false, kIebsColumns, 2},
    {GEBS, false, kGebsColumns, 2},
    {AOBS, true, kAobsColumns, 5},
    {ARBS, false, kArbsColumns, 4},
};

// The layout of an effect code, or null for a code without one.
inline const BandListLayout* bandListLayout(int32_t code) {
    for (const BandListLayout& layout : kBandListLayouts) {
        if (vexParameterCode(layout.code) == code) {
            return &layout;
        }
    }
    return nullptr;
}

// "dom": the virtualizer's enable word, the endpoint and the orientation, then, for the speaker,
// the mix matrices. Each matrix is led by its channel layout code and its coefficient count; its
// rows, one per input channel, hold that channel's shares of the left and right outputs in Q14.
inline constexpr int kOutputModeLeadWords = 3;
inline constexpr int kMixMatrixHeadWords = 2;
inline constexpr int kMixMatrixColumns = 2;
inline constexpr int kQ14One = 16384;

}  // namespace korva
