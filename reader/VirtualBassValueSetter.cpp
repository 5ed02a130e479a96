#include "reader/VirtualBassValueSetter.h"

#include <utility>

#include "reader/String2Int.h"

namespace korva {

const std::vector<std::string> VirtualBassValueSetter::kAttrNames = {"frequency_low",
                                                                     "frequency_high"};

VirtualBassValueSetter::VirtualBassValueSetter(std::string nodeName,
                                               std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void VirtualBassValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::string> range;
    iterator.parseNodeWithName(kAttrNames, range);
    if (range.empty()) {
        return;
    }
    setColumns(values, {{string2Int(range[0])}, {string2Int(range[1])}});
}

}  // namespace korva
