#include "translator/AudioOptimizerTranslator.h"

namespace korva {

void AudioOptimizerTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                            bool) {
    std::vector<int>& frequencies = values.values[AUDIO_OPTIMIZER_FREQUENCY];
    std::vector<int> bandCount = {static_cast<int>(frequencies.size())};
    // The optimiser exists for stereo and four-channel outputs only; other layouts get no bands.
    int channels = firstValue(values.values[OUTPUT_CHANNELS]);
    if (channels == 4) {
        std::vector<int> channelCount = {4};
        cmd.add(AOBS,
                {&bandCount, &channelCount, &frequencies, &values.values[AUDIO_OPTIMIZER_GAIN_L],
                 &values.values[AUDIO_OPTIMIZER_GAIN_R], &values.values[AUDIO_OPTIMIZER_GAIN_LS],
                 &values.values[AUDIO_OPTIMIZER_GAIN_RS]});
    } else if (channels == 2) {
        std::vector<int> channelCount = {2};
        cmd.add(AOBS,
                {&bandCount, &channelCount, &frequencies, &values.values[AUDIO_OPTIMIZER_GAIN_L],
                 &values.values[AUDIO_OPTIMIZER_GAIN_R]});
    }
}

}  // namespace korva
