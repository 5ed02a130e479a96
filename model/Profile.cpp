#include "model/Profile.h"

#include <sstream>
#include <utility>

namespace korva {

namespace {

const std::set<Parameter>& validParams() {
    static const std::set<Parameter> sValidParams = {
        ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE,
        ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG,
        CUSTOM_DRC_METADATA,
        HEADPHONE_VIRTUALIZER_MODE,
        MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE,
        MI_DV_LEVELER_STEERING_ENABLE,
        MI_IEQ_STEERING_ENABLE,
        MI_SURROUND_COMPRESSOR_STEERING_ENABLE,
        REVERB_SUPPRESSION_AMOUNT,
        REVERB_SUPPRESSION_ENABLE,
        SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT,
        VOLUME_MODELER_ENABLE,
    };
    return sValidParams;
}

}  // namespace

const std::set<Parameter>& Profile::kValidParams = validParams();

Profile::Profile(int profileId, std::string name, bool mobility)
    : ParameterValues(-1, true),
      mProfileId(profileId),
      mName(std::move(name)),
      mMobility(mobility),
      mSelectedGeqPreset(profileId) {}

Profile::Profile(long long id, int profileId, std::string name, bool mobility)
    : ParameterValues(id, false),
      mProfileId(profileId),
      mName(std::move(name)),
      mMobility(mobility),
      mSelectedGeqPreset(profileId) {}

Profile::~Profile() = default;

int64_t Profile::getId() const {
    return id;
}

const std::set<Parameter>& Profile::getValidParams() const {
    return validParams();
}

int Profile::getProfileId() const {
    return mProfileId;
}

std::string Profile::getName() const {
    return mName;
}

void Profile::setName(std::string name) {
    mName = std::move(name);
    dirty = true;
}

void Profile::setMobility(bool mobility) {
    mMobility = mobility;
}

bool Profile::isMobility() const {
    return mMobility;
}

int Profile::getSelectedGeqPreset() const {
    return mSelectedGeqPreset;
}

void Profile::setSelectedGeqPreset(int presetId) {
    mSelectedGeqPreset = presetId;
    dirty = true;
}

std::string Profile::toString() const {
    std::ostringstream out;
    out << std::boolalpha << "id=" << id << "\n"
        << "profileId=" << mProfileId << "\n"
        << "name=" << mName << "\n"
        << "mobility=" << mMobility << "\n"
        << "selectedGeqPreset=" << mSelectedGeqPreset << "\n"
        << valuesToString();
    return out.str();
}

bool Profile::equals(Profile& other) {
    if (this == &other) {
        return true;
    }
    return mProfileId == other.mProfileId && values == other.values;
}

}  // namespace korva
