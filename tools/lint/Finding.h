// One thing the tool has to say about a tuning file: its cause, at a line of the file, and the
// notes that follow it (what the cause changed in the records and blobs).
#pragma once

#include <string>
#include <vector>

#include "tools/ToolOutput.h"

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

// The smallest edit of the document that takes a finding's cause away, made on a copy of what the
// library read: its load with the edit, against the file's, is the finding's effect.
struct Undo {
    enum class Action {
        kRemove,           // the node
        kRename,           // the element, or its attribute, to `to`
        kReplace,          // the attribute's value, by `to`
        kMoveBefore,       // the element, to just before the node `before`
        kRemoveAttribute,  // the attribute
    };
    Action action = Action::kRemove;
    int node = -1;          // the reported node edited
    std::string attribute;  // "" for the element itself
    std::string to;
    int before = -1;
};

struct Finding {
    Finding() = default;
    Finding(FileLine where, Severity how, std::string what)
        : at(where), severity(how), message(std::move(what)) {}

    FileLine at;
    Severity severity = Severity::kWarning;
    std::string message;
    std::vector<Note> notes;
    // The id of the rule that found it (LintRules::kRules), for code-scanning tools.
    std::string rule;
    // How to undo the cause; when there is none, why (unmeasured).
    bool hasUndo = false;
    Undo undo;
    std::string unmeasured;
    // A comment or blank text the reader met: a finding only when undoing it changes something.
    bool onlyIfEffect = false;
    // Measured: the differences and store changes of diff --json, undone copy as a, file as b.
    bool measured = false;
    Json effect;
    // The other findings that undoing this one's cause clears (its consequences).
    std::vector<Note> follows;
};

inline const char* severityName(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

// "12", or "65535+" for a line libxml2 knows only a lower bound of.
inline std::string lineText(const FileLine& at) {
    return std::to_string(at.line) + (at.atLeast ? "+" : "");
}

}  // namespace korva::tool
