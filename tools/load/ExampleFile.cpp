#include "tools/load/ExampleFile.h"

#include <unistd.h>

#include <climits>

namespace korva::tool {

std::string ExampleFile::path() {
    if (access(KORVA_EXAMPLE_SOURCE_FILE, R_OK) == 0) {
        return KORVA_EXAMPLE_SOURCE_FILE;
    }
    // An installed tool that was moved with its prefix finds the copy beside it:
    // <prefix>/bin/tool and <prefix>/<the example's folder>.
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
    const std::string tool(self, length > 0 ? static_cast<size_t>(length) : 0);
    const size_t bin = tool.rfind('/');
    const size_t prefix = bin != std::string::npos && bin > 0 ? tool.rfind('/', bin - 1) : bin;
    if (prefix != std::string::npos) {
        const std::string beside = tool.substr(0, prefix + 1) + KORVA_EXAMPLE_INSTALLED_RELATIVE;
        if (access(beside.c_str(), R_OK) == 0) {
            return beside;
        }
    }
    return std::string(KORVA_INSTALL_PREFIX) + "/" + KORVA_EXAMPLE_INSTALLED_RELATIVE;
}

}  // namespace korva::tool
