#include "translator/AudioRegulatorTranslator.h"

#include "translator/ListLayout.h"

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

    const auto band = [&values](int index) { return &values.values[kArbsColumns[index].source]; };
    std::vector<int>& frequencies = *band(0);
    cmd.add(ARBS, static_cast<int>(frequencies.size()), {&frequencies, band(1), band(2), band(3)});

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
