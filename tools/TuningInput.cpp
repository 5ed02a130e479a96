#include "tools/TuningInput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tools/render/ToolOutput.h"
#include "tools/load/TemporaryPaths.h"

namespace korva::tool {

namespace {

bool copyAll(int from, int to) {
    char buffer[65536];
    for (;;) {
        const ssize_t n = read(from, buffer, sizeof(buffer));
        if (n == 0) {
            return true;
        }
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        for (ssize_t done = 0; done < n;) {
            const ssize_t written = write(to, buffer + done, static_cast<size_t>(n - done));
            if (written < 0 && errno != EINTR) {
                return false;
            }
            done += written > 0 ? written : 0;
        }
    }
}

}  // namespace

std::unique_ptr<TuningInput> TuningInput::open(const std::string& path) {
    // "-" is standard input, as for other command-line tools.
    const std::string source = path == "-" ? "/dev/stdin" : path;
    struct stat status;
    if (stat(source.c_str(), &status) != 0) {
        ToolOutput::error(path, std::string("cannot open: ") + strerror(errno));
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        ToolOutput::error(path, "is a directory, not a tuning file");
        return nullptr;
    }
    const int from = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (from < 0) {
        ToolOutput::error(path, std::string("cannot open: ") + strerror(errno));
        return nullptr;
    }
    if (S_ISREG(status.st_mode)) {
        close(from);
        return std::unique_ptr<TuningInput>(new TuningInput(path, false));
    }
    // Anything else may be read only once: keep what it gives for every reading after.
    const char* tmp = getenv("TMPDIR");
    std::string pattern =
        std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/paramtool-input.XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int to = mkstemp(name.data());
    if (to < 0) {
        ToolOutput::error(path, std::string("cannot make a temporary copy: ") + strerror(errno));
        close(from);
        return nullptr;
    }
    std::unique_ptr<TuningInput> input(new TuningInput(name.data(), true));
    TemporaryPaths::add(input->path());
    const bool copied = copyAll(from, to);
    const int readError = errno;
    close(from);
    if (close(to) != 0 || !copied) {
        ToolOutput::error(path, std::string("cannot read: ") + strerror(readError));
        return nullptr;
    }
    return input;
}

TuningInput::~TuningInput() {
    if (mIsCopy) {
        TemporaryPaths::drop(mPath);
        unlink(mPath.c_str());
    }
}

}  // namespace korva::tool
