#include "reader/ValueSetter.h"

#include <utility>

#include "reader/ReadTrace.h"

namespace korva {

ValueSetter::ValueSetter(std::string nodeName) : mNodeName(std::move(nodeName)) {}

ValueSetter::~ValueSetter() = default;

std::string ValueSetter::getNodeName() {
    return mNodeName;
}

void ValueSetter::write(ParameterValues& values, TagIterator& iterator, Parameter parameter,
                        std::vector<int> list) {
    ReadTrace::write(iterator.currentNode(), values, parameter, std::move(list), ValueSource::kFile);
}

}  // namespace korva
