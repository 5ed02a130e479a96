// The store is a process-wide singleton that is never rebuilt, but the fuzz targets load one file
// per input: they take a snapshot of what construction left and put it back before each load, so
// an input's result never depends on the inputs before it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tests/support/SpatializerParamArrayTestPeer.h"

namespace korva::fuzz {

class StoreSnapshot {
public:
    explicit StoreSnapshot(SpatializerParamArrayTestPeer& peer)
        : mCurrentProfileId(peer.currentProfileId()),
          mTuningParamValue(peer.tuningParamValue()),
          mDefaultMixMatrixLength(peer.defaultMixMatrixLength()),
          mSelectedTuningDevices(peer.selectedTuningDevices()),
          mProfileGeqGains(peer.profileGeqGains()),
          mPortNameToDevice(kPortNameToDevice) {}

    // Everything loading fills is emptied; the rest goes back to the snapshot.
    void restore(SpatializerParamArrayTestPeer& peer) const {
        peer.currentProfileId() = mCurrentProfileId;
        peer.tuningParamValue() = mTuningParamValue;
        peer.defaultMixMatrixLength() = mDefaultMixMatrixLength;
        peer.selectedTuningDevices() = mSelectedTuningDevices;
        peer.profileGeqGains() = mProfileGeqGains;
        kPortNameToDevice = mPortNameToDevice;
        peer.xmlProfileParams().clear();
        peer.xmlProfileCount() = 0;
        peer.xmlTuningParams().clear();
        peer.xmlTuningCount() = 0;
        peer.tuningDevicePorts().clear();
        peer.tuningMixMatrices().clear();
    }

private:
    int mCurrentProfileId;
    int mTuningParamValue;
    int mDefaultMixMatrixLength;
    std::map<int, std::string> mSelectedTuningDevices;
    std::map<int, std::vector<int>> mProfileGeqGains;
    std::map<std::string, int> mPortNameToDevice;
};

}  // namespace korva::fuzz
