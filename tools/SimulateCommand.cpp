#include "tools/SimulateCommand.h"

#include <sys/stat.h>

#include <map>
#include <memory>
#include <utility>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "observer/DeliveryObserver.h"
#include "reader/String2Int.h"
#include "tools/render/BlobDecoder.h"
#include "tools/BlobsCommand.h"
#include "tools/DeliveryLog.h"
#include "tools/load/EntryProvenance.h"
#include "tools/render/EntryView.h"
#include "tools/LibraryLog.h"
#include "tools/render/NumberText.h"
#include "tools/SimulatedEffect.h"
#include "tools/StoreSession.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

const std::vector<std::pair<std::string, std::string>> SimulateCommand::kPropertyNames = {
    {"product", "ro.product.name"},
    {"smartpa", "persist.vendor.audio.pa.smartpa_type"},
    {"gains", "persist.vendor.audio.sfx.hd.eq"},
    {"featuremask", "ro.vendor.audio.effect.eq.featuremask"},
    {"loglevel", "persist.vendor.korva.loglevel"},
};

namespace {

struct Step {
    enum Kind { kProfile, kContent, kSelect, kTuning, kLoad, kGeq };

    Kind kind;
    std::string text;
    int profile = 0;
    bool on = false;
    bool mcc = false;
    int port = 0;
    std::string device;
    std::vector<int> gains;
};

const char* const kBuiltinProfileNames[] = {"common", "dynamic", "movie",
                                            "music",  "cinema",  "custom"};

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool parseProfile(const std::string& name, const LoadReport& records, int* id) {
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
    for (int i = 0; i < 6; i++) {
        if (name == kBuiltinProfileNames[i]) {
            *id = i - 1;
            return true;
        }
    }
    return false;
}

bool parsePort(const std::string& name, int* port) {
    for (int i = 0; i < kNumAndroidDevices; i++) {
        if (name == kAndroidDeviceNames[i] || name == std::to_string(i)) {
            *port = i;
            return true;
        }
    }
    return false;
}

bool parseStep(const std::string& text, const LoadReport& records, Step* step, std::string* error) {
    step->text = text;
    const size_t equals = text.find('=');
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (text == "tuning") {
        step->kind = Step::kTuning;
    } else if (startsWith(text, "profile=")) {
        step->kind = Step::kProfile;
        if (!parseProfile(value, records, &step->profile)) {
            *error = "no profile named " + value;
            return false;
        }
    } else if (startsWith(text, "content=")) {
        step->kind = Step::kContent;
        const std::string state = value.substr(0, value.find(','));
        const std::string rest = value.size() > state.size() ? value.substr(state.size()) : "";
        if ((state != "on" && state != "off") || (!rest.empty() && rest != ",mcc")) {
            *error = "content takes on, off, on,mcc or off,mcc";
            return false;
        }
        step->on = state == "on";
        step->mcc = rest == ",mcc";
    } else if (startsWith(text, "select=")) {
        step->kind = Step::kSelect;
        const size_t colon = value.find(':');
        if (colon == std::string::npos || !parsePort(value.substr(0, colon), &step->port)) {
            *error = "select takes PORT:DEVICE, PORT one of the output ports";
            return false;
        }
        step->device = value.substr(colon + 1);
    } else if (startsWith(text, "load=")) {
        step->kind = Step::kLoad;
        step->device = value;
    } else if (startsWith(text, "geq=")) {
        step->kind = Step::kGeq;
        if (value.empty() || !NumberText::isWholeIntList(value)) {
            *error = "geq takes whole numbers separated by commas";
            return false;
        }
        string2IntVector(value, step->gains);
    } else {
        *error = "unknown step";
        return false;
    }
    return true;
}

int runStep(const Step& step, SimulatedEffect& effect) {
    SpatializerParamCache cache;
    switch (step.kind) {
        case Step::kProfile: {
            const auto id = static_cast<KrvSpatializerProfileId>(step.profile);
            cache.setProfile(id);
            return cache.setKorvaContentProfile(id, &effect);
        }
        case Step::kContent:
            return cache.updateContentProcEnabled(&effect, step.on, step.mcc);
        case Step::kSelect:
            return cache.setSelectedTuningDevice(step.port, step.device, &effect);
        case Step::kTuning:
            return cache.loadTuning(&effect);
        case Step::kLoad:
            return cache.loadTuningDevice(step.device, &effect);
        case Step::kGeq: {
            std::vector<int> gains = step.gains;
            return cache.setProfileGeqGains(gains, &effect);
        }
    }
    return 0;
}

// A call's source in the file's words: the blob entry the cache reported with that entry's
// provenance, and what the cache put in place of the entry's values.
class SourceText {
public:
    SourceText(const LoadReport& report, SpatializerParamArray& store)
        : mReport(report), mProvenance(report), mStore(store) {}

