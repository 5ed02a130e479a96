// The output mode: virtualizer switch, endpoint and orientation, plus the mix matrix on the speaker.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class OutputModeTranslator : public CompositeTranslator<OutputModeTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
