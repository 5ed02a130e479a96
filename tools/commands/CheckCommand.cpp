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

namespace korva::tool {

namespace {

// The summary's record counts: of the records of a kind, or without one the device tunings.
struct RecordCount {
    const char* key;
    const char* label;
    std::optional<RecordKind> kind;
};
constexpr RecordCount kRecordCounts[] = {
    {"ieq_presets", "IEQ presets", RecordKind::kIeqPreset},
    {"geq_presets", "GEQ presets", RecordKind::kGeqPreset},
    {"profiles", "profiles", RecordKind::kProfile},
    {"profile_endpoints", "profile endpoints", RecordKind::kProfileEndpoint},
    {"tunings", "tunings", RecordKind::kTuning},
    {"device_tunings", "device tunings", std::nullopt},
};

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

// "1 warning", "2 warnings".
std::string counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// A finding's notes, or the findings that its undo clears, each under its place.
void printNotes(Printer& out, const std::string& path, const std::string& key,
                const std::string& title, const std::vector<Note>& notes, const std::string& lead) {
    const Printer::Scope list = out.list(key, title);
    for (const Note& note : notes) {
        const Printer::Scope item =
            out.placed(path, note.at.line, note.at.atLeast, lead + note.message);
        out.json("message", note.message);
    }
}

void printEffect(Printer& out, const std::optional<Differences>& effect) {
    if (!effect) {
        return out.json("effect", nullptr);
    }
    const Printer::Scope scope = out.object(
        "effect", effect->empty() ? "effect: none, nothing that reaches the effect changes"
                                  : "effect, undone (a) against as written (b):");
    if (!effect->empty()) {
        effect->print(out, "undone", "as written");
    } else {
        out.json("differences", Json::array());
        out.json("store", Json::array());
    }
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

void CheckCommand::printFindings(Printer& out, const std::string& path,
                                 const std::vector<Finding>& findings, const LoadReport& report,
                                 bool effects, bool listClears) {
    const Printer::Scope list = out.list("findings");
    for (const Finding& finding : findings) {
        const Printer::Scope item =
            out.placed(path, finding.at.line, finding.at.atLeast,
                       std::string(severityName(finding.severity)) + ": " + finding.message);
        out.json("rule", finding.rule);
        out.json("severity", severityName(finding.severity));
        out.json("message", finding.message);
        printNotes(out, path, "notes", "", finding.notes, "note: ");
        const Json undo = finding.undo ? UndoEdit::toJson(report, *finding.undo) : Json();
        out.json("undo", undo);
        if (effects && finding.undo) {
            out.text("undo: " + undo["description"].get<std::string>());
        }
        printEffect(out, finding.effect);
        if (!finding.effect && !finding.unmeasured.empty()) {
            out.field("effect_not_measured", effects ? "effect not measured" : "",
                      finding.unmeasured);
        }
        const size_t clears = finding.follows.size();
        printNotes(out, path, "clears",
                   clears == 0 ? ""
                               : "undoing it also clears " + counted(clears, "other finding") +
                                     (listClears ? ":" : " (--verbose lists them)"),
                   listClears ? finding.follows : std::vector<Note>(), "");
    }
}

void CheckCommand::printSummary(Printer& out, const StoreSession& session, bool records,
                                const std::string& findings) {
    const LoadReport& report = session.report();
    SpatializerParamArray& store = session.store();
    const Printer::Scope scope = out.object("summary", "summary");
    out.field("format_version", report.formatVersion);
    out.field("tool_version", report.toolVersion);
    if (records) {
        Json counts = Json::object();
        std::string text;
        for (const RecordCount& record : kRecordCounts) {
            const size_t count =
                record.kind ? report.ofKind(*record.kind).size() : report.bindings.size();
            counts[record.key] = count;
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + record.label;
        }
        out.field("records", "records", counts, text);
        std::set<int> seen;
        Json blobs = Json::array();
        for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
            if (store.isXMLProfileValid(profile->profileId) &&
                seen.insert(profile->profileId).second) {
                blobs.push_back(profile->profileId);
            }
        }
        out.field("profile_blobs", "profile blobs", blobs,
                  blobs.empty() ? "none" : Printer::textOf(blobs));
    }
    // The ports whose selection the store checks when it loads: the speaker's, looked up by the
    // loader, and the preselected defaults. Text shows a port's selection before its devices,
    // whose list may wrap.
    std::set<int> selectable(kDefaultTuningPorts.begin(), kDefaultTuningPorts.end());
    selectable.insert(DEVICE_INTERNAL_SPEAKER);
    Printer::Table ports{{{"", "port"}, {"", "selected"}, {"", "tuning devices"}}, {}};
    for (int port = 0; port < kNumAndroidDevices; port++) {
        const Json devices = portDevices(store, port);
        const bool checked = selectable.count(port) > 0;
        const Json selected = checked ? Json(store.getSelectedTuningDevice(port)) : Json();
        if (checked || !devices.empty()) {
            ports.addRow({kAndroidDeviceNames[port], checked ? selected : Json("-"),
                          devices.empty() ? Json("none") : devices},
                         {{"port", kAndroidDeviceNames[port]},
                          {"tuning_devices", devices},
                          {"selected", selected}});
        }
    }
    out.table("ports", ports);
    const bool usable = SpatializerParamCache().isTuningAvailable();
    out.field("tunings_usable", "tunings usable", usable, usable ? "yes" : "no");
    if (!findings.empty()) {
        out.field("", "findings", findings);
    }
}

std::unique_ptr<StoreSession> CheckCommand::load(const std::string& path, bool effects,
                                                 bool verbose, std::vector<Finding>* findings,
                                                 void (*progress)(size_t, size_t)) {
    // The loads of undone copies fork from a process that has loaded nothing yet.
    std::unique_ptr<ChildLoads> loads = effects ? Effects::start() : nullptr;
    std::unique_ptr<StoreSession> session = StoreSession::open(path, {}, false, loads != nullptr);
    if (session == nullptr) {
        return nullptr;
    }
    *findings = LintRules::run(session->report());
    if (loads != nullptr && !session->report().readFailed) {
        Effects::measure(*session, *loads, verbose, findings, progress);
    } else {
        Effects::skip(findings);
    }
    return session;
}

int CheckCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    std::vector<Finding> findings;
    const std::unique_ptr<StoreSession> session =
        load(path, !options.noEffects, options.common.verbose, &findings, showProgress);
    if (session == nullptr) {
        return kExitError;
    }
    const LoadReport& report = session->report();
    const auto listAll = [&](Printer& out) {
        printFindings(out, path, findings, report, true, true);
    };
    if (options.sarif) {
        ToolOutput::printJson(SarifLog::make(path, Printer::document(listAll)["findings"]));
    }
    const size_t errors = std::count_if(findings.begin(), findings.end(), [](const Finding& f) {
        return f.severity == Severity::kError;
    });
    const size_t warnings = findings.size() - errors;
    const int status = report.readFailed || errors > 0  ? kExitError
                       : warnings > 0 && options.strict ? kExitFindings
                                                        : kExitOk;
    if (report.readFailed) {
        // Says on stderr why the file cannot be read.
        session->readable();
    }
    if (options.sarif || (report.readFailed && !options.common.json)) {
        return status;
    }
    const std::unique_ptr<Printer> out = Printer::make(options.common.json);
    out->json("file", path);
    printFindings(*out, path, findings, report, !options.noEffects,
                  options.common.verbose || options.common.json);
    if (findings.empty()) {
        out->text(path + ": no findings");
    }
    out->json("errors", errors);
    out->json("warnings", warnings);
    if (!report.readFailed) {
        printSummary(*out, *session, true,
                     counted(errors, "error") + ", " + counted(warnings, "warning"));
    }
    out->json("status", status);
    out->flush();
    return status;
}

}  // namespace korva::tool