    // The blob and entry ("profile 1 \"movie\" #13"), or the effect's own values.
    std::string origin(const CallSource& source, int32_t code) const;
    // The entry's provenance; null when the values come from no entry.
    const EntrySource* entry(const CallSource& source) const;
    // What the cache put in place of the entry's values, in one line; empty when nothing.
    std::string substitution(const CallSource& source) const;
    Json json(const CallSource& source, int32_t code) const;

private:
    std::string profileTitle(int id) const;
    const std::vector<EntrySource>& blobSources(const CallSource& source) const;
    EntrySource matrixSource(const std::string& device) const;

    const LoadReport& mReport;
    const EntryProvenance mProvenance;
    SpatializerParamArray& mStore;
    mutable std::map<std::string, std::vector<EntrySource>> mBlobs;
};

std::string SourceText::profileTitle(int id) const {
    for (const RecordSnapshot* profile : mReport.ofKind(RecordKind::kProfile)) {
        if (profile->profileId == id && !profile->dropped) {
            return "profile " + std::to_string(id) + " \"" + profile->name + "\"";
        }
    }
    return "profile " + std::to_string(id);
}

const std::vector<EntrySource>& SourceText::blobSources(const CallSource& source) const {
    const std::string key = std::to_string(static_cast<int>(source.blob)) + " " +
                            std::to_string(source.profileId) + " " + source.device;
    auto found = mBlobs.find(key);
    if (found != mBlobs.end()) {
        return found->second;
    }
    std::vector<EntrySource> sources;
    std::string name;
    switch (source.blob) {
        case DeliveredBlob::kBuiltinProfile:
            sources = BlobsCommand::builtinSources(source.profileId, &name);
            break;
        case DeliveredBlob::kFileProfile:
            sources = mProvenance.ofBlob(mProvenance.profileBlob(source.profileId));
            break;
        case DeliveredBlob::kTuningDevice:
            sources = mProvenance.ofBlob(mProvenance.tuningBlob(source.device));
            break;
    }
    return mBlobs.emplace(key, std::move(sources)).first->second;
}

const EntrySource* SourceText::entry(const CallSource& source) const {
    if (!source.fromBlob || source.entry < 0) {
        return nullptr;
    }
    const std::vector<EntrySource>& sources = blobSources(source);
    return static_cast<size_t>(source.entry) < sources.size() ? &sources[source.entry] : nullptr;
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
    const std::string number = " #" + std::to_string(source.entry + 1);
    switch (source.blob) {
        case DeliveredBlob::kBuiltinProfile: {
            std::string name;
            BlobsCommand::builtinSources(source.profileId, &name);
            return "built-in table \"" + name + "\"" + number;
        }
        case DeliveredBlob::kFileProfile:
            return profileTitle(source.profileId) + number;
        case DeliveredBlob::kTuningDevice:
            return "tuning device \"" + source.device + "\"" + number;
    }
    return "";
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

// Whether the cache sent other values than the entry's instead of completing them.
bool replacesEntry(Delivery how) {
    return how == Delivery::kEffectMatrixOn || how == Delivery::kEffectMatrixOff ||
           how == Delivery::kSwitchedOff;
}

const char* deliveryName(Delivery how) {
    switch (how) {
        case Delivery::kAsIs:
            return "as_is";
        case Delivery::kUserGeqGains:
            return "user_geq_gains";
        case Delivery::kTuningMixMatrix:
            return "tuning_mix_matrix";
        case Delivery::kEffectMatrixOn:
            return "effect_matrix_on";
        case Delivery::kEffectMatrixOff:
            return "effect_matrix_off";
        case Delivery::kSwitchedOff:
            return "switched_off";
    }
    return "";
}

const char* blobKindName(const CallSource& source) {
    if (!source.fromBlob) {
        return "effect";
    }
    switch (source.blob) {
        case DeliveredBlob::kBuiltinProfile:
            return "builtin";
        case DeliveredBlob::kFileProfile:
            return "profile";
        case DeliveredBlob::kTuningDevice:
            return "tuning_device";
    }
    return "";
}

Json SourceText::json(const CallSource& source, int32_t code) const {
    if (!source.reported) {
        return nullptr;
    }
    Json blob = {{"kind", blobKindName(source)}};
    if (source.fromBlob) {
        blob[source.blob == DeliveredBlob::kTuningDevice ? "device" : "id"] =
            source.blob == DeliveredBlob::kTuningDevice ? Json(source.device)
                                                        : Json(source.profileId);
    }
    Json json = {{"text", origin(source, code)}, {"blob", blob}};
    if (const EntrySource* entrySource = entry(source)) {
        json["entry"] = source.entry;
        json["provenance"] = entrySource->toJson();
    }
    Json substituted = {{"kind", deliveryName(source.how)}};
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

const char* callName(EffectCall::Kind kind) {
    switch (kind) {
        case EffectCall::kSetParam:
            return "setParam";
        case EffectCall::kGetParam:
            return "getParam";
        case EffectCall::kCommit:
            return "commit";
    }
    return "";
}

// What a call carried: the values sent, or those getParam answered with.
const std::vector<int>& callValues(const EffectCall& call) {
    return call.kind == EffectCall::kGetParam ? call.answer : call.values;
}

Json callJson(const EffectCall& call, const CallSource& source, const SourceText& sources) {
    Json json = {{"call", callName(call.kind)},
                 {"device", call.deviceId},
                 {"device_name", BlobDecoder::deviceName(call.deviceId)}};
    if (call.kind != EffectCall::kCommit) {
        json["code"] = BlobDecoder::codeText(call.code);
        json[call.kind == EffectCall::kGetParam ? "capacity" : "count"] = call.count;
        if (call.kind == EffectCall::kGetParam) {
            json["returned"] = call.returned;
        }
        json["values"] = callValues(call);
        const EntryView view = EntryView::decode(call.code, callValues(call));
        if (view.kind != EntryView::Kind::kPlain) {
            json["view"] = view.toJson();
        }
        json["source"] = sources.json(source, call.code);
    }
    json["result"] = call.result;
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

// Why a step failed, in one line: the library's own error line, else the effect's refusal, else
// what the store holds for the device asked for.
std::string whyFailed(const Step& step, const std::vector<EffectCall>& calls,
                      const std::vector<std::string>& libraryErrors, SpatializerParamArray& store) {
    if (!libraryErrors.empty()) {
        return "the library says: " + libraryErrors.back();
    }
    for (const EffectCall& call : calls) {
        if (call.result != 0) {
            return std::string("the effect answered ") + callName(call.kind) + " " +
                   BlobDecoder::codeText(call.code) + " with " + std::to_string(call.result);
        }
    }
    if (step.kind == Step::kLoad && !store.isXMLTuningValid(step.device)) {
        return "the store holds no tuning blob for device \"" + step.device + "\"";
    }
    if (step.kind == Step::kTuning && !SpatializerParamCache().isTuningAvailable()) {
        return "the store has no usable tunings";
    }
    return "";
}

std::string callsText(const std::vector<EffectCall>& calls, const std::vector<CallSource>& from,
                      const SourceText& sources, bool raw) {
    if (calls.empty()) {
        return "  (no calls)\n";
    }
    // The empty last column lets the result align right; the notes hold the rest.
    TextTable table({"#", "call", "device", "code", "count", "result", ""});
    table.alignRight(0);
    table.alignRight(4);
    table.alignRight(5);
    for (size_t i = 0; i < calls.size(); i++) {
        const EffectCall& call = calls[i];
        const bool commit = call.kind == EffectCall::kCommit;
        table.addRow({std::to_string(i + 1), callName(call.kind),
                      BlobDecoder::deviceName(call.deviceId),
                      commit ? "" : BlobDecoder::codeText(call.code), commit ? "" : countText(call),
                      std::to_string(call.result)});
        if (commit) {
            continue;
        }
        std::string origin = sources.origin(from[i], call.code);
        const std::string substitution = sources.substitution(from[i]);
        if (call.kind == EffectCall::kGetParam) {
            // What the effect answers is its own; the report says what the cache reads it for.
            if (from[i].reported) {
                table.addNote(replacesEntry(from[i].how)
                                  ? "read back, to send instead of " + origin + ": " + substitution
                                  : "read back, to send with " + substitution);
            }
        } else {
            const EntrySource* entry = sources.entry(from[i]);
            // A built-in entry's origin names its table already.
            origin += entry != nullptr && entry->builtinTable.empty() ? ": " + entry->summary() : "";
            if (!origin.empty()) {
                table.addNote("from " + origin);
            }
            if (!substitution.empty()) {
                table.addNote((replacesEntry(from[i].how) ? "instead: " : "with ") + substitution);
            }
        }
        // A refused getParam answered nothing.
        if (call.kind == EffectCall::kGetParam && call.result != 0) {
            continue;
        }
        for (const std::string& line : BlobsCommand::valueLines(call.code, callValues(call), raw)) {
            table.addNote(line);
        }
    }
    return table.render("  ");
}

}  // namespace

const char* const SimulateCommand::kStepForms =
    "profile=NAME|ID, content=on|off[,mcc], select=PORT:DEVICE, tuning, load=DEVICE, "
    "geq=G1,...,G20";

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
                                                   "; only the first word may be a "
                                                   "file)");
            return false;
        }
        options->steps.push_back(words[i]);
    }
    return true;
}

