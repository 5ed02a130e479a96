#include "reader/AudioOptimizerValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"
#include "reader/ReadTrace.h"

namespace korva {

const std::vector<std::string> AudioOptimizerValueSetter::kAttrNames = {
    "frequency", "gain_left", "gain_right", "gain_left_surround", "gain_right_surround"};

AudioOptimizerValueSetter::AudioOptimizerValueSetter(std::string nodeName,
                                                     std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void AudioOptimizerValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns(kAttrNames.size());
    // The band elements say where each value came from.
    std::vector<const xmlNode*> bands;
    const auto rows = NodeParseUtils::parseChildRows(iterator, 1, kAttrNames, "", &bands);
    // Every band fills one slot of every column.
    for (std::vector<int>& column : columns) {
        column.reserve(rows.size());
    }
    for (size_t row = 0; row < rows.size(); row++) {
        const xmlNode* element = bands[row];
        for (size_t i = 0; i < rows[row].size(); i++) {
            columns[i].push_back(ReadTrace::readInt(element, kAttrNames[i].c_str(), rows[row][i]));
        }
    }
    setColumns(values, iterator, std::move(columns));
}

}  // namespace korva
