// The files and folders a run of the tool makes for itself and removes when done, listed so that
// an interrupt (SIGINT, SIGTERM) or a closed output (SIGPIPE) removes them too before the process
// ends with that signal.
#pragma once

#include <string>

namespace korva::tool {

class TemporaryPaths {
public:
    // Lists a path just made; an interrupted run removes the listed paths last first.
    static void add(const std::string& path);
    // Unlists a path its maker is about to remove itself.
    static void drop(const std::string& path);
};

}  // namespace korva::tool
