// check's findings as a SARIF 2.1.0 log, the format code-scanning services read: one run, the
// linter's rules as the driver's rules, one result per finding at its file and line, its notes
// as related locations and its undo as the result's fix.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class SarifLog {
public:
    // findings as check --json lists them.
    static Json make(const std::string& path, const Json& findings);

    // The path as a URI reference: relative paths stay relative (to the checkout, for CI).
    static std::string uri(const std::string& path);
};

}  // namespace korva::tool
