#include "tools/render/ToolOutput.h"

#include <cstdio>

namespace korva::tool {

void ToolOutput::error(const std::string& where, const std::string& message) {
    fprintf(stderr, "spatializer-paramtool: %s: %s\n", where.c_str(), message.c_str());
}

std::string ToolOutput::jsonText(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void ToolOutput::print(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace korva::tool
