#include "store/SpatializerParamArrayConstants.h"

#include "model/OutputDevice.h"
#include "model/Parameter.h"

namespace korva {

const std::set<Port> kDefaultTuningPorts = {DEVICE_HEADPHONE, DEVICE_BLUETOOTH, DEVICE_USB};

std::map<std::string, int> kPortNameToDevice = {
    {kAndroidDeviceNames[DEVICE_INTERNAL_SPEAKER], kOutputDeviceSpeaker},
    {kAndroidDeviceNames[DEVICE_HEADPHONE], kOutputDeviceWiredHeadphone},
    {kAndroidDeviceNames[DEVICE_BLUETOOTH], kOutputDeviceBluetoothA2dp},
    {kAndroidDeviceNames[DEVICE_USB], kOutputDeviceUsb},
};

const std::set<int> kA2dpUsbDevices = {kOutputDeviceBluetoothA2dp, kOutputDeviceUsb};

// The speaker "dom" values of the common table without their leading enable words; coefficients
// in Q14 (16384 = 1.0, 11583 ~ 0.7071, 8192 = 0.5).
const std::vector<int> kDefaultMixMatrix = {
    15,    24,    16384, 0,     0,     16384, 11583, 11583, 8192,  8192,  16384, 0,
    0,     16384, 16384, 0,     0,     16384, 16384, 0,     0,     16384, 16384, 0,
    0,     16384, 11,    16,    16384, 0,     0,     16384, 11583, 11583, 8192,  8192,
    16384, 0,     0,     16384, 16384, 0,     0,     16384, 10,    12,    16384, 0,
    0,     16384, 11583, 11583, 8192,  8192,  16384, 0,     0,     16384,
};

const std::vector<int> kDefaultVbMode = {3};

}  // namespace korva
