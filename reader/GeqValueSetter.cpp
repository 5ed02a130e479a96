#include "reader/GeqValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"

namespace korva {

const std::vector<std::string> GeqValueSetter::kAttrNames = {"frequency", "gain"};

GeqValueSetter::GeqValueSetter(std::string nodeName, std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void GeqValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    setColumns(values, joinedColumns(NodeParseUtils::parseChildRows(iterator, 3, kAttrNames)));
}

}  // namespace korva
