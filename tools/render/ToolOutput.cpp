#include "tools/render/ToolOutput.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace korva::tool {

void ToolOutput::error(const std::string& path, const std::string& message) {
    fprintf(stderr, "spatializer-paramtool: %s: %s\n", path.c_str(), message.c_str());
}

void ToolOutput::usageError(const std::string& command, const std::string& message) {
    fprintf(stderr, "spatializer-paramtool: %s: %s\n", command.c_str(), message.c_str());
}

std::string ToolOutput::jsonText(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void ToolOutput::print(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace korva::tool

namespace korva::tool {

bool ToolOutput::isReadable(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0) {
        error(path, std::string("cannot open: ") + strerror(errno));
        return false;
    }
    return true;
}

}  // namespace korva::tool
