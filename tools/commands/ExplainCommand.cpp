#include "tools/commands/ExplainCommand.h"

#include <strings.h>

#include <algorithm>
#include <memory>

#include "tools/load/LoadedFile.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/Printer.h"

namespace korva::tool {

int ExplainCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    LoadedFile file;
    if (!LoadedFile::open(path, &file)) {
        return kExitError;
    }
    int profileId = 0;
    const LoadedFile::ProfileNames names = file.profileNames();
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
        for (const LoadedBlob& blob : file.blobs) {
            for (size_t i = 0; options.selects(blob, profileId) && i < blob.entries.size(); i++) {
                const LoadedEntry& entry = blob.entries[i];
                const std::string code = BlobDecoder::codeText(entry.code);
                // Codes are four letters whatever case they are typed in.
                if (strcasecmp(code.c_str(), options.code.c_str()) != 0) {
                    continue;
                }
                found = true;
                const size_t count = entry.values.size();
                const auto item = out->object(
                    "", blob.title() + ", entry " + std::to_string(i + 1) + ": " +
                            EntryView::identity(entry.deviceId, entry.code) + ", " +
                            std::to_string(count) + (count == 1 ? " value" : " values"));
                out->json("blob", blob.title());
                out->json("entry", i);
                EntryView::printIdentity(*out, entry.deviceId, entry.code);
                out->json("values", entry.values);
                const EntryView view = EntryView::decode(entry.code, entry.values);
                out->json("view", view.toJson());
                for (const std::string& line : view.lines(options.raw)) {
                    out->text(line, 1);
                }
                const auto trace = out->object("source");
                entry.print(*out);
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
