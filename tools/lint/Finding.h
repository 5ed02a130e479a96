// One thing check has to say about a tuning file: its cause at a line, the notes that follow it,
// the edit that undoes the cause and what undoing it measurably changes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/commands/DiffCommand.h"

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
    Action action;
    int node;                    // the reported node edited
    std::string attribute = "";  // "" for the element itself
    std::string to = "";
    int before = -1;
};

struct Finding {
    Finding(FileLine where, Severity how, std::string what)
        : at(where), severity(how), message(std::move(what)) {}

    FileLine at;
    Severity severity;
    std::string message;
    std::vector<Note> notes;
    int node = -1;     // the reported node of the cause, -1 when the cause is not one node
    std::string rule;  // the id of the rule that found it (LintRules::kRules)
    std::optional<Undo> undo;
    std::string unmeasured;  // why there is no effect, when there is none
    // A comment or blank text the reader met: a finding only when undoing it changes something.
    bool onlyIfEffect = false;
    // What undoing the cause changes, undone copy as a, file as b; none when unmeasured.
    std::optional<Differences> effect;
    std::vector<Note> follows;  // the findings that undoing this cause clears
};

inline const char* severityName(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

// "12", or "65535+" for a line libxml2 knows only a lower bound of.
inline std::string lineText(const FileLine& at) {
    return std::to_string(at.line) + (at.atLeast ? "+" : "");
}

}  // namespace korva::tool
