#include "tools/commands/CheckCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/lint/LintRules.h"
#include "tools/lint/SarifLog.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"
#include "tools/lint/Effects.h"
#include "tools/lint/UndoEdit.h"
#include "tools/load/FreshLoads.h"

namespace korva::tool {

namespace {

struct PortSummary {
    std::string port;
    bool hasSelection;
    std::string selected;
    std::vector<std::string> devices;
};

struct RecordCount {
    const char* key;
    const char* label;
    size_t count;
};

struct Summary {
    std::vector<RecordCount> records;
    std::vector<int> profileBlobs;
    std::vector<PortSummary> ports;
    bool tuningsUsable = false;
};

// The store's device list of a port, split on its single blanks. An empty-named device sorts
// first and shows as an empty first name (" spk_alt"); alone it is the empty string, which only
// the list's buffer length tells apart from no device at all.
std::vector<std::string> portDevices(SpatializerParamArray& store, int port) {
    const std::string names = store.getAvailableTuningDevices(port);
    std::vector<std::string> out;
    if (names.empty()) {
        if (store.getAvailableTuningDevicesLen(port) > 0) {
            out.emplace_back();
        }
        return out;
    }
    std::string name;
    std::istringstream in(names);
    while (std::getline(in, name, ' ')) {
        out.push_back(name);
    }
    return out;
}

std::string shown(const std::string& device) {
    return device.empty() ? "\"\"" : device;
}

// The ports whose selection the store checks when it loads: the speaker's, looked up by the
// loader, and the preselected defaults.
std::set<int> checkedPorts() {
    std::set<int> ports = kDefaultTuningPorts;
    ports.insert(DEVICE_INTERNAL_SPEAKER);
    return ports;
}

// What the store made of the file.
Summary summarize(SpatializerParamArray& store, const LoadReport& report) {
    Summary summary;
    summary.records = {
        {"ieq_presets", "IEQ presets", report.ofKind(RecordKind::kIeqPreset).size()},
        {"geq_presets", "GEQ presets", report.ofKind(RecordKind::kGeqPreset).size()},
        {"profiles", "profiles", report.ofKind(RecordKind::kProfile).size()},
        {"profile_endpoints", "profile endpoints",
         report.ofKind(RecordKind::kProfileEndpoint).size()},
        {"tunings", "tunings", report.ofKind(RecordKind::kTuning).size()},
        {"device_tunings", "device tunings", report.bindings.size()},
    };
    for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
        const int id = profile->profileId;
        if (store.isXMLProfileValid(id) &&
            std::find(summary.profileBlobs.begin(), summary.profileBlobs.end(), id) ==
                summary.profileBlobs.end()) {
            summary.profileBlobs.push_back(id);
        }
    }
    const std::set<int> selectable = checkedPorts();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        PortSummary entry{kAndroidDeviceNames[port], selectable.count(port) > 0, "",
                          portDevices(store, port)};
        if (entry.hasSelection) {
            entry.selected = store.getSelectedTuningDevice(port);
        }
        if (entry.hasSelection || !entry.devices.empty()) {
            summary.ports.push_back(entry);
        }
    }
    summary.tuningsUsable = SpatializerParamCache().isTuningAvailable();
    return summary;
}

// The line, and at_least: true where the node is on that line or a later one.
Json placed(const FileLine& at, const Json& fields) {
    Json object = {{"line", at.line}};
    if (at.atLeast) {
        object["at_least"] = true;
    }
    for (const auto& [key, value] : fields.items()) {
        object[key] = value;
    }
    return object;
}

}  // namespace

Json CheckCommand::findingsJson(const std::vector<Finding>& findings, const LoadReport& report) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        Json notes = Json::array();
        for (const Note& note : finding.notes) {
            notes.push_back(placed(note.at, {{"message", note.message}}));
        }
        Json follows = Json::array();
        for (const Note& note : finding.follows) {
            follows.push_back(placed(note.at, {{"message", note.message}}));
        }
        Json json = placed(finding.at, {{"rule", finding.rule},
                                        {"severity", severityName(finding.severity)},
                                        {"message", finding.message},
                                        {"notes", notes}});
        json["undo"] = finding.hasUndo ? UndoEdit::toJson(report, finding.undo) : Json(nullptr);
        json["effect"] = finding.measured ? finding.effect : Json(nullptr);
        if (!finding.measured && !finding.unmeasured.empty()) {
            json["effect_not_measured"] = finding.unmeasured;
        }
        json["clears"] = follows;
        list.push_back(json);
    }
    return list;
}

