#include "tools/commands/SimulateCommand.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <map>
#include <memory>

#include "cache/SpatializerParamCache.h"
#include "reader/String2Int.h"
#include "store/LogLevel.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/BlobDecoder.h"
#include "tools/BlobsCommand.h"
#include "tools/EntryProvenance.h"
#include "tools/EntryView.h"
#include "tools/LibraryLog.h"
#include "tools/NumberText.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"
#include "tools/commands/DeliveryLog.h"
#include "translator/GeqLayout.h"

namespace korva::tool {

const std::vector<std::pair<std::string, std::string>> SimulateCommand::kPropertyNames = {
    {"product", kProductNameProperty}, {"smartpa", kSmartPaTypeProperty},
    {"gains", kUserGainsProperty},     {"featuremask", kEqFeatureMaskProperty},
    {"loglevel", kLogLevelProperty},
};

const char* const SimulateCommand::kStepForms =
    "profile=NAME|ID, content=on|off[,mcc], select=PORT:DEVICE, tuning, load=DEVICE, "
    "geq=G1,...,G20";

namespace {

using Cache = SpatializerParamCache;

const char* const kStepPrefixes[] = {"profile=", "content=", "select=", "load=", "geq="};
const char* const kCallNames[] = {"setParam", "getParam", "commit"};       // by EffectCall::Kind
const char* const kBlobKinds[] = {"builtin", "profile", "tuning_device"};  // by DeliveredBlob
const char* const kDeliveries[] = {
    "as_is",       "user_geq_gains", "tuning_mix_matrix", "effect_matrix_on", "effect_matrix_off",
    "switched_off"};

struct Step {
    std::string text;
    std::function<int(Cache&, IEffectKrv*)> run;
    // What the store lacks for the step; asked only when it fails and nothing else says why.
    std::function<std::string(SpatializerParamArray&)> lack;
    // What the step was given that the library takes only in part.
    std::string note;
};

// A profile by id, by a profile name of the file, or by a built-in table's name.
bool resolveProfile(const std::string& name, const LoadReport& records, int* id) {
    if (NumberText::isWholeInt(name)) {
        *id = string2Int(name);
        return true;
    }
    for (const RecordSnapshot* profile : records.ofKind(RecordKind::kProfile)) {
        if (profile->name == name) {
            *id = profile->profileId;
            return true;
        }
    }
    for (int builtin = PROFILE_COMMON; builtin <= PROFILE_CUSTOM; builtin++) {
        std::string table;
        BlobsCommand::builtinSources(builtin, &table);
        if (table == name) {
            *id = builtin;
            return true;
        }
    }
    return false;
}

// Fills the step; returns why the text is no step, or "".
std::string parseStep(const std::string& text, const LoadReport& records, Step* step) {
    step->text = text;
    const size_t equals = text.find('=');
    const std::string word = text.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (text == "tuning") {
        step->run = [](Cache& cache, IEffectKrv* effect) { return cache.loadTuning(effect); };
        step->lack = [](SpatializerParamArray&) {
            return Cache().isTuningAvailable() ? "" : "the store has no usable tunings";
        };
    } else if (word == "profile") {
        int id = 0;
        if (!resolveProfile(value, records, &id)) {
            return "no profile named " + value;
        }
        step->run = [id](Cache& cache, IEffectKrv* effect) {
            cache.setProfile(static_cast<KrvSpatializerProfileId>(id));
            return cache.setKorvaContentProfile(static_cast<KrvSpatializerProfileId>(id), effect);
        };
    } else if (word == "content") {
        const bool on = value == "on" || value == "on,mcc";
        const bool mcc = value == "on,mcc" || value == "off,mcc";
        if (!on && !mcc && value != "off") {
            return "content takes on, off, on,mcc or off,mcc";
        }
        step->run = [on, mcc](Cache& cache, IEffectKrv* effect) {
            return cache.updateContentProcEnabled(effect, on, mcc);
        };
    } else if (word == "select") {
        const size_t colon = value.find(':');
        const std::string port = value.substr(0, colon);
        const auto named =
            std::find(kAndroidDeviceNames, kAndroidDeviceNames + kNumAndroidDevices, port) -
            kAndroidDeviceNames;
        const int number = NumberText::isWholeInt(port) ? string2Int(port) : named;
        if (colon == std::string::npos || number < 0 || number >= kNumAndroidDevices) {
            return "select takes PORT:DEVICE, PORT one of the output ports";
        }
        step->run = [number, device = value.substr(colon + 1)](Cache& cache, IEffectKrv* effect) {
            return cache.setSelectedTuningDevice(number, device, effect);
        };
    } else if (word == "load") {
        step->run = [value](Cache& cache, IEffectKrv* effect) {
            return cache.loadTuningDevice(value, effect);
        };
        step->lack = [value](SpatializerParamArray& store) {
            return store.isXMLTuningValid(value)
                       ? ""
                       : "the store holds no tuning blob for device \"" + value + "\"";
        };
    } else if (word == "geq") {
        std::vector<int> gains;
        if (value.empty() || !NumberText::isWholeIntList(value)) {
            return "geq takes whole numbers separated by commas";
        }
        string2IntVector(value, gains);
        if (gains.size() != kGeqBands) {
            step->note = std::to_string(gains.size()) + " gains given; the graphic EQ has " +
                         std::to_string(kGeqBands) + " bands";
        }
        step->run = [gains](Cache& cache, IEffectKrv* effect) mutable {
            return cache.setProfileGeqGains(gains, effect);
        };
    } else {
        return "unknown step";
    }
    return "";
}

// A call's source in the file's words: the blob and entry the cache reported with that entry's
// provenance, and what the cache put in place of the entry's values.
class SourceText {
public:
    SourceText(const LoadReport& report, SpatializerParamArray& store)
        : mReport(report), mProvenance(report), mStore(store) {}

