// spatializer-paramtool blobs: each parameter blob the store holds for a tuning file (or its
// built-in tables), decoded entry by entry.
#pragma once

#include <string>

#include "tools/StoreSession.h"
#include "tools/ToolOutput.h"

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
    };

    static int run(const Options& options);

    // Every blob of a file as blobs --json prints it. Reports and returns kExitError when the
    // file cannot be loaded.
    static int collectJson(const std::string& path, Json* document);
    // The "blobs" list of that document, from a session that could read its file.
    static Json blobsJson(const StoreSession& session);
};

}  // namespace korva::tool
