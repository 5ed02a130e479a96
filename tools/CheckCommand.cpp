#include "tools/CheckCommand.h"

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"
#include "tools/TuningFileLinter.h"
#include "tools/TuningFileRecords.h"

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

// What the store made of the file, and the default tuning devices it found missing.
Summary summarize(SpatializerParamArray& store, const TuningFileRecords& records,
                  TuningFileLinter& linter) {
    Summary summary;
    summary.records = {
        {"ieq_presets", "IEQ presets", records.ieqPresets().size()},
        {"geq_presets", "GEQ presets", records.geqPresets().size()},
        {"profiles", "profiles", records.profiles().size()},
        {"profile_endpoints", "profile endpoints", records.profileEndpoints().size()},
        {"tunings", "tunings", records.tunings().size()},
        {"device_tunings", "device tunings", records.deviceTunings().size()},
    };
    for (int id : records.profileIds()) {
        if (store.isXMLProfileValid(id)) {
            summary.profileBlobs.push_back(id);
        }
    }
    const std::set<int> selectable = checkedPorts();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        PortSummary entry{kAndroidDeviceNames[port], selectable.count(port) > 0, "",
                          portDevices(store, port)};
        if (entry.hasSelection) {
            entry.selected = store.getSelectedTuningDevice(port);
            if (!store.isValidTuningDevice(port, entry.selected)) {
                linter.add(linter.rootLine(), Severity::kError,
                           "default tuning device \"" + entry.selected + "\" for port " +
                               entry.port + " is missing" +
                               (port == DEVICE_INTERNAL_SPEAKER
                                    ? " (bind the speaker's tuning with <device_id "
                                      "id=\"\" endpoint_port=\"internal_speaker\"/>)"
                                    : "") +
                               ": the store disables every tuning");
            }
        }
        if (entry.hasSelection || !entry.devices.empty()) {
            summary.ports.push_back(entry);
        }
    }
    summary.tuningsUsable = SpatializerParamCache().isTuningAvailable();
    return summary;
}

Json findingsJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        list.push_back({{"line", finding.line},
                        {"severity", severityName(finding.severity)},
                        {"message", finding.message}});
    }
    return list;
}

Json summaryJson(const Summary& summary, const TuningFileRecords& records) {
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
    return {{"format_version", records.formatVersion()},
            {"tool_version", records.toolVersion()},
            {"records", counts},
            {"profile_blobs", summary.profileBlobs},
            {"ports", ports},
            {"tunings_usable", summary.tuningsUsable}};
}

std::string summaryText(const Summary& summary, const TuningFileRecords& records, size_t errors,
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
    facts.addRow({"format version", records.formatVersion()});
    facts.addRow({"tool version", records.toolVersion()});
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

}  // namespace

int CheckCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    if (!ToolOutput::isReadable(path)) {
        return kExitError;
    }
    TuningFileRecords records;
    records.read(path);
    TuningFileLinter linter(records);
    if (!linter.lint(path)) {
        const Finding finding = linter.findings().front();
        if (options.common.json) {
            ToolOutput::printJson({{"file", path},
                                   {"findings", findingsJson(linter.findings())},
                                   {"errors", 1},
                                   {"warnings", 0},
                                   {"status", kExitError}});
        }
        ToolOutput::error(path + ":" + std::to_string(finding.line), finding.message);
        return kExitError;
    }

    SpatializerParamArray* store = StoreSession::open(path);
    if (store == nullptr) {
        return kExitError;
    }
    const Summary summary = summarize(*store, records, linter);

    const std::vector<Finding> findings = linter.findings();
    size_t errors = 0;
    for (const Finding& finding : findings) {
        errors += finding.severity == Severity::kError ? 1 : 0;
    }
    const size_t warnings = findings.size() - errors;
    const int status = errors > 0                       ? kExitError
                       : warnings > 0 && options.strict ? kExitFindings
                                                        : kExitOk;
    if (options.common.json) {
        ToolOutput::printJson({{"file", path},
                               {"findings", findingsJson(findings)},
                               {"errors", errors},
                               {"warnings", warnings},
                               {"summary", summaryJson(summary, records)},
                               {"status", status}});
        return status;
    }
    std::string text;
    for (const Finding& finding : findings) {
        text += path + ":" + std::to_string(finding.line) + ": " + severityName(finding.severity) +
                ": " + finding.message + "\n";
    }
    text += findings.empty() ? path + ": no findings\n\n" : "\n";
    ToolOutput::print(text + summaryText(summary, records, errors, warnings));
    return status;
}

}  // namespace korva::tool
