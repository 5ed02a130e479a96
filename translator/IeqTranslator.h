// The intelligent equaliser's bands: band count, frequencies, then targets.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class IeqTranslator : public CompositeTranslator<IeqTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
