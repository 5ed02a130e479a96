// The graphic equaliser's bands: band count, frequencies, then gains.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class GeqTranslator : public CompositeTranslator<GeqTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
