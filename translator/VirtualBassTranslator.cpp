#include "translator/VirtualBassTranslator.h"

namespace korva {

void VirtualBassTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                         bool) {
    cmd.add(VBSF, {&values.values[VIRTUAL_BASS_SRC_FREQ_LOW],
                   &values.values[VIRTUAL_BASS_SRC_FREQ_HIGH]});
    cmd.add(VBMF, {&values.values[VIRTUAL_BASS_MIX_FREQ_LOW],
                   &values.values[VIRTUAL_BASS_MIX_FREQ_HIGH]});
}

}  // namespace korva