namespace {

Json summaryJson(const Summary& summary, const LoadReport& report) {
    Json counts = Json::object();
    for (const RecordCount& record : summary.records) {
        counts[record.key] = record.count;
    }
    Json ports = Json::array();
    for (const PortSummary& port : summary.ports) {
        Json entry = {{"port", port.port}, {"tuning_devices", port.devices}};
        entry["selected"] = port.hasSelection ? Json(port.selected) : Json(nullptr);
        ports.push_back(entry);
    }
    return {{"format_version", report.formatVersion},
            {"tool_version", report.toolVersion},
            {"records", counts},
            {"profile_blobs", summary.profileBlobs},
            {"ports", ports},
            {"tunings_usable", summary.tuningsUsable}};
}

// "1 warning", "2 warnings".
std::string counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string summaryText(const Summary& summary, const LoadReport& report, size_t errors,
                        size_t warnings) {
    std::string counts;
    for (const RecordCount& record : summary.records) {
        counts += (counts.empty() ? "" : ", ") + std::to_string(record.count) + " " + record.label;
    }
    std::string blobs;
    for (int id : summary.profileBlobs) {
        blobs += (blobs.empty() ? "" : " ") + std::to_string(id);
    }
    TextTable facts({"", ""});
    facts.addRow({"format version", report.formatVersion});
    facts.addRow({"tool version", report.toolVersion});
    facts.addRow({"records", counts});
    facts.addRow({"profile blobs", blobs.empty() ? "none" : blobs});
    facts.addRow({"tunings usable", summary.tuningsUsable ? "yes" : "no"});
    facts.addRow({"findings", counted(errors, "error") + ", " + counted(warnings, "warning")});

    TextTable ports({"port", "selected", "tuning devices"});
    for (const PortSummary& port : summary.ports) {
        std::string devices;
        for (const std::string& device : port.devices) {
            devices += (devices.empty() ? "" : " ") + shown(device);
        }
        ports.addRow({port.port, port.hasSelection ? shown(port.selected) : "-",
                      devices.empty() ? "none" : devices});
    }
    return "summary\n" + facts.render("  ") + "\n" + ports.render("  ");
}

std::string indented(const std::string& text, const std::string& indent) {
    std::string out;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = text.find('\n', start);
        out += indent + text.substr(start, end - start) + "\n";
        start = end == std::string::npos ? text.size() : end + 1;
    }
    return out;
}

// A finding's undo and its measured effect, or why it was not measured.
std::string effectText(const Finding& finding, const LoadReport& report, bool verbose) {
    std::string text;
    if (finding.hasUndo) {
        text += "    undo: " + UndoEdit::describe(report, finding.undo) + "\n";
    }
    const std::string indent = "      ";
    const std::string effect =
        finding.measured ? Effects::text(finding, TextTable::kDefaultWidth - indent.size()) : "";
    if (finding.measured && effect.empty()) {
        text += "    effect: none, nothing that reaches the effect changes\n";
    } else if (finding.measured) {
        text += "    effect, undone (a) against as written (b):\n" + indented(effect, indent);
    } else if (!finding.unmeasured.empty()) {
        text += "    effect not measured: " + finding.unmeasured + "\n";
    }
    if (!finding.follows.empty()) {
        const size_t count = finding.follows.size();
        text += "    undoing it also clears " + std::to_string(count) +
                (count == 1 ? " other finding" : " other findings") +
                (verbose ? ":\n" : " (--verbose lists them)\n");
        for (size_t i = 0; verbose && i < count; i++) {
            text += "      " + lineText(finding.follows[i].at) + ": " + finding.follows[i].message +
                    "\n";
        }
    }
    return text;
}

std::string findingsText(const std::string& path, const std::vector<Finding>& findings,
                         const LoadReport& report, bool effects, bool verbose) {
    std::string text;
    for (const Finding& finding : findings) {
        text += path + ":" + lineText(finding.at) + ": " + severityName(finding.severity) + ": " +
                finding.message + "\n";
        for (const Note& note : finding.notes) {
            text += "    " + path + ":" + lineText(note.at) + ": note: " + note.message + "\n";
        }
        text += effects ? effectText(finding, report, verbose) : "";
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

Json CheckCommand::summaryJson(const StoreSession& session) {
    return korva::tool::summaryJson(summarize(session.store(), session.report()), session.report());
}

int CheckCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    // The loads of undone copies fork from a process that has loaded nothing yet.
    std::unique_ptr<FreshLoads> loads;
    if (!options.noEffects) {
        loads = FreshLoads::start(Effects::loadWork);
    }
    std::unique_ptr<StoreSession> session = StoreSession::open(path, {}, false, loads != nullptr);
    if (session == nullptr) {
        return kExitError;
    }
    std::vector<Finding> findings = LintRules::run(session->report());
    if (loads != nullptr && !session->report().readFailed) {
        Effects::measure(*session, *loads, options.common.verbose, &findings, showProgress);
    } else {
        Effects::skip(&findings);
    }
    loads.reset();
    if (options.sarif) {
        ToolOutput::printJson(SarifLog::make(path, findings, session->report()));
    }
    if (session->report().readFailed) {
        if (options.common.json && !options.sarif) {
            ToolOutput::printJson({{"file", path},
                                   {"findings", findingsJson(findings, session->report())},
                                   {"errors", 1},
                                   {"warnings", 0},
                                   {"status", kExitError}});
        }
        session->readable();
        return kExitError;
    }
    const Summary summary = summarize(session->store(), session->report());
    size_t errors = 0;
    for (const Finding& finding : findings) {
        errors += finding.severity == Severity::kError ? 1 : 0;
    }
    const size_t warnings = findings.size() - errors;
    const int status = errors > 0                       ? kExitError
                       : warnings > 0 && options.strict ? kExitFindings
                                                        : kExitOk;
    if (options.sarif) {
        return status;
    }
    if (options.common.json) {
        ToolOutput::printJson({{"file", path},
                               {"findings", findingsJson(findings, session->report())},
                               {"errors", errors},
                               {"warnings", warnings},
                               {"summary", korva::tool::summaryJson(summary, session->report())},
                               {"status", status}});
        return status;
    }
    std::string text =
        findingsText(path, findings, session->report(), !options.noEffects, options.common.verbose);
    text += findings.empty() ? path + ": no findings\n\n" : "\n";
    ToolOutput::print(text + summaryText(summary, session->report(), errors, warnings));
    return status;
}

}  // namespace korva::tool
