// Where the library's own log lines go while the tool runs. On the host liblog writes them to
// stderr, between the tool's reports; they are wanted only when the user asks for them. Error
// lines are also kept, so that the tool can say in the library's words why a call failed.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

class LibraryLog {
public:
    // Verbose: every line, down to the verbose priority, goes to stderr. Otherwise they are
    // dropped.
    static void install(bool verbose);
    // The library's error lines since the last call.
    static std::vector<std::string> takeErrors();
};

}  // namespace korva::tool
