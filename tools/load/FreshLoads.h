// Loads of documents made in memory, each in a process whose store has loaded nothing. A process
// holds one store for its whole life, so a process that has loaded a file cannot load another:
// it starts this before its own load, and this forks each later load from that clean state.
// Each document goes to a private temporary file for the load only, removed right after it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "tools/load/ChildLoad.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class FreshLoads {
public:
    // Null, after one line on stderr, when the process cannot be started.
    static std::unique_ptr<FreshLoads> start(ChildLoad::Work work);
    ~FreshLoads();

    FreshLoads(const FreshLoads&) = delete;
    FreshLoads& operator=(const FreshLoads&) = delete;

    // What work makes of text loaded as a tuning file; false when the load failed.
    bool load(const std::string& text, Json* document);

private:
    FreshLoads(pid_t server, int requests, int answers)
        : mServer(server), mRequests(requests), mAnswers(answers) {}

    pid_t mServer;
    int mRequests;
    int mAnswers;
};

}  // namespace korva::tool