    // The notes under a call's row: where its values came from and what replaced them.
    std::vector<std::string> notes(const EffectCall& call, const CallSource& source) const;
    Json json(const CallSource& source, int32_t code) const;

private:
    struct Blob {
        std::string title;  // profile 1 "movie", built-in table "movie", tuning device "x"
        std::vector<EntrySource> entries;
    };
    const Blob& blob(const CallSource& source) const;
    std::string profileTitle(int id) const;
    // The blob and entry, or the effect's own values; empty when nothing was reported.
    std::string origin(const CallSource& source, int32_t code) const;
    // The entry's provenance; null when the values come from no entry.
    const EntrySource* entry(const CallSource& source) const;
    // What the cache put in place of the entry's values, in one line; empty when nothing.
    std::string substitution(const CallSource& source) const;
    EntrySource matrixSource(const std::string& device) const;

    const LoadReport& mReport;
    const EntryProvenance mProvenance;
    SpatializerParamArray& mStore;
    mutable std::map<std::tuple<DeliveredBlob, int, std::string>, Blob> mBlobs;
};

std::string SourceText::profileTitle(int id) const {
    for (const RecordSnapshot* profile : mReport.ofKind(RecordKind::kProfile)) {
        if (profile->profileId == id && !profile->dropped) {
            return "profile " + std::to_string(id) + " \"" + profile->name + "\"";
        }
    }
    return "profile " + std::to_string(id);
}

const SourceText::Blob& SourceText::blob(const CallSource& source) const {
    const auto key = std::make_tuple(source.blob, source.profileId, source.device);
    auto found = mBlobs.find(key);
    if (found != mBlobs.end()) {
        return found->second;
    }
    Blob blob;
    if (source.blob == DeliveredBlob::kBuiltinProfile) {
        blob.entries = BlobsCommand::builtinSources(source.profileId, &blob.title);
        blob.title = "built-in table \"" + blob.title + "\"";
    } else if (source.blob == DeliveredBlob::kFileProfile) {
        blob.entries = mProvenance.ofBlob(mProvenance.profileBlob(source.profileId));
        blob.title = profileTitle(source.profileId);
    } else {
        blob.entries = mProvenance.ofBlob(mProvenance.tuningBlob(source.device));
        blob.title = "tuning device \"" + source.device + "\"";
    }
    return mBlobs.emplace(key, std::move(blob)).first->second;
}

const EntrySource* SourceText::entry(const CallSource& source) const {
    if (!source.fromBlob || source.entry < 0) {
        return nullptr;
    }
    const std::vector<EntrySource>& entries = blob(source).entries;
    return static_cast<size_t>(source.entry) < entries.size() ? &entries[source.entry] : nullptr;
}

// A tuning device's mix matrix words: its tuning's orientation and matrix.
EntrySource SourceText::matrixSource(const std::string& device) const {
    const int blob = mProvenance.tuningBlob(device);
    return mProvenance.ofRecord(blob < 0 ? -1 : mProvenance.blobRecord(blob),
                                {ORIENTATION, OUTPUT_MIX_MATRIX});
}

std::string SourceText::origin(const CallSource& source, int32_t code) const {
    if (!source.reported) {
        return "";
    }
    if (!source.fromBlob) {
        return "the effect's own " + BlobDecoder::codeText(code) + ", read back";
    }
    return blob(source).title + " #" + std::to_string(source.entry + 1);
}

std::string SourceText::substitution(const CallSource& source) const {
    switch (source.how) {
        case Delivery::kAsIs:
            return "";
        case Delivery::kUserGeqGains:
            return "the user's GEQ gains of " + profileTitle(source.gainsProfile);
        case Delivery::kTuningMixMatrix:
            return "the mix matrix of tuning device \"" + source.matrixDevice +
                   "\": " + matrixSource(source.matrixDevice).summary();
        case Delivery::kEffectMatrixOn:
            return "the effect's own mix matrix, switched on";
        case Delivery::kEffectMatrixOff:
            return "the effect's own mix matrix, switched off";
        case Delivery::kSwitchedOff:
            return "0, content processing off";
    }
    return "";
}

std::vector<std::string> SourceText::notes(const EffectCall& call, const CallSource& source) const {
    if (!source.reported) {
        return {};
    }
    // Whether the cache sent other values than the entry's instead of completing them.
    const bool replaces = source.how == Delivery::kEffectMatrixOn ||
                          source.how == Delivery::kEffectMatrixOff ||
                          source.how == Delivery::kSwitchedOff;
    std::string origin = this->origin(source, call.code);
    const std::string substitution = this->substitution(source);
    if (call.kind == EffectCall::kGetParam) {
        // What the effect answers is its own; the report says what the cache reads it for.
        return {replaces ? "read back, to send instead of " + origin + ": " + substitution
                         : "read back, to send with " + substitution};
    }
    const EntrySource* entrySource = entry(source);
    // A built-in entry's origin names its table already.
    if (entrySource != nullptr && entrySource->builtinTable.empty()) {
        origin += ": " + entrySource->summary();
    }
    std::vector<std::string> notes = {"from " + origin};
    if (!substitution.empty()) {
        notes.push_back((replaces ? "instead: " : "with ") + substitution);
    }
    return notes;
}

Json SourceText::json(const CallSource& source, int32_t code) const {
    if (!source.reported) {
        return nullptr;
    }
    Json blob = {{"kind", source.fromBlob ? kBlobKinds[static_cast<int>(source.blob)] : "effect"}};
    if (source.fromBlob && source.blob == DeliveredBlob::kTuningDevice) {
        blob["device"] = source.device;
    } else if (source.fromBlob) {
        blob["id"] = source.profileId;
    }
    Json json = {{"text", origin(source, code)}, {"blob", blob}};
    if (const EntrySource* entrySource = entry(source)) {
        json["entry"] = source.entry;
        json["provenance"] = entrySource->toJson();
    }
    Json substituted = {{"kind", kDeliveries[static_cast<int>(source.how)]}};
    if (source.how == Delivery::kUserGeqGains) {
        const auto profile = static_cast<KrvSpatializerProfileId>(source.gainsProfile);
        substituted["profile"] = source.gainsProfile;
        substituted["gains"] = mStore.getProfileGeqGains(profile);
    } else if (source.how == Delivery::kTuningMixMatrix) {
        substituted["device"] = source.matrixDevice;
        substituted["words"] = mStore.getXMLTuningMixMatrix(source.matrixDevice);
        substituted["provenance"] = matrixSource(source.matrixDevice).toJson();
    }
    if (source.how != Delivery::kAsIs) {
        substituted["text"] = substitution(source);
    }
    json["delivery"] = substituted;
    return json;
}

// What a call's count was: getParam shows what the effect wrote back beside what it was asked
// for ("-" when it refused).
std::string countText(const EffectCall& call) {
    if (call.kind != EffectCall::kGetParam) {
        return std::to_string(call.count);
    }
    return (call.result == 0 ? std::to_string(call.returned) : "-") + " of " +
           std::to_string(call.count);
}

// One call, written once into both the table and the JSON list; only one of them is printed.
// previous is the call before it in the step, if any.
void addCall(const EffectCall& call, const EffectCall* previous, const CallSource& source,
             const SourceText& sources, bool raw, TextTable* table, Json* list) {
    const bool commit = call.kind == EffectCall::kCommit;
    const bool get = call.kind == EffectCall::kGetParam;
    const std::vector<int>& values = get ? call.answer : call.values;
    table->addRow({std::to_string(list->size() + 1), kCallNames[call.kind],
                   BlobDecoder::deviceName(call.deviceId),
                   commit ? "" : BlobDecoder::codeText(call.code), commit ? "" : countText(call),
                   std::to_string(call.result)});
    Json json = {{"call", kCallNames[call.kind]},
                 {"device", call.deviceId},
                 {"device_name", BlobDecoder::deviceName(call.deviceId)}};
    if (!commit) {
        json["code"] = BlobDecoder::codeText(call.code);
        json[get ? "capacity" : "count"] = call.count;
        if (get) {
            json["returned"] = call.returned;
        }
        json["values"] = values;
        const EntryView view = EntryView::decode(call.code, values);
        if (view.kind != EntryView::Kind::kPlain) {
            json["view"] = view.toJson();
        }
        json["source"] = sources.json(source, call.code);
        for (const std::string& note : sources.notes(call, source)) {
            table->addNote(note);
        }
        // A setParam right after its own getParam failed sends the buffer that read left.
        if (!get && previous != nullptr && previous->kind == EffectCall::kGetParam &&
            previous->result != 0 && previous->deviceId == call.deviceId &&
            previous->code == call.code) {
            const bool zeroed =
                std::all_of(values.begin(), values.end(), [](int v) { return v == 0; });
            json["read_failed"] = true;
            table->addNote(std::string("getParam failed: the ") + (zeroed ? "zeroed" : "unread") +
                           " buffer is sent");
        }
        // A refused getParam answered nothing.
        for (const std::string& line : get&& call.result != 0
                                           ? std::vector<std::string>()
                                           : BlobsCommand::valueLines(call.code, values, raw)) {
            table->addNote(line);
        }
    }
    json["result"] = call.result;
    list->push_back(std::move(json));
}

// Why a step failed, in one line: the library's own error line, else the effect's refusal, else
// what the store lacks.
std::string whyFailed(const Step& step, const std::vector<EffectCall>& calls,
                      const std::vector<std::string>& libraryErrors, SpatializerParamArray& store) {
    if (!libraryErrors.empty()) {
        return "the library says: " + libraryErrors.back();
    }
    for (const EffectCall& call : calls) {
        if (call.result != 0) {
            return std::string("the effect answered ") + kCallNames[call.kind] + " " +
                   BlobDecoder::codeText(call.code) + " with " + std::to_string(call.result);
        }
    }
    return step.lack ? step.lack(store) : "";
}

// The --prop assignments with their short names spelt out; false after one line on stderr.
bool takeProperties(const std::vector<std::string>& assignments,
                    StoreSession::Properties* properties) {
    for (const std::string& assignment : assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            ToolOutput::usageError("simulate", "--prop takes KEY=VALUE, not '" + assignment + "'");
            return false;
        }
        std::string key = assignment.substr(0, equals);
        std::string shortNames;
        for (const auto& [alias, name] : SimulateCommand::kPropertyNames) {
            key = key == alias ? name : key;
            shortNames += (shortNames.empty() ? "" : ", ") + alias;
        }
        // Every property name has a dot; a word without one was meant as a short name.
        if (key.find('.') == std::string::npos) {
            ToolOutput::usageError("simulate", "--prop: unknown short name '" + key +
                                                   "' (short names: " + shortNames +
                                                   "; or a full property name)");
            return false;
        }
        properties->emplace_back(key, assignment.substr(equals + 1));
    }
    return true;
}

}  // namespace

