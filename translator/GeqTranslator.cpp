#include "translator/GeqTranslator.h"

namespace korva {

void GeqTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint, bool) {
    std::vector<int>& frequencies = values.values[GEQ_FREQUENCY];
    std::vector<int>& gains = values.values[GEQ_GAIN];
    // The band count is taken from the frequencies alone; the engine reads that many gains.
    cmd.add(GEBS, static_cast<int>(frequencies.size()), {&frequencies, &gains});
}

}  // namespace korva
