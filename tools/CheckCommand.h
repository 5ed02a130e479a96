// spatializer-paramtool check: the linter's findings on a tuning file, then what the store made
// of it. Exit status 0 when clean, 1 for warnings only with --strict, 2 for errors or a file that
// cannot be read.
#pragma once

#include "tools/ToolOutput.h"

namespace korva::tool {

class CheckCommand {
public:
    struct Options {
        CommonOptions common;
        bool strict = false;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
