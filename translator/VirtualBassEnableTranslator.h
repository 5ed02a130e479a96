// The virtual bass mode and switch: the mode is forced to 0 while virtual bass is off.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class VirtualBassEnableTranslator : public CompositeTranslator<VirtualBassEnableTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
