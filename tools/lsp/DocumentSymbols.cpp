#include "tools/lsp/DocumentSymbols.h"

namespace korva::tool {

// Placeholder until the outline is written.
Json DocumentSymbols::build(const StoreSession&, const std::string&) {
    return Json::array();
}

}  // namespace korva::tool
