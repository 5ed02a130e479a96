#include "tools/lsp/Completion.h"

namespace korva::tool {

// Placeholder until completion is written.
Json Completion::items(const std::string&, int, int) {
    return Json::array();
}

}  // namespace korva::tool
