// Test access to the store's tables, so tests can set up tuning devices, gains and properties
// without a tuning file and read back what the store kept. The store names this class a friend.
#pragma once

#include <utils/Mutex.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "store/SpatializerParamArray.h"

namespace korva {

class SpatializerParamArrayTestPeer {
public:
    explicit SpatializerParamArrayTestPeer(
        SpatializerParamArray& store = SpatializerParamArray::getInstance())
        : mStore(store) {}

    // Files a tuning device as loading does: the port it serves, its blob and its mix matrix
    // words (an empty matrix files none), and counts it as a tuning.
    void addTuningDevice(const std::string& device, const std::string& port,
                         const std::vector<int>& blob = {}, const std::vector<int>& mixMatrix = {}) {
        android::Mutex::Autolock lock(mStore.mLock);
        mStore.mTuningDevicePorts[device] = port;
        mStore.mXMLTuningParams[device] = blob;
        if (!mixMatrix.empty()) {
            mStore.mTuningMixMatrices[device] = mixMatrix;
        }
        mStore.mXMLTuningCount++;
    }

    // The last step of loading, run as the loader runs it: under the store's lock.
    void checkDefaultTuningDevices() {
        android::Mutex::Autolock lock(mStore.mLock);
        mStore.checkDefaultTuningDevices();
    }

    void setProductName(const char* name) {
        snprintf(mStore.mProductName, sizeof(mStore.mProductName), "%s", name);
    }
    void setSmartPaType(const char* type) {
        snprintf(mStore.mSmartPaType, sizeof(mStore.mSmartPaType), "%s", type);
    }

    int& currentProfileId() { return mStore.mCurrentProfileId; }
    std::map<int, std::vector<int>>& xmlProfileParams() { return mStore.mXMLProfileParams; }
    int& xmlProfileCount() { return mStore.mXMLProfileCount; }
    std::map<std::string, std::vector<int>>& xmlTuningParams() { return mStore.mXMLTuningParams; }
    int& xmlTuningCount() { return mStore.mXMLTuningCount; }
    int& tuningParamValue() { return mStore.mTuningParamValue; }
    std::map<std::string, std::string>& tuningDevicePorts() { return mStore.mTuningDevicePorts; }
    std::map<int, std::string>& selectedTuningDevices() { return mStore.mSelectedTuningDevices; }
    std::map<int, std::vector<int>>& profileGeqGains() { return mStore.mProfileGeqGains; }
    std::map<std::string, std::vector<int>>& tuningMixMatrices() {
        return mStore.mTuningMixMatrices;
    }
    int& defaultMixMatrixLength() { return mStore.mDefaultMixMatrixLength; }

private:
    SpatializerParamArray& mStore;
};

}  // namespace korva
