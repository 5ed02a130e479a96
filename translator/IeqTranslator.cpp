#include "translator/IeqTranslator.h"

namespace korva {

void IeqTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint, bool) {
    std::vector<int>& frequencies = values.values[IEQ_FREQUENCY];
    std::vector<int>& targets = values.values[IEQ_TARGET];
    cmd.add(IEBS, static_cast<int>(frequencies.size()), {&frequencies, &targets});
}

}  // namespace korva
