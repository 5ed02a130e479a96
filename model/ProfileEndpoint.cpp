#include "model/ProfileEndpoint.h"

#include <sstream>

namespace korva {

namespace {

const std::set<Parameter>& validParams() {
    static const std::set<Parameter> sValidParams = {
        BASS_ENHANCER_ENABLE,
        CALIBRATION_BOOST,
        DIALOG_ENHANCER_AMOUNT,
        DIALOG_ENHANCER_DUCKING,
        DIALOG_ENHANCER_ENABLE,
        GRAPHIC_EQUALIZER_ENABLE,
        HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE,
        HEARING_PROTECTION_ATTENUATION_ATTACK_TIME,
        HEARING_PROTECTION_ATTENUATION_RELEASE_TIME,
        HEARING_PROTECTION_ENABLE,
        HEARING_PROTECTION_RMS_ATTENUATION_TARGET,
        HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN,
        IEQ_AMOUNT,
        IEQ_ENABLE,
        MI_DIALOG_ENHANCER_STEERING_ENABLE,
        MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE,
        PEAK_VALUE,
        SURROUND_BOOST,
        SURROUND_DECODER_ENABLE,
        VIRTUAL_BASS_ENABLE,
        VIRTUALIZER_ENABLE,
        VIRTUALIZER_START_BAND,
        VOLMAX_BOOST,
        VOLUME_LEVELER_AMOUNT,
        VOLUME_LEVELER_ENABLE,
        VOLUME_LEVELER_IN_TARGET,
        VOLUME_LEVELER_OUT_TARGET,
    };
    return sValidParams;
}

}  // namespace

const std::set<Parameter>& ProfileEndpoint::kValidParams = validParams();

ProfileEndpoint::ProfileEndpoint(int profileId, Endpoint endpoint, int selectedIeqPreset)
    : ParameterValues(-1, true),
      mProfileId(profileId),
      mEndpoint(endpoint),
      mSelectedIeqPreset(selectedIeqPreset) {}

ProfileEndpoint::ProfileEndpoint(long id, int profileId, Endpoint endpoint, int selectedIeqPreset)
    : ParameterValues(id, false),
      mProfileId(profileId),
      mEndpoint(endpoint),
      mSelectedIeqPreset(selectedIeqPreset) {}

ProfileEndpoint::~ProfileEndpoint() = default;

int64_t ProfileEndpoint::getId() const {
    return id;
}

const std::set<Parameter>& ProfileEndpoint::getValidParams() const {
    return validParams();
}

int ProfileEndpoint::getProfileId() const {
    return mProfileId;
}

Endpoint ProfileEndpoint::getEndpoint() const {
    return mEndpoint;
}

int ProfileEndpoint::getSelectedIeqPreset() const {
    return mSelectedIeqPreset;
}

void ProfileEndpoint::setSelectedIeqPreset(int presetId) {
    mSelectedIeqPreset = presetId;
    dirty = true;
}

std::string ProfileEndpoint::toString() const {
    std::ostringstream out;
    out << "id=" << id << "\n"
        << "profileId=" << mProfileId << "\n"
        << "endpoint=" << kEndpointNames[mEndpoint] << "\n"
        << "selectedIeqPreset=" << mSelectedIeqPreset << "\n"
        << valuesToString();
    return out.str();
}

bool ProfileEndpoint::equals(ProfileEndpoint& other) {
    if (this == &other) {
        return true;
    }
    return mEndpoint == other.mEndpoint && mProfileId == other.mProfileId &&
           mSelectedIeqPreset == other.mSelectedIeqPreset && values == other.values;
}

}  // namespace korva
