// The dialog enhancer amount, capped at the engine's maximum of 12.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class DeAmountTranslator : public CompositeTranslator<DeAmountTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
