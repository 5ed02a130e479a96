#include "reader/SingleParameterSetter.h"

#include <utility>

namespace korva {

SingleParameterSetter::SingleParameterSetter(std::string nodeName, Parameter parameter)
    : ValueSetter(std::move(nodeName)), mParameter(parameter) {}

}  // namespace korva
