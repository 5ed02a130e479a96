// Where the library's own log lines go while the tool runs. On the host liblog writes them to
// stderr, between the tool's reports; they are wanted only when the user asks for them.
#pragma once

namespace korva::tool {

class LibraryLog {
public:
    // Verbose: every line, down to the verbose priority, goes to stderr. Otherwise they are
    // dropped.
    static void install(bool verbose);
};

}  // namespace korva::tool
