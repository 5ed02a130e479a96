// An int system property that is cheap to read at every call and still sees every change. The
// property's handle is looked up once; each read compares the handle's serial, which the
// property service changes with every write, and parses the value again only when it changed.
// While the property does not exist, each read compares the serial of the property area, which
// changes whenever a property is added, and looks for the handle again only then. On a device
// this is bionic's property area; elsewhere (the host, and test programs on a device) the
// in-process stand-in of platform/HostPropertyArea.h, which has the same shape.
#pragma once

#include <atomic>
#include <cstdint>

#if defined(__BIONIC__) && !defined(KORVA_HOST_BUILD)
#include <sys/system_properties.h>
#define KORVA_BIONIC_PROPERTIES 1
#else
#include "platform/HostPropertyArea.h"
#endif

namespace korva {

class CachedIntProperty {
public:
#if KORVA_BIONIC_PROPERTIES
    using Info = prop_info;
    static const Info* find(const char* name) {
        return __system_property_find(name);
    }
    static uint32_t serial(const Info* info) {
        return __system_property_serial(info);
    }
    static uint32_t areaSerial() {
        return __system_property_area_serial();
    }
#else
    using Info = host::PropertyInfo;
    static const Info* find(const char* name) {
        return host::propertyFind(name);
    }
    static uint32_t serial(const Info* info) {
        return host::propertySerial(info);
    }
    static uint32_t areaSerial() {
        return host::propertyAreaSerial();
    }
#endif

    constexpr CachedIntProperty(const char* name, int32_t defaultValue)
        : mName(name), mDefault(defaultValue) {}
    CachedIntProperty(const CachedIntProperty&) = delete;
    CachedIntProperty& operator=(const CachedIntProperty&) = delete;

    // The value as property_get_int32 reads it: a number in C syntax at the start of the text,
    // or the default when the property is missing, empty, not a number or out of range.
    int32_t get() {
        const Info* info = mInfo.load(std::memory_order_acquire);
        if (info == nullptr) {
            // Not there when last looked for: only a new property can change that.
            if (mAbsentKnown.load(std::memory_order_acquire) &&
                mAreaSerial.load(std::memory_order_relaxed) == areaSerial()) {
                return mDefault;
            }
            return lookUp();
        }
        if (mValueKnown.load(std::memory_order_acquire)) {
            const uint64_t cached = mCached.load(std::memory_order_acquire);
            if (static_cast<uint32_t>(cached >> 32) == serial(info)) {
                return static_cast<int32_t>(static_cast<uint32_t>(cached));
            }
        }
        return reread(info);
    }

    // Parses a property's text the way libcutils' property_get_int32 does.
    static int32_t parse(const char* text, int32_t defaultValue);

private:
    int32_t lookUp();
    int32_t reread(const Info* info);

    const char* const mName;
    const int32_t mDefault;
    std::atomic<const Info*> mInfo{nullptr};
    std::atomic<uint32_t> mAreaSerial{0};
    // The serial (high half) and the value read with it (low half), kept together so that no
    // reader pairs one write's serial with another's value.
    std::atomic<uint64_t> mCached{0};
    // Whether mAreaSerial holds the area's serial of a search that found nothing, and whether
    // mCached holds a read.
    std::atomic<bool> mAbsentKnown{false};
    std::atomic<bool> mValueKnown{false};
};

}  // namespace korva
