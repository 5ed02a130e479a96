#include "translator/AudioRegulatorTranslator.h"

namespace korva {

void AudioRegulatorTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                            bool) {
    std::vector<int>& channels = values.values[OUTPUT_CHANNELS];
    std::vector<int>& stress = values.values[REGULATOR_STRESS_AMOUNT];
    // Below three channels the engine reads exactly one stress amount per stereo channel; the
    // record is made to match what was sent. An unknown layout leaves the amounts as tuned.
    if (!channels.empty() && channels[0] < 3) {
        stress.resize(2);
    }
    cmd.add(ARSA, {&channels, &stress});

    std::vector<int>& frequencies = values.values[REGULATOR_FREQUENCY];
    cmd.add(ARBS, static_cast<int>(frequencies.size()),
            {&frequencies, &values.values[REGULATOR_THRESHOLD_LOW],
             &values.values[REGULATOR_THRESHOLD_HIGH], &values.values[REGULATOR_ISOLATED_BAND]});

    if (firstValue(values.values[REGULATOR_SIBILANCE_SUPPRESS_ENABLE]) != 1) {
        return;
    }
    std::vector<int>& left = values.values[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT];
    std::vector<int> bandCount = {static_cast<int>(left.size())};
    // Every layout but four channels is suppressed as stereo.
    if (firstValue(channels) == 4) {
        cmd.add(RSSA, 4,
                {&bandCount, &left, &values.values[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT],
                 &values.values[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND],
                 &values.values[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND]});
    } else {
        cmd.add(RSSA, 2,
                {&bandCount, &left, &values.values[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT]});
    }
}

}  // namespace korva
