// A fresh, empty stand-in for the device's root folder, pointed to by KORVA_HOST_ROOT, so that a
// store test reads no tuning file of the machine it runs on and can lay out its own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace korva::test {

class ScopedHostRoot {
public:
    ScopedHostRoot() {
        char pattern[] = "/tmp/korva-store-root-XXXXXX";
        const char* made = mkdtemp(pattern);
        mPath = made != nullptr ? made : "";
        setenv("KORVA_HOST_ROOT", mPath.c_str(), 1);
    }

    ~ScopedHostRoot() {
        unsetenv("KORVA_HOST_ROOT");
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }

    ScopedHostRoot(const ScopedHostRoot&) = delete;
    ScopedHostRoot& operator=(const ScopedHostRoot&) = delete;

    const std::string& path() const { return mPath; }

    // Creates an empty file at a device path such as "/odm/etc/korva/x.xml" below the root.
    void addFile(const std::string& devicePath) const {
        std::filesystem::path file = mPath + devicePath;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file).put('\n');
    }

    void removeFile(const std::string& devicePath) const {
        std::filesystem::remove(mPath + devicePath);
    }

private:
    std::string mPath;
};

}  // namespace korva::test
