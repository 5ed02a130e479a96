// One thing the tool has to say about a tuning file: its cause, at a line of the file, and the
// notes that follow it (what the cause changed in the records and blobs).
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

enum class Severity { kWarning, kError };

// A line of the file; atLeast when libxml2 only knows that it is this line or a later one.
struct FileLine {
    long line = 0;
    bool atLeast = false;
};

struct Note {
    FileLine at;
    std::string message;
};

struct Finding {
    FileLine at;
    Severity severity;
    std::string message;
    std::vector<Note> notes;
    // The id of the rule that found it (LintRules::kRules), for code-scanning tools.
    std::string rule;
};

inline const char* severityName(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

// "12", or "65535+" for a line libxml2 knows only a lower bound of.
inline std::string lineText(const FileLine& at) {
    return std::to_string(at.line) + (at.atLeast ? "+" : "");
}

}  // namespace korva::tool
