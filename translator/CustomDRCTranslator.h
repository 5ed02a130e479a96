// The custom dynamic range control metadata, passed through.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class CustomDRCTranslator : public CompositeTranslator<CustomDRCTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
