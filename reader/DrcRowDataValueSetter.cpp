#include "reader/DrcRowDataValueSetter.h"

#include <utility>
#include <vector>

#include "reader/NodeParseUtils.h"

namespace korva {

DrcRowDataValueSetter::DrcRowDataValueSetter(std::string nodeName, Parameter parameter)
    : RowDataValueSetter(std::move(nodeName), parameter) {}

void DrcRowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> row = NodeParseUtils::parseDataRow(iterator);
    if (row.empty()) {
        row.push_back(0);
    }
    write(values, iterator, mParameter, std::move(row));
}

}  // namespace korva
