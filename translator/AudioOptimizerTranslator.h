// The audio optimiser's bands and per-channel gains, for stereo and four-channel outputs only.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class AudioOptimizerTranslator : public CompositeTranslator<AudioOptimizerTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
