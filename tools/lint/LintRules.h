// The findings of check: small rules over the library's report of one load. Each rule looks at
// what the library said it did (passed over, read in part, replaced, filed or dropped) and says
// it in a tuning engineer's words, cause first, then notes for what the cause changed.
#pragma once

#include <vector>

#include "tools/lint/Finding.h"
#include "tools/LoadReport.h"

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

    // Elements, records and blobs the library passed over, cut short or dropped.
    static void passedOver(const LoadReport& report, std::vector<Finding>* out);
    // Attributes, numbers and words read otherwise than written.
    static void textRead(const LoadReport& report, std::vector<Finding>* out);
    // Values written twice, not used by their record, replaced by a rule or sent empty.
    static void valuesChanged(const LoadReport& report, std::vector<Finding>* out);
    // Entries the effect gets with no values, because their record lacks a parameter.
    static void emptyEntries(const LoadReport& report, std::vector<Finding>* out);
    // Records whose partner is missing, loader defaults and blobs one id or name files twice.
    static void loaded(const LoadReport& report, std::vector<Finding>* out);
    // Presets whose band lists disagree.
    static void presetBands(const LoadReport& report, std::vector<Finding>* out);
};

}  // namespace korva::tool
