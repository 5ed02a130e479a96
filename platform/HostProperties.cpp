// In-process stand-in of the two libcutils property readers the library calls. Debian's libcutils
// lacks them on the host; on a device, test and fuzz programs link this instead of reading the
// property service, whose ro.* values they could never set. Values set with
// korva::setLocalProperty win; any other key is read through libbase, which on the host keeps
// its own in-process map for android::base::SetProperty.

#include <android-base/parseint.h>
#include <android-base/properties.h>
#include <cutils/properties.h>

#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "platform/LocalProperties.h"

namespace {

std::mutex sLocalLock;

std::map<std::string, std::string>& localProperties() {
    static std::map<std::string, std::string> properties;
    return properties;
}

std::string readProperty(const char* key) {
    {
        std::lock_guard<std::mutex> lock(sLocalLock);
        auto found = localProperties().find(key);
        if (found != localProperties().end()) {
            return found->second;
        }
    }
    return android::base::GetProperty(key, "");
}

}  // namespace

namespace korva {

void setLocalProperty(const std::string& key, const std::string& value) {
    std::lock_guard<std::mutex> lock(sLocalLock);
    localProperties()[key] = value;
}

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
