#include "translator/GeqTranslator.h"

#include "translator/ListLayout.h"

namespace korva {

void GeqTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint, bool) {
    std::vector<int>& frequencies = values.values[kGebsColumns[0].source];
    std::vector<int>& gains = values.values[kGebsColumns[1].source];
    // The band count is taken from the frequencies alone; the engine reads that many gains.
    cmd.add(GEBS, static_cast<int>(frequencies.size()), {&frequencies, &gains});
}

}  // namespace korva
