// One scalar from the "value" attribute: <volume-leveler-enable value="true"/>.
#pragma once

#include <string>

#include "reader/SingleParameterSetter.h"

namespace korva {

class SimpleValueSetter : public SingleParameterSetter {
public:
    SimpleValueSetter(std::string nodeName, Parameter parameter);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

}  // namespace korva
