// Base of the setters whose element fills exactly one parameter.
#pragma once

#include <string>

#include "model/Parameter.h"
#include "reader/ValueSetter.h"

namespace korva {

class SingleParameterSetter : public ValueSetter {
protected:
    SingleParameterSetter(std::string nodeName, Parameter parameter);

    const Parameter mParameter;
};

}  // namespace korva
