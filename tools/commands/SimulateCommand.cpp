#include "tools/commands/SimulateCommand.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <memory>

#include "cache/SpatializerParamCache.h"
#include "engine/RecordingEffect.h"
#include "observer/DeliveryObserver.h"
#include "reader/String2Int.h"
#include "store/LogLevel.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/load/LibraryLog.h"
#include "tools/load/LoadedFile.h"
#include "tools/load/StoreSession.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"
#include "tools/render/Printer.h"
#include "translator/GeqLayout.h"

namespace korva::tool {

namespace {

using Cache = SpatializerParamCache;

// Short names of the properties a device's start-up depends on.
const std::pair<std::string, std::string> kPropertyNames[] = {
    {"product", kProductNameProperty}, {"smartpa", kSmartPaTypeProperty},
    {"gains", kUserGainsProperty},     {"featuremask", kEqFeatureMaskProperty},
    {"loglevel", kLogLevelProperty},
};
// The steps' forms, for help and errors.
const char* const kStepForms =
    "profile=NAME|ID, content=on|off[,mcc], select=PORT:DEVICE, tuning, load=DEVICE, "
    "geq=G1,...,G20";

const char* const kStepPrefixes[] = {"profile=", "content=", "select=", "load=", "geq="};
const char* const kCallNames[] = {"setParam", "getParam", "commit"};  // by EffectCall::Kind
// By Delivery: its JSON name, and for those that send other values than the entry's, which.
struct DeliveryWords {
    const char* name;
    const char* instead;
};
const DeliveryWords kDeliveries[] = {
    {"as_is", nullptr},
    {"user_geq_gains", nullptr},
    {"tuning_mix_matrix", nullptr},
    {"effect_matrix_on", "the effect's own mix matrix, switched on"},
    {"effect_matrix_off", "the effect's own mix matrix, switched off"},
    {"switched_off", "0, content processing off"},
};

// What the cache reported before a call: the blob entry it sends (no blob when it reads the
// effect's own values back), and what it sends in the entry's place.
struct CallSource {
    std::optional<DeliveredBlob> blob;
    int blobProfile = 0;
    std::string blobDevice;  // the blob's tuning device
    int entry = -1;
    Delivery how = Delivery::kAsIs;
    int profileId = 0;   // kUserGeqGains
    std::string device;  // kTuningMixMatrix
};

// The cache's reports, each kept with the number of calls the effect had recorded when it came.
class DeliveryLog : public DeliveryObserver {
public:
    explicit DeliveryLog(const RecordingEffect& effect) : mEffect(effect) {}

    // The source of each call taken from the effect since the last take; none for commits, which
    // end what a report covers, and for calls no report preceded.
    std::vector<std::optional<CallSource>> take(const std::vector<EffectCall>& calls) {
        std::vector<std::optional<CallSource>> sources(calls.size());
        std::optional<CallSource> current;
        for (size_t i = 0, next = 0; i < calls.size(); i++) {
            for (; next < mMarks.size() && mMarks[next].first <= i; next++) {
                current = mMarks[next].second;
            }
            if (calls[i].kind == EffectCall::kCommit) {
                current.reset();
            } else {
                sources[i] = current;
            }
        }
        mMarks.clear();
        return sources;
    }

    void onBlob(DeliveredBlob blob, int profileId, const std::string& device) override {
        mBlob = {blob, profileId, device, -1, Delivery::kAsIs, 0, ""};
    }
    void onEntry(int entry, Delivery how, int profileId, const std::string& device) override {
        mBlob.entry = entry;
        mark(mBlob, how, profileId, device);
    }
    void onEffectValues(Delivery how, int profileId, const std::string& device) override {
        mark(CallSource(), how, profileId, device);
    }

private:
    void mark(CallSource source, Delivery how, int profileId, const std::string& device) {
        source.how = how;
        source.profileId = profileId;
        source.device = device;
        mMarks.emplace_back(mEffect.calls().size(), std::move(source));
    }

