// Dynamic speaker optimisation: its amount and interval layout while on, and its switch always.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class DynamicSpeakerOptimizationTranslator
    : public CompositeTranslator<DynamicSpeakerOptimizationTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
