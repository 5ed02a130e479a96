// One thing the linter has to say about a tuning file, at a line of it.
#pragma once

#include <string>

namespace korva::tool {

enum class Severity { kWarning, kError };

struct Finding {
    int line;
    Severity severity;
    std::string message;
};

inline const char* severityName(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

}  // namespace korva::tool
