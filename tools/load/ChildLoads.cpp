#include "tools/load/ChildLoads.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tools/load/StoreSession.h"

namespace korva::tool {

namespace {

// Moves size bytes through fd, however many calls it takes; a closed other side is no SIGPIPE.
bool whole(bool sending, int fd, char* bytes, size_t size) {
    for (ssize_t n = 0; size > 0; bytes += n, size -= static_cast<size_t>(n)) {
        n = sending ? send(fd, bytes, size, MSG_NOSIGNAL) : read(fd, bytes, size);
        if (n <= 0 && (n == 0 || errno != EINTR)) {
            return false;
        }
        n = std::max<ssize_t>(n, 0);
    }
    return true;
}

}  // namespace

bool ChildLoads::send(int fd, const std::string& message) {
    uint64_t size = message.size();
    return whole(true, fd, reinterpret_cast<char*>(&size), sizeof(size)) &&
           whole(true, fd, const_cast<char*>(message.data()), message.size());
}

bool ChildLoads::send(int fd, const Json& document) {
    return send(fd, document.dump(-1, ' ', false, Json::error_handler_t::replace));
}

bool ChildLoads::receive(int fd, std::string* message) {
    uint64_t size = 0;
    const bool sized = whole(false, fd, reinterpret_cast<char*>(&size), sizeof(size));
    message->resize(sized ? size : 0);
    return sized && whole(false, fd, message->data(), size);
}

std::unique_ptr<ChildLoads> ChildLoads::start(const std::vector<std::string>& names,
                                              const Work& work) {
    std::unique_ptr<ChildLoads> loads(new ChildLoads());
    fflush(nullptr);
    for (size_t i = 0; i < names.size(); i++) {
        int ends[2] = {-1, -1};
        const pid_t pid = socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0 ? fork() : -1;
        if (pid == 0) {
            // Only the parent keeps the earlier children's ends: closing them ends those children.
            for (const Child& earlier : loads->mChildren) {
                close(earlier.fd);
            }
            close(ends[0]);
            const int status = work(i, ends[1]);
            fflush(stderr);
            _exit(status);
        }
        close(ends[1]);
        loads->mChildren.push_back({names[i], pid, ends[0]});
        if (pid < 0) {
            ToolOutput::error(names[i], std::string("cannot start a process: ") + strerror(errno));
            return nullptr;
        }
    }
    return loads;
}

std::vector<Json> ChildLoads::ask(const std::vector<std::string>& requests) {
    const size_t count = mChildren.size();
    std::vector<Json> answers(requests.size());
    std::vector<bool> sent(requests.size());
    for (size_t i = 0; i < requests.size(); i++) {
        // Each child's request of a round is sent before the round's answers are read.
        for (size_t j = i; i % count == 0 && j < std::min(requests.size(), i + count); j++) {
            sent[j] = send(mChildren[j % count].fd, requests[j]);
        }
        std::string answer;
        const bool got = sent[i] && receive(mChildren[i % count].fd, &answer);
        answers[i] = Json::parse(got ? answer : "", nullptr, false);
        answers[i] = answers[i].is_discarded() ? Json() : answers[i];
    }
    return answers;
}

int ChildLoads::finish() {
    for (const Child& child : mChildren) {
        close(child.fd);
    }
    int result = kExitOk;
    for (const Child& child : mChildren) {
        int status = 0;
        while (child.pid > 0 && waitpid(child.pid, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status)) {
            ToolOutput::error(child.name, "loading the file ended abnormally");
        }
        result = WIFEXITED(status) && WEXITSTATUS(status) == kExitOk ? result : kExitError;
    }
    mChildren.clear();
    return result;
}

Json ChildLoads::one(const std::string& name, const std::function<int(Json* document)>& work) {
    std::unique_ptr<ChildLoads> load = start({name}, [&work](size_t, int parent) {
        std::string request;
        Json made;
        return receive(parent, &request) && work(&made) == kExitOk && send(parent, made)
                   ? kExitOk
                   : kExitError;
    });
    const Json document = load != nullptr ? load->ask({""}).front() : Json();
    return load != nullptr && load->finish() == kExitOk ? document : Json();
}

int ChildLoads::loadApart(const std::vector<std::string>& paths, std::vector<LoadedFile>* files) {
    std::unique_ptr<ChildLoads> loads = start(paths, [&paths](size_t i, int parent) {
        std::unique_ptr<StoreSession> session = StoreSession::open(paths[i]);
        if (session == nullptr || !session->readable()) {
            return kExitError;
        }
        // A key's list of words: the store may keep more than one blob of a key.
        Json words = Json::object();
        LoadedFile::of(*session, [&words](const std::string& key, const std::vector<int>& blob) {
            words[key].push_back(blob);
            return true;
        });
        std::string request;
        if (!receive(parent, &request) || !send(parent, words) || !receive(parent, &request)) {
            return kExitError;
        }
        const Json alike = Json::parse(request, nullptr, false);
        LoadedFile file = LoadedFile::of(*session, [&alike](const std::string& key, const auto&) {
            return std::find(alike.begin(), alike.end(), key) != alike.end();
        });
        file.path = paths[i];
        return send(parent, file.toJson(true)) ? kExitOk : kExitError;
    });
    if (loads == nullptr) {
        return kExitError;
    }
    // The keys whose words every side has alike. A key that does not come back whole (not
    // UTF-8) is sent in full.
    const std::vector<Json> sides = loads->ask(std::vector<std::string>(paths.size()));
    Json alike = Json::array();
    for (const auto& [key, blobs] : sides.front().items()) {
        if (std::all_of(sides.begin(), sides.end(), [&key = key, &blobs = blobs](const Json& s) {
                return s.contains(key) && s[key] == blobs;
            })) {
            alike.push_back(key);
        }
    }
    const std::string request = alike.dump(-1, ' ', false, Json::error_handler_t::replace);
    bool loaded = std::count(sides.begin(), sides.end(), Json()) == 0;
    for (const Json& model : loaded ? loads->ask(std::vector<std::string>(paths.size(), request))
                                    : std::vector<Json>()) {
        loaded = loaded && !model.is_null();
        files->push_back(LoadedFile::fromJson(model));
    }
    return loads->finish() == kExitOk && loaded ? kExitOk : kExitError;
}

}  // namespace korva::tool
