// The target curve of an IEQ preset: the band_ieq elements three levels below the preset element,
// their frequencies into one parameter and their targets into the other.
#pragma once

#include <string>
#include <vector>

#include "reader/MultiParameterSetter.h"

namespace korva {

class IeqValueSetter : public MultiParameterSetter {
public:
    IeqValueSetter(std::string nodeName, std::vector<Parameter> parameters);
    void set(ParameterValues& values, TagIterator& iterator) override;

    static const std::vector<std::string> kAttrNames;
};

}  // namespace korva
