// The bass multiband compressor's tuning, sent only while the compressor is on.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class BassMbdrcTranslator : public CompositeTranslator<BassMbdrcTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
