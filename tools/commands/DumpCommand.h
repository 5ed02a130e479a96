// spatializer-paramtool dump: every record of a tuning file as the library's parser holds it,
// before the store translates anything.
#pragma once

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class DumpCommand {
public:
    static int run(const CommonOptions& options);
};

}  // namespace korva::tool
