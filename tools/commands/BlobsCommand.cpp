#include "tools/commands/BlobsCommand.h"

#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

std::string blobText(const LoadedBlob& blob, bool raw) {
    std::string title = blob.title();
    if (blob.kind == LoadedBlob::Kind::kTuningDevice) {
        title += " (port " + blob.port + ", tuning " + blob.tuning + ")";
    }
    const std::string size = std::to_string(blob.entries.size()) + " entries, " +
                             std::to_string(blob.words) + " words" +
                             (blob.valid ? "" : ", rejected by the blob reader");
    // The size goes below a title too long to carry it within the width.
    title += title.size() + 2 + size.size() > TextTable::kDefaultWidth ? ":\n  " + size + "\n"
                                                                       : ": " + size + "\n";
    TextTable table({"#", "device", "code", "count", "from / values"});
    table.alignRight(0);
    table.alignRight(3);
    for (size_t i = 0; i < blob.entries.size(); i++) {
        const LoadedEntry& entry = blob.entries[i];
        table.addRow({std::to_string(i + 1), BlobDecoder::deviceName(entry.deviceId),
                      BlobDecoder::codeText(entry.code), std::to_string(entry.values.size()),
                      entry.from});
        for (const std::string& line : EntryView::decode(entry.code, entry.values).lines(raw)) {
            table.addRow({"", "", "", "", line});
        }
    }
    return title + table.render("  ");
}

}  // namespace

bool BlobSelection::selects(const LoadedBlob& blob, int profileId) const {
    if (profile.empty() && !hasDevice) {
        return true;
    }
    return blob.kind == LoadedBlob::Kind::kTuningDevice ? hasDevice && blob.name == device
                                                        : !profile.empty() && blob.id == profileId;
}

int BlobsCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    LoadedFile file;
    if (options.builtin) {
        file = LoadedFile::builtin();
    } else if (!LoadedFile::open(path, &file)) {
        return kExitError;
    }
    const bool selectProfile = !options.profile.empty();
    int profileId = 0;
    if (selectProfile && !LoadedFile::profileId(options.profile, file.profileNames(), &profileId)) {
        ToolOutput::error(path, "no profile named " + options.profile);
        return kExitError;
    }
    bool foundProfile = false;
    bool foundDevice = false;
    std::vector<LoadedBlob> shown;
    for (LoadedBlob& blob : file.blobs) {
        if (options.selects(blob, profileId)) {
            (blob.kind == LoadedBlob::Kind::kTuningDevice ? foundDevice : foundProfile) = true;
            shown.push_back(std::move(blob));
        }
    }
    if (selectProfile && !foundProfile) {
        ToolOutput::error(path, "no blob for profile " + options.profile);
        return kExitError;
    }
    if (options.hasDevice && !foundDevice) {
        ToolOutput::error(path, "no blob for tuning device \"" + options.device + "\"");
        return kExitError;
    }
    file.blobs = std::move(shown);
    if (options.common.json) {
        ToolOutput::printJson(file.toJson());
        return kExitOk;
    }
    std::string text;
    for (const LoadedBlob& blob : file.blobs) {
        text += (text.empty() ? "" : "\n") + blobText(blob, options.raw);
    }
    ToolOutput::print(text);
    return kExitOk;
}

}  // namespace korva::tool
