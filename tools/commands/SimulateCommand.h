// spatializer-paramtool simulate: replays an effect's calls into the parameter cache against the
// recording effect, after setting the system properties a device would have, and prints every
// setParam, getParam and commit the library makes, step by step, each with the blob entry it
// carries, where that entry came from and what the cache put in its place, as the cache reports.
#pragma once

#include <string>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace CLI {
class App;
}

namespace korva::tool {

class SimulateCommand {
public:
    struct Options {
        CommonOptions common;
        // KEY=VALUE, KEY being a property name or one of the short names.
        std::vector<std::string> properties;
        // The words after the options: the file when the first is not a step, then the steps.
        std::vector<std::string> words;
        // The words of list values instead of their bands and rows.
        bool raw = false;
        // The effect starts from the built-in common table instead of empty.
        bool effectFromBuiltin = false;
    };

    // The options and words of simulate, but for the common ones.
    static void addOptions(CLI::App* command, Options* options);
    static int run(const Options& options);
};

}  // namespace korva::tool
