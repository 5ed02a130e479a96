#include "tools/commands/CheckCommand.h"

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/commands/DiffCommand.h"
#include "tools/lint/Effects.h"
#include "tools/lint/LintRules.h"
#include "tools/lint/SarifLog.h"
#include "tools/lint/UndoEdit.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

struct RecordCount {
    const char* key;
    const char* label;
};

// The summary's record counts, by the records' kinds, then the device tunings.
constexpr RecordCount kRecordCounts[] = {
    {"ieq_presets", "IEQ presets"}, {"geq_presets", "GEQ presets"},
    {"profiles", "profiles"},       {"profile_endpoints", "profile endpoints"},
    {"tunings", "tunings"},         {"device_tunings", "device tunings"},
};
constexpr RecordKind kCountedKinds[] = {RecordKind::kIeqPreset, RecordKind::kGeqPreset,
                                        RecordKind::kProfile, RecordKind::kProfileEndpoint,
                                        RecordKind::kTuning};

// The store's device list of a port, split on its single blanks. An empty-named device sorts
// first and shows as an empty first name (" spk_alt"); alone it is the empty string, which only
// the list's buffer length tells apart from no device at all.
Json portDevices(SpatializerParamArray& store, int port) {
    const std::string names = store.getAvailableTuningDevices(port);
    Json out = Json::array();
    if (names.empty() && store.getAvailableTuningDevicesLen(port) > 0) {
        out.push_back("");
    }
    std::string name;
    std::istringstream in(names);
    while (!names.empty() && std::getline(in, name, ' ')) {
        out.push_back(name);
    }
    return out;
}

// The line, and at_least: true where the node is on that line or a later one.
Json placed(const FileLine& at, const Json& fields) {
    Json object = {{"line", at.line}};
    if (at.atLeast) {
        object["at_least"] = true;
    }
    object.update(fields);
    return object;
}

std::string lineOf(const Json& placed) {
    return lineText({placed["line"].get<long>(), placed.value("at_least", false)});
}

std::string shown(const std::string& device) {
    return device.empty() ? "\"\"" : device;
}

// "1 warning", "2 warnings".
std::string counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string joined(const Json& list, std::string (*show)(const Json&), const std::string& none) {
    std::string text;
    for (const Json& item : list) {
        text += (text.empty() ? "" : " ") + show(item);
    }
    return list.empty() ? none : text;
}

std::string summaryText(const Json& summary, size_t errors, size_t warnings) {
    std::string counts;
    for (const RecordCount& record : kRecordCounts) {
        counts += (counts.empty() ? "" : ", ") + summary["records"][record.key].dump() + " " +
                  record.label;
    }
    TextTable facts({"", ""});
    facts.addRow({"format version", summary["format_version"]});
    facts.addRow({"tool version", summary["tool_version"]});
    facts.addRow({"records", counts});
    facts.addRow({"profile blobs",
                  joined(
                      summary["profile_blobs"], [](const Json& id) { return id.dump(); }, "none")});
    facts.addRow({"tunings usable", summary["tunings_usable"].get<bool>() ? "yes" : "no"});
    facts.addRow({"findings", counted(errors, "error") + ", " + counted(warnings, "warning")});
    TextTable ports({"port", "selected", "tuning devices"});
    for (const Json& port : summary["ports"]) {
        const auto device = [](const Json& name) { return shown(name.get<std::string>()); };
        ports.addRow({port["port"], port["selected"].is_null() ? "-" : device(port["selected"]),
                      joined(port["tuning_devices"], device, "none")});
    }
    return "summary\n" + facts.render("  ") + "\n" + ports.render("  ");
}

std::string indented(const std::string& text, const std::string& indent) {
    std::string out;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        out += indent + line + "\n";
    }
    return out;
}

// The findings as check prints them: each cause, its notes, its undo and measured effect.
std::string findingsText(const std::string& path, const Json& findings, bool effects, bool verbose) {
    std::string text;
    for (const Json& finding : findings) {
        text += path + ":" + lineOf(finding) + ": " + finding["severity"].get<std::string>() +
                ": " + finding["message"].get<std::string>() + "\n";
        for (const Json& note : finding["notes"]) {
            text += "    " + path + ":" + lineOf(note) +
                    ": note: " + note["message"].get<std::string>() + "\n";
        }
        if (!effects) {
            continue;
        }
        if (!finding["undo"].is_null()) {
            text += "    undo: " + finding["undo"]["description"].get<std::string>() + "\n";
        }
        const Json& effect = finding["effect"];
        const std::string indent = "      ";
        const std::string changes =
            effect.is_null()
                ? ""
                : DiffCommand::text(effect["differences"], effect["store"], "undone", "as written",
                                    TextTable::kDefaultWidth - indent.size());
        if (!effect.is_null()) {
            text += changes.empty() ? "    effect: none, nothing that reaches the effect changes\n"
                                    : "    effect, undone (a) against as written (b):\n" +
                                          indented(changes, indent);
        } else if (finding.contains("effect_not_measured")) {
            text += "    effect not measured: " + finding["effect_not_measured"].get<std::string>() +
                    "\n";
        }
        const Json& clears = finding["clears"];
        if (!clears.empty()) {
            text += "    undoing it also clears " + counted(clears.size(), "other finding") +
                    (verbose ? ":\n" : " (--verbose lists them)\n");
            for (size_t i = 0; verbose && i < clears.size(); i++) {
                text += indent + lineOf(clears[i]) + ": " +
                        clears[i]["message"].get<std::string>() + "\n";
            }
        }
    }
    return text;
}

