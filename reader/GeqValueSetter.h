// The bands of a GEQ preset: every element three levels below the preset element gives one
// frequency and one gain; the band elements' names are not checked.
#pragma once

#include <string>
#include <vector>

#include "reader/MultiParameterSetter.h"

namespace korva {

class GeqValueSetter : public MultiParameterSetter {
public:
    GeqValueSetter(std::string nodeName, std::vector<Parameter> parameters);
    void set(ParameterValues& values, TagIterator& iterator) override;

    static const std::vector<std::string> kAttrNames;
};

}  // namespace korva
