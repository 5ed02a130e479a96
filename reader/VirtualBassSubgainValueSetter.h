// A list of ints, one per attribute of the element, in document order.
#pragma once

#include <string>

#include "reader/SingleParameterSetter.h"

namespace korva {

class VirtualBassSubgainValueSetter : public SingleParameterSetter {
public:
    VirtualBassSubgainValueSetter(std::string nodeName, Parameter parameter);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

}  // namespace korva
