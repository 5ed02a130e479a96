// A process holds one parameter store for its whole life, so diff, the report and check's undone
// copies load in child processes (fork, no exec), each talking with its parent through a socket
// pair in length-prefixed messages and answering each request in JSON.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/load/LoadedFile.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class ChildLoads {
public:
    // A message through one side's end of the socket pair; false once the other side has closed.
    static bool send(int fd, const std::string& message);
    static bool send(int fd, const Json& document);
    static bool receive(int fd, std::string* message);
    // What child index does, talking through parent: kExitOk, or kExitError after one line.
    using Work = std::function<int(size_t index, int parent)>;

    // A child per name, each running work; null after one line on stderr when one cannot start.
    static std::unique_ptr<ChildLoads> start(const std::vector<std::string>& names,
                                             const Work& work);
    ~ChildLoads() { finish(); }
    ChildLoads(const ChildLoads&) = delete;
    ChildLoads& operator=(const ChildLoads&) = delete;

    // Request i to child i % count, a round of one per child at a time; each answer in its
    // request's place, null when none came.
    std::vector<Json> ask(const std::vector<std::string>& requests);
    // Closes the sockets, which ends a child waiting for a message, and waits for the children:
    // kExitError when one failed (it has said why) or died (said here, by its name).
    int finish();

    // What work makes in a child of its own; null when it fails, after one line on stderr.
    static Json one(const std::string& name, const std::function<int(Json* document)>& work);
    // Each file loaded in a child of its own, in two steps: each child sends its blobs' words by
    // key, then its brief model with the blobs every file has alike by identity only (same).
    // kExitError after a line on stderr for each file that fails.
    static int loadApart(const std::vector<std::string>& paths, std::vector<LoadedFile>* files);

private:
    ChildLoads() = default;

    struct Child {
        std::string name;
        pid_t pid = -1;
        int fd = -1;
    };
    std::vector<Child> mChildren;
};

}  // namespace korva::tool