void SimulateCommand::addOptions(CLI::App* command, Options* options) {
    command->add_flag("--effect-from-builtin", options->effectFromBuiltin,
                      "start the recording effect from the built-in common table, sent through "
                      "the cache before the steps, so that getParam answers as a configured "
                      "effect would; otherwise it starts empty and refuses (-22) getParam of "
                      "what it was not sent. Either way it answers getParam with what it was "
                      "sent last");
}

bool SimulateCommand::takeWords(const std::vector<std::string>& words, Options* options) {
    size_t first = 0;
    if (!words.empty() && !isStep(words[0])) {
        struct stat status;
        const std::string& word = words[0];
        const bool looksLikePath =
            word.find('/') != std::string::npos ||
            (word.size() > 4 && word.compare(word.size() - 4, 4, ".xml") == 0);
        if (stat(word.c_str(), &status) != 0 && !looksLikePath) {
            ToolOutput::usageError("simulate", "unknown step '" + word + "' (steps: " + kStepForms +
                                                   "), and no file of that name");
            return false;
        }
        options->common.file = word;
        first = 1;
    }
    for (size_t i = first; i < words.size(); i++) {
        if (!isStep(words[i])) {
            ToolOutput::usageError("simulate", "unknown step '" + words[i] +
                                                   "' (steps: " + kStepForms +
                                                   "; only the first word may be a " + "file)");
            return false;
        }
        options->steps.push_back(words[i]);
    }
    return true;
}

