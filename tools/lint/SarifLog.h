// check's findings as a SARIF 2.1.0 log, the format code-scanning services read: one run, the
// linter's rules as the driver's rules, one result per finding at its file and line, its notes
// as related locations.
#pragma once

#include <string>
#include <vector>

#include "tools/lint/Finding.h"
#include "tools/LoadReport.h"
#include "tools/ToolOutput.h"

namespace korva::tool {

class SarifLog {
public:
    static Json make(const std::string& path, const std::vector<Finding>& findings,
                     const LoadReport& report);

    // The path as a URI reference: relative paths stay relative (to the checkout, for CI).
    static std::string uri(const std::string& path);
};

}  // namespace korva::tool
