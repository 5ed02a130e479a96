#include "reader/RegulatorTuningValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"
#include "reader/String2Int.h"

namespace korva {

const std::vector<std::string> RegulatorTuningValueSetter::kAttrNames = {
    "frequency", "threshold_low", "threshold_high", "isolated_band"};

RegulatorTuningValueSetter::RegulatorTuningValueSetter(std::string nodeName,
                                                       std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void RegulatorTuningValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    constexpr size_t kIsolatedBand = 3;
    std::vector<std::vector<int>> columns(kAttrNames.size());
    for (const std::vector<std::string>& band :
         NodeParseUtils::parseChildRows(iterator, 1, kAttrNames)) {
        for (size_t i = 0; i < band.size(); i++) {
            columns[i].push_back(i == kIsolatedBand ? (band[i] == "true" ? 1 : 0)
                                                    : string2Int(band[i]));
        }
    }
    setColumns(values, columns);
}

}  // namespace korva
