#include "reader/SimpleValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"

namespace korva {

SimpleValueSetter::SimpleValueSetter(std::string nodeName, Parameter parameter)
    : SingleParameterSetter(std::move(nodeName), parameter) {}

void SimpleValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    write(values, iterator, mParameter, {NodeParseUtils::parseValue(iterator)});
}

}  // namespace korva
