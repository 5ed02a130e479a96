// Host implementation of the two libcutils property readers that Debian's libcutils lacks.
// libbase keeps an in-process property map on the host, so tests and tools set values with
// android::base::SetProperty and the library reads them back here as it would on a device.

#include <cutils/properties.h>

#include <android-base/properties.h>

#include <cstring>
#include <string>

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    if (value == nullptr) {
        return -1;
    }
    std::string found = key != nullptr ? android::base::GetProperty(key, "") : std::string();
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
    return android::base::GetIntProperty<int32_t>(key, default_value);
}
