#include "reader/MultiParameterSetter.h"

#include <utility>

#include "observer/LoadObserver.h"
#include "reader/String2Int.h"

namespace korva {

MultiParameterSetter::MultiParameterSetter(std::string nodeName, std::vector<Parameter> parameters)
    : ValueSetter(std::move(nodeName)), mParameters(std::move(parameters)) {}

void MultiParameterSetter::setColumns(ParameterValues& values, TagIterator& iterator,
                                      std::vector<std::vector<int>> columns) {
    for (size_t i = 0; i < mParameters.size(); i++) {
        write(values, iterator, mParameters[i],
              i < columns.size() ? std::move(columns[i]) : std::vector<int>());
    }
}

std::vector<std::vector<int>> MultiParameterSetter::joinedColumns(
    const std::vector<std::vector<std::string>>& rows, const std::vector<std::string>& attrNames,
    const std::vector<const xmlNode*>* rowNodes) const {
    std::vector<std::string> texts(mParameters.size());
    for (const std::vector<std::string>& row : rows) {
        for (size_t i = 0; i < texts.size() && i < row.size(); i++) {
            texts[i] += row[i];
            texts[i] += ',';
        }
    }
    std::vector<std::vector<int>> columns(texts.size());
    LoadObserver* observer = rowNodes != nullptr ? LoadObserver::current() : nullptr;
    for (size_t i = 0; i < texts.size(); i++) {
        const size_t end = intListEnd(texts[i], columns[i]);
        if (observer == nullptr || end >= texts[i].size()) {
            continue;
        }
        // The band whose text holds the place where reading stopped.
        size_t start = 0;
        for (size_t row = 0; row < rows.size() && row < rowNodes->size(); row++) {
            const size_t length = i < rows[row].size() ? rows[row][i].size() + 1 : 0;
            if (end < start + length) {
                observer->onNumberList((*rowNodes)[row], attrNames[i].c_str(), rows[row][i],
                                       columns[i], false);
                break;
            }
            start += length;
        }
    }
    return columns;
}

}  // namespace korva
