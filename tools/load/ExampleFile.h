// The bundled example tuning file, used by every subcommand that is given no file.
#pragma once

#include <string>

namespace korva::tool {

class ExampleFile {
public:
    // The source tree's copy when it is there (a build tree's tool), else the installed one.
    static std::string path();
};

}  // namespace korva::tool
