// What a hover over a parameter element or attribute shows: the blob entries the element feeds
// (profile or tuning device, output device, engine code), their values in units and the rules
// that changed them on the way, from the same provenance as explain. Built once per analysed
// version of a document, in the process that loaded it, and answered from in the server.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class StoreSession;

class HoverIndex {
public:
    // The index of one load: a JSON array that the server keeps with the document's version.
    static Json build(const StoreSession& session);
    // The LSP Hover for the cursor at a 0-based line and UTF-16 character of text, or null.
    static Json at(const Json& index, const std::string& text, int line, int character);
};

}  // namespace korva::tool
