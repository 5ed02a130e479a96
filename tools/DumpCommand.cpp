#include "tools/DumpCommand.h"

#include <string>

#include "model/Parameter.h"
#include "tools/NumberText.h"
#include "tools/TextTable.h"
#include "tools/TuningFileRecords.h"

namespace korva::tool {

namespace {

std::string boolText(bool value) {
    return value ? "true" : "false";
}

std::string endpointName(Endpoint endpoint) {
    return endpoint >= 0 && endpoint < kNumEndpoints ? kEndpointNames[endpoint] : "?";
}

// The values as the records' own dumps show them: ieq_id is the preset number, shown apart.
Json valuesJson(const ParameterValues& record) {
    Json values = Json::object();
    for (const auto& [parameter, list] : record.values) {
        if (parameter != IEQ_ID) {
            values[kParameterNames[parameter]] = list;
        }
    }
    return values;
}

std::string valuesText(const ParameterValues& record) {
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
    for (const auto& [key, value] : fields) {
        text += "  " + key + "=" + value;
    }
    return text + "\n";
}

Json toJson(const TuningFileRecords& records, const std::string& path) {
    Json document = {{"file", path},
                     {"format_version", records.formatVersion()},
                     {"tool_version", records.toolVersion()},
                     {"orbex_game_system_gain", records.gameSystemGain()},
                     {"profile_elements", records.numOfProfiles()}};
    Json ieq = Json::array();
    for (const IeqPreset* preset : records.ieqPresets()) {
        ieq.push_back({{"id", preset->getId()},
                       {"preset_id", preset->getPresetId()},
                       {"name", preset->getName()},
                       {"values", valuesJson(*preset)}});
    }
    Json geq = Json::array();
    for (const GeqPreset* preset : records.geqPresets()) {
        geq.push_back({{"id", preset->getId()},
                       {"profile_id", preset->getProfileId()},
                       {"values", valuesJson(*preset)}});
    }
    Json profiles = Json::array();
    for (const Profile* profile : records.profiles()) {
        profiles.push_back({{"id", profile->getId()},
                            {"profile_id", profile->getProfileId()},
                            {"name", profile->getName()},
                            {"mobility", profile->isMobility()},
                            {"selected_geq_preset", profile->getSelectedGeqPreset()},
                            {"values", valuesJson(*profile)}});
    }
    Json endpoints = Json::array();
    for (const ProfileEndpoint* endpoint : records.profileEndpoints()) {
        endpoints.push_back({{"id", endpoint->getId()},
                             {"profile_id", endpoint->getProfileId()},
                             {"endpoint", endpointName(endpoint->getEndpoint())},
                             {"selected_ieq_preset", endpoint->getSelectedIeqPreset()},
                             {"values", valuesJson(*endpoint)}});
    }
    Json tunings = Json::array();
    for (const Tuning* tuning : records.tunings()) {
        tunings.push_back({{"id", tuning->getId()},
                           {"name", tuning->getName()},
                           {"endpoint", endpointName(tuning->getEndpoint())},
                           {"mono", tuning->isMono()},
                           {"readonly", tuning->isReadonly()},
                           {"values", valuesJson(*tuning)}});
    }
    Json devices = Json::array();
    for (const DeviceTuning* device : records.deviceTunings()) {
        devices.push_back({{"id", device->getId()},
                           {"device", device->getDevice()},
                           {"port", device->getPort()},
                           {"tuning", device->getTuning()}});
    }
    document["ieq_presets"] = ieq;
    document["geq_presets"] = geq;
    document["profiles"] = profiles;
    document["profile_endpoints"] = endpoints;
    document["tunings"] = tunings;
    document["device_tunings"] = devices;
    return document;
}

std::string toText(const TuningFileRecords& records, const std::string& path) {
    TextTable facts({"", ""});
    facts.addRow({"tuning file", path});
    facts.addRow({"format version", records.formatVersion()});
    facts.addRow({"tool version", records.toolVersion()});
    facts.addRow({"game system gain", std::to_string(records.gameSystemGain())});
    facts.addRow({"profile elements", std::to_string(records.numOfProfiles())});
    std::string text = facts.render();

    size_t number = 0;
    for (const IeqPreset* preset : records.ieqPresets()) {
        text += "\n" +
                heading("IEQ preset", ++number,
                        {{"id", std::to_string(preset->getId())},
                         {"presetId", std::to_string(preset->getPresetId())},
                         {"name", preset->getName()}}) +
                valuesText(*preset);
    }
    number = 0;
    for (const GeqPreset* preset : records.geqPresets()) {
        text += "\n" +
                heading("GEQ preset", ++number,
                        {{"id", std::to_string(preset->getId())},
                         {"profileId", std::to_string(preset->getProfileId())}}) +
                valuesText(*preset);
    }
    number = 0;
    for (const Profile* profile : records.profiles()) {
        text += "\n" +
                heading("profile", ++number,
                        {{"id", std::to_string(profile->getId())},
                         {"profileId", std::to_string(profile->getProfileId())},
                         {"name", profile->getName()},
                         {"mobility", boolText(profile->isMobility())},
                         {"selectedGeqPreset", std::to_string(profile->getSelectedGeqPreset())}}) +
                valuesText(*profile);
    }
    number = 0;
    for (const ProfileEndpoint* endpoint : records.profileEndpoints()) {
        text += "\n" +
                heading("profile endpoint", ++number,
                        {{"id", std::to_string(endpoint->getId())},
                         {"profileId", std::to_string(endpoint->getProfileId())},
                         {"endpoint", endpointName(endpoint->getEndpoint())},
                         {"selectedIeqPreset", std::to_string(endpoint->getSelectedIeqPreset())}}) +
                valuesText(*endpoint);
    }
    number = 0;
    for (const Tuning* tuning : records.tunings()) {
        text += "\n" +
                heading("tuning", ++number,
                        {{"id", std::to_string(tuning->getId())},
                         {"name", tuning->getName()},
                         {"endpoint", endpointName(tuning->getEndpoint())},
                         {"mono", boolText(tuning->isMono())},
                         {"readonly", boolText(tuning->isReadonly())}}) +
                valuesText(*tuning);
    }
    TextTable devices({"device", "port", "tuning"});
    for (const DeviceTuning* device : records.deviceTunings()) {
        devices.addRow({device->getDevice().empty() ? "\"\"" : device->getDevice(),
                        device->getPort(), device->getTuning()});
    }
    text += "\ndevice tunings\n" + (devices.empty() ? "    (none)\n" : devices.render("    "));
    return text;
}

}  // namespace

int DumpCommand::run(const CommonOptions& options) {
    TuningFileRecords records;
    if (!records.readOrReport(options.file)) {
        return kExitError;
    }
    if (options.json) {
        ToolOutput::printJson(toJson(records, options.file));
    } else {
        ToolOutput::print(toText(records, options.file));
    }
    return kExitOk;
}

}  // namespace korva::tool
