#include "tools/commands/DumpCommand.h"

#include <memory>
#include <string>

#include "model/Parameter.h"
#include "tools/load/StoreSession.h"
#include "tools/render/Printer.h"

namespace korva::tool {

namespace {

struct KindText {
    RecordKind kind;
    const char* key;
    const char* title;
};

constexpr KindText kKinds[] = {
    {RecordKind::kIeqPreset, "ieq_presets", "IEQ preset"},
    {RecordKind::kGeqPreset, "geq_presets", "GEQ preset"},
    {RecordKind::kProfile, "profiles", "profile"},
    {RecordKind::kProfileEndpoint, "profile_endpoints", "profile endpoint"},
    {RecordKind::kTuning, "tunings", "tuning"},
};

std::string endpointName(Endpoint endpoint) {
    return endpoint >= 0 && endpoint < kNumEndpoints ? kEndpointNames[endpoint] : "?";
}

// The fields each kind of record has beside its id.
void printFields(Printer& out, const RecordSnapshot& record) {
    switch (record.kind) {
        case RecordKind::kIeqPreset:
            out.field("preset_id", record.presetId);
            out.field("name", record.name);
            break;
        case RecordKind::kGeqPreset:
            out.field("profile_id", record.profileId);
            break;
        case RecordKind::kProfile:
            out.field("profile_id", record.profileId);
            out.field("name", record.name);
            out.field("mobility", record.mobility);
            out.field("selected_geq_preset", record.selectedGeqPreset);
            break;
        case RecordKind::kProfileEndpoint:
            out.field("profile_id", record.profileId);
            out.field("endpoint", endpointName(record.endpoint));
            out.field("selected_ieq_preset", record.selectedIeqPreset);
            break;
        case RecordKind::kTuning:
            out.field("name", record.name);
            out.field("endpoint", endpointName(record.endpoint));
            out.field("mono", record.mono);
            out.field("readonly", record.readonly);
            break;
    }
}

}  // namespace

int DumpCommand::run(const CommonOptions& options) {
    std::unique_ptr<StoreSession> session = StoreSession::open(options.file);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    const LoadReport& records = session->report();
    const std::unique_ptr<Printer> out = Printer::make(options.json);
    out->path("file", "tuning file", options.file);
    out->field("format_version", records.formatVersion);
    out->field("tool_version", records.toolVersion);
    out->field("orbex_game_system_gain", "game system gain", records.gameSystemGain);
    out->field("profile_elements", records.profileElements);
    for (const KindText& kind : kKinds) {
        const auto list = out->list(kind.key);
        size_t number = 0;
        for (const RecordSnapshot* record : records.ofKind(kind.kind)) {
            const auto item = out->object("", kind.title + (" #" + std::to_string(++number)));
            out->field("id", record->id);
            printFields(*out, *record);
            // ieq_id is the preset number, shown above.
            const auto values = out->object("values", "values");
            for (const auto& [parameter, list] : record->values) {
                if (parameter != IEQ_ID) {
                    out->field(kParameterNames[parameter], kParameterNames[parameter], list);
                }
            }
        }
    }
    Printer::Table devices{{{"device", "device"}, {"port", "port"}, {"tuning", "tuning"}}, {}};
    for (const BindingSnapshot& device : records.bindings) {
        devices.addRow({device.device, device.port, device.tuning});
    }
    out->table("device_tunings", devices, "device tunings");
    out->flush();
    return kExitOk;
}

}  // namespace korva::tool
