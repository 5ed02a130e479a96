#include "tools/lint/SarifLog.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "tools/VersionInfo.h"
#include "tools/lint/LintRules.h"

namespace korva::tool {

namespace {

Json location(const std::string& uri, const Json& placed) {
    return {{"physicalLocation",
             {{"artifactLocation", {{"uri", uri}}},
              {"region", {{"startLine", std::max(placed["line"].get<long>(), 1L)}}}}}};
}

// The undo as a SARIF fix: the line it takes away, and what it puts there; a move puts the element
// back before the line it moves to.
Json fix(const std::string& uri, const Json& undo) {
    const auto replacement = [](const Json& deleted, const std::string& text) {
        return Json{{"deletedRegion", deleted}, {"insertedContent", {{"text", text}}}};
    };
    const bool move = undo["action"] == "move";
    Json replacements = Json::array();
    if (move) {
        replacements.push_back(
            replacement({{"startLine", undo["before_line"]}, {"startColumn", 1}, {"endColumn", 1}},
                        undo["moves"].get<std::string>()));
    }
    replacements.push_back(replacement({{"startLine", undo["line"]}, {"endLine", undo["line"]}},
                                       move ? std::string() : undo.value("becomes", "")));
    return {{"description", {{"text", undo["description"]}}},
            {"artifactChanges",
             Json::array({{{"artifactLocation", {{"uri", uri}}}, {"replacements", replacements}}})}};
}

}  // namespace

std::string SarifLog::uri(const std::string& path) {
    std::string out;
    for (const unsigned char c : path) {
        char escaped[4];
        snprintf(escaped, sizeof(escaped), "%%%02X", c);
        out += isalnum(c) || strchr("/-._~", c) != nullptr ? std::string(1, c) : escaped;
    }
    return path.size() > 0 && path[0] == '/' ? "file://" + out : out;
}

Json SarifLog::make(const std::string& path, const Json& findings) {
    Json rules = Json::array();
    for (const LintRules::Rule& rule : LintRules::kRules) {
        rules.push_back({{"id", rule.id}, {"shortDescription", {{"text", rule.description}}}});
    }
    const std::string fileUri = uri(path);
    Json results = Json::array();
    for (const Json& finding : findings) {
        Json result = {{"ruleId", finding["rule"]},
                       {"level", finding["severity"]},
                       {"message", {{"text", finding["message"]}}},
                       {"locations", Json::array({location(fileUri, finding)})}};
        for (const Json& note : finding["notes"]) {
            Json place = location(fileUri, note);
            place["id"] = result["relatedLocations"].size();
            place["message"] = {{"text", note["message"]}};
            result["relatedLocations"].push_back(place);
        }
        if (!finding["undo"].is_null()) {
            result["fixes"] = Json::array({fix(fileUri, finding["undo"])});
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
