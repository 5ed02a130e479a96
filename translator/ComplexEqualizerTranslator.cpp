#include "translator/ComplexEqualizerTranslator.h"

namespace korva {

void ComplexEqualizerTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values,
                                              Endpoint, bool) {
    if (firstValue(values.values[COMPLEX_EQUALIZER_ENABLE]) != 1) {
        return;
    }
    int channels = firstValue(values.values[OUTPUT_CHANNELS]);
    std::vector<int>& left = values.values[COMPLEX_EQUALIZER_TUNING_LEFT];
    std::vector<int> tuningSize = {static_cast<int>(left.size())};
    // Every layout but four channels is tuned as stereo.
    if (channels == 4) {
        cmd.add(CEQT, 4,
                {&tuningSize, &left, &values.values[COMPLEX_EQUALIZER_TUNING_RIGHT],
                 &values.values[COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND],
                 &values.values[COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND]});
    } else {
        cmd.add(CEQT, 2, {&tuningSize, &left, &values.values[COMPLEX_EQUALIZER_TUNING_RIGHT]});
    }
}

}  // namespace korva
