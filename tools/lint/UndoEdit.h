// A finding's undo, done: the edit made on a fresh copy of the document the library read during
// the file's load (never on the file), serialised for a load of its own, and told in words and
// JSON.
#pragma once

#include <string>
#include <vector>

#include "tools/lint/Finding.h"
#include "tools/LoadReport.h"
#include "tools/ToolOutput.h"

namespace korva::tool {

class UndoEdit {
public:
    // The document with every edit done, as text; false with why when the load kept no copy
    // of the document or an edit's node is not in it.
    static bool apply(const LoadReport& report, const std::vector<Undo>& edits, std::string* text,
                      std::string* why);

    // {"action", "line", and what it removes, renames, replaces or moves}.
    static Json toJson(const LoadReport& report, const Undo& undo);
    // "remove the comment <!-- x --> on line 305".
    static std::string describe(const LoadReport& report, const Undo& undo);
};

}  // namespace korva::tool
