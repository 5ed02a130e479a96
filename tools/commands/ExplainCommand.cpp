#include "tools/commands/ExplainCommand.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <vector>

#include "reader/String2Int.h"
#include "tools/commands/BlobsCommand.h"
#include "tools/load/EntryProvenance.h"
#include "tools/load/LoadedFile.h"
#include "tools/load/StoreSession.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"
#include "tools/render/Printer.h"

namespace korva::tool {

namespace {

// Codes are four letters whatever case they are typed in.
bool sameCode(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
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
    int profileId = 0;
    const LoadedFile::ProfileNames names = LoadedFile::profileNames(report);
    if (!options.profile.empty() &&
        (!LoadedFile::profileId(options.profile, names, &profileId) ||
         std::none_of(names.begin(), names.end(),
                      [profileId](const auto& named) { return named.second == profileId; }))) {
        ToolOutput::error(path, "no profile " + options.profile);
        return kExitError;
    }
    const std::unique_ptr<Printer> out = Printer::make(options.common.json);
    out->path("file", "tuning file", path);
    out->field("code", options.code);
    bool found = false;
    {
        const auto entries = out->list("entries");
        for (size_t b = 0; b < report.blobs.size(); b++) {
            const LoadReport::Blob& blob = report.blobs[b];
            const int kept = blob.isTuning ? provenance.tuningBlob(blob.device)
                                           : provenance.profileBlob(blob.profileId);
            const bool all = options.profile.empty() && !options.hasDevice;
            const bool selected =
                blob.isTuning ? all || (options.hasDevice && blob.device == options.device)
                              : all || (!options.profile.empty() && blob.profileId == profileId);
            if (kept != static_cast<int>(b) || !selected) {
                continue;
            }
            for (const EntrySource& source : provenance.ofBlob(b)) {
                const std::string code = BlobDecoder::codeText(source.code);
                if (!sameCode(code, options.code)) {
                    continue;
                }
                found = true;
                const std::string title =
                    report.blobTitle(blob.isTuning, blob.profileId, blob.device);
                const std::string device = BlobDecoder::deviceName(source.deviceId);
                const size_t count = source.values.size();
                const auto entry =
                    out->object("", title + ", entry " + std::to_string(source.entry + 1) + ": " +
                                        device + " " + code + ", " + std::to_string(count) +
                                        (count == 1 ? " value" : " values"));
                out->json("blob", title);
                out->json("entry", source.entry);
                out->json("device", source.deviceId);
                out->json("device_name", device);
                out->json("code", code);
                out->json("values", source.values);
                out->json("view", EntryView::decode(source.code, source.values).toJson());
                for (const std::string& line : BlobsCommand::valueLines(
                         source.code,
                         std::vector<int32_t>(source.values.begin(), source.values.end()),
                         options.raw)) {
                    out->text(line, 1);
                }
                const auto trace = out->object("source");
                source.print(*out);
            }
        }
    }
    if (!found) {
        ToolOutput::error(path, "no entry \"" + options.code + "\" in the blobs selected");
        return kExitError;
    }
    out->flush();
    return kExitOk;
}

}  // namespace korva::tool
