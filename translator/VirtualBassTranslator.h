// The virtual bass source and mix frequency ranges, each sent as one low-high pair.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class VirtualBassTranslator : public CompositeTranslator<VirtualBassTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
