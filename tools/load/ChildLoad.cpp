#include "tools/load/ChildLoad.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <future>
#include <utility>

namespace korva::tool {

namespace {

struct Child {
    pid_t pid = -1;
    int fd = -1;  // the read end of the pipe the child writes its document to
};

// A child doing work on the file; pid -1 after one line on stderr when none could start.
Child start(const std::string& path, ChildLoad::Work work) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        ToolOutput::error(path, std::string("cannot make a pipe: ") + strerror(errno));
        return {};
    }
    fflush(stdout);
    fflush(stderr);
    const pid_t child = fork();
    if (child < 0) {
        ToolOutput::error(path, std::string("cannot start a process: ") + strerror(errno));
        close(pipeFds[0]);
        close(pipeFds[1]);
        return {};
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
    return {child, pipeFds[0]};
}

// The document of a started child, read to its end, once the child has ended.
int finish(const std::string& path, Child child, Json* document) {
    std::string text;
    char buffer[65536];
    ssize_t n;
    while ((n = read(child.fd, buffer, sizeof(buffer))) > 0 || (n < 0 && errno == EINTR)) {
        text.append(buffer, n > 0 ? static_cast<size_t>(n) : 0);
    }
    close(child.fd);
    int status = 0;
    while (waitpid(child.pid, &status, 0) < 0 && errno == EINTR) {
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

}  // namespace

int ChildLoad::run(const std::string& path, Work work, Json* document) {
    const Child child = start(path, work);
    return child.pid < 0 ? kExitError : finish(path, child, document);
}

int ChildLoad::loadedJson(const std::string& path, Json* document) {
    LoadedFile file;
    if (!LoadedFile::open(path, &file)) {
        return kExitError;
    }
    *document = file.toJson(true);
    return kExitOk;
}

int ChildLoad::load(const std::vector<std::string>& paths, std::vector<LoadedFile>* files) {
    // The children load at once, all started before any thread is, and each one's document is
    // read back on a thread of its own.
    std::vector<Child> children;
    for (const std::string& path : paths) {
        children.push_back(start(path, loadedJson));
    }
    std::vector<std::future<std::pair<int, LoadedFile>>> loads;
    for (size_t i = 0; i < paths.size(); i++) {
        loads.push_back(std::async(std::launch::async, [&path = paths[i], child = children[i]] {
            Json document;
            if (child.pid < 0 || finish(path, child, &document) != kExitOk) {
                return std::make_pair(kExitError, LoadedFile());
            }
            return std::make_pair(kExitOk, LoadedFile::fromJson(document));
        }));
    }
    int status = kExitOk;
    for (auto& load : loads) {
        auto [loaded, file] = load.get();
        status = loaded == kExitOk ? status : kExitError;
        files->push_back(std::move(file));
    }
    return status;
}

}  // namespace korva::tool
