#include "tools/CheckCommand.h"

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/LintRules.h"
#include "tools/SarifLog.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"

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

Json CheckCommand::findingsJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        Json notes = Json::array();
        for (const Note& note : finding.notes) {
            notes.push_back(placed(note.at, {{"message", note.message}}));
        }
        list.push_back(placed(finding.at, {{"severity", severityName(finding.severity)},
                                           {"message", finding.message},
                                           {"notes", notes}}));
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
    facts.addRow({"findings",
                  std::to_string(errors) + " errors, " + std::to_string(warnings) + " warnings"});

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

std::string findingsText(const std::string& path, const std::vector<Finding>& findings) {
    std::string text;
    for (const Finding& finding : findings) {
        text += path + ":" + lineText(finding.at) + ": " + severityName(finding.severity) + ": " +
                finding.message + "\n";
        for (const Note& note : finding.notes) {
            text += "    " + path + ":" + lineText(note.at) + ": note: " + note.message + "\n";
        }
    }
    return text;
}

}  // namespace

Json CheckCommand::summaryJson(const StoreSession& session) {
    return korva::tool::summaryJson(summarize(session.store(), session.report()), session.report());
}

int CheckCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr) {
        return kExitError;
    }
    const std::vector<Finding> findings = LintRules::run(session->report());
    if (options.sarif) {
        ToolOutput::printJson(SarifLog::make(path, findings));
    }
    if (session->report().readFailed) {
        if (options.common.json && !options.sarif) {
            ToolOutput::printJson({{"file", path},
                                   {"findings", findingsJson(findings)},
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
                               {"findings", findingsJson(findings)},
                               {"errors", errors},
                               {"warnings", warnings},
                               {"summary", korva::tool::summaryJson(summary, session->report())},
                               {"status", status}});
        return status;
    }
    std::string text = findingsText(path, findings);
    text += findings.empty() ? path + ": no findings\n\n" : "\n";
    ToolOutput::print(text + summaryText(summary, session->report(), errors, warnings));
    return status;
}

}  // namespace korva::tool
