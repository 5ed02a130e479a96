#include "tools/BlobsCommand.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "reader/String2Int.h"
#include "store/SpatializerParamArray.h"
#include "tools/BlobDecoder.h"
#include "tools/EntryProvenance.h"
#include "tools/EntryView.h"
#include "tools/NumberText.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"

namespace korva::tool {

namespace {

enum class BlobKind { kBuiltin, kProfile, kTuningDevice };

struct NamedBlob {
    BlobKind kind;
    int id;
    std::string name;
    std::string port;
    std::string tuning;
    std::vector<int> words;
    std::vector<EntrySource> sources;  // one per entry
    bool same;                         // known to the reader: written as its identity only
};

const char* kindName(BlobKind kind) {
    switch (kind) {
        case BlobKind::kBuiltin:
            return "builtin";
        case BlobKind::kProfile:
            return "profile";
        case BlobKind::kTuningDevice:
            return "tuning_device";
    }
    return "";
}

std::vector<NamedBlob> builtinBlobs() {
    using Array = SpatializerParamArray;
    const auto table = [](int id, const char* name, const int* words, size_t count) {
        std::vector<int> list(words, words + count);
        std::vector<EntrySource> sources = EntryProvenance::ofBuiltin(name, list);
        return NamedBlob{BlobKind::kBuiltin, id,   name, "", "", std::move(list),
                         std::move(sources), false};
    };
    return {
        table(-1, "common", Array::mCommonParams, Array::kCommonTableWords),
        table(0, "dynamic", Array::mDynamicProfileParams, Array::kProfileTableWords),
        table(1, "movie", Array::mMovieProfileParams, Array::kProfileTableWords),
        table(2, "music", Array::mMusicProfileParams, Array::kProfileTableWords),
        table(3, "cinema", Array::mCinemaProfileParams, Array::kProfileTableWords),
        table(4, "custom", Array::mCustomProfileParams, Array::kProfileTableWords),
    };
}

// The record of a kind that the load translated first into a blob: the one the blob is of.
const RecordSnapshot* blobRecord(const LoadReport& report, size_t blob, RecordKind kind) {
    for (const LoadReport::TranslatedEvent& event : report.translated) {
        if (event.blob == static_cast<int>(blob) && report.records[event.record].kind == kind) {
            return &report.records[event.record];
        }
    }
    return nullptr;
}

// What the store serves besides the blobs: whether tunings are usable, the tuning devices of
// each port and the selection of each.
Json storeState(SpatializerParamArray& store) {
    Json ports = Json::object();
    Json selections = Json::object();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        const std::string devices = store.getAvailableTuningDevices(port);
        if (!devices.empty()) {
            ports[kAndroidDeviceNames[port]] = devices;
        }
        const std::string selected = store.getSelectedTuningDevice(port);
        if (!selected.empty()) {
            selections[kAndroidDeviceNames[port]] = selected;
        }
    }
    return {{"tunings_usable", SpatializerParamCache().isTuningAvailable()},
            {"tuning_devices", ports},
            {"selections", selections}};
}

// The blobs the store built from the file, per profile id then per tuning device, named after
// the records the load put into the blob it kept.
Json identityJson(const NamedBlob& blob);

void fileBlobs(const StoreSession& session, std::vector<NamedBlob>* blobs, Json* state,
               const BlobsCommand::Known& known = nullptr) {
    SpatializerParamArray& store = session.store();
    const LoadReport& report = session.report();
    const EntryProvenance provenance(report);
    // The sources of a blob the reader does not know already.
    const auto sourced = [&](NamedBlob named, size_t i) {
        named.same = known != nullptr && known(identityJson(named), named.words);
        named.sources = named.same ? std::vector<EntrySource>() : provenance.ofBlob(i);
        return named;
    };
    std::vector<NamedBlob> devices;
    for (size_t i = 0; i < report.blobs.size(); i++) {
        const LoadReport::Blob& blob = report.blobs[i];
        if (blob.fate == BlobFate::kDropped) {
            continue;
        }
        if (!blob.isTuning && store.isXMLProfileValid(blob.profileId)) {
            const RecordSnapshot* profile = blobRecord(report, i, RecordKind::kProfile);
            blobs->push_back(sourced({BlobKind::kProfile,
                                      blob.profileId,
                                      profile != nullptr ? profile->name : "",
                                      "",
                                      "",
                                      store.getXMLProfileParams(blob.profileId),
                                      {},
                                      false},
                                     i));
            continue;
        }
        const RecordSnapshot* tuning = blobRecord(report, i, RecordKind::kTuning);
        if (!blob.isTuning || tuning == nullptr || !store.isXMLTuningValid(blob.device)) {
            continue;
        }
        std::string port;
        for (const BindingSnapshot& binding : report.bindings) {
            port = binding.device == blob.device && binding.tuning == tuning->name ? binding.port
                                                                                   : port;
        }
        const NamedBlob named = sourced({BlobKind::kTuningDevice,
                                         0,
                                         blob.device,
                                         port,
                                         tuning->name,
                                         store.getXMLTuningParams(blob.device),
                                         {},
                                         false},
                                        i);
        // A later blob of the same device replaced this one.
        auto same = std::find_if(devices.begin(), devices.end(),
                                 [&blob](const NamedBlob& d) { return d.name == blob.device; });
        if (same != devices.end()) {
            *same = named;
        } else {
            devices.push_back(named);
        }
    }
    blobs->insert(blobs->end(), devices.begin(), devices.end());
    if (state != nullptr) {
        *state = storeState(store);
    }
}

int fileBlobs(const std::string& path, std::vector<NamedBlob>* blobs, Json* state = nullptr) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    fileBlobs(*session, blobs, state);
    return kExitOk;
}

