// spatializer-paramtool diff: what two tuning files change in the blobs that reach the effect,
// per profile and tuning device: entries added, removed and changed, with old and new values.
// Exit status 0 when the blobs are the same, 1 when they differ, 2 when a file cannot be loaded.
//
// A process holds one parameter store, so each file is loaded in a child process of its own
// (fork, no exec) that hands back what blobs --json would print; the parent compares the two.
#pragma once

#include <string>

#include "tools/ToolOutput.h"

namespace korva::tool {

class DiffCommand {
public:
    struct Options {
        CommonOptions common;
        std::string fileA;
        std::string fileB;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
