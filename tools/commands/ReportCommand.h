// spatializer-paramtool report: one self-contained HTML page about one tuning file, or two side
// by side: check's findings, the ports and their tuning devices, the EQ curves and mix matrices
// as pictures, every blob entry with where it came from, linked to a numbered copy of the file.
// Each file is loaded in a child process (a process holds one store); the page is built from
// what the children hand back.
#pragma once

#include <string>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class ReportCommand {
public:
    struct Options {
        CommonOptions common;
        std::vector<std::string> files;  // one or two; none means the bundled example
        std::string output = "report.html";
    };

    // 0 when the page was written, 2 when a file could not be opened or the page not written.
    static int run(const Options& options);
};

}  // namespace korva::tool
