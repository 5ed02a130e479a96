#include "translator/IeqTranslator.h"

#include "translator/ListLayout.h"

namespace korva {

void IeqTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint, bool) {
    std::vector<int>& frequencies = values.values[kIebsColumns[0].source];
    std::vector<int>& targets = values.values[kIebsColumns[1].source];
    cmd.add(IEBS, static_cast<int>(frequencies.size()), {&frequencies, &targets});
}

}  // namespace korva
