#include "model/DeviceData.h"

#include <utility>

namespace korva {

DeviceData::DeviceData() : mOrbexGameSystemGain(0) {}

DeviceData::~DeviceData() = default;

std::string DeviceData::getFormatVersion() const {
    return mFormatVersion;
}

std::string DeviceData::getToolVersion() const {
    return mToolVersion;
}

std::set<IeqPreset*>& DeviceData::getIeqPresets() {
    return mIeqPresets;
}

std::set<GeqPreset*>& DeviceData::getGeqPresets() {
    return mGeqPresets;
}

std::set<Profile*>& DeviceData::getProfiles() {
    return mProfiles;
}

std::set<ProfileEndpoint*>& DeviceData::getProfileEndpoints() {
    return mProfileEndpoints;
}

std::set<Tuning*>& DeviceData::getTunings() {
    return mTunings;
}

std::set<DeviceTuning*>& DeviceData::getDeviceTunings() {
    return mDeviceTunings;
}

void DeviceData::setFormatVersion(std::string formatVersion) {
    mFormatVersion = std::move(formatVersion);
}

void DeviceData::setToolVersion(std::string toolVersion) {
    mToolVersion = std::move(toolVersion);
}

void DeviceData::setIeqPresets(std::set<IeqPreset*>& ieqPresets) {
    mIeqPresets = ieqPresets;
}

void DeviceData::setGeqPresets(std::set<GeqPreset*>& geqPresets) {
    mGeqPresets = geqPresets;
}

void DeviceData::setProfiles(std::set<Profile*>& profiles) {
    mProfiles = profiles;
}

void DeviceData::setProfileEndPoints(std::set<ProfileEndpoint*>& profileEndpoints) {
    mProfileEndpoints = profileEndpoints;
}

void DeviceData::setTunings(std::set<Tuning*>& tunings) {
    mTunings = tunings;
}

void DeviceData::setDeviceTunings(std::set<DeviceTuning*>& deviceTunings) {
    mDeviceTunings = deviceTunings;
}

std::string DeviceData::getSignature() const {
    return mSignature;
}

void DeviceData::setSignature(std::string signature) {
    mSignature = std::move(signature);
}

int DeviceData::getOrbexGameSystemGain() const {
    return mOrbexGameSystemGain;
}

void DeviceData::setOrbexGameSystemGain(int gain) {
    mOrbexGameSystemGain = gain;
}

void DeviceData::validateData() {
    for (ProfileEndpoint* profileEndpoint : mProfileEndpoints) {
        // Subscript on purpose: a missing switch gets an empty entry without marking the record
        // changed, and an empty switch counts as on.
        const std::vector<int>& ieqEnable = profileEndpoint->values[IEQ_ENABLE];
        if (!ieqEnable.empty() && ieqEnable[0] == 0) {
            profileEndpoint->setSelectedIeqPreset(0);
        }
    }
}

}  // namespace korva
