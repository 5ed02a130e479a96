// The regulator's stress amounts, band thresholds and sibilance suppression amounts.
#pragma once

#include <vector>

#include "translator/CompositeTranslator.h"

namespace korva {

class AudioRegulatorTranslator : public CompositeTranslator<AudioRegulatorTranslator> {
public:
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    static std::vector<Parameter> kSrcParams;
};

}  // namespace korva
