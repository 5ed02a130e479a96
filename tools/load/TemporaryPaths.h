// The files and folders a run of the tool makes for itself, removed last first when their maker is
// done, and listed so that an interrupt (SIGINT, SIGTERM) or a closed output (SIGPIPE) removes
// them too before the process ends with that signal.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace korva::tool {

class TemporaryPaths {
public:
    TemporaryPaths() = default;
    TemporaryPaths(const TemporaryPaths&) = delete;
    TemporaryPaths& operator=(const TemporaryPaths&) = delete;
    ~TemporaryPaths();

    // The mkstemp/mkdtemp pattern of a private file or folder called name in $TMPDIR, else /tmp.
    static std::string pattern(const char* name);

    // A private file called name in $TMPDIR made and listed, its path in path: its open
    // descriptor, or -1 with errno.
    int makeFile(const char* name, std::string* path);

    // Lists a path just made. Make the path and list it under one Hold, or an interrupt between
    // the two leaves it behind.
    void add(const std::string& path);

    // Holds back SIGINT, SIGTERM and SIGPIPE while it lives; one that came meanwhile is taken when
    // it ends.
    class Hold {
    public:
        Hold();
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        sigset_t mBefore;
    };

private:
    std::vector<std::string> mPaths;
};

}  // namespace korva::tool
