#include "tools/HostRoot.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "store/SpatializerParamArrayConstants.h"
#include "tools/load/TemporaryPaths.h"

namespace korva::tool {

namespace {

// The folders that hold the store's tuning files, each after its parent.
std::vector<std::string> tuningFolders() {
    std::vector<std::string> folders;
    for (const char* file : kTuningFiles) {
        const std::string path = file;
        for (size_t slash = path.find('/', 1); slash != std::string::npos;
             slash = path.find('/', slash + 1)) {
            const std::string folder = path.substr(0, slash);
            if (std::find(folders.begin(), folders.end(), folder) == folders.end()) {
                folders.push_back(folder);
            }
        }
    }
    return folders;
}

}  // namespace

std::unique_ptr<HostRoot> HostRoot::create(const std::string& tuningFile, std::string* error) {
    char target[PATH_MAX];
    if (realpath(tuningFile.c_str(), target) == nullptr) {
        *error = strerror(errno);
        return nullptr;
    }
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && tmp[0] != '\0' ? tmp : "/tmp") +
                          "/spatializer-paramtool.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        *error = std::string("cannot make a temporary folder: ") + strerror(errno);
        return nullptr;
    }
    std::unique_ptr<HostRoot> root(new HostRoot(pattern));
    TemporaryPaths::add(pattern);
    for (const std::string& folder : tuningFolders()) {
        if (!root->makeFolder(folder, error)) {
            return nullptr;
        }
    }
    for (const char* path : kTuningFiles) {
        if (!root->makeLink(path, target, error)) {
            return nullptr;
        }
    }
    return root;
}

HostRoot::~HostRoot() {
    for (auto it = mMade.rbegin(); it != mMade.rend(); ++it) {
        TemporaryPaths::drop(mPath + *it);
        remove((mPath + *it).c_str());
    }
    TemporaryPaths::drop(mPath);
    rmdir(mPath.c_str());
}

bool HostRoot::makeFolder(const std::string& relative, std::string* error) {
    if (mkdir((mPath + relative).c_str(), 0700) != 0) {
        *error = "cannot make " + mPath + relative + ": " + strerror(errno);
        return false;
    }
    mMade.push_back(relative);
    TemporaryPaths::add(mPath + relative);
    return true;
}

bool HostRoot::makeLink(const std::string& relative, const std::string& target, std::string* error) {
    if (symlink(target.c_str(), (mPath + relative).c_str()) != 0) {
        *error = "cannot link " + mPath + relative + ": " + strerror(errno);
        return false;
    }
    mMade.push_back(relative);
    TemporaryPaths::add(mPath + relative);
    return true;
}

}  // namespace korva::tool
