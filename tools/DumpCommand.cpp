#include "tools/DumpCommand.h"

#include <memory>
#include <string>

#include "model/Parameter.h"
#include "tools/NumberText.h"
#include "tools/load/StoreSession.h"
#include "tools/TextTable.h"

namespace korva::tool {

namespace {

std::string boolText(bool value) {
    return value ? "true" : "false";
}

std::string endpointName(Endpoint endpoint) {
    return endpoint >= 0 && endpoint < kNumEndpoints ? kEndpointNames[endpoint] : "?";
}

// The values as the records' own dumps show them: ieq_id is the preset number, shown apart.
Json valuesJson(const RecordSnapshot& record) {
    Json values = Json::object();
    for (const auto& [parameter, list] : record.values) {
        if (parameter != IEQ_ID) {
            values[kParameterNames[parameter]] = list;
        }
    }
    return values;
}

std::string valuesText(const RecordSnapshot& record) {
    TextTable table({"parameter", "values"});
    for (const auto& [parameter, list] : record.values) {
        if (parameter != IEQ_ID) {
            table.addRow({kParameterNames[parameter], NumberText::join(list)});
        }
    }
    return table.empty() ? "    (no values)\n" : table.render("    ");
}

// A record's heading: its kind, then its fields as key=value.
std::string heading(const std::string& kind, size_t number,
                    const std::vector<std::pair<std::string, std::string>>& fields) {
    std::string text = kind + " #" + std::to_string(number);
    size_t lineStart = 0;
    for (const auto& [key, value] : fields) {
        const std::string field = key + "=" + value;
        // Fields that would run past the width continue on a line of their own, indented.
        if (text.size() - lineStart + 2 + field.size() > TextTable::kDefaultWidth) {
            text += "\n";
            lineStart = text.size();
            text += "  ";
        } else {
            text += "  ";
        }
        text += field;
    }
    return text + "\n";
}

Json toJson(const LoadReport& records, const std::string& path) {
    Json document = {{"file", path},
                     {"format_version", records.formatVersion},
                     {"tool_version", records.toolVersion},
                     {"orbex_game_system_gain", records.gameSystemGain},
                     {"profile_elements", records.profileElements}};
    Json ieq = Json::array();
    for (const RecordSnapshot* preset : records.ofKind(RecordKind::kIeqPreset)) {
        ieq.push_back({{"id", preset->id},
                       {"preset_id", preset->presetId},
                       {"name", preset->name},
                       {"values", valuesJson(*preset)}});
    }
    Json geq = Json::array();
    for (const RecordSnapshot* preset : records.ofKind(RecordKind::kGeqPreset)) {
        geq.push_back({{"id", preset->id},
                       {"profile_id", preset->profileId},
                       {"values", valuesJson(*preset)}});
    }
    Json profiles = Json::array();
    for (const RecordSnapshot* profile : records.ofKind(RecordKind::kProfile)) {
        profiles.push_back({{"id", profile->id},
                            {"profile_id", profile->profileId},
                            {"name", profile->name},
                            {"mobility", profile->mobility},
                            {"selected_geq_preset", profile->selectedGeqPreset},
                            {"values", valuesJson(*profile)}});
    }
    Json endpoints = Json::array();
    for (const RecordSnapshot* endpoint : records.ofKind(RecordKind::kProfileEndpoint)) {
        endpoints.push_back({{"id", endpoint->id},
                             {"profile_id", endpoint->profileId},
                             {"endpoint", endpointName(endpoint->endpoint)},
                             {"selected_ieq_preset", endpoint->selectedIeqPreset},
                             {"values", valuesJson(*endpoint)}});
    }
    Json tunings = Json::array();
    for (const RecordSnapshot* tuning : records.ofKind(RecordKind::kTuning)) {
        tunings.push_back({{"id", tuning->id},
                           {"name", tuning->name},
                           {"endpoint", endpointName(tuning->endpoint)},
                           {"mono", tuning->mono},
                           {"readonly", tuning->readonly},
                           {"values", valuesJson(*tuning)}});
    }
    Json devices = Json::array();
    for (const BindingSnapshot& device : records.bindings) {
        devices.push_back({{"id", device.id},
                           {"device", device.device},
                           {"port", device.port},
                           {"tuning", device.tuning}});
    }
    document["ieq_presets"] = ieq;
    document["geq_presets"] = geq;
    document["profiles"] = profiles;
    document["profile_endpoints"] = endpoints;
    document["tunings"] = tunings;
    document["device_tunings"] = devices;
    return document;
}

std::string toText(const LoadReport& records, const std::string& path) {
    TextTable facts({"", ""});
    facts.addPathRow({"tuning file", path});
    facts.addRow({"format version", records.formatVersion});
    facts.addRow({"tool version", records.toolVersion});
    facts.addRow({"game system gain", std::to_string(records.gameSystemGain)});
    facts.addRow({"profile elements", std::to_string(records.profileElements)});
    std::string text = facts.render();

    size_t number = 0;
    for (const RecordSnapshot* preset : records.ofKind(RecordKind::kIeqPreset)) {
        text += "\n" +
                heading("IEQ preset", ++number,
                        {{"id", std::to_string(preset->id)},
                         {"presetId", std::to_string(preset->presetId)},
                         {"name", preset->name}}) +
                valuesText(*preset);
    }
    number = 0;
    for (const RecordSnapshot* preset : records.ofKind(RecordKind::kGeqPreset)) {
        text += "\n" +
                heading("GEQ preset", ++number,
                        {{"id", std::to_string(preset->id)},
                         {"profileId", std::to_string(preset->profileId)}}) +
                valuesText(*preset);
    }
    number = 0;
    for (const RecordSnapshot* profile : records.ofKind(RecordKind::kProfile)) {
        text += "\n" +
                heading("profile", ++number,
                        {{"id", std::to_string(profile->id)},
                         {"profileId", std::to_string(profile->profileId)},
                         {"name", profile->name},
                         {"mobility", boolText(profile->mobility)},
                         {"selectedGeqPreset", std::to_string(profile->selectedGeqPreset)}}) +
                valuesText(*profile);
    }
    number = 0;
    for (const RecordSnapshot* endpoint : records.ofKind(RecordKind::kProfileEndpoint)) {
        text += "\n" +
                heading("profile endpoint", ++number,
                        {{"id", std::to_string(endpoint->id)},
                         {"profileId", std::to_string(endpoint->profileId)},
                         {"endpoint", endpointName(endpoint->endpoint)},
                         {"selectedIeqPreset", std::to_string(endpoint->selectedIeqPreset)}}) +
                valuesText(*endpoint);
    }
    number = 0;
    for (const RecordSnapshot* tuning : records.ofKind(RecordKind::kTuning)) {
        text += "\n" +
                heading("tuning", ++number,
                        {{"id", std::to_string(tuning->id)},
                         {"name", tuning->name},
                         {"endpoint", endpointName(tuning->endpoint)},
                         {"mono", boolText(tuning->mono)},
                         {"readonly", boolText(tuning->readonly)}}) +
                valuesText(*tuning);
    }
    TextTable devices({"device", "port", "tuning"});
    for (const BindingSnapshot& device : records.bindings) {
        devices.addRow({device.device.empty() ? "\"\"" : device.device, device.port, device.tuning});
    }
    text += "\ndevice tunings\n" + (devices.empty() ? "    (none)\n" : devices.render("    "));
    return text;
}

}  // namespace

int DumpCommand::run(const CommonOptions& options) {
    std::unique_ptr<StoreSession> session = StoreSession::open(options.file);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    if (options.json) {
        ToolOutput::printJson(toJson(session->report(), options.file));
    } else {
        ToolOutput::print(toText(session->report(), options.file));
    }
    return kExitOk;
}

}  // namespace korva::tool
