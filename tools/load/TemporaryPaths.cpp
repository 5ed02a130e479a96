#include "tools/load/TemporaryPaths.h"

#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace korva::tool {

namespace {

// Fixed storage: the handler may only read it, with no allocation or lock.
constexpr int kMostPaths = 32;
char sPaths[kMostPaths][PATH_MAX];
volatile sig_atomic_t sCount = 0;

void removePath(const char* path) {
    if (unlink(path) != 0) {
        rmdir(path);
    }
}

void removeAndEnd(int signal) {
    for (int i = sCount - 1; i >= 0; i--) {
        if (sPaths[i][0] != '\0') {
            removePath(sPaths[i]);
        }
    }
    ::signal(signal, SIG_DFL);
    raise(signal);
}

}  // namespace

TemporaryPaths::~TemporaryPaths() {
    for (auto path = mPaths.rbegin(); path != mPaths.rend(); ++path) {
        // Unlisted before it goes, so that the handler never removes a later path of its name.
        for (int i = sCount - 1; i >= 0; i--) {
            if (*path == sPaths[i]) {
                sPaths[i][0] = '\0';
                break;
            }
        }
        while (sCount > 0 && sPaths[sCount - 1][0] == '\0') {
            sCount = sCount - 1;
        }
        removePath(path->c_str());
    }
}

TemporaryPaths::Hold::Hold() {
    sigset_t held;
    sigemptyset(&held);
    for (int signal : {SIGINT, SIGTERM, SIGPIPE}) {
        sigaddset(&held, signal);
    }
    sigprocmask(SIG_BLOCK, &held, &mBefore);
}

TemporaryPaths::Hold::~Hold() {
    sigprocmask(SIG_SETMASK, &mBefore, nullptr);
}

std::string TemporaryPaths::pattern(const char* name) {
    const char* folder = getenv("TMPDIR");
    return std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/" + name +
           ".XXXXXX";
}

int TemporaryPaths::makeFile(const char* name, std::string* path) {
    *path = pattern(name);
    const Hold hold;
    const int fd = mkstemp(path->data());
    if (fd >= 0) {
        add(*path);
    }
    return fd;
}

void TemporaryPaths::add(const std::string& path) {
    mPaths.push_back(path);
    if (sCount == 0) {
        for (int signal : {SIGINT, SIGTERM, SIGPIPE}) {
            ::signal(signal, removeAndEnd);
        }
    }
    if (sCount >= kMostPaths || path.size() >= PATH_MAX) {
        return;
    }
    memcpy(sPaths[sCount], path.c_str(), path.size() + 1);
    sCount = sCount + 1;
}

}  // namespace korva::tool
