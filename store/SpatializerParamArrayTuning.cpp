// Tuning devices per output port: which exist, which is selected, and their blobs and mix
// matrices. The loader fills the tables; the effect parameter cache queries them.

#include <cerrno>
#include <cstring>

#include "model/Parameter.h"
#include "observer/LoadObserver.h"
#include "store/LogLevel.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {

namespace {

// Port names compare byte for byte; a port without a name serves nothing.
bool servesPort(const std::string& devicePort, const char* portName) {
    return portName != nullptr && devicePort == portName;
}

}  // namespace

// Ports are the caller's to get right, but a wrong one must never read past the name table:
// outside it a port has no name, is reported, matches no tuning device and shows as "?".
const char* SpatializerParamArray::portName(int port, const char* caller) {
    if (port < 0 || port >= kNumAndroidDevices) {
        KORVA_LOGE(kStoreLogTag, "%s(): port %d is not a known port", caller, port);
        return nullptr;
    }
    return kAndroidDeviceNames[port];
}

bool SpatializerParamArray::isXMLTuningValid(std::string name) {
    android::Mutex::Autolock lock(mLock);
    return mXMLTuningParams.count(name) > 0;
}

std::vector<int>& SpatializerParamArray::getXMLTuningParams(std::string name) {
    KORVA_LOGD(kStoreLogTag, "%s(device = %s)", __func__, name.c_str());
    android::Mutex::Autolock lock(mLock);
    return mXMLTuningParams[name];
}

unsigned int SpatializerParamArray::getAvailableTuningDevicesLen(int port) {
    android::Mutex::Autolock lock(mLock);
    const char* name = portName(port, __func__);
    // Room for the names, one separator or terminating zero each.
    unsigned int length = 0;
    for (const auto& [device, devicePort] : mTuningDevicePorts) {
        if (servesPort(devicePort, name)) {
            length += device.size() + 1;
        }
    }
    return length;
}

std::string SpatializerParamArray::getAvailableTuningDevices(int port) {
    android::Mutex::Autolock lock(mLock);
    const char* name = portName(port, __func__);
    std::string devices;
    bool first = true;
    for (const auto& [device, devicePort] : mTuningDevicePorts) {
        if (servesPort(devicePort, name)) {
            // The separator goes before every match but the first, so an empty-named device
            // (the speaker's, sorted first) leaves a leading blank before the next name.
            if (!first) {
                devices += ' ';
            }
            first = false;
            devices += device;
        }
    }
    return devices;
}

std::string SpatializerParamArray::getSelectedTuningDevice(int port) {
    android::Mutex::Autolock lock(mLock);
    return mSelectedTuningDevices[port];
}

int SpatializerParamArray::setSelectedTuningDevice(int port, std::string device) {
    const char* name = portName(port, __func__);
    KORVA_LOGD(kStoreLogTag, "%s(port=%s, device=%s)", __func__, androidDeviceName(port),
               device.c_str());
    android::Mutex::Autolock lock(mLock);
    auto found = mTuningDevicePorts.find(device);
    if (found == mTuningDevicePorts.end() || !servesPort(found->second, name)) {
        KORVA_LOGE(kStoreLogTag, "%s tuningDevice %s is not available for port %s.", __func__,
                   device.c_str(), androidDeviceName(port));
        return -EINVAL;
    }
    mSelectedTuningDevices[port] = device;
    return 0;
}

bool SpatializerParamArray::isValidTuningDevice(int port, std::string device) {
    auto found = mTuningDevicePorts.find(device);
    return found != mTuningDevicePorts.end() && servesPort(found->second, portName(port, __func__));
}

const std::vector<int>& SpatializerParamArray::getXMLTuningMixMatrix(std::string device) {
    // Shared answer for unknown devices; never changed.
    static const std::vector<int> sNoMixMatrix;
    android::Mutex::Autolock lock(mLock);
    auto found = mTuningMixMatrices.find(device);
    if (found == mTuningMixMatrices.end()) {
        KORVA_LOGW(kStoreLogTag, "%s(): no mix matrix found with tuning device %s", __func__,
                   device.c_str());
        return sNoMixMatrix;
    }
    return found->second;
}

void SpatializerParamArray::checkDefaultTuningDevices() {
    // One missing default is enough: the effect could not fall back for that port.
    for (const auto& [port, device] : mSelectedTuningDevices) {
        if (!isValidTuningDevice(port, device)) {
            KORVA_LOGE(kStoreLogTag, "%s() default tuningDevice %s is not available for port %s.",
                       "loadSpatializerXMLFile", device.c_str(), androidDeviceName(port));
            mXMLTuningCount = 0;
            if (LoadObserver* observer = LoadObserver::current()) {
                observer->onDefaultSelectionMissing(port, device);
            }
            return;
        }
    }
}

}  // namespace korva
