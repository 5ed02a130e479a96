#include "reader/IeqValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"

namespace korva {

const std::vector<std::string> IeqValueSetter::kAttrNames = {"frequency", "target"};

IeqValueSetter::IeqValueSetter(std::string nodeName, std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void IeqValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    setColumns(values,
               joinedColumns(NodeParseUtils::parseChildRows(iterator, 3, kAttrNames, "band_ieq")));
}

}  // namespace korva