bool SimulateCommand::isStep(const std::string& word) {
    for (const char* prefix : {"profile=", "content=", "select=", "load=", "geq="}) {
        if (startsWith(word, prefix)) {
            return true;
        }
    }
    return word == "tuning";
}

int SimulateCommand::run(const Options& options) {
    const std::string& path = options.common.file;
    StoreSession::Properties properties;
    for (const std::string& assignment : options.properties) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            ToolOutput::usageError("simulate", "--prop takes KEY=VALUE, not '" + assignment + "'");
            return kExitError;
        }
        std::string key = assignment.substr(0, equals);
        std::string shortNames;
        for (const auto& [alias, name] : kPropertyNames) {
            key = key == alias ? name : key;
            shortNames += (shortNames.empty() ? "" : ", ") + alias;
        }
        // Every property name has a dot; a word without one was meant as a short name.
        if (key.find('.') == std::string::npos) {
            ToolOutput::usageError("simulate", "--prop: unknown short name '" + key +
                                                   "' (short names: " + shortNames +
                                                   "; or a full property name)");
            return kExitError;
        }
        properties.emplace_back(key, assignment.substr(equals + 1));
    }
    std::unique_ptr<StoreSession> session = StoreSession::open(path, properties);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    const LoadReport& records = session->report();
    std::vector<Step> steps;
    for (const std::string& text : options.steps) {
        Step step;
        std::string error;
        if (!parseStep(text, records, &step, &error)) {
            ToolOutput::error(path, "step " + text + ": " + error);
            return kExitError;
        }
        steps.push_back(step);
    }

    const bool tuningsUsable = SpatializerParamCache().isTuningAvailable();
    SimulatedEffect effect;
    DeliveryLog deliveries(effect);
    const DeliveryObserver::Scope listening(&deliveries);
    const SourceText sources(records, session->store());
    LibraryLog::takeErrors();
    Json stepsJson = Json::array();
    std::string text;
    size_t number = 0;
    for (const Step& step : steps) {
        const int result = runStep(step, effect);
        const std::vector<EffectCall> calls = effect.takeCalls();
        const std::vector<CallSource> from = deliveries.take(calls);
        const std::string why =
            result == 0 ? "" : whyFailed(step, calls, LibraryLog::takeErrors(), session->store());
        LibraryLog::takeErrors();
        if (options.common.json) {
            Json list = Json::array();
            for (size_t i = 0; i < calls.size(); i++) {
                list.push_back(callJson(calls[i], from[i], sources));
            }
            stepsJson.push_back({{"step", step.text}, {"result", result}, {"calls", list}});
            if (!why.empty()) {
                stepsJson.back()["why"] = why;
            }
        } else {
            text += "\nstep " + std::to_string(++number) + ": " + step.text + "  result " +
                    std::to_string(result) + "\n" + (why.empty() ? "" : "  why: " + why + "\n") +
                    callsText(calls, from, sources, options.raw);
        }
    }

    if (options.common.json) {
        Json props = Json::object();
        for (const auto& [key, value] : properties) {
            props[key] = value;
        }
        ToolOutput::printJson({{"file", path},
                               {"properties", props},
                               {"tunings_usable", tuningsUsable},
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
    ToolOutput::print(facts.render() + text);
    return kExitOk;
}

}  // namespace korva::tool
