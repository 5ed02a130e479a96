#include "tools/load/ChildLoad.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace korva::tool {

int ChildLoad::run(const std::string& path, Work work, Json* document) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        ToolOutput::error(path, std::string("cannot make a pipe: ") + strerror(errno));
        return kExitError;
    }
    fflush(stdout);
    fflush(stderr);
    const pid_t child = fork();
    if (child < 0) {
        ToolOutput::error(path, std::string("cannot start a process: ") + strerror(errno));
        close(pipeFds[0]);
        close(pipeFds[1]);
        return kExitError;
    }
    if (child == 0) {
        close(pipeFds[0]);
        Json result;
        int status = work(path, &result);
        if (status == kExitOk) {
            const std::string text = result.dump(-1, ' ', false, Json::error_handler_t::replace);
            size_t written = 0;
            while (written < text.size()) {
                const ssize_t n = write(pipeFds[1], text.data() + written, text.size() - written);
                if (n <= 0) {
                    status = kExitError;
                    break;
                }
                written += static_cast<size_t>(n);
            }
        }
        close(pipeFds[1]);
        fflush(stderr);
        _exit(status);
    }
    close(pipeFds[1]);
    std::string text;
    char buffer[65536];
    ssize_t n;
    while ((n = read(pipeFds[0], buffer, sizeof(buffer))) > 0 || (n < 0 && errno == EINTR)) {
        if (n > 0) {
            text.append(buffer, static_cast<size_t>(n));
        }
    }
    close(pipeFds[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != kExitOk) {
        // The child has reported why, unless it died.
        if (!WIFEXITED(status)) {
            ToolOutput::error(path, "loading the file ended abnormally");
        }
        return kExitError;
    }
    *document = Json::parse(text, nullptr, false);
    if (document->is_discarded()) {
        ToolOutput::error(path, "could not read the result back from the loading process");
        return kExitError;
    }
    return kExitOk;
}

}  // namespace korva::tool
