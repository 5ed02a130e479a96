#include "model/IeqPreset.h"

#include <sstream>
#include <utility>

namespace korva {

namespace {

const std::set<Parameter>& validParams() {
    static const std::set<Parameter> sValidParams = {IEQ_FREQUENCY, IEQ_ID, IEQ_TARGET};
    return sValidParams;
}

}  // namespace

const std::set<Parameter>& IeqPreset::kValidParams = validParams();

IeqPreset::IeqPreset(int presetId, std::string name)
    : ParameterValues(-1, true), mPresetId(presetId), mName(std::move(name)) {
    set(IEQ_ID, {presetId});
}

IeqPreset::IeqPreset(long long id, int presetId, std::string name)
    : ParameterValues(id, false), mPresetId(presetId), mName(std::move(name)) {
    set(IEQ_ID, {presetId});
}

IeqPreset::~IeqPreset() = default;

int64_t IeqPreset::getId() const {
    return id;
}

const std::set<Parameter>& IeqPreset::getValidParams() const {
    return validParams();
}

int IeqPreset::getPresetId() const {
    return mPresetId;
}

std::string IeqPreset::getName() const {
    return mName;
}

void IeqPreset::setName(std::string name) {
    mName = std::move(name);
    dirty = true;
}

std::string IeqPreset::toString() const {
    std::ostringstream out;
    out << "id=" << id << "\n"
        << "presetId=" << mPresetId << "\n"
        << "name=" << mName << "\n"
        << valuesToString();
    return out.str();
}

}  // namespace korva
