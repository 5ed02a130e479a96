// Base of the setters whose element fills exactly one parameter.
#pragma once

#include <string>

#include "model/Parameter.h"
#include "reader/ValueSetter.h"

namespace korva {

class SingleParameterSetter : public ValueSetter {
public:
    Parameter getParameter() const { return mParameter; }

protected:
    SingleParameterSetter(std::string nodeName, Parameter parameter);

    const Parameter mParameter;
};

}  // namespace korva
