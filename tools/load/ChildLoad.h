// A process holds one parameter store for its whole life, so whatever needs two files loaded
// (diff, the report of two files) loads each in a child process of its own (fork, no exec),
// which hands back a JSON document through a pipe.
#pragma once

#include <string>
#include <vector>

#include "tools/load/LoadedFile.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class ChildLoad {
public:
    // What the child does with the file: fills the document, returns an exit status, and has
    // reported why on stderr when that is not kExitOk.
    using Work = int (*)(const std::string& path, Json* document);

    // The child's document, or kExitError after one line on stderr.
    static int run(const std::string& path, Work work, Json* document);
    // Each file loaded in a child of its own, all at once, the entries' sources brief
    // (LoadedFile::toJson); kExitError after a line on stderr for each that fails.
    static int load(const std::vector<std::string>& paths, std::vector<LoadedFile>* files);
    // What a child makes of a file for load: the brief model, or kExitError after one line.
    static int loadedJson(const std::string& path, Json* document);
};

}  // namespace korva::tool
