// The outline of a tuning file as the library read it: profiles with their endpoints, IEQ and
// GEQ presets, tunings with their device tunings, each at its element's range in the text.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class StoreSession;

class DocumentSymbols {
public:
    // An array of LSP DocumentSymbol for the text that session loaded.
    static Json build(const StoreSession& session, const std::string& text);
};

}  // namespace korva::tool
