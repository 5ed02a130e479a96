#include "tools/load/LoadedFile.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "cache/SpatializerParamCache.h"
#include "reader/String2Int.h"
#include "store/SpatializerParamArray.h"
#include "tools/load/StoreSession.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"
#include "translator/VexParameter.h"

namespace korva::tool {

namespace {

using Kind = LoadedBlob::Kind;

const char* const kKindNames[] = {"builtin", "profile", "tuning_device"};

// sources is called only for a blob that known does not have.
template <typename Sources>
LoadedBlob makeBlob(Kind kind, int id, std::string name, const std::vector<int>& words,
                    Sources sources, const LoadedFile::Known& known = nullptr) {
    const DecodedBlob decoded = BlobDecoder::decode(words);
    LoadedBlob blob{kind,           id, std::move(name), "", "", decoded.words, decoded.valid,
                    decoded.header, {}};
    if (known != nullptr && known(blob.key(), words)) {
        blob.same = true;
        return blob;
    }
    blob.entries = sources();
    const size_t made = blob.entries.size();  // an entry past them has no source to show
    blob.entries.resize(decoded.entries.size());
    for (size_t i = 0; i < decoded.entries.size(); i++) {
        const BlobEntry& entry = decoded.entries[i];
        LoadedEntry& loaded = blob.entries[i];
        loaded.deviceId = entry.deviceId;
        loaded.code = entry.code;
        loaded.values.assign(entry.values.begin(), entry.values.end());
        loaded.entry = i;
        loaded.from = i < made ? loaded.summary() : "";
    }
    return blob;
}

// The store's matrix of a tuning device, with the sources of its tuning's orientation and matrix,
// and the rows of the last write the file's elements made of the matrix.
MixMatrix mixMatrix(SpatializerParamArray& store, const EntryProvenance& provenance,
                    const std::string& device, int tuning) {
    MixMatrix matrix{store.getXMLTuningMixMatrix(device), {}, {}};
    matrix.source = provenance.ofRecord(tuning, {ORIENTATION, OUTPUT_MIX_MATRIX});
    matrix.source.from = matrix.source.summary();
    for (const ValueStep& step : matrix.source.parameters[1].steps) {
        std::vector<MatrixRow> rows;
        for (const ReadElement& element : step.elements) {
            if (element.row) {
                rows.push_back({element.name, element.line, element.numbers});
            }
        }
        matrix.rows = rows.empty() ? matrix.rows : rows;
    }
    return matrix;
}

}  // namespace

long LoadedEntry::rowLine(int row) const {
    for (const SourceParameter& parameter : parameters) {
        for (const ValueStep& step : parameter.steps) {
            int at = 0;
            for (const ReadElement& element : step.elements) {
                if (element.row && row >= 0 && at++ == row) {
                    return element.line;
                }
            }
        }
    }
    return 0;
}

std::string LoadedEntry::parameterNames() const {
    std::string names;
    for (const SourceParameter& parameter : parameters) {
        names += (names.empty() ? "" : ", ") + parameter.name;
    }
    return names;
}

const char* LoadedBlob::kindName(Kind kind) {
    return kKindNames[static_cast<int>(kind)];
}

std::string LoadedBlob::key() const {
    return kindName(kind) + (":" + (kind == Kind::kTuningDevice ? name : std::to_string(id)));
}

std::string LoadedBlob::title() const {
    if (kind == Kind::kTuningDevice) {
        return "tuning device \"" + name + "\"";
    }
    return (kind == Kind::kBuiltin ? "built-in profile " : "profile ") + std::to_string(id) +
           " \"" + name + "\"";
}

std::vector<std::string> LoadedBlob::entryKeys() const {
    std::vector<std::string> keys;
    std::map<std::string, int> seen;
    for (const LoadedEntry& entry : entries) {
        const std::string pair =
            std::to_string(entry.deviceId) + "/" + BlobDecoder::codeText(entry.code);
        keys.push_back(pair + "#" + std::to_string(seen[pair]++));
    }
    return keys;
}

const MatrixRow* MixMatrix::rowOf(size_t index) const {
    // The store's words lead with the endpoint and the orientation, then hold the values read.
    constexpr size_t kLead = kOutputModeLeadWords - 1;
    size_t start = kLead;
    for (const MatrixRow& row : rows) {
        if (index >= start && index < start + row.count) {
            return &row;
        }
        start += row.count;
    }
    return nullptr;
}

EntryView MixMatrix::view() const {
    std::vector<int> entry = {0};
    entry.insert(entry.end(), words.begin(), words.end());
    return EntryView::decode(vexParameterCode(DOM), entry);
}

LoadedFile LoadedFile::of(const StoreSession& session, const Known& known) {
    SpatializerParamArray& store = session.store();
    const LoadReport& report = session.report();
    const EntryProvenance provenance(report);
    LoadedFile file;
    file.formatVersion = report.formatVersion;
    file.toolVersion = report.toolVersion;
    std::vector<LoadedBlob> devices;
    std::map<std::string, size_t> deviceAt;  // in devices, by name
    for (size_t i = 0; i < report.blobs.size(); i++) {
        const LoadReport::Blob& blob = report.blobs[i];
        const int record = provenance.blobRecord(i);
        const auto sources = [&] { return provenance.ofBlob(i); };
        if (blob.fate == BlobFate::kDropped) {
            continue;
        }
        if (!blob.isTuning && store.isXMLProfileValid(blob.profileId)) {
            file.blobs.push_back(makeBlob(
                Kind::kProfile, blob.profileId, record >= 0 ? report.records[record].name : "",
                store.getXMLProfileParams(blob.profileId), sources, known));
        }
        if (!blob.isTuning || record < 0 || !store.isXMLTuningValid(blob.device)) {
            continue;
        }
        LoadedBlob named = makeBlob(Kind::kTuningDevice, 0, blob.device,
                                    store.getXMLTuningParams(blob.device), sources, known);
        named.tuning = report.records[record].name;
        for (const BindingSnapshot& binding : report.bindings) {
            const bool bound = binding.device == blob.device && binding.tuning == named.tuning;
            named.port = bound ? binding.port : named.port;
        }
        // A later blob of the same device replaces this one.
        file.store.mixMatrices[blob.device] = mixMatrix(store, provenance, blob.device, record);
        const auto [at, first] = deviceAt.emplace(blob.device, devices.size());
        devices.resize(devices.size() + (first ? 1 : 0));
        devices[at->second] = std::move(named);
    }
    std::move(devices.begin(), devices.end(), std::back_inserter(file.blobs));
    file.store.tuningsUsable = SpatializerParamCache().isTuningAvailable();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        file.store.ports.push_back({kAndroidDeviceNames[port], store.getAvailableTuningDevices(port),
                                    store.getSelectedTuningDevice(port)});
    }
    return file;
}

