// The separated virtual bass blend gain and the high-pass filter settings.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class BassImprovementTranslator : public CompositeTranslator<BassImprovementTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
