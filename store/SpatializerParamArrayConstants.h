// Fixed tables of the parameter store that construction and loading share.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace korva {

// Log tag of everything the store writes.
constexpr const char* kStoreLogTag = "KrvSpatializerParamArray";

// The tuning files the store chooses among, by the device's product and smart PA.
constexpr const char* kDefaultOdmTuningFile = "/odm/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kMeridaneTuningFile = "/odm/etc/korva/kvx-meridane-spatializer.xml";
constexpr const char* kDefaultVendorTuningFile = "/vendor/etc/korva/kvx-default-spatializer.xml";
constexpr const char* kFs19xxTuningFile = "/odm/etc/korva/kvx-fs19xx-spatializer.xml";
constexpr const char* kTuningFiles[] = {kDefaultOdmTuningFile, kMeridaneTuningFile,
                                        kDefaultVendorTuningFile, kFs19xxTuningFile};

// An AndroidDevice number.
using Port = int;

// Ports preselected with the tuning device "default_<port name>": headphone, bluetooth, usb.
extern const std::set<Port> kDefaultTuningPorts;

// Port name -> Android output-device bit. Not const: loading files unknown port names here.
extern std::map<std::string, int> kPortNameToDevice;

// Bluetooth A2DP and USB device bits, which headphone profile endpoints are translated for.
extern const std::set<int> kA2dpUsbDevices;

// Speaker mix matrices used when the tuning has none: three matrices, each led by two words.
extern const std::vector<int> kDefaultMixMatrix;

// Virtual bass mode used when the tuning has none.
extern const std::vector<int> kDefaultVbMode;

// System properties the store reads when it starts.
constexpr const char* kProductNameProperty = "ro.product.name";
constexpr const char* kSmartPaTypeProperty = "persist.vendor.audio.pa.smartpa_type";
constexpr const char* kUserGainsProperty = "persist.vendor.audio.sfx.hd.eq";
constexpr const char* kEqFeatureMaskProperty = "ro.vendor.audio.effect.eq.featuremask";

}  // namespace korva
