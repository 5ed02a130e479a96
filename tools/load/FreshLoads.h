// Loads of documents made in memory, each in a process whose store has loaded nothing. A process
// holds one store for its whole life, so a process that has loaded a file cannot load another:
// it starts this before its own load, and this forks each later load from that clean state.
// Each document goes to a private temporary file for the load only, removed right after it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tools/load/ChildLoad.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class FreshLoads {
public:
    // Null, after one line on stderr, when the processes cannot be started. Each of the servers
    // loads one document at a time.
    static std::unique_ptr<FreshLoads> start(ChildLoad::Work work, size_t servers = 1);
    ~FreshLoads();

    FreshLoads(const FreshLoads&) = delete;
    FreshLoads& operator=(const FreshLoads&) = delete;

    // What work makes of text loaded as a tuning file; false when the load failed.
    bool load(const std::string& text, Json* document);
    // The same of several texts at once, as many at a time as there are servers; each
    // document is null when its load failed.
    std::vector<Json> loadAll(const std::vector<std::string>& texts);

private:
    struct Server {
        pid_t pid;
        int requests;
        int answers;
    };
    explicit FreshLoads(std::vector<Server> servers) : mServers(std::move(servers)) {}

    std::vector<Server> mServers;
};

}  // namespace korva::tool
