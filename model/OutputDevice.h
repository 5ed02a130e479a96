// Android output-device bits. The effect keys every parameter by one of them, and every blob
// entry starts with one: the parameter applies to that output.
#pragma once

#include <cstdint>

namespace korva {

// Applies whatever the output: the default device.
constexpr int32_t kOutputDeviceAll = 0x40000000;
constexpr int32_t kOutputDeviceSpeaker = 0x2;
constexpr int32_t kOutputDeviceWiredHeadphone = 0x8;
constexpr int32_t kOutputDeviceBluetoothA2dp = 0x80;
constexpr int32_t kOutputDeviceUsb = 0x4000;

// A short name for display ("all", "speaker", "wired headphone", "a2dp", "usb"), or null for
// any other value.
constexpr const char* outputDeviceName(int32_t device) {
    switch (device) {
        case kOutputDeviceAll:
            return "all";
        case kOutputDeviceSpeaker:
            return "speaker";
        case kOutputDeviceWiredHeadphone:
            return "wired headphone";
        case kOutputDeviceBluetoothA2dp:
            return "a2dp";
        case kOutputDeviceUsb:
            return "usb";
        default:
            return nullptr;
    }
}

}  // namespace korva
