// The complex equaliser's per-channel tunings, while the equaliser is on.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class ComplexEqualizerTranslator : public CompositeTranslator<ComplexEqualizerTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
