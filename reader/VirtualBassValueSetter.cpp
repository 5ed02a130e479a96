#include "reader/VirtualBassValueSetter.h"

#include <utility>

#include "reader/ReadTrace.h"

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
    const xmlNode* element = iterator.currentNode();
    setColumns(values, iterator,
               {{ReadTrace::readInt(element, kAttrNames[0].c_str(), range[0])},
                {ReadTrace::readInt(element, kAttrNames[1].c_str(), range[1])}});
}

}  // namespace korva
