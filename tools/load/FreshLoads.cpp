#include "tools/load/FreshLoads.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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
    Json document;
    const bool loaded = written && ChildLoad::run(path, work, &document) == kExitOk;
    unlink(path.c_str());
    return loaded ? document.dump(-1, ' ', false, Json::error_handler_t::replace) : "";
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

std::unique_ptr<FreshLoads> FreshLoads::start(ChildLoad::Work work, size_t servers) {
    std::unique_ptr<FreshLoads> loads(new FreshLoads({}));
    fflush(stdout);
    fflush(stderr);
    for (size_t i = 0; i < servers; i++) {
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
        const pid_t server = fork();
        if (server == 0) {
            // The earlier servers' pipes stay open only in this process's parent, so that
            // closing them there ends those servers.
            for (const Server& earlier : loads->mServers) {
                close(earlier.requests);
                close(earlier.answers);
            }
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
        loads->mServers.push_back({server, requests[1], answers[0]});
    }
    return loads;
}

FreshLoads::~FreshLoads() {
    for (const Server& server : mServers) {
        close(server.requests);
        close(server.answers);
    }
    for (const Server& server : mServers) {
        int status = 0;
        while (waitpid(server.pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
}

bool FreshLoads::load(const std::string& text, Json* document) {
    *document = loadAll({text}).front();
    return !document->is_null();
}

std::vector<Json> FreshLoads::loadAll(const std::vector<std::string>& texts) {
    std::vector<Json> documents(texts.size());
    for (size_t first = 0; first < texts.size(); first += mServers.size()) {
        const size_t end = std::min(texts.size(), first + mServers.size());
        std::vector<bool> sent(end - first);
        for (size_t i = first; i < end; i++) {
            sent[i - first] = send(mServers[i - first].requests, texts[i]);
        }
        for (size_t i = first; i < end; i++) {
            std::string answer;
            if (sent[i - first] && receive(mServers[i - first].answers, &answer) &&
                !answer.empty()) {
                documents[i] = Json::parse(answer, nullptr, false);
                documents[i] = documents[i].is_discarded() ? Json() : documents[i];
            }
        }
    }
    return documents;
}

}  // namespace korva::tool
