// spatializer-paramtool diff: what two tuning files change in the blobs that reach the effect,
// per profile and tuning device (entries added, removed and changed, with old and new values),
// and in what the store serves besides them. Exit status 0 when nothing differs, 1 when
// something does, 2 when a file cannot be loaded.
//
// A process holds one parameter store, so each file is loaded in a child process of its own.
#pragma once

#include <string>

#include "tools/load/LoadedFile.h"
#include "tools/render/Printer.h"
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

    // The differences between the blobs of two loaded files, as diff --json lists them.
    static Json compare(const LoadedFile& a, const LoadedFile& b);
    // What the store serves besides its blobs, where a and b differ.
    static Json compareStore(const StoreState& a, const StoreState& b);
    // The differences, then the store changes, as compare and compareStore list them, a and b
    // named as given: JSON gets them back as they are.
    static void print(Printer& out, const Json& differences, const Json& store,
                      const std::string& a, const std::string& b);
    // The same as text.
    static std::string text(const Json& differences, const Json& store, const std::string& a,
                            const std::string& b);
};

}  // namespace korva::tool
