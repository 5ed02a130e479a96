#include "translator/VirtualBassEnableTranslator.h"

namespace korva {

void VirtualBassEnableTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values,
                                               Endpoint, bool) {
    // The engine has no separate virtual bass switch in the mode: a disabled virtual bass is
    // mode 0, and the engine's switch carries the tuning's type.
    if (firstValue(values.values[VIRTUAL_BASS_ENABLE]) == 0) {
        std::vector<int> off = {0};
        cmd.add(VBM, {&off});
    } else {
        cmd.add(VBM, {&values.values[VIRTUAL_BASS_MODE]});
    }
    cmd.add(VBON, {&values.values[VIRTUAL_BASS_TYPE]});
}

}  // namespace korva
