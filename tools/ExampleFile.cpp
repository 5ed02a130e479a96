#include "tools/ExampleFile.h"

#include <unistd.h>

#include <climits>

namespace korva::tool {

namespace {

constexpr const char* kExampleName = "kvx-default-spatializer.xml";
constexpr const char* kInstalledFolder = "share/spatializerparamstorage/examples/";

bool exists(const std::string& path) {
    return access(path.c_str(), R_OK) == 0;
}

// The installed copy beside the installed tool: <prefix>/bin/tool and <prefix>/share/...
std::string besideExecutable() {
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (length <= 0) {
        return std::string();
    }
    std::string path(self, static_cast<size_t>(length));
    const size_t bin = path.rfind('/');
    const size_t prefix = bin != std::string::npos ? path.rfind('/', bin - 1) : std::string::npos;
    if (prefix == std::string::npos) {
        return std::string();
    }
    return path.substr(0, prefix + 1) + kInstalledFolder + kExampleName;
}

}  // namespace

std::string ExampleFile::path() {
    if (exists(KORVA_EXAMPLE_SOURCE_FILE)) {
        return KORVA_EXAMPLE_SOURCE_FILE;
    }
    const std::string beside = besideExecutable();
    if (!beside.empty() && exists(beside)) {
        return beside;
    }
    return KORVA_EXAMPLE_INSTALLED_FILE;
}

}  // namespace korva::tool
