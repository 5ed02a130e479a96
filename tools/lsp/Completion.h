// Completion in a tuning file being typed: the element and attribute names valid at the cursor
// (from the reader's node table and the record layout) and the keywords of attribute values.
// Works on the editor's text alone, so that it answers while the file does not parse.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class Completion {
public:
    // An array of LSP CompletionItem for the cursor at a 0-based line and UTF-16 character.
    static Json items(const std::string& text, int line, int character);
};

}  // namespace korva::tool
