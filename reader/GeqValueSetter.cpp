#include "reader/GeqValueSetter.h"

#include <utility>

#include "observer/LoadObserver.h"
#include "reader/NodeParseUtils.h"

namespace korva {

const std::vector<std::string> GeqValueSetter::kAttrNames = {"frequency", "gain"};

GeqValueSetter::GeqValueSetter(std::string nodeName, std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void GeqValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<const xmlNode*> bands;
    std::vector<const xmlNode*>* report = LoadObserver::current() != nullptr ? &bands : nullptr;
    const auto rows = NodeParseUtils::parseChildRows(iterator, 3, kAttrNames, "", report);
    setColumns(values, iterator, joinedColumns(rows, kAttrNames, report));
}

}  // namespace korva
