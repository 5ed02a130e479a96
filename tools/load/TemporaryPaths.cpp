#include "tools/load/TemporaryPaths.h"

#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstring>

namespace korva::tool {

namespace {

// Fixed storage: the handler may only read it, with no allocation or lock.
constexpr int kMostPaths = 32;
char sPaths[kMostPaths][PATH_MAX];
volatile sig_atomic_t sCount = 0;

void removeAndEnd(int signal) {
    for (int i = sCount - 1; i >= 0; i--) {
        if (sPaths[i][0] != '\0' && unlink(sPaths[i]) != 0) {
            rmdir(sPaths[i]);
        }
    }
    ::signal(signal, SIG_DFL);
    raise(signal);
}

}  // namespace

void TemporaryPaths::add(const std::string& path) {
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

void TemporaryPaths::drop(const std::string& path) {
    for (int i = sCount - 1; i >= 0; i--) {
        if (path == sPaths[i]) {
            sPaths[i][0] = '\0';
            break;
        }
    }
    while (sCount > 0 && sPaths[sCount - 1][0] == '\0') {
        sCount = sCount - 1;
    }
}

}  // namespace korva::tool
