#include "reader/IeqValueSetter.h"

#include <utility>

#include "observer/LoadObserver.h"
#include "reader/NodeParseUtils.h"
#include "reader/TuningFileLayout.h"

namespace korva {

const std::vector<std::string> IeqValueSetter::kAttrNames = {"frequency", "target"};

IeqValueSetter::IeqValueSetter(std::string nodeName, std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void IeqValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<const xmlNode*> bands;
    std::vector<const xmlNode*>* report = LoadObserver::current() != nullptr ? &bands : nullptr;
    const auto rows =
        NodeParseUtils::parseChildRows(iterator, 3, kAttrNames, TuningFileLayout::kIeqBand, report);
    setColumns(values, iterator, joinedColumns(rows, kAttrNames, report));
}

}  // namespace korva
