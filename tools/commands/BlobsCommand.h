// spatializer-paramtool blobs: each parameter blob the store holds for a tuning file (or its
// built-in tables), decoded entry by entry.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class BlobsCommand {
public:
    struct Options {
        CommonOptions common;
        // A profile by name or id; empty for every profile.
        std::string profile;
        // A tuning device by name (the empty name included) when hasDevice.
        std::string device;
        bool hasDevice = false;
        bool builtin = false;
        // The words of list entries instead of their bands and rows.
        bool raw = false;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
