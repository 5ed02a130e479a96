// A throw-away folder laid out like the device's /odm and /vendor, in which every tuning file path
// the store may choose is a link to one file. With KORVA_HOST_ROOT naming it, the store loads that
// file whatever the product name and amplifier properties select.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace korva::tool {

class HostRoot {
public:
    // Null, with the reason in *error, when the folder cannot be made.
    static std::unique_ptr<HostRoot> create(const std::string& tuningFile, std::string* error);
    // Removes everything it made.
    ~HostRoot();

    HostRoot(const HostRoot&) = delete;
    HostRoot& operator=(const HostRoot&) = delete;

    const std::string& path() const { return mPath; }

private:
    explicit HostRoot(std::string path) : mPath(std::move(path)) {}
    bool makeFolder(const std::string& relative, std::string* error);
    bool makeLink(const std::string& relative, const std::string& target, std::string* error);

    std::string mPath;
    // What was made below mPath, removed in reverse order.
    std::vector<std::string> mMade;
};

}  // namespace korva::tool
