#include "reader/MultiParameterSetter.h"

#include <utility>

#include "reader/String2Int.h"

namespace korva {

MultiParameterSetter::MultiParameterSetter(std::string nodeName, std::vector<Parameter> parameters)
    : ValueSetter(std::move(nodeName)), mParameters(std::move(parameters)) {}

void MultiParameterSetter::setColumns(ParameterValues& values,
                                      const std::vector<std::vector<int>>& columns) {
    for (size_t i = 0; i < mParameters.size(); i++) {
        values.set(mParameters[i], i < columns.size() ? columns[i] : std::vector<int>());
    }
}

std::vector<std::vector<int>> MultiParameterSetter::joinedColumns(
    const std::vector<std::vector<std::string>>& rows) const {
    std::vector<std::string> texts(mParameters.size());
    for (const std::vector<std::string>& row : rows) {
        for (size_t i = 0; i < texts.size() && i < row.size(); i++) {
            texts[i] += row[i] + ",";
        }
    }
    std::vector<std::vector<int>> columns(texts.size());
    for (size_t i = 0; i < texts.size(); i++) {
        string2IntVector(texts[i], columns[i]);
    }
    return columns;
}

}  // namespace korva
