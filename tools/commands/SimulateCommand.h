// spatializer-paramtool simulate: replays an effect's calls into the parameter cache against the
// recording effect, after setting the system properties a device would have, and prints every
// setParam, getParam and commit the library makes, step by step, each with the blob entry it
// carries, where that entry came from and what the cache put in its place, as the cache reports.
#pragma once

#include <string>
#include <utility>
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
        // KEY=VALUE, KEY being a property name or one of the short names (see kPropertyNames).
        std::vector<std::string> properties;
        std::vector<std::string> steps;
        // The words of list values instead of their bands and rows.
        bool raw = false;
        // The effect starts from the built-in common table instead of empty.
        bool effectFromBuiltin = false;
    };

    // The options of simulate that main does not register itself.
    static void addOptions(CLI::App* command, Options* options);
    static int run(const Options& options);

    // Splits the words after the options into the file and the steps: the first word is the
    // file when it is not a step and names something on disk or looks like a path. False, after
    // one line on stderr naming the word, for a word that is neither.
    static bool takeWords(const std::vector<std::string>& words, Options* options);
    // The steps' forms, for help and errors.
    static const char* const kStepForms;

    // Short names of the properties a device's start-up depends on.
    static const std::vector<std::pair<std::string, std::string>> kPropertyNames;
};

}  // namespace korva::tool
