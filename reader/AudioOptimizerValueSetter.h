// Audio optimizer bands: one child element per band, with its frequency and the gains of the left,
// right, left-surround and right-surround channels.
#pragma once

#include <string>
#include <vector>

#include "reader/MultiParameterSetter.h"

namespace korva {

class AudioOptimizerValueSetter : public MultiParameterSetter {
public:
    AudioOptimizerValueSetter(std::string nodeName, std::vector<Parameter> parameters);
    void set(ParameterValues& values, TagIterator& iterator) override;

    static const std::vector<std::string> kAttrNames;
};

}  // namespace korva
