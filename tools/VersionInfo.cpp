#include "tools/VersionInfo.h"

#include <dlfcn.h>
#include <libxml/parser.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "reader/String2Int.h"

namespace korva::tool {

std::string VersionInfo::tool() {
    return KORVA_TOOL_VERSION;
}

std::string VersionInfo::library() {
    // The file the library's code was loaded from, resolved to the versioned name that the
    // symlinks of a shared library end at.
    const auto code = static_cast<int (*)(const std::string&)>(string2Int);
    Dl_info info{};
    char path[PATH_MAX];
    if (dladdr(reinterpret_cast<void*>(code), &info) == 0 || info.dli_fname == nullptr ||
        std::string(info.dli_fname).find("/libspatializerparamstorage.so") == std::string::npos ||
        realpath(info.dli_fname, path) == nullptr) {
        return "unknown";
    }
    const std::string name = path;
    const size_t so = name.rfind(".so.");
    return (so == std::string::npos ? "unknown" : name.substr(so + 4)) + " (" + name + ")";
}

std::string VersionInfo::text() {
    // libxml2 gives its run-time version as one number: 20914 for 2.9.14.
    const int xml = atoi(xmlParserVersion);
    const std::string xmlVersion = std::to_string(xml / 10000) + "." +
                                   std::to_string(xml / 100 % 100) + "." + std::to_string(xml % 100);
    return "spatializer-paramtool " + tool() + "\nlibspatializerparamstorage " + library() +
           "\nlibxml2 " + xmlVersion;
}

}  // namespace korva::tool
