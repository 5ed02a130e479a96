#include "tools/lsp/HoverIndex.h"

namespace korva::tool {

// Placeholder until the index is written: no entries, no hover.
Json HoverIndex::build(const StoreSession&) {
    return Json::array();
}

Json HoverIndex::at(const Json&, const std::string&, int, int) {
    return nullptr;
}

}  // namespace korva::tool
