// A tuning file as the user names it, made readable once: a regular file is read where it is; a
// pipe, /dev/stdin or a process substitution is first copied to a private temporary file, which
// goes with this object; a directory is refused.
#pragma once

#include <memory>
#include <string>

namespace korva::tool {

class TuningInput {
public:
    // Null, after one line on stderr that says why, when the path cannot be read as a file.
    static std::unique_ptr<TuningInput> open(const std::string& path);
    ~TuningInput();

    TuningInput(const TuningInput&) = delete;
    TuningInput& operator=(const TuningInput&) = delete;

    // Where the library reads the file.
    const std::string& path() const { return mPath; }

private:
    TuningInput(std::string path, bool isCopy) : mPath(std::move(path)), mIsCopy(isCopy) {}

    std::string mPath;
    bool mIsCopy;
};

}  // namespace korva::tool
