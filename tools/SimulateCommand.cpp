#include "tools/SimulateCommand.h"

#include <sys/stat.h>

#include <memory>
#include <utility>

#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "reader/String2Int.h"
#include "tools/BlobDecoder.h"
#include "tools/LibraryLog.h"
#include "tools/NumberText.h"
#include "tools/SimulatedEffect.h"
#include "tools/StoreSession.h"
#include "tools/TextTable.h"

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

Json callJson(const EffectCall& call) {
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

std::string callsText(const std::vector<EffectCall>& calls) {
    if (calls.empty()) {
        return "  (no calls)\n";
    }
    TextTable table({"#", "call", "device", "code", "count", "result", "values"});
    table.alignRight(0);
    table.alignRight(4);
    table.alignRight(5);
    size_t number = 0;
    for (const EffectCall& call : calls) {
        const bool commit = call.kind == EffectCall::kCommit;
        table.addRow({std::to_string(++number), callName(call.kind),
                      BlobDecoder::deviceName(call.deviceId),
                      commit ? "" : BlobDecoder::codeText(call.code), commit ? "" : countText(call),
                      std::to_string(call.result), NumberText::join(callValues(call))});
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
    LibraryLog::takeErrors();
    Json stepsJson = Json::array();
    std::string text;
    size_t number = 0;
    for (const Step& step : steps) {
        const int result = runStep(step, effect);
        const std::vector<EffectCall> calls = effect.takeCalls();
        const std::string why =
            result == 0 ? "" : whyFailed(step, calls, LibraryLog::takeErrors(), session->store());
        LibraryLog::takeErrors();
        if (options.common.json) {
            Json list = Json::array();
            for (const EffectCall& call : calls) {
                list.push_back(callJson(call));
            }
            stepsJson.push_back({{"step", step.text}, {"result", result}, {"calls", list}});
            if (!why.empty()) {
                stepsJson.back()["why"] = why;
            }
        } else {
            text += "\nstep " + std::to_string(++number) + ": " + step.text + "  result " +
                    std::to_string(result) + "\n" + (why.empty() ? "" : "  why: " + why + "\n") +
                    callsText(calls);
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
    facts.addRow({"tuning file", path});
    facts.addRow({"properties", shownProperties.empty() ? "none" : shownProperties});
    facts.addRow({"tunings usable", tuningsUsable ? "yes" : "no"});
    ToolOutput::print(facts.render() + text);
    return kExitOk;
}

}  // namespace korva::tool
