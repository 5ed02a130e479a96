#include "tools/VersionInfo.h"

#include <libxml/parser.h>
#include <link.h>

#include <climits>
#include <cstdlib>
#include <string>

namespace korva::tool {

std::string VersionInfo::tool() {
    return KORVA_TOOL_VERSION;
}

std::string VersionInfo::library() {
    // The loaded objects' names: the library is the one whose file is named after it.
    std::string path;
    dl_iterate_phdr(
        [](struct dl_phdr_info* info, size_t, void* data) {
            const std::string name = info->dlpi_name != nullptr ? info->dlpi_name : "";
            if (name.find("/libspatializerparamstorage.so") == std::string::npos) {
                return 0;
            }
            *static_cast<std::string*>(data) = name;
            return 1;
        },
        &path);
    if (path.empty()) {
        return "unknown";
    }
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) {
        path = resolved;
    }
    // The versioned file name that the symlinks of a shared library end at.
    const size_t so = path.rfind(".so.");
    const std::string version = so == std::string::npos ? "unknown" : path.substr(so + 4);
    return version + " (" + path + ")";
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
