#include "store/CachedIntProperty.h"

#include <cerrno>
#include <cinttypes>
#include <cstdlib>

#include "store/LogLevel.h"

namespace korva {

namespace {

struct Read {
    int32_t defaultValue;
    int32_t value;
    uint32_t serial;
};

}  // namespace

int32_t CachedIntProperty::parse(const char* text, int32_t defaultValue) {
    if (text == nullptr || text[0] == '\0') return defaultValue;
    const int saved = errno;
    errno = 0;
    char* end = nullptr;
    const intmax_t value = strtoimax(text, &end, 0);
    const bool bad = end == text ||
                     ((value == INTMAX_MIN || value == INTMAX_MAX) && errno == ERANGE) ||
                     value < INT32_MIN || value > INT32_MAX;
    errno = saved;
    return bad ? defaultValue : static_cast<int32_t>(value);
}

int32_t CachedIntProperty::lookUp() {
    // The area's serial before the search: a property added during it is looked for next time.
    const uint32_t area = areaSerial();
    const Info* info = find(mName);
    if (info == nullptr) {
        mAreaSerial.store(area, std::memory_order_relaxed);
        mAbsentKnown.store(true, std::memory_order_release);
        return mDefault;
    }
    mInfo.store(info, std::memory_order_release);
    return reread(info);
}

int32_t CachedIntProperty::reread(const Info* info) {
    Read read{mDefault, mDefault, 0};
    auto callback = [](void* cookie, const char* /*name*/, const char* value, uint32_t serial) {
        Read* out = static_cast<Read*>(cookie);
        out->value = parse(value, out->defaultValue);
        out->serial = serial;
    };
#if KORVA_BIONIC_PROPERTIES
    __system_property_read_callback(info, callback, &read);
#else
    host::propertyRead(info, callback, &read);
#endif
    mCached.store((static_cast<uint64_t>(read.serial) << 32) | static_cast<uint32_t>(read.value),
                  std::memory_order_release);
    mValueKnown.store(true, std::memory_order_release);
    return read.value;
}

CachedIntProperty sLogLevelProperty(kLogLevelProperty, kDefaultLogLevel);

}  // namespace korva