bool LoadedFile::open(const std::string& path, LoadedFile* file) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr || !session->readable()) {
        return false;
    }
    *file = of(*session);
    file->path = path;
    return true;
}

const LoadedFile& LoadedFile::builtin() {
    static const LoadedFile kBuiltin = [] {
        const auto table = [](int id, const char* name, const int* words, size_t count) {
            const auto sources = [&] {
                return std::vector<LoadedEntry>(count, LoadedEntry{0, 0, {}, "", 0, name, {}});
            };
            return makeBlob(Kind::kBuiltin, id, name, {words, words + count}, sources);
        };
        using Array = SpatializerParamArray;
        LoadedFile file;
        file.blobs = {
            table(-1, "common", Array::mCommonParams, Array::kCommonTableWords),
            table(0, "dynamic", Array::mDynamicProfileParams, Array::kProfileTableWords),
            table(1, "movie", Array::mMovieProfileParams, Array::kProfileTableWords),
            table(2, "music", Array::mMusicProfileParams, Array::kProfileTableWords),
            table(3, "cinema", Array::mCinemaProfileParams, Array::kProfileTableWords),
            table(4, "custom", Array::mCustomProfileParams, Array::kProfileTableWords),
        };
        return file;
    }();
    return kBuiltin;
}

const LoadedBlob* LoadedFile::find(Kind kind, int id, const std::string& device) const {
    const auto found = std::find_if(blobs.begin(), blobs.end(), [&](const LoadedBlob& blob) {
        return blob.kind == kind &&
               (kind == Kind::kTuningDevice ? blob.name == device : blob.id == id);
    });
    return found != blobs.end() ? &*found : nullptr;
}

bool LoadedFile::profileId(const std::string& selector, const ProfileNames& names, int* id) {
    ProfileNames all = names;
    for (const LoadedBlob& blob : builtin().blobs) {
        all.emplace_back(blob.name, blob.id);
    }
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const auto& named) { return named.first == selector; });
    const bool number = NumberText::isWholeInt(selector);
    if (number || found != all.end()) {
        *id = number ? string2Int(selector) : found->second;
    }
    return number || found != all.end();
}

LoadedFile::ProfileNames LoadedFile::profileNames() const {
    ProfileNames names;
    for (const LoadedBlob& blob : blobs) {
        if (blob.kind != Kind::kTuningDevice) {
            names.emplace_back(blob.name, blob.id);
        }
    }
    return names;
}

