#include "tools/SarifLog.h"

#include <cstdio>

#include "tools/LintRules.h"
#include "tools/VersionInfo.h"

namespace korva::tool {

namespace {

Json location(const std::string& uri, const FileLine& at) {
    return {{"physicalLocation",
             {{"artifactLocation", {{"uri", uri}}},
              {"region", {{"startLine", at.line > 0 ? at.line : 1}}}}}};
}

}  // namespace

std::string SarifLog::uri(const std::string& path) {
    std::string out;
    for (const unsigned char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') ||
                           std::string("/-._~").find(c) != std::string::npos;
        if (plain) {
            out += static_cast<char>(c);
        } else {
            char escaped[4];
            snprintf(escaped, sizeof(escaped), "%%%02X", c);
            out += escaped;
        }
    }
    return path.size() > 0 && path[0] == '/' ? "file://" + out : out;
}

Json SarifLog::make(const std::string& path, const std::vector<Finding>& findings) {
    Json rules = Json::array();
    for (const LintRules::Rule& rule : LintRules::kRules) {
        rules.push_back({{"id", rule.id}, {"shortDescription", {{"text", rule.description}}}});
    }
    const std::string fileUri = uri(path);
    Json results = Json::array();
    for (const Finding& finding : findings) {
        Json result = {{"ruleId", finding.rule},
                       {"level", finding.severity == Severity::kError ? "error" : "warning"},
                       {"message", {{"text", finding.message}}},
                       {"locations", Json::array({location(fileUri, finding.at)})}};
        Json related = Json::array();
        for (const Note& note : finding.notes) {
            Json place = location(fileUri, note.at);
            place["id"] = related.size();
            place["message"] = {{"text", note.message}};
            related.push_back(place);
        }
        if (!related.empty()) {
            result["relatedLocations"] = related;
        }
        results.push_back(result);
    }
    return {{"version", "2.1.0"},
            {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
            {"runs", Json::array({{{"tool",
                                    {{"driver",
                                      {{"name", "spatializer-paramtool"},
                                       {"version", VersionInfo::tool()},
                                       {"rules", rules}}}}},
                                   {"results", results}}})}};
}

}  // namespace korva::tool
