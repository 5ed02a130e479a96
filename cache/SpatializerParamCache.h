// The effect instance's entry to the parameter store: sends profile, content-processing,
// tuning-device and graphic-EQ changes to the effect. It keeps nothing of its own; every
// operation reads or changes the process-wide store and pushes entries through IEffectKrv.
#pragma once

#include <string>
#include <vector>

#include "cache/IEffectKrv.h"
#include "store/SpatializerParamArray.h"

namespace korva {

class SpatializerParamCache {
public:
    SpatializerParamCache() {}
    ~SpatializerParamCache() {}

    // Remembers the profile in the store; later operations act on it.
    void setProfile(KrvSpatializerProfileId id);
    // A copy of the current profile's graphic-EQ gains.
    std::vector<int> getProfileGeqGains();
    // Whether the tuning file gave usable tuning devices.
    bool isTuningAvailable();
    // Whether the port is one that has tuning devices of its own (headphone, bluetooth, usb).
    bool isValidPort(int port);

    // Sends the built-in blob of a profile and commits. -22 when the blob does not read.
    int setKorvaContentProfile(KrvSpatializerProfileId id, IEffectKrv* effect);
    // Re-sends the current profile's blob from the tuning file with content processing switched
    // on or off; with mcc, then re-sends the built-in common and current profile blobs.
    int updateContentProcEnabled(IEffectKrv* effect, bool isContentProcEnabled,
                                 bool isKorvaContentWithMcc);
    // Sends the selected tuning device of every port that has them.
    int loadTuning(IEffectKrv* effect);
    // Sends one tuning device's blob and commits. -22 for a device the store does not know.
    int loadTuningDevice(std::string device, IEffectKrv* effect);
    // Selects a port's tuning device and sends it. 0 without sending when it is already selected;
    // -22 when the device does not serve the port.
    int setSelectedTuningDevice(int port, std::string device, IEffectKrv* effect);
    // Stores the current profile's gains and sends them in the effect's graphic-EQ parameter.
    int setProfileGeqGains(std::vector<int>& gains, IEffectKrv* effect);

private:
    // The store fields that the cache reads directly, taken together under the store's lock.
    struct StoreState {
        int currentProfileId;
        int xmlTuningCount;
        int tuningParamValue;
        int defaultMixMatrixLength;
    };
    static StoreState readStoreState(SpatializerParamArray& array);
    // A profile's graphic-EQ gains, copied while the store is locked.
    static std::vector<int> copyProfileGeqGains(SpatializerParamArray& array, int profile);
};

}  // namespace korva
