#include "tools/TuningFileRecords.h"

#include <libxml/xmlerror.h>

#include <algorithm>

#include "model/CreationOrder.h"
#include "tools/ToolOutput.h"

namespace korva::tool {

TuningFileRecords::TuningFileRecords() : mParser(std::make_unique<TuningFileParser>()) {}

TuningFileRecords::~TuningFileRecords() = default;

bool TuningFileRecords::read(const std::string& path) {
    xmlResetLastError();
    if (mParser->setTuningFile(path) != 0 || mParser->getDeviceData() == nullptr) {
        const xmlError* last = xmlGetLastError();
        mError = "not a readable XML document";
        if (last != nullptr && last->message != nullptr) {
            std::string message = last->message;
            while (!message.empty() && message.back() == '\n') {
                message.pop_back();
            }
            mError += " (line " + std::to_string(last->line) + "): " + message;
        }
        return false;
    }
    DeviceData& data = *mParser->getDeviceData();
    mIeqPresets = inCreationOrder(data.getIeqPresets());
    mGeqPresets = inCreationOrder(data.getGeqPresets());
    mProfiles = inCreationOrder(data.getProfiles());
    mProfileEndpoints = inCreationOrder(data.getProfileEndpoints());
    mTunings = inCreationOrder(data.getTunings());
    mDeviceTunings = inCreationOrder(data.getDeviceTunings());
    return true;
}

bool TuningFileRecords::readOrReport(const std::string& path) {
    if (!ToolOutput::isReadable(path)) {
        return false;
    }
    if (!read(path)) {
        ToolOutput::error(path, mError);
        return false;
    }
    return true;
}

std::string TuningFileRecords::formatVersion() const {
    DeviceData* data = mParser->getDeviceData();
    return data != nullptr ? data->getFormatVersion() : std::string();
}

std::string TuningFileRecords::toolVersion() const {
    DeviceData* data = mParser->getDeviceData();
    return data != nullptr ? data->getToolVersion() : std::string();
}

int TuningFileRecords::gameSystemGain() const {
    DeviceData* data = mParser->getDeviceData();
    return data != nullptr ? data->getOrbexGameSystemGain() : 0;
}

int TuningFileRecords::numOfProfiles() const {
    return mParser->getNumOfProfiles();
}

std::string TuningFileRecords::profileName(int id) const {
    // The parser's lookup files an empty name for an unknown id; ask only for ids it has.
    for (const Profile* profile : mProfiles) {
        if (profile->getProfileId() == id) {
            return mParser->getProfileName(id);
        }
    }
    return std::string();
}

std::vector<int> TuningFileRecords::profileIds() const {
    std::vector<int> ids;
    for (const Profile* profile : mProfiles) {
        if (std::find(ids.begin(), ids.end(), profile->getProfileId()) == ids.end()) {
            ids.push_back(profile->getProfileId());
        }
    }
    return ids;
}

std::vector<std::string> TuningFileRecords::deviceNames() const {
    std::vector<std::string> names;
    for (const DeviceTuning* deviceTuning : mDeviceTunings) {
        const std::string name = deviceTuning->getDevice();
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace korva::tool
