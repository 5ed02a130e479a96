// spatializer-paramtool diff: what two tuning files change in the blobs that reach the effect,
// per profile and tuning device: entries added, removed and changed, with old and new values.
// Exit status 0 when the blobs are the same, 1 when they differ, 2 when a file cannot be loaded.
//
// A process holds one parameter store, so each file is loaded in a child process of its own
// (fork, no exec) that hands back what blobs --json would print; the parent compares the two.
#pragma once

#include <string>
#include <vector>

#include "tools/render/TextTable.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class DiffCommand {
public:
    struct Options {
        CommonOptions common;
        std::string fileA;
        std::string fileB;
    };

    static int run(const Options& options);

    // The differences between the blobs of two blobs documents (BlobsCommand::collectJson), as
    // diff --json lists them.
    static Json compare(const Json& a, const Json& b);
    // What the store serves besides its blobs (BlobsCommand's "store"), where a and b differ.
    static Json compareStore(const Json& a, const Json& b);
    // The differences and store changes as diff prints them, a and b named as given, its tables
    // fitted to width.
    static std::string text(const Json& differences, const Json& store, const std::string& a,
                            const std::string& b, size_t width = TextTable::kDefaultWidth);
    // A blob's identity across two files ("profile:1", "tuning_device:usb_dac"), and its title.
    static std::string blobKey(const Json& blob);
    static std::string blobTitle(const Json& blob);
    // Each entry's identity within its blob: device, code, and which occurrence of the pair.
    static std::vector<std::string> entryKeys(const Json& entries);
};

}  // namespace korva::tool
