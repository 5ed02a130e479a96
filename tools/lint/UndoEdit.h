// A finding's undo, done: the edit made on the copy of the document that the library read during
// the file's load (never on the file), written out for a load of its own, and told in JSON.
#pragma once

#include <string>
#include <vector>

#include "tools/lint/Finding.h"
#include "tools/load/LoadReport.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class UndoEdit {
public:
    // The document with every edit done, as text; false with why when the load kept no copy
    // of the document or an edit cannot be made. The report's copy is left as it was.
    static bool apply(const LoadReport& report, const std::vector<Undo>& edits, std::string* text,
                      std::string* why);

    // {"action", "line", what it removes, renames, replaces or moves, and "description", the
    // edit in words: "remove the comment on line 305"}.
    static Json toJson(const LoadReport& report, const Undo& undo);
};

}  // namespace korva::tool
