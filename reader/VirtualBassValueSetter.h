// A frequency range from two attributes: <virtual-bass-mix-freqs frequency_low="40"
// frequency_high="120"/> fills the low and the high parameter with one value each.
#pragma once

#include <string>
#include <vector>

#include "reader/MultiParameterSetter.h"

namespace korva {

class VirtualBassValueSetter : public MultiParameterSetter {
public:
    VirtualBassValueSetter(std::string nodeName, std::vector<Parameter> parameters);
    void set(ParameterValues& values, TagIterator& iterator) override;

    static const std::vector<std::string> kAttrNames;
};

}  // namespace korva
