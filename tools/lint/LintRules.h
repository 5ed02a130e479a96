// The findings of check: small rules over the library's report of one load. Each rule looks at
// what the library said it did (passed over, read in part, replaced, filed or dropped) and names
// the cause in a tuning engineer's words, with notes that only locate it: what the cause changes
// is its measured effect.
#pragma once

#include <vector>

#include "tools/lint/Finding.h"
#include "tools/load/LoadReport.h"

namespace korva::tool {

class LintRules {
public:
    struct Rule {
        const char* id;
        const char* description;
    };
    // Every rule, in the order run() applies them; each finding names its rule's id.
    static const std::vector<Rule> kRules;

    // Every rule's findings, ordered by line.
    static std::vector<Finding> run(const LoadReport& report);
};

}  // namespace korva::tool