// "measuring effects: 3/12" on a terminal, rewritten in place and cleared at the end.
void showProgress(size_t done, size_t total) {
    if (!isatty(STDERR_FILENO) || total == 0) {
        return;
    }
    if (done < total) {
        fprintf(stderr, "\rmeasuring effects: %zu/%zu", done, total);
    } else {
        fprintf(stderr, "\r%40s\r", "");
    }
    fflush(stderr);
}

}  // namespace

Json CheckCommand::findingsJson(const std::vector<Finding>& findings, const LoadReport& report) {
    const auto notes = [](const std::vector<Note>& list) {
        Json out = Json::array();
        for (const Note& note : list) {
            out.push_back(placed(note.at, {{"message", note.message}}));
        }
        return out;
    };
    Json list = Json::array();
    for (const Finding& finding : findings) {
        Json json = placed(finding.at, {{"rule", finding.rule},
                                        {"severity", severityName(finding.severity)},
                                        {"message", finding.message},
                                        {"notes", notes(finding.notes)},
                                        {"undo", nullptr},
                                        {"effect", finding.effect}});
        if (finding.undo) {
            json["undo"] = UndoEdit::toJson(report, *finding.undo);
        }
        if (finding.effect.is_null() && !finding.unmeasured.empty()) {
            json["effect_not_measured"] = finding.unmeasured;
        }
        json["clears"] = notes(finding.follows);
        list.push_back(json);
    }
    return list;
}

Json CheckCommand::summaryJson(const StoreSession& session) {
    const LoadReport& report = session.report();
    SpatializerParamArray& store = session.store();
    Json counts = Json::object();
    for (size_t i = 0; i < std::size(kCountedKinds); i++) {
        counts[kRecordCounts[i].key] = report.ofKind(kCountedKinds[i]).size();
    }
    counts[kRecordCounts[std::size(kCountedKinds)].key] = report.bindings.size();
    std::set<int> seen;
    Json profileBlobs = Json::array();
    for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
        if (store.isXMLProfileValid(profile->profileId) && seen.insert(profile->profileId).second) {
            profileBlobs.push_back(profile->profileId);
        }
    }
    // The ports whose selection the store checks when it loads: the speaker's, looked up by the
    // loader, and the preselected defaults.
    std::set<int> selectable(kDefaultTuningPorts.begin(), kDefaultTuningPorts.end());
    selectable.insert(DEVICE_INTERNAL_SPEAKER);
    Json ports = Json::array();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        Json devices = portDevices(store, port);
        if (selectable.count(port) > 0 || !devices.empty()) {
            ports.push_back(
                {{"port", kAndroidDeviceNames[port]},
                 {"tuning_devices", devices},
                 {"selected", selectable.count(port) > 0 ? Json(store.getSelectedTuningDevice(port))
                                                         : Json(nullptr)}});
        }
    }
    return {{"format_version", report.formatVersion},
            {"tool_version", report.toolVersion},
            {"records", counts},
            {"profile_blobs", profileBlobs},
            {"ports", ports},
            {"tunings_usable", SpatializerParamCache().isTuningAvailable()}};
}

int CheckCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    // The loads of undone copies fork from a process that has loaded nothing yet.
    std::unique_ptr<ChildLoads> loads = options.noEffects ? nullptr : Effects::start();
    std::unique_ptr<StoreSession> session = StoreSession::open(path, {}, false, loads != nullptr);
    if (session == nullptr) {
        return kExitError;
    }
    const LoadReport& report = session->report();
    std::vector<Finding> findings = LintRules::run(report);
    if (loads != nullptr && !report.readFailed) {
        Effects::measure(*session, *loads, options.common.verbose, &findings, showProgress);
    } else {
        Effects::skip(&findings);
    }
    loads.reset();
    const Json listed = findingsJson(findings, report);
    if (options.sarif) {
        ToolOutput::printJson(SarifLog::make(path, listed));
    }
    const size_t errors = std::count_if(findings.begin(), findings.end(), [](const Finding& f) {
        return f.severity == Severity::kError;
    });
    const size_t warnings = findings.size() - errors;
    const int status = report.readFailed || errors > 0  ? kExitError
                       : warnings > 0 && options.strict ? kExitFindings
                                                        : kExitOk;
    Json document = {
        {"file", path}, {"findings", listed}, {"errors", errors}, {"warnings", warnings}};
    if (report.readFailed) {
        // Says on stderr why the file cannot be read.
        session->readable();
    } else {
        document["summary"] = summaryJson(*session);
    }
    document["status"] = status;
    if (options.sarif) {
        return status;
    }
    if (options.common.json) {
        ToolOutput::printJson(document);
    } else if (!report.readFailed) {
        ToolOutput::print(findingsText(path, listed, !options.noEffects, options.common.verbose) +
                          (findings.empty() ? path + ": no findings\n\n" : "\n") +
                          summaryText(document["summary"], errors, warnings));
    }
    return status;
}

}  // namespace korva::tool
