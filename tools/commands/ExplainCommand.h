// spatializer-paramtool explain: traces the entries of one effect code back to the tuning file:
// their values, each tuning parameter they were translated from with its element, line and
// attribute texts, and every rule that supplied or changed the values on the way.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class ExplainCommand {
public:
    struct Options {
        CommonOptions common;
        std::string code;
        // A profile by name or id; empty for every profile.
        std::string profile;
        // A tuning device by name (the empty name included) when hasDevice.
        std::string device;
        bool hasDevice = false;
        bool raw = false;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
