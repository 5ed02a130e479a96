#include "reader/ValueSetter.h"

#include <utility>

namespace korva {

ValueSetter::ValueSetter(std::string nodeName) : mNodeName(std::move(nodeName)) {}

ValueSetter::~ValueSetter() = default;

std::string ValueSetter::getNodeName() {
    return mNodeName;
}

}  // namespace korva
