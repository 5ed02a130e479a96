#include "reader/MixMatrixValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"

namespace korva {

MixMatrixValueSetter::MixMatrixValueSetter(std::string nodeName, Parameter parameter)
    : SingleParameterSetter(std::move(nodeName), parameter) {}

void MixMatrixValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    write(values, iterator, mParameter, NodeParseUtils::parseMixMatrix(iterator));
}

}  // namespace korva
