#include "model/ParameterValues.h"

#include <sstream>
#include <utility>

#include "model/CreationOrder.h"

namespace korva {

ParameterValues::ParameterValues(int64_t id, bool dirty)
    : id(id), dirty(dirty), mCreationSerial(nextCreationSerial()) {}

ParameterValues::~ParameterValues() = default;

bool ParameterValues::isDirty() const {
    return dirty;
}

void ParameterValues::setDirty(bool newDirty) {
    dirty = newDirty;
}

void ParameterValues::set(Parameter parameter, std::vector<int>& newValues) {
    set(parameter, static_cast<const std::vector<int>&>(newValues));
}

void ParameterValues::set(Parameter parameter, const std::vector<int>& newValues) {
    std::vector<int>& stored = values[parameter];
    if (&stored != &newValues) {
        stored = newValues;
    }
    dirty = true;
}

void ParameterValues::set(Parameter parameter, std::vector<int>&& newValues) {
    std::vector<int>& stored = values[parameter];
    if (&stored != &newValues) {
        stored = std::move(newValues);
    }
    dirty = true;
}

std::string ParameterValues::valuesToString() const {
    std::ostringstream out;
    for (const auto& [parameter, parameterValues] : values) {
        if (parameter == IEQ_ID) {
            continue;
        }
        std::ostringstream line;
        line << kParameterNames[parameter] << "=";
        for (int value : parameterValues) {
            line << value << ",";
        }
        line << "\n";
        out << line.str();
    }
    return out.str();
}

const std::vector<int>& storedValues(const ParameterValues& record, Parameter parameter) {
    static const std::vector<int> sNone;
    auto found = record.values.find(parameter);
    return found != record.values.end() ? found->second : sNone;
}

}  // namespace korva
