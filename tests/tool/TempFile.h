// A file of given text in /tmp for the length of a test.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace korva::tool {

class TempFile {
public:
    explicit TempFile(const std::string& text) {
        char name[] = "/tmp/line-tracking.XXXXXX";
        const int fd = mkstemp(name);
        close(fd);
        mPath = name;
        std::ofstream(mPath) << text;
    }
    ~TempFile() { remove(mPath.c_str()); }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

}  // namespace korva::tool
