// The format-version rules of the tuning file, kept in one place so that the reader and the
// workstation linter judge a file by the same version.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>

namespace korva {

inline bool isFormatVersion32(const std::string& version) {
    return version.compare(0, 4, "3.2.") == 0;
}

inline bool isFormatVersion322(const std::string& version) {
    return version.compare(0, 5, "3.2.2") == 0;
}

inline bool isFormatVersion330(const std::string& version) {
    return version.compare(0, 5, "3.3.0") == 0;
}

// Compared as text, as the files write them: "3.3.9" is before "3.4.", and so is "3.".
inline bool isFormatVersionBefore34(const std::string& version) {
    const size_t length = std::min<size_t>(version.size(), 4);
    const int order = memcmp(version.data(), "3.4.", length);
    return order < 0 || (order == 0 && version.size() < 4);
}

}  // namespace korva
