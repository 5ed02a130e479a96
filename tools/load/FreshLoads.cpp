#include "tools/load/FreshLoads.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace korva::tool {

namespace {

// Moves size bytes with io (a read or a write of fd), however many calls it takes.
template <typename Io>
bool whole(Io io, char* bytes, size_t size) {
    while (size > 0) {
        const ssize_t n = io(bytes, size);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        bytes += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

bool writeAll(int fd, const void* data, size_t size) {
    return whole([fd](char* bytes, size_t n) { return write(fd, bytes, n); },
                 static_cast<char*>(const_cast<void*>(data)), size);
}

bool readAll(int fd, void* data, size_t size) {
    return whole([fd](char* bytes, size_t n) { return read(fd, bytes, n); },
                 static_cast<char*>(data), size);
}

// A length, then that many bytes.
bool send(int fd, const std::string& text) {
    const uint64_t size = text.size();
    return writeAll(fd, &size, sizeof(size)) && writeAll(fd, text.data(), text.size());
}

bool receive(int fd, std::string* text) {
    uint64_t size = 0;
    if (!readAll(fd, &size, sizeof(size))) {
        return false;
    }
    text->resize(size);
    return readAll(fd, text->data(), size);
}

// The document work makes of the file, as text, from a process of its own; "" when it fails.
std::string loadInChild(const std::string& path, ChildLoad::Work work) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        return "";
    }
    const pid_t child = fork();
    if (child == 0) {
        close(pipeFds[0]);
        Json document;
        bool done = work(path, &document) == kExitOk;
        if (done) {
            const std::string text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
            done = writeAll(pipeFds[1], text.data(), text.size());
        }
        _exit(done ? kExitOk : kExitError);
    }
    close(pipeFds[1]);
    std::string text;
    char buffer[65536];
    ssize_t n;
    while (child > 0 &&
           ((n = read(pipeFds[0], buffer, sizeof(buffer))) > 0 || (n < 0 && errno == EINTR))) {
        text.append(buffer, n > 0 ? static_cast<size_t>(n) : 0);
    }
    close(pipeFds[0]);
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == kExitOk ? text : "";
}

// One load: the text in a private file for as long as the load takes.
std::string loadOne(const std::string& text, ChildLoad::Work work) {
    const char* folder = getenv("TMPDIR");
    std::string path = std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") +
                       "/paramtool-undone.XXXXXX";
    const int fd = mkstemp(path.data());
    if (fd < 0) {
        return "";
    }
    const bool written = writeAll(fd, text.data(), text.size());
    close(fd);
    const std::string answer = written ? loadInChild(path, work) : "";
    unlink(path.c_str());
    return answer;
}

[[noreturn]] void serve(int requests, int answers, ChildLoad::Work work) {
    // An interrupt of the tool stops this process only between loads, once its private file is
    // removed: the closed pipe ends the loop.
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, SIG_IGN);
    signal(SIGPIPE, SIG_IGN);
    // What goes wrong is said by the answer; the loads' own messages name private files.
    const int quiet = open("/dev/null", O_WRONLY);
    if (quiet >= 0) {
        dup2(quiet, STDERR_FILENO);
        close(quiet);
    }
    std::string text;
    while (receive(requests, &text)) {
        if (!send(answers, loadOne(text, work))) {
            break;
        }
    }
    _exit(0);
}

}  // namespace

std::unique_ptr<FreshLoads> FreshLoads::start(ChildLoad::Work work) {
    int requests[2];
    int answers[2];
    if (pipe(requests) != 0) {
        ToolOutput::error("", std::string("cannot make a pipe: ") + strerror(errno));
        return nullptr;
    }
    if (pipe(answers) != 0) {
        ToolOutput::error("", std::string("cannot make a pipe: ") + strerror(errno));
        close(requests[0]);
        close(requests[1]);
        return nullptr;
    }
    fflush(stdout);
    fflush(stderr);
    const pid_t server = fork();
    if (server == 0) {
        close(requests[1]);
        close(answers[0]);
        serve(requests[0], answers[1], work);
    }
    close(requests[0]);
    close(answers[1]);
    if (server < 0) {
        ToolOutput::error("", std::string("cannot start a process: ") + strerror(errno));
        close(requests[1]);
        close(answers[0]);
        return nullptr;
    }
    return std::unique_ptr<FreshLoads>(new FreshLoads(server, requests[1], answers[0]));
}

FreshLoads::~FreshLoads() {
    close(mRequests);
    close(mAnswers);
    int status = 0;
    while (waitpid(mServer, &status, 0) < 0 && errno == EINTR) {
    }
}

bool FreshLoads::load(const std::string& text, Json* document) {
    std::string answer;
    if (!send(mRequests, text) || !receive(mAnswers, &answer) || answer.empty()) {
        return false;
    }
    *document = Json::parse(answer, nullptr, false);
    return !document->is_discarded();
}

}  // namespace korva::tool
