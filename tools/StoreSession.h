// Starts the process's parameter store on one tuning file the way a device starts it: system
// properties first, then the singleton, which picks, loads and keeps the file. A process holds one
// store for its whole life, so this is done once per process.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "store/SpatializerParamArray.h"

namespace korva::tool {

class StoreSession {
public:
    using Properties = std::vector<std::pair<std::string, std::string>>;

    // Null, after reporting why, when the file cannot be put where the store looks.
    static SpatializerParamArray* open(const std::string& tuningFile,
                                       const Properties& properties = {});
};

}  // namespace korva::tool
