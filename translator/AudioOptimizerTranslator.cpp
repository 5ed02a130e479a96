#include "translator/AudioOptimizerTranslator.h"

#include "translator/ListLayout.h"

namespace korva {

void AudioOptimizerTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                            bool) {
    const auto column = [&values](int index) { return &values.values[kAobsColumns[index].source]; };
    std::vector<int>& frequencies = *column(0);
    std::vector<int> bandCount = {static_cast<int>(frequencies.size())};
    // The optimiser exists for stereo and four-channel outputs only; other layouts get no bands.
    int channels = firstValue(values.values[OUTPUT_CHANNELS]);
    if (channels == 4) {
        std::vector<int> channelCount = {4};
        cmd.add(AOBS, {&bandCount, &channelCount, &frequencies, column(1), column(2), column(3),
                       column(4)});
    } else if (channels == 2) {
        std::vector<int> channelCount = {2};
        cmd.add(AOBS, {&bandCount, &channelCount, &frequencies, column(1), column(2)});
    }
}

}  // namespace korva
