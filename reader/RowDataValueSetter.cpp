#include "reader/RowDataValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"

namespace korva {

RowDataValueSetter::RowDataValueSetter(std::string nodeName, Parameter parameter)
    : SingleParameterSetter(std::move(nodeName), parameter) {}

void RowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    write(values, iterator, mParameter, NodeParseUtils::parseDataRow(iterator));
}

}  // namespace korva
