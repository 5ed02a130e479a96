#include "reader/RegulatorTuningValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"
#include "reader/ReadTrace.h"
#include "reader/TuningFileLayout.h"

namespace korva {

const std::vector<std::string> RegulatorTuningValueSetter::kAttrNames = {
    "frequency", "threshold_low", "threshold_high", "isolated_band"};

RegulatorTuningValueSetter::RegulatorTuningValueSetter(std::string nodeName,
                                                       std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void RegulatorTuningValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    constexpr size_t kIsolatedBand = 3;
    std::vector<std::vector<int>> columns(kAttrNames.size());
    // The band elements say where each value came from.
    std::vector<const xmlNode*> bands;
    const auto rows = NodeParseUtils::parseChildRows(iterator, 1, kAttrNames, "", &bands);
    // Every band fills one slot of every column.
    for (std::vector<int>& column : columns) {
        column.reserve(rows.size());
    }
    for (size_t row = 0; row < rows.size(); row++) {
        const std::vector<std::string>& band = rows[row];
        const xmlNode* element = bands[row];
        for (size_t i = 0; i < band.size(); i++) {
            const char* name = kAttrNames[i].c_str();
            if (i == kIsolatedBand) {
                const int flag = band[i] == TuningFileLayout::kTrue ? 1 : 0;
                ReadTrace::keyword(element, name, band[i], flag,
                                   flag == 1 || band[i] == TuningFileLayout::kFalse);
                columns[i].push_back(flag);
            } else {
                columns[i].push_back(ReadTrace::readInt(element, name, band[i]));
            }
        }
    }
    setColumns(values, iterator, std::move(columns));
}

}  // namespace korva
