#include "reader/AudioOptimizerValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"
#include "reader/String2Int.h"

namespace korva {

const std::vector<std::string> AudioOptimizerValueSetter::kAttrNames = {
    "frequency", "gain_left", "gain_right", "gain_left_surround", "gain_right_surround"};

AudioOptimizerValueSetter::AudioOptimizerValueSetter(std::string nodeName,
                                                     std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void AudioOptimizerValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns(kAttrNames.size());
    for (const std::vector<std::string>& band :
         NodeParseUtils::parseChildRows(iterator, 1, kAttrNames)) {
        for (size_t i = 0; i < band.size(); i++) {
            columns[i].push_back(string2Int(band[i]));
        }
    }
    setColumns(values, columns);
}

}  // namespace korva