// What comparing blobs reads of an entry's source: its summary and the lines of its band rows.
Json briefSource(const EntrySource& source) {
    if (!source.builtinTable.empty()) {
        return {{"builtin_table", source.builtinTable}};
    }
    Json rows = Json::array();
    for (const SourceParameter& parameter : source.parameters) {
        for (const ValueStep& step : parameter.steps) {
            for (const ReadElement& element : step.elements) {
                if (element.row) {
                    rows.push_back({{"row", true}, {"line", element.line}});
                }
            }
        }
    }
    return {{"summary", source.summary()},
            {"parameters", Json::array({{{"steps", Json::array({{{"elements", rows}}})}}})}};
}

Json identityJson(const NamedBlob& blob) {
    Json json = {{"kind", kindName(blob.kind)}};
    if (blob.kind == BlobKind::kTuningDevice) {
        json["name"] = blob.name;
        json["port"] = blob.port;
        json["tuning"] = blob.tuning;
    } else {
        json["id"] = blob.id;
        json["name"] = blob.name;
    }
    return json;
}

// brief: only what comparing blobs reads, a hundredth of the size.
Json blobJson(const NamedBlob& blob, bool brief = false) {
    if (blob.same) {
        Json identity = identityJson(blob);
        identity["same"] = true;
        return identity;
    }
    const DecodedBlob decoded = BlobDecoder::decode(blob.words);
    Json entries = Json::array();
    for (size_t i = 0; i < decoded.entries.size(); i++) {
        const BlobEntry& entry = decoded.entries[i];
        const std::vector<int> values(entry.values.begin(), entry.values.end());
        Json json = {{"device", entry.deviceId},
                     {"device_name", BlobDecoder::deviceName(entry.deviceId)},
                     {"code", BlobDecoder::codeText(entry.code)},
                     {"count", entry.values.size()},
                     {"values", entry.values}};
        if (brief) {
            if (i < blob.sources.size()) {
                json["source"] = briefSource(blob.sources[i]);
            }
            entries.push_back(json);
            continue;
        }
        const EntryView view = EntryView::decode(entry.code, values);
        if (view.kind != EntryView::Kind::kPlain) {
            json["view"] = view.toJson();
        }
        if (i < blob.sources.size()) {
            json["source"] = blob.sources[i].toJson();
        }
        entries.push_back(json);
    }
    Json json = identityJson(blob);
    json["words"] = decoded.words;
    json["valid"] = decoded.valid;
    json["header"] = decoded.header;
    json["entries"] = entries;
    return json;
}

std::string blobText(const NamedBlob& blob, bool raw) {
    const DecodedBlob decoded = BlobDecoder::decode(blob.words);
    std::string title;
    switch (blob.kind) {
        case BlobKind::kBuiltin:
            title = "built-in profile " + std::to_string(blob.id) + " \"" + blob.name + "\"";
            break;
        case BlobKind::kProfile:
            title = "profile " + std::to_string(blob.id) + " \"" + blob.name + "\"";
            break;
        case BlobKind::kTuningDevice:
            title = "tuning device \"" + blob.name + "\" (port " + blob.port + ", tuning " +
                    blob.tuning + ")";
            break;
    }
    const std::string size = std::to_string(decoded.entries.size()) + " entries, " +
                             std::to_string(decoded.words) + " words" +
                             (decoded.valid ? "" : ", rejected by the blob reader");
    // The size goes below a title too long to carry it within the width.
    title += title.size() + 2 + size.size() > TextTable::kDefaultWidth ? ":\n  " + size + "\n"
                                                                       : ": " + size + "\n";
    TextTable table({"#", "device", "code", "count", "from / values"});
    table.alignRight(0);
    table.alignRight(3);
    for (size_t i = 0; i < decoded.entries.size(); i++) {
        const BlobEntry& entry = decoded.entries[i];
        table.addRow({std::to_string(i + 1), BlobDecoder::deviceName(entry.deviceId),
                      BlobDecoder::codeText(entry.code), std::to_string(entry.values.size()),
                      i < blob.sources.size() ? blob.sources[i].summary() : ""});
        for (const std::string& line : BlobsCommand::valueLines(entry.code, entry.values, raw)) {
            table.addRow({"", "", "", "", line});
        }
    }
    return title + table.render("  ");
}

