// Regulator bands: one child element per band, with its frequency, its low and high thresholds and
// whether the band is isolated ("true").
#pragma once

#include <string>
#include <vector>

#include "reader/MultiParameterSetter.h"

namespace korva {

class RegulatorTuningValueSetter : public MultiParameterSetter {
public:
    RegulatorTuningValueSetter(std::string nodeName, std::vector<Parameter> parameters);
    void set(ParameterValues& values, TagIterator& iterator) override;

    static const std::vector<std::string> kAttrNames;
};

}  // namespace korva
