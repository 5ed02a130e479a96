// In-process stand-in of the two libcutils property readers the library calls, and of bionic's
// property handles (platform/HostPropertyArea.h). Debian's libcutils lacks them on the host; on a
// device, test and fuzz programs link this instead of reading the property service, whose ro.*
// values they could never set. Values set with korva::setLocalProperty win; property_get and
// property_get_int32 read any other key through libbase, which on the host keeps its own
// in-process map for android::base::SetProperty. Handles see only korva::setLocalProperty.

#include <android-base/parseint.h>
#include <android-base/properties.h>
#include <cutils/properties.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "platform/HostPropertyArea.h"
#include "platform/LocalProperties.h"

namespace korva::host {

// A property's value and its serial. Entries are never removed, so a handle stays valid.
struct PropertyInfo {
    std::string value;
    std::atomic<uint32_t> serial{0};
};

}  // namespace korva::host

namespace {

using korva::host::PropertyInfo;

std::mutex sLocalLock;
std::atomic<uint32_t> sAreaSerial{0};

std::map<std::string, PropertyInfo>& localProperties() {
    static std::map<std::string, PropertyInfo> properties;
    return properties;
}

std::string readProperty(const char* key) {
    {
        std::lock_guard<std::mutex> lock(sLocalLock);
        auto found = localProperties().find(key);
        if (found != localProperties().end()) {
            return found->second.value;
        }
    }
    return android::base::GetProperty(key, "");
}

}  // namespace

namespace korva {

void setLocalProperty(const std::string& key, const std::string& value) {
    std::lock_guard<std::mutex> lock(sLocalLock);
    auto [entry, added] = localProperties().try_emplace(key);
    entry->second.value = value;
    // Like bionic's, a serial that only ever moves on, and the area's when a property appears.
    entry->second.serial.fetch_add(2, std::memory_order_release);
    if (added) {
        sAreaSerial.fetch_add(1, std::memory_order_release);
    }
}

namespace host {

const PropertyInfo* propertyFind(const char* name) {
    std::lock_guard<std::mutex> lock(sLocalLock);
    auto found = localProperties().find(name);
    return found != localProperties().end() ? &found->second : nullptr;
}

uint32_t propertySerial(const PropertyInfo* info) {
    return info->serial.load(std::memory_order_acquire);
}

uint32_t propertyAreaSerial() {
    return sAreaSerial.load(std::memory_order_acquire);
}

void propertyRead(const PropertyInfo* info,
                  void (*callback)(void* cookie, const char* name, const char* value,
                                   uint32_t serial),
                  void* cookie) {
    std::string value;
    uint32_t serial;
    {
        std::lock_guard<std::mutex> lock(sLocalLock);
        value = info->value;
        serial = info->serial.load(std::memory_order_relaxed);
    }
    // Bionic passes the name too; no reader here asks for it.
    callback(cookie, "", value.c_str(), serial);
}

}  // namespace host

}  // namespace korva

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    if (value == nullptr) {
        return -1;
    }
    std::string found = key != nullptr ? readProperty(key) : std::string();
    const char* source = found.c_str();
    if (found.empty()) {
        source = default_value != nullptr ? default_value : "";
    }
    size_t length = strnlen(source, PROPERTY_VALUE_MAX - 1);
    memcpy(value, source, length);
    value[length] = '\0';
    return static_cast<int>(length);
}

extern "C" int32_t property_get_int32(const char* key, int32_t default_value) {
    if (key == nullptr) {
        return default_value;
    }
    int32_t value = 0;
    return android::base::ParseInt(readProperty(key), &value) ? value : default_value;
}