bool SimulateCommand::isStep(const std::string& word) {
    return word == "tuning" ||
           std::any_of(std::begin(kStepPrefixes), std::end(kStepPrefixes),
                       [&](const char* prefix) { return word.rfind(prefix, 0) == 0; });
}

int SimulateCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    StoreSession::Properties properties;
    if (!takeProperties(options.properties, &properties)) {
        return kExitError;
    }
    std::unique_ptr<StoreSession> session = StoreSession::open(path, properties);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    // What the store refused while starting (a property's value among them), one line each.
    for (const std::string& line : LibraryLog::takeErrors()) {
        ToolOutput::error(path, "the library says: " + line);
    }
    std::vector<Step> steps(options.steps.size());
    for (size_t i = 0; i < steps.size(); i++) {
        const std::string error = parseStep(options.steps[i], session->report(), &steps[i]);
        if (!error.empty()) {
            ToolOutput::error(path, "step " + options.steps[i] + ": " + error);
            return kExitError;
        }
    }

    const bool tuningsUsable = Cache().isTuningAvailable();
    RecordingEffect effect;
    effect.setKeepsSent(true);
    if (options.effectFromBuiltin) {
        Cache().setKorvaContentProfile(PROFILE_COMMON, &effect);
        effect.takeCalls();
    }
    DeliveryLog deliveries(effect);
    const DeliveryObserver::Scope listening(&deliveries);
    const SourceText sources(session->report(), session->store());
    LibraryLog::takeErrors();
    Json stepsJson = Json::array();
    std::string text;
    for (const Step& step : steps) {
        Cache cache;
        const int result = step.run(cache, &effect);
        const std::vector<EffectCall> calls = effect.takeCalls();
        const std::vector<CallSource> from = deliveries.take(calls);
        const std::vector<std::string> errors = LibraryLog::takeErrors();
        const std::string why = result == 0 ? "" : whyFailed(step, calls, errors, session->store());
        // The empty last column lets the result align right; the notes hold the rest.
        TextTable table({"#", "call", "device", "code", "count", "result", ""});
        for (size_t column : {0, 4, 5}) {
            table.alignRight(column);
        }
        Json list = Json::array();
        for (size_t i = 0; i < calls.size(); i++) {
            addCall(calls[i], i > 0 ? &calls[i - 1] : nullptr, from[i], sources, options.raw,
                    &table, &list);
        }
        Json json = {{"step", step.text}, {"result", result}, {"calls", list}};
        text += "\nstep " + std::to_string(stepsJson.size() + 1) + ": " + step.text + "  result " +
                std::to_string(result) + "\n";
        for (const auto& [key, line] : {std::make_pair("why", why), {"note", step.note}}) {
            if (!line.empty()) {
                json[key] = line;
                text += std::string("  ") + key + ": " + line + "\n";
            }
        }
        text += calls.empty() ? "  (no calls)\n" : table.render("  ");
        stepsJson.push_back(std::move(json));
    }

    const char* const start = options.effectFromBuiltin ? "builtin" : "empty";
    if (options.common.json) {
        Json props = Json::object();
        for (const auto& [key, value] : properties) {
            props[key] = value;
        }
        ToolOutput::printJson({{"file", path},
                               {"properties", props},
                               {"tunings_usable", tuningsUsable},
                               {"effect_start", start},
                               {"steps", stepsJson}});
        return kExitOk;
    }
    std::string shownProperties;
    for (const auto& [key, value] : properties) {
        shownProperties += (shownProperties.empty() ? "" : " ") + key + "=" + value;
    }
    TextTable facts({"", ""});
    facts.addPathRow({"tuning file", path});
    facts.addRow({"properties", shownProperties.empty() ? "none" : shownProperties});
    facts.addRow({"tunings usable", tuningsUsable ? "yes" : "no"});
    facts.addRow(
        {"effect starts", options.effectFromBuiltin ? "from the built-in common table" : "empty"});
    ToolOutput::print(facts.render() + text);
    return kExitOk;
}

}  // namespace korva::tool
