// spatializer-paramtool explain: traces the entries of one effect code back to the tuning file:
// their values, each tuning parameter they were translated from with its element, line and
// attribute texts, and every rule that supplied or changed the values on the way.
#pragma once

#include <string>

#include "tools/commands/BlobsCommand.h"

namespace korva::tool {

class ExplainCommand {
public:
    struct Options : BlobSelection {
        CommonOptions common;
        std::string code;
    };

    static int run(const Options& options);
};

}  // namespace korva::tool
