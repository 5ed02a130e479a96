#include "translator/CustomDRCTranslator.h"

namespace korva {

void CustomDRCTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                       bool) {
    cmd.add(DRCM, {&values.values[CUSTOM_DRC_METADATA]});
}

}  // namespace korva
