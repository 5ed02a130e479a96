// The files and folders a run of the tool makes for itself, removed last first when their maker is
// done, and listed so that an interrupt (SIGINT, SIGTERM) or a closed output (SIGPIPE) removes
// them too before the process ends with that signal.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

class TemporaryPaths {
public:
    TemporaryPaths() = default;
    TemporaryPaths(const TemporaryPaths&) = delete;
    TemporaryPaths& operator=(const TemporaryPaths&) = delete;
    ~TemporaryPaths();

    // Lists a path just made.
    void add(const std::string& path);

private:
    std::vector<std::string> mPaths;
};

}  // namespace korva::tool