    const RecordingEffect& mEffect;
    CallSource mBlob;
    std::vector<std::pair<size_t, CallSource>> mMarks;
};

// What the cache delivered, as a loaded blob's kind.
LoadedBlob::Kind kindOf(DeliveredBlob blob) {
    using Kind = LoadedBlob::Kind;
    const Kind kinds[] = {Kind::kBuiltin, Kind::kProfile, Kind::kTuningDevice};  // by DeliveredBlob
    return kinds[static_cast<int>(blob)];
}

// Whether a command-line word is a step (so that the first word that is not is the file).
bool isStep(const std::string& word) {
    return word == "tuning" ||
           std::any_of(std::begin(kStepPrefixes), std::end(kStepPrefixes),
                       [&](const char* prefix) { return word.rfind(prefix, 0) == 0; });
}

struct Step {
    std::string text;
    std::function<int(Cache&, IEffectKrv*)> run;
    // What the store lacks for the step, said when it fails and nothing else says why.
    std::string lack;
    // What the step was given that the library takes only in part.
    std::string note;
};

// Fills the step; returns why the text is no step, or "".
std::string parseStep(const std::string& text, const StoreSession& session, Step* step) {
    step->text = text;
    const size_t equals = text.find('=');
    const std::string word = text.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (text == "tuning") {
        step->run = [](Cache& cache, IEffectKrv* effect) { return cache.loadTuning(effect); };
        step->lack = Cache().isTuningAvailable() ? "" : "the store has no usable tunings";
    } else if (word == "profile") {
        int number = PROFILE_COMMON;
        if (!LoadedFile::profileId(value, LoadedFile::profileNames(session.report()), &number)) {
            return "no profile named " + value;
        }
        const auto id = static_cast<KrvSpatializerProfileId>(number);
        step->run = [id](Cache& cache, IEffectKrv* effect) {
            cache.setProfile(id);
            return cache.setKorvaContentProfile(id, effect);
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
        const int number =
            NumberText::isWholeInt(port)
                ? string2Int(port)
                : std::find(kAndroidDeviceNames, kAndroidDeviceNames + kNumAndroidDevices, port) -
                      kAndroidDeviceNames;
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
        if (!session.store().isXMLTuningValid(value)) {
            step->lack = "the store holds no tuning blob for device \"" + value + "\"";
        }
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

// A profile by its id: the file's, else the built-in table's.
std::string profileTitle(const LoadedFile& file, int id) {
    const LoadedBlob* blob = file.find(LoadedBlob::Kind::kProfile, id);
    blob = blob != nullptr ? blob : LoadedFile::builtin().find(LoadedBlob::Kind::kBuiltin, id);
    return blob != nullptr ? blob->title() : "profile " + std::to_string(id);
}

// A call's source in the file's words: the blob and entry the cache reported with that entry's
// provenance, and what the cache put in place of the entry's values. JSON has it as an object; text
// as notes under the call.
void printSource(Printer& out, const StoreSession& session, const LoadedFile& file,
                 const EffectCall& call, const std::optional<CallSource>& reported) {
    if (!reported) {
        return out.json("source", nullptr);
    }
    const CallSource& source = *reported;
    const auto object = out.object("source");
    Json blobJson = {{"kind", source.blob ? LoadedBlob::kindName(kindOf(*source.blob)) : "effect"}};
    std::string origin = "the effect's own " + BlobDecoder::codeText(call.code) + ", read back";
    const LoadedEntry* entry = nullptr;
    if (source.blob) {
        const bool device = source.blob == DeliveredBlob::kTuningDevice;
        blobJson[device ? "device" : "id"] =
            device ? Json(source.blobDevice) : Json(source.blobProfile);
        const LoadedBlob::Kind kind = kindOf(*source.blob);
        const LoadedBlob* from = (kind == LoadedBlob::Kind::kBuiltin ? LoadedFile::builtin() : file)
                                     .find(kind, source.blobProfile, source.blobDevice);
        origin = (from != nullptr ? from->title() : profileTitle(file, source.blobProfile)) + " #" +
                 std::to_string(source.entry + 1);
        const bool inBlob = from != nullptr && source.entry >= 0 &&
                            static_cast<size_t>(source.entry) < from->entries.size();
        entry = inBlob ? &from->entries[source.entry] : nullptr;
    }
    out.json("text", origin);
    out.json("blob", blobJson);
    if (entry != nullptr) {
        out.json("entry", source.entry);
        out.json("provenance", entry->sourceJson());
    }
    const DeliveryWords& words = kDeliveries[static_cast<int>(source.how)];
    std::string substitution = words.instead == nullptr ? "" : words.instead;
    Json delivery = {{"kind", words.name}};
    if (source.how == Delivery::kUserGeqGains) {
        substitution = "the user's GEQ gains of " + profileTitle(file, source.profileId);
        delivery["profile"] = source.profileId;
        delivery["gains"] = session.store().getProfileGeqGains(
            static_cast<KrvSpatializerProfileId>(source.profileId));
    } else if (source.how == Delivery::kTuningMixMatrix) {
        // The tuning device's tuning: its orientation and matrix.
        const auto matrix = file.store.mixMatrices.find(source.device);
        const MixMatrix none;
        const MixMatrix& from = matrix != file.store.mixMatrices.end() ? matrix->second : none;
        substitution =
            "the mix matrix of tuning device \"" + source.device + "\": " + from.source.summary();
        delivery["device"] = source.device;
        delivery["words"] = from.words;
        delivery["provenance"] = from.source.sourceJson();
    }
    if (!substitution.empty()) {
        delivery["text"] = substitution;
    }
    out.json("delivery", delivery);

    if (call.kind == EffectCall::kGetParam) {
        // What the effect answers is its own; the report says what the cache reads it for.
        return out.text(words.instead != nullptr
                            ? "read back, to send instead of " + origin + ": " + substitution
                            : "read back, to send with " + substitution);
    }
    // A built-in entry's origin names its table already.
    const bool fromFile = entry != nullptr && entry->builtinTable.empty();
    out.text("from " + origin + (fromFile ? ": " + entry->from : ""));
    if (!substitution.empty()) {
        out.text((words.instead != nullptr ? "instead: " : "with ") + substitution);
    }
}

// One call, titled in text by what the effect was asked and answered. previous is the call
// before it in the step, if any.
void printCall(Printer& out, size_t number, const EffectCall& call, const EffectCall* previous,
               const std::optional<CallSource>& source, const StoreSession& session,
               const LoadedFile& file, bool raw) {
    const bool commit = call.kind == EffectCall::kCommit;
    const bool get = call.kind == EffectCall::kGetParam;
    const std::vector<int>& values = get ? call.answer : call.values;
    const std::optional<int32_t> code = commit ? std::nullopt : std::optional(call.code);
    // getParam shows what the effect wrote back beside what it was asked for ("-": refused).
    const std::string count =
        (get ? (call.result == 0 ? std::to_string(call.returned) : "-") + " of " : "") +
        std::to_string(call.count);
    const auto item = out.object("", std::to_string(number) + ". " + kCallNames[call.kind] + " " +
                                         EntryView::identity(call.deviceId, code) +
                                         (commit ? "" : ", count " + count) + ": result " +
                                         std::to_string(call.result));
    out.json("call", kCallNames[call.kind]);
    EntryView::printIdentity(out, call.deviceId, code);
    if (!commit) {
        out.json(get ? "capacity" : "count", call.count);
        if (get) {
            out.json("returned", call.returned);
        }
        out.json("values", values);
        const EntryView view = EntryView::decode(call.code, values);
        if (view.kind != EntryView::Kind::kPlain) {
            out.json("view", view.toJson());
        }
        printSource(out, session, file, call, source);
        // A setParam right after its own getParam failed sends the buffer that read left.
        if (!get && previous != nullptr && previous->kind == EffectCall::kGetParam &&
            previous->result != 0 && previous->deviceId == call.deviceId &&
            previous->code == call.code) {
            const bool zeroed =
                std::all_of(values.begin(), values.end(), [](int v) { return v == 0; });
            out.json("read_failed", true);
            out.text(std::string("getParam failed: the ") + (zeroed ? "zeroed" : "unread") +
                     " buffer is sent");
        }
        // A refused getParam answered nothing.
        for (const std::string& line :
             !get || call.result == 0 ? view.lines(raw) : std::vector<std::string>()) {
            out.text(line);
        }
    }
    out.json("result", call.result);
}

// Why a step failed, in one line: the library's own error line, else the effect's refusal, else
// what the store lacks.
std::string whyFailed(const Step& step, const std::vector<EffectCall>& calls,
                      const std::vector<std::string>& libraryErrors) {
    if (!libraryErrors.empty()) {
        return "the library says: " + libraryErrors.back();
    }
    for (const EffectCall& call : calls) {
        if (call.result != 0) {
            return std::string("the effect answered ") + kCallNames[call.kind] + " " +
                   BlobDecoder::codeText(call.code) + " with " + std::to_string(call.result);
        }
    }
    return step.lack;
}

// The --prop assignments with their short names spelt out; false after one line on stderr.
bool takeProperties(const std::vector<std::string>& assignments,
                    StoreSession::Properties* properties) {
    for (const std::string& assignment : assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            ToolOutput::error("simulate", "--prop takes KEY=VALUE, not '" + assignment + "'");
            return false;
        }
        std::string key = assignment.substr(0, equals);
        std::string shortNames;
        for (const auto& [alias, name] : kPropertyNames) {
            key = key == alias ? name : key;
            shortNames += (shortNames.empty() ? "" : ", ") + alias;
        }
        // Every property name has a dot; a word without one was meant as a short name.
        if (key.find('.') == std::string::npos) {
            ToolOutput::error("simulate", "--prop: unknown short name '" + key +
                                              "' (short names: " + shortNames +
                                              "; or a full property name)");
            return false;
        }
        properties->emplace_back(key, assignment.substr(equals + 1));
    }
    return true;
}

// Splits the words after the options into the file and the steps: the first word is the file
// when it is not a step and names something on disk or looks like a path. False, after one line
// on stderr naming the word, for a word that is neither.
bool takeWords(const std::vector<std::string>& words, std::string* file,
               std::vector<std::string>* steps) {
    for (size_t i = 0; i < words.size(); i++) {
        const std::string& word = words[i];
        struct stat status;
        const bool looksLikePath =
            word.find('/') != std::string::npos ||
            (word.size() > 4 && word.compare(word.size() - 4, 4, ".xml") == 0);
        if (isStep(word)) {
            steps->push_back(word);
        } else if (i == 0 && (looksLikePath || stat(word.c_str(), &status) == 0)) {
            *file = word;
        } else {
            ToolOutput::error("simulate", "unknown step '" + word + "' (steps: " + kStepForms +
                                              (i == 0 ? "), and no file of that name"
                                                      : "; only the first word may be a "
                                                        "file)"));
            return false;
        }
    }
    return true;
}

}  // namespace

void SimulateCommand::addOptions(CLI::App* command, Options* options) {
    std::string propertyHelp =
        "set a system property before the store starts (repeatable); short names:";
    for (const auto& [alias, name] : kPropertyNames) {
        propertyHelp += " " + alias + "=" + name;
    }
    // One KEY=VALUE per --prop, so that the steps after it stay steps.
    command->add_option("--prop", options->properties, propertyHelp)
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    command->add_option(
        "STEP", options->words,
        std::string("tuning file (default: the bundled example), then the steps: ") + kStepForms);
    command->add_flag("--raw", options->raw, "list values as words, not bands and rows");
    command->add_flag("--effect-from-builtin", options->effectFromBuiltin,
                      "start the recording effect from the built-in common table, sent through "
                      "the cache before the steps, so that getParam answers as a configured "
                      "effect would; otherwise it starts empty and refuses (-22) getParam of "
                      "what it was not sent. Either way it answers getParam with what it was "
                      "sent last");
}

int SimulateCommand::run(const Options& options) {
    std::string path = options.common.file;
    std::vector<std::string> texts;
    StoreSession::Properties properties;
    if (!takeWords(options.words, &path, &texts) ||
        !takeProperties(options.properties, &properties)) {
        return kExitError;
    }
    std::unique_ptr<StoreSession> session = StoreSession::open(path, properties);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    Json props = Json::object();
    std::string shownProperties;
    for (const auto& [key, value] : properties) {
        props[key] = value;
        shownProperties += (shownProperties.empty() ? "" : " ") + key + "=" + value;
    }
    // What the store refused while starting (a property's value among them), one line each.
    for (const std::string& line : LibraryLog::takeErrors()) {
        ToolOutput::error(path, "the store started with " +
                                    (shownProperties.empty() ? "no property" : shownProperties) +
                                    " says: " + line);
    }
    std::vector<Step> steps(texts.size());
    for (size_t i = 0; i < steps.size(); i++) {
        const std::string error = parseStep(texts[i], *session, &steps[i]);
        if (!error.empty()) {
            ToolOutput::error(path, "step " + texts[i] + ": " + error);
            return kExitError;
        }
    }

    RecordingEffect effect;
    effect.setKeepsSent(true);
    if (options.effectFromBuiltin) {
        Cache().setKorvaContentProfile(PROFILE_COMMON, &effect);
        effect.takeCalls();
    }
    DeliveryLog deliveries(effect);
    const DeliveryObserver::Scope listening(&deliveries);
    const LoadedFile file = LoadedFile::of(*session);
    LibraryLog::takeErrors();
    const bool tuningsUsable = Cache().isTuningAvailable();
    const std::unique_ptr<Printer> out = Printer::make(options.common.json);
    out->path("file", "tuning file", path);
    out->field("properties", "properties", props,
               shownProperties.empty() ? "none" : shownProperties);
    out->field("tunings_usable", "tunings usable", tuningsUsable, tuningsUsable ? "yes" : "no");
    const bool builtin = options.effectFromBuiltin;
    out->field("effect_start", "effect starts", builtin ? "builtin" : "empty",
               builtin ? "from the built-in common table" : "empty");
    const auto list = out->list("steps");
    for (size_t s = 0; s < steps.size(); s++) {
        Cache cache;
        const int result = steps[s].run(cache, &effect);
        const std::vector<EffectCall> calls = effect.takeCalls();
        const std::vector<std::optional<CallSource>> from = deliveries.take(calls);
        const std::vector<std::string> errors = LibraryLog::takeErrors();
        const std::string why = result == 0 ? "" : whyFailed(steps[s], calls, errors);
        const auto step = out->object("", "step " + std::to_string(s + 1) + ": " + steps[s].text +
                                              "  result " + std::to_string(result));
        out->json("step", steps[s].text);
        out->json("result", result);
        // In text above the calls, in JSON after them.
        const std::pair<const char*, std::string> lines[] = {{"why", why}, {"note", steps[s].note}};
        for (const auto& [key, line] : lines) {
            if (!line.empty()) {
                out->text(std::string(key) + ": " + line);
            }
        }
        if (calls.empty()) {
            out->text("(no calls)");
        }
        {
            const auto callList = out->list("calls");
            for (size_t i = 0; i < calls.size(); i++) {
                printCall(*out, i + 1, calls[i], i > 0 ? &calls[i - 1] : nullptr, from[i], *session,
                          file, options.raw);
            }
        }
        for (const auto& [key, line] : lines) {
            if (!line.empty()) {
                out->json(key, line);
            }
        }
    }
    out->flush();
    return kExitOk;
}

}  // namespace korva::tool
