#include "tools/lint/SarifLog.h"

#include <cstdio>

#include "tools/lint/LintRules.h"
#include "tools/VersionInfo.h"
#include "tools/lint/UndoEdit.h"

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

namespace {

Json replacement(long from, long to, const std::string& text) {
    return {{"deletedRegion", {{"startLine", from}, {"endLine", to}}},
            {"insertedContent", {{"text", text}}}};
}

// The undo as a SARIF fix: the line it takes away, and what it puts there.
Json fix(const std::string& uri, const Finding& finding, const LoadReport& report) {
    const Json undo = UndoEdit::toJson(report, finding.undo);
    const long line = undo["line"].get<long>();
    Json replacements = Json::array();
    if (undo["action"] == "move") {
        const long before = undo["before_line"].get<long>();
        replacements.push_back(
            {{"deletedRegion", {{"startLine", before}, {"startColumn", 1}, {"endColumn", 1}}},
             {"insertedContent", {{"text", undo["moves"].get<std::string>()}}}});
        replacements.push_back(replacement(line, line, ""));
    } else {
        replacements.push_back(replacement(line, line, undo.value("becomes", std::string())));
    }
    return {{"description", {{"text", UndoEdit::describe(report, finding.undo)}}},
            {"artifactChanges",
             Json::array({{{"artifactLocation", {{"uri", uri}}}, {"replacements", replacements}}})}};
}

}  // namespace

Json SarifLog::make(const std::string& path, const std::vector<Finding>& findings,
                    const LoadReport& report) {
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
        if (finding.hasUndo) {
            result["fixes"] = Json::array({fix(fileUri, finding, report)});
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
