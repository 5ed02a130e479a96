// A process holds one parameter store for its whole life, so whatever needs more than one load
// (diff, the report of two files, the loads of check's undone copies) loads in child processes
// (fork, no exec). A parent and each child talk through a pair of pipes in length-prefixed
// messages; what a child answers is a JSON document.
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
    // One side's end of the pipes between a parent and a child.
    struct Channel {
        int in = -1;
        int out = -1;

        bool send(const std::string& message) const;
        bool send(const Json& document) const;
        // False when the other side has closed its end or ended.
        bool receive(std::string* message) const;
    };
    // What child index does, talking with its parent: its exit status, kExitOk or kExitError
    // after one line on stderr.
    using Work = std::function<int(size_t index, const Channel& parent)>;

    // A child per name, each running work, all started at once; null after one line on stderr
    // when one cannot start. A name is what an abnormal end of its child is said of.
    static std::unique_ptr<ChildLoads> start(const std::vector<std::string>& names,
                                             const Work& work);
    // Closes the pipes, which ends a child waiting for a message, and waits for the children.
    ~ChildLoads();

    ChildLoads(const ChildLoads&) = delete;
    ChildLoads& operator=(const ChildLoads&) = delete;

    const Channel& operator[](size_t index) const { return mChildren[index].channel; }
    // Each request sent to child i % count, as many at a time as there are children; each
    // answer in its request's place, null when it did not come or is not JSON.
    std::vector<Json> ask(const std::vector<std::string>& requests);
    // Waits for the children: kExitError when one failed (it has said why) or died (said here).
    int finish();

    // A message as JSON; null when it is empty or not JSON.
    static Json parse(const std::string& message);

    // What work makes in a child of its own; null when it fails, after one line on stderr.
    static Json one(const std::string& name, const std::function<int(Json* document)>& work);
    // Each file loaded in a child of its own, in two steps: each child first sends every kept
    // blob's words by key; the blobs that every file has alike are then sent by identity only
    // (LoadedBlob::same), the others in full with their entries' sources brief. kExitError
    // after a line on stderr for each file that fails.
    static int loadApart(const std::vector<std::string>& paths, std::vector<LoadedFile>* files);

private:
    ChildLoads() = default;

    struct Child {
        std::string name;
        pid_t pid = -1;
        Channel channel;
    };
    std::vector<Child> mChildren;
};

}  // namespace korva::tool
