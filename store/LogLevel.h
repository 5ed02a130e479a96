// How chatty the store side is. The level comes from a property that integrators change on a
// running device, so every public call reads it anew; the steps inside one call (a validation
// walk, the entries of one delivery) share that call's read. A read compares the property's
// serial with the one last read and parses the value only when it changed
// (store/CachedIntProperty.h).
#pragma once

#include <android/log.h>

#include "store/CachedIntProperty.h"

namespace korva {

constexpr const char* kLogLevelProperty = "persist.vendor.korva.loglevel";
constexpr int kDefaultLogLevel = 2;

// Debug lines that trace calls.
constexpr int kLogLevelDebug = 2;
// Per-entry traces of the effect parameter cache.
constexpr int kLogLevelTrace = 3;
// Per-entry traces of the blob parser.
constexpr int kLogLevelVerbose = 4;

// The one reader of the level property, shared by every caller in the process. Constant
// initialised, so it can be read from any static initialiser.
extern CachedIntProperty sLogLevelProperty;

inline int logLevel() {
    return sLogLevelProperty.get();
}

inline bool isLogLevelAtLeast(int level) {
    return logLevel() >= level;
}

}  // namespace korva

// Debug line, written only when the level allows call traces.
#define KORVA_LOGD(tag, ...)                                          \
    do {                                                              \
        if (::korva::isLogLevelAtLeast(::korva::kLogLevelDebug)) {    \
            __android_log_print(ANDROID_LOG_DEBUG, tag, __VA_ARGS__); \
        }                                                             \
    } while (0)

// Verbose line, written only from the given level on; the arguments are not evaluated otherwise.
#define KORVA_LOGV(level, tag, ...)                                     \
    do {                                                                \
        if (::korva::isLogLevelAtLeast(level)) {                        \
            __android_log_print(ANDROID_LOG_VERBOSE, tag, __VA_ARGS__); \
        }                                                               \
    } while (0)

#define KORVA_LOGW(tag, ...) __android_log_print(ANDROID_LOG_WARN, tag, __VA_ARGS__)
#define KORVA_LOGE(tag, ...) __android_log_print(ANDROID_LOG_ERROR, tag, __VA_ARGS__)
