#include "reader/VirtualBassSubgainValueSetter.h"

#include <utility>
#include <vector>

namespace korva {

VirtualBassSubgainValueSetter::VirtualBassSubgainValueSetter(std::string nodeName,
                                                             Parameter parameter)
    : SingleParameterSetter(std::move(nodeName), parameter) {}

void VirtualBassSubgainValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> subgains;
    iterator.parseNodeIntVector(subgains);
    write(values, iterator, mParameter, std::move(subgains));
}

}  // namespace korva
