#include "translator/BassImprovementTranslator.h"

namespace korva {

void BassImprovementTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values,
                                             Endpoint, bool) {
    cmd.add(VBCG, {&values.values[VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED]});
    cmd.add(HFON, {&values.values[HIGH_PASS_FILTER_ENABLE]});
    cmd.add(HFCF, {&values.values[HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX]});
}

}  // namespace korva
