#include "translator/DynamicSpeakerOptimizationTranslator.h"

namespace korva {

namespace {
// Interval layouts the engine knows: one interval for all speakers, or one per speaker pair.
constexpr int kSingleInterval = 1;
constexpr int kPerPairIntervals = 2;
}  // namespace

void DynamicSpeakerOptimizationTranslator::vexTranslate(SetParamCommand& cmd,
                                                        ParameterValues& values, Endpoint, bool) {
    std::vector<int>& enable = values.values[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE];
    if (firstValue(enable) != 0) {
        std::vector<int>& amount = values.values[DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT];
        std::vector<int>& interval = values.values[DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL];
        std::vector<int>& channels = values.values[OUTPUT_CHANNELS];
        int layout = kPerPairIntervals;
        // Fewer than four channels have a single speaker pair, so only one interval applies; the
        // record keeps just that one too.
        if (!channels.empty() && !interval.empty() && channels[0] < 4) {
            layout = kSingleInterval;
            interval.resize(1);
        }
        cmd.add(DSOA, {&amount});
        cmd.add(DSOI, layout, {&interval});
    }
    cmd.add(DSOE, {&enable});
}

}  // namespace korva
