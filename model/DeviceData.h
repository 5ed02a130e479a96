// Everything one tuning file says: its header strings, the game system gain and the records.
// The container shares the records by pointer and never deletes them; their owner is the reader
// that made them.
#pragma once

#include <set>
#include <string>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace korva {

class DeviceData {
public:
    DeviceData();

    // Declared in this order on purpose: the virtual slots are part of the exported interface.
    virtual ~DeviceData();
    virtual std::string getFormatVersion() const;
    virtual std::string getToolVersion() const;
    // The set getters hand out the container's own sets, so callers can walk and change the
    // records in place.
    virtual std::set<IeqPreset*>& getIeqPresets();
    virtual std::set<GeqPreset*>& getGeqPresets();
    virtual std::set<Profile*>& getProfiles();
    virtual std::set<ProfileEndpoint*>& getProfileEndpoints();
    virtual std::set<Tuning*>& getTunings();
    virtual std::set<DeviceTuning*>& getDeviceTunings();
    virtual void setFormatVersion(std::string formatVersion);
    virtual void setToolVersion(std::string toolVersion);
    // The set setters copy the pointers: the records are shared, the caller's set is untouched,
    // and passing the container's own set changes nothing.
    virtual void setIeqPresets(std::set<IeqPreset*>& ieqPresets);
    virtual void setGeqPresets(std::set<GeqPreset*>& geqPresets);
    virtual void setProfiles(std::set<Profile*>& profiles);
    virtual void setProfileEndPoints(std::set<ProfileEndpoint*>& profileEndpoints);
    virtual void setTunings(std::set<Tuning*>& tunings);
    virtual void setDeviceTunings(std::set<DeviceTuning*>& deviceTunings);
    virtual std::string getSignature() const;
    virtual void setSignature(std::string signature);
    virtual int getOrbexGameSystemGain() const;
    virtual void setOrbexGameSystemGain(int gain);
    // A profile endpoint whose intelligent equaliser is off selects preset 0, whatever the file
    // says. Nobody runs this implicitly: loading a file leaves the records as read.
    virtual void validateData();

    DeviceData(const DeviceData&) = delete;
    DeviceData& operator=(const DeviceData&) = delete;

private:
    std::string mFormatVersion;
    std::string mToolVersion;
    std::string mSignature;
    int mOrbexGameSystemGain;
    std::set<IeqPreset*> mIeqPresets;
    std::set<GeqPreset*> mGeqPresets;
    std::set<Profile*> mProfiles;
    std::set<ProfileEndpoint*> mProfileEndpoints;
    std::set<Tuning*> mTunings;
    std::set<DeviceTuning*> mDeviceTunings;
};

}  // namespace korva
