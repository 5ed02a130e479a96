// spatializer-paramtool blobs: each parameter blob the store holds for a tuning file (or its
// built-in tables), decoded entry by entry.
#pragma once

#include <string>

#include "tools/load/LoadedFile.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

// The blobs a command shows: a profile's (by name or id), a tuning device's (by name, the empty
// name included, when hasDevice), or every blob when neither is given.
struct BlobSelection {
    std::string profile;
    std::string device;
    bool hasDevice = false;
    // The words of list entries instead of their bands and rows.
    bool raw = false;

    // Whether the selection has the blob, profileId being what profile names.
    bool selects(const LoadedBlob& blob, int profileId) const;
};

class BlobsCommand {
public:
    struct Options : BlobSelection {
        CommonOptions common;
        bool builtin = false;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