LoadedFile::ProfileNames LoadedFile::profileNames(const LoadReport& report) {
    ProfileNames names;
    for (const RecordSnapshot* profile : report.ofKind(RecordKind::kProfile)) {
        names.emplace_back(profile->name, profile->profileId);
    }
    return names;
}

// Each struct's members under their own names, one list read both ways (nlohmann's
// NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT, for the ordered Json): the child's form of a
// loaded file, and the printed one of the store's mix matrices.
#define KORVA_JSON_MEMBERS(Type, ...)                                                           \
    void to_json(Json& nlohmann_json_j, const Type& nlohmann_json_t) {                          \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))                \
    }                                                                                           \
    void from_json(const Json& nlohmann_json_j, Type& nlohmann_json_t) {                        \
        const Type nlohmann_json_default_obj;                                                   \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM_WITH_DEFAULT, __VA_ARGS__)) \
    }

// The store's ports as printed, in both directions.
void to_json(Json& json, const PortState& port) {
    json = {{"port", port.port}, {"tuning_devices", port.devices}, {"selected", port.selected}};
}
void from_json(const Json& json, PortState& port) {
    port = {json.value("port", ""), json.value("tuning_devices", ""), json.value("selected", "")};
}

KORVA_JSON_MEMBERS(MatrixRow, element, line, count)
KORVA_JSON_MEMBERS(MixMatrix, words, rows)
KORVA_JSON_MEMBERS(ReadElement, name, line, row)

// Of a parameter's writes, what comparing and the report read: the band and matrix row elements,
// a tenth of the whole.
void to_json(Json& json, const ValueStep& step) {
    json = {{"elements", Json::array()}};
    for (const ReadElement& element : step.elements) {
        if (element.row) {
            json["elements"].push_back(element);
        }
    }
}
void from_json(const Json& json, ValueStep& step) {
    step.elements = json.value("elements", std::vector<ReadElement>());
}

KORVA_JSON_MEMBERS(SourceParameter, name, steps)
KORVA_JSON_MEMBERS(LoadedEntry, deviceId, code, values, from, entry, builtinTable, parameters)
KORVA_JSON_MEMBERS(LoadedBlob, kind, id, name, port, tuning, words, valid, header, entries, same)
KORVA_JSON_MEMBERS(StoreState, tuningsUsable, ports, mixMatrices)
KORVA_JSON_MEMBERS(LoadedFile, path, formatVersion, toolVersion, blobs, store)

Json LoadedFile::toJson(bool brief) const {
    if (brief) {
        return *this;
    }
    Json json = {{"file", path.empty() ? Json(nullptr) : Json(path)},
                 {"format_version", formatVersion},
                 {"tool_version", toolVersion},
                 {"store",
                  {{"tunings_usable", store.tuningsUsable},
                   {"ports", store.ports},
                   {"mix_matrices", store.mixMatrices}}},
                 {"blobs", Json::array()}};
    for (const LoadedBlob& blob : blobs) {
        const char* kind = LoadedBlob::kindName(blob.kind);
        Json& item = json["blobs"].emplace_back(
            blob.kind == Kind::kTuningDevice
                ? Json{{"kind", kind},
                       {"name", blob.name},
                       {"port", blob.port},
                       {"tuning", blob.tuning}}
                : Json{{"kind", kind}, {"id", blob.id}, {"name", blob.name}});
        if (blob.same) {
            item["same"] = true;
            continue;
        }
        item.update({{"words", blob.words}, {"valid", blob.valid}, {"header", blob.header}});
        Json& entries = item["entries"] = Json::array();
        for (const LoadedEntry& entry : blob.entries) {
            // Built member by member: an initializer list would copy every value.
            Json& out = entries.emplace_back(Json::object());
            out["device"] = entry.deviceId;
            out["device_name"] = BlobDecoder::deviceName(entry.deviceId);
            out["code"] = BlobDecoder::codeText(entry.code);
            out["count"] = entry.values.size();
            out["values"] = entry.values;
            const EntryView view = EntryView::decode(entry.code, entry.values);
            if (view.kind != EntryView::Kind::kPlain) {
                out["view"] = view.toJson();
            }
            if (!entry.from.empty()) {
                out["source"] = entry.sourceJson();
            }
        }
    }
    return json;
}

LoadedFile LoadedFile::fromJson(const Json& json) {
    return json.is_object() ? json.get<LoadedFile>() : LoadedFile();
}

}  // namespace korva::tool
