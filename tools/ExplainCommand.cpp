#include "tools/ExplainCommand.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <vector>

#include "reader/String2Int.h"
#include "tools/BlobDecoder.h"
#include "tools/commands/BlobsCommand.h"
#include "tools/EntryProvenance.h"
#include "tools/EntryView.h"
#include "tools/NumberText.h"
#include "tools/load/StoreSession.h"
#include "tools/TextTable.h"

namespace korva::tool {

namespace {

// A line wrapped to the terminal's width, its continuations indented under its text.
std::string wrapped(const std::string& indent, const std::string& line) {
    std::string text;
    const std::string more = indent + "  ";
    for (const std::string& part : TextTable::wrap(line, TextTable::kDefaultWidth - more.size())) {
        text += (text.empty() ? indent : more) + part + "\n";
    }
    return text;
}

std::string blobTitle(const LoadReport& report, const LoadReport::Blob& blob) {
    if (blob.isTuning) {
        return "tuning device \"" + blob.device + "\"";
    }
    for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
        if (profile->profileId == blob.profileId) {
            return profile->title();
        }
    }
    return "profile " + std::to_string(blob.profileId);
}

// Codes are four letters whatever case they are typed in.
bool sameCode(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

std::string elementText(const ReadElement& element) {
    std::string text = "line " + std::to_string(element.line) + (element.atLeast ? "+" : "") +
                       " <" + element.name + ">";
    for (const auto& [name, value] : element.attributes) {
        text += " " + name + "=\"" + value + "\"";
    }
    for (const std::string& name : element.absent) {
        text += " (no " + name + ")";
    }
    return text;
}

std::string traceText(const EntrySource& source) {
    if (!source.builtinTable.empty()) {
        return "  from the built-in table \"" + source.builtinTable + "\"\n";
    }
    if (source.parameters.empty()) {
        return "  the load reported no source for it\n";
    }
    std::string text;
    for (const SourceParameter& parameter : source.parameters) {
        text += "  " + parameter.name + " of " + parameter.recordName + " (line " +
                std::to_string(parameter.recordLine) + ")\n";
        if (parameter.steps.empty()) {
            text += "    no write reported: the record's own value\n";
        }
        for (const ValueStep& step : parameter.steps) {
            const std::string values = "values " + NumberText::join(step.values);
            if (step.rule.empty()) {
                text += wrapped("    ", "read from the file" +
                                            (step.record.empty() ? "" : " into " + step.record) +
                                            ": " + values);
            } else {
                text += wrapped("    ", step.rule +
                                            (step.record.empty() ? "" : " (" + step.record + ")") +
                                            ": " + values);
            }
            for (const ReadElement& element : step.elements) {
                text += "      " + elementText(element) + "\n";
            }
        }
    }
    return text;
}

}  // namespace

int ExplainCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    const LoadReport& report = session->report();
    const EntryProvenance provenance(report);
    const bool selectProfile = !options.profile.empty();
    int profileId = 0;
    if (selectProfile) {
        bool known = NumberText::isWholeInt(options.profile);
        profileId = known ? string2Int(options.profile) : 0;
        for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
            if (!known && profile->name == options.profile) {
                profileId = profile->profileId;
                known = true;
            }
        }
        const auto profiles = report.ofKind(RecordKind::kProfile);
        if (!known) {
            ToolOutput::error(path, "no profile named " + options.profile);
            return kExitError;
        }
        if (std::none_of(profiles.begin(), profiles.end(), [profileId](const RecordSnapshot* p) {
                return p->profileId == profileId;
            })) {
            ToolOutput::error(path, "no profile " + options.profile);
            return kExitError;
        }
    }

    Json list = Json::array();
    std::string text;
    for (size_t b = 0; b < report.blobs.size(); b++) {
        const LoadReport::Blob& blob = report.blobs[b];
        const bool kept = blob.isTuning
                              ? provenance.tuningBlob(blob.device) == static_cast<int>(b)
                              : provenance.profileBlob(blob.profileId) == static_cast<int>(b);
        const bool selected = (!selectProfile && !options.hasDevice) ||
                              (selectProfile && !blob.isTuning && blob.profileId == profileId) ||
                              (options.hasDevice && blob.isTuning && blob.device == options.device);
        if (!kept || !selected) {
            continue;
        }
        for (const EntrySource& source : provenance.ofBlob(b)) {
            if (!sameCode(BlobDecoder::codeText(source.code), options.code)) {
                continue;
            }
            const std::string code = BlobDecoder::codeText(source.code);
            const EntryView view = EntryView::decode(source.code, source.values);
            const std::string title = blobTitle(report, blob);
            list.push_back({{"blob", title},
                            {"entry", source.entry},
                            {"device", source.deviceId},
                            {"device_name", BlobDecoder::deviceName(source.deviceId)},
                            {"code", code},
                            {"values", source.values},
                            {"view", view.toJson()},
                            {"source", source.toJson()}});
            text += (text.empty() ? "" : "\n") + title + ", entry " +
                    std::to_string(source.entry + 1) + ": " +
                    BlobDecoder::deviceName(source.deviceId) + " " + code + ", " +
                    std::to_string(source.values.size()) +
                    (source.values.size() == 1 ? " value\n" : " values\n");
            std::vector<int32_t> values(source.values.begin(), source.values.end());
            for (const std::string& line :
                 BlobsCommand::valueLines(source.code, values, options.raw)) {
                text += "    " + line + "\n";
            }
            text += traceText(source);
        }
    }
    if (list.empty()) {
        ToolOutput::error(path, "no entry \"" + options.code + "\" in the blobs selected");
        return kExitError;
    }
    if (options.common.json) {
        ToolOutput::printJson({{"file", path}, {"code", options.code}, {"entries", list}});
    } else {
        ToolOutput::print(text);
    }
    return kExitOk;
}

}  // namespace korva::tool
