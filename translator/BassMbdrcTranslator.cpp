#include "translator/BassMbdrcTranslator.h"

namespace korva {

void BassMbdrcTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                       bool) {
    // The switch itself travels as its own entry; a tuning for a compressor that is off would
    // only be noise to the engine.
    if (firstValue(values.values[BASS_MBDRC_ENABLE]) == 0) {
        return;
    }
    cmd.add(BMDT, {&values.values[BASS_MBDRC_TUNING]});
}

}  // namespace korva
