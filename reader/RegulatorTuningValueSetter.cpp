#include "reader/RegulatorTuningValueSetter.h"

#include <utility>

#include "reader/NodeParseUtils.h"
#include "reader/ReadTrace.h"

namespace korva {

const std::vector<std::string> RegulatorTuningValueSetter::kAttrNames = {
    "frequency", "threshold_low", "threshold_high", "isolated_band"};

RegulatorTuningValueSetter::RegulatorTuningValueSetter(std::string nodeName,
                                                       std::vector<Parameter> parameters)
    : MultiParameterSetter(std::move(nodeName), std::move(parameters)) {}

void RegulatorTuningValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    constexpr size_t kIsolatedBand = 3;
    std::vector<std::vector<int>> columns(kAttrNames.size());
    std::vector<const xmlNode*> bands;
    const auto rows = NodeParseUtils::parseChildRows(iterator, 1, kAttrNames, "", &bands);
    for (size_t row = 0; row < rows.size(); row++) {
        const std::vector<std::string>& band = rows[row];
        for (size_t i = 0; i < band.size(); i++) {
            const char* name = kAttrNames[i].c_str();
            if (i == kIsolatedBand) {
                const int flag = band[i] == "true" ? 1 : 0;
                ReadTrace::keyword(bands[row], name, band[i], flag,
                                   band[i] == "true" || band[i] == "false");
                columns[i].push_back(flag);
            } else {
                columns[i].push_back(ReadTrace::readInt(bands[row], name, band[i]));
            }
        }
    }
    setColumns(values, iterator, std::move(columns));
}

}  // namespace korva