// The profile id a selector names: a number, or a profile name.
bool resolveProfile(const std::string& selector, const std::vector<NamedBlob>& blobs, int* id) {
    if (NumberText::isWholeInt(selector)) {
        *id = string2Int(selector);
        return true;
    }
    for (const NamedBlob& blob : blobs) {
        if (blob.kind != BlobKind::kTuningDevice && blob.name == selector) {
            *id = blob.id;
            return true;
        }
    }
    for (const NamedBlob& blob : builtinBlobs()) {
        if (blob.name == selector) {
            *id = blob.id;
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::string> BlobsCommand::valueLines(int32_t code, const std::vector<int32_t>& values,
                                                  bool raw) {
    const std::vector<int> words(values.begin(), values.end());
    const EntryView view = EntryView::decode(code, words);
    if (raw || view.kind == EntryView::Kind::kPlain) {
        return {NumberText::join(words)};
    }
    return view.lines();
}

Json BlobsCommand::blobsJson(const StoreSession& session) {
    std::vector<NamedBlob> blobs;
    fileBlobs(session, &blobs, nullptr);
    Json list = Json::array();
    for (const NamedBlob& blob : blobs) {
        list.push_back(blobJson(blob));
    }
    return list;
}

std::vector<EntrySource> BlobsCommand::builtinSources(int profileId, std::string* name) {
    for (NamedBlob& blob : builtinBlobs()) {
        if (blob.id == profileId) {
            *name = blob.name;
            return std::move(blob.sources);
        }
    }
    return {};
}

Json BlobsCommand::sessionJson(const StoreSession& session, bool brief, const Known& known) {
    std::vector<NamedBlob> blobs;
    Json state;
    fileBlobs(session, &blobs, &state, known);
    Json list = Json::array();
    for (const NamedBlob& blob : blobs) {
        list.push_back(blobJson(blob, brief));
    }
    return {{"store", state}, {"blobs", list}};
}

int BlobsCommand::collectJson(const std::string& path, Json* document) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    *document = {{"file", path}};
    document->update(sessionJson(*session));
    return kExitOk;
}

int BlobsCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    std::vector<NamedBlob> blobs;
    if (options.builtin) {
        blobs = builtinBlobs();
    } else {
        const int status = fileBlobs(path, &blobs);
        if (status != kExitOk) {
            return status;
        }
    }

    const bool selectProfile = !options.profile.empty();
    int profileId = 0;
    if (selectProfile && !resolveProfile(options.profile, blobs, &profileId)) {
        ToolOutput::error(path, "no profile named " + options.profile);
        return kExitError;
    }
    const bool selecting = selectProfile || options.hasDevice;
    std::vector<NamedBlob> shown;
    bool foundProfile = false;
    bool foundDevice = false;
    for (NamedBlob& blob : blobs) {
        const bool isDevice = blob.kind == BlobKind::kTuningDevice;
        const bool profileMatch = selectProfile && !isDevice && blob.id == profileId;
        const bool deviceMatch = options.hasDevice && isDevice && blob.name == options.device;
        foundProfile = foundProfile || profileMatch;
        foundDevice = foundDevice || deviceMatch;
        if (!selecting || profileMatch || deviceMatch) {
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

    if (options.common.json) {
        Json list = Json::array();
        for (const NamedBlob& blob : shown) {
            list.push_back(blobJson(blob));
        }
        Json document = {{"file", options.builtin ? Json(nullptr) : Json(path)}, {"blobs", list}};
        ToolOutput::printJson(document);
        return kExitOk;
    }
    std::string text;
    for (const NamedBlob& blob : shown) {
        text += (text.empty() ? "" : "\n") + blobText(blob, options.raw);
    }
    ToolOutput::print(text);
    return kExitOk;
}

}  // namespace korva::tool
