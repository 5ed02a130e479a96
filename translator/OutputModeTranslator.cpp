#include "translator/OutputModeTranslator.h"

namespace korva {

void OutputModeTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values,
                                        Endpoint endpoint, bool mono) {
    // Only records that carry the virtualizer describe an output mode.
    if (values.getValidParams().count(VIRTUALIZER_ENABLE) == 0) {
        return;
    }
    std::vector<int>& enable = values.values[VIRTUALIZER_ENABLE];
    std::vector<int>& orientation = values.values[ORIENTATION];
    std::vector<int> endpointValue = {static_cast<int>(endpoint)};
    if (endpoint != ENDPOINT_SPEAKER) {
        cmd.add(DOM, {&enable, &endpointValue, &orientation});
        return;
    }
    std::vector<int> mixMatrix = values.values[OUTPUT_MIX_MATRIX];
    if (mono) {
        // A mono speaker cannot virtualize and has a single fixed orientation; the record is
        // corrected too, so that later readers see the mode that was sent.
        enable = {0};
        orientation = {1};
    }
    cmd.add(DOM, {&enable, &endpointValue, &orientation, &mixMatrix});
}

}  // namespace korva
