#include "tools/load/ChildLoads.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>

#include "tools/load/StoreSession.h"

namespace korva::tool {

namespace {

// Moves size bytes with io (a read or a write), however many calls it takes.
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

std::string failed(const char* what) {
    return std::string(what) + ": " + strerror(errno);
}

}  // namespace

bool ChildLoads::Channel::send(const std::string& message) const {
    const auto put = [this](char* bytes, size_t n) { return write(out, bytes, n); };
    uint64_t size = message.size();
    return whole(put, reinterpret_cast<char*>(&size), sizeof(size)) &&
           whole(put, const_cast<char*>(message.data()), message.size());
}

bool ChildLoads::Channel::send(const Json& document) const {
    return send(document.dump(-1, ' ', false, Json::error_handler_t::replace));
}

bool ChildLoads::Channel::receive(std::string* message) const {
    const auto get = [this](char* bytes, size_t n) { return read(in, bytes, n); };
    uint64_t size = 0;
    if (!whole(get, reinterpret_cast<char*>(&size), sizeof(size))) {
        return false;
    }
    message->resize(size);
    return whole(get, message->data(), size);
}

std::unique_ptr<ChildLoads> ChildLoads::start(const std::vector<std::string>& names,
                                              const Work& work) {
    std::unique_ptr<ChildLoads> loads(new ChildLoads());
    fflush(stdout);
    fflush(stderr);
    for (size_t i = 0; i < names.size(); i++) {
        int requests[2];
        int answers[2];
        if (pipe(requests) != 0 || pipe(answers) != 0) {
            ToolOutput::error(names[i], failed("cannot make a pipe"));
            return nullptr;
        }
        const pid_t pid = fork();
        if (pid == 0) {
            // The earlier children's pipes stay open only in the parent, so that closing them
            // there ends those children.
            for (const Child& earlier : loads->mChildren) {
                close(earlier.channel.in);
                close(earlier.channel.out);
            }
            close(requests[1]);
            close(answers[0]);
            const int status = work(i, Channel{requests[0], answers[1]});
            fflush(stderr);
            _exit(status);
        }
        close(requests[0]);
        close(answers[1]);
        loads->mChildren.push_back({names[i], pid, {answers[0], requests[1]}});
        if (pid < 0) {
            ToolOutput::error(names[i], failed("cannot start a process"));
            return nullptr;
        }
    }
    return loads;
}

ChildLoads::~ChildLoads() {
    finish();
}

std::vector<Json> ChildLoads::ask(const std::vector<std::string>& requests) {
    std::vector<Json> answers(requests.size());
    const size_t count = mChildren.size();
    for (size_t first = 0; first < requests.size(); first += count) {
        const size_t end = std::min(requests.size(), first + count);
        std::vector<bool> sent;
        for (size_t i = first; i < end; i++) {
            sent.push_back(mChildren[i - first].channel.send(requests[i]));
        }
        for (size_t i = first; i < end; i++) {
            std::string answer;
            if (sent[i - first] && mChildren[i - first].channel.receive(&answer)) {
                answers[i] = parse(answer);
            }
        }
    }
    return answers;
}

int ChildLoads::finish() {
    for (Child& child : mChildren) {
        close(child.channel.in);
        close(child.channel.out);
        child.channel = {};
    }
    int result = kExitOk;
    for (Child& child : mChildren) {
        int status = 0;
        while (child.pid > 0 && waitpid(child.pid, &status, 0) < 0 && errno == EINTR) {
        }
        if (child.pid > 0 && !WIFEXITED(status)) {
            ToolOutput::error(child.name, "loading the file ended abnormally");
        }
        result = child.pid > 0 && WIFEXITED(status) && WEXITSTATUS(status) == kExitOk ? result
                                                                                      : kExitError;
        child.pid = -1;
    }
    return result;
}

Json ChildLoads::parse(const std::string& message) {
    const Json document = Json::parse(message, nullptr, false);
    return document.is_discarded() ? Json() : document;
}

Json ChildLoads::one(const std::string& name, const std::function<int(Json* document)>& work) {
    std::unique_ptr<ChildLoads> load = start({name}, [&work](size_t, const Channel& parent) {
        Json document;
        return work(&document) == kExitOk && parent.send(document) ? kExitOk : kExitError;
    });
    std::string answer;
    const Json document = load != nullptr && (*load)[0].receive(&answer) ? parse(answer) : Json();
    if (load == nullptr || load->finish() != kExitOk) {
        return Json();
    }
    if (document.is_null()) {
        ToolOutput::error(name, "could not read the result back from the loading process");
    }
    return document;
}

int ChildLoads::loadApart(const std::vector<std::string>& paths, std::vector<LoadedFile>* files) {
    const auto load = [&paths](size_t i, const Channel& parent) {
        std::unique_ptr<StoreSession> session = StoreSession::open(paths[i]);
        if (session == nullptr || !session->readable()) {
            return kExitError;
        }
        // A key's list of words: the store may keep more than one blob of a key.
        std::map<std::string, std::vector<std::vector<int>>> words;
        LoadedFile::of(*session, [&words](const std::string& key, const std::vector<int>& blob) {
            words[key].push_back(blob);
            return true;
        });
        std::string request;
        if (!parent.send(Json(words)) || !parent.receive(&request)) {
            return kExitError;
        }
        const Json keys = parse(request);
        if (!keys.is_array()) {
            return kExitError;
        }
        const std::set<std::string> alike = keys.get<std::set<std::string>>();
        LoadedFile file = LoadedFile::of(
            *session,
            [&alike](const std::string& key, const std::vector<int>&) { return alike.count(key); });
        file.path = paths[i];
        return parent.send(file.toJson(true)) ? kExitOk : kExitError;
    };
    std::unique_ptr<ChildLoads> loads = start(paths, load);
    if (loads == nullptr) {
        return kExitError;
    }
    // Every child's words are read, so that none is cut off while it sends them.
    std::vector<std::map<std::string, Json>> words;
    bool loaded = true;
    for (size_t i = 0; i < paths.size(); i++) {
        std::string message;
        const Json side = (*loads)[i].receive(&message) ? parse(message) : Json();
        loaded = loaded && side.is_object();
        words.push_back(side.is_object() ? side.get<std::map<std::string, Json>>()
                                         : std::map<std::string, Json>());
    }
    if (!loaded) {
        loads->finish();
        return kExitError;
    }
    // The blobs every file has with the same words; a key that does not come back whole (not
    // UTF-8) is sent in full.
    std::set<std::string> alike;
    for (const auto& [key, blobs] : words.front()) {
        if (std::all_of(words.begin(), words.end(), [&key = key, &blobs = blobs](const auto& side) {
                const auto found = side.find(key);
                return found != side.end() && found->second == blobs;
            })) {
            alike.insert(key);
        }
    }
    const std::string request = Json(alike).dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::vector<Json> models = loads->ask(std::vector<std::string>(paths.size(), request));
    for (const Json& model : models) {
        loaded = loaded && !model.is_null();
        files->push_back(LoadedFile::fromJson(model));
    }
    return loads->finish() == kExitOk && loaded ? kExitOk : kExitError;
}

}  // namespace korva::tool
