// The names of a tuning file's structure: the elements that hold the versions, settings and
// records, the attributes read from them, the keywords of their values, and the rows below the
// band and matrix elements as the tuning tool writes them. The parser reads by these names;
// whoever describes the format to people (the workstation tool's schema and completion) reads
// the same table. Constants only: nothing here exists at run time unless it is used.
#pragma once

namespace korva::TuningFileLayout {

// The root's name is not checked by the reader: any root element is read. The tuning tool names
// it kRoot; files written by hand for tests and tools also use the shorter name.
inline constexpr char kRoot[] = "kvx_spatializer_tuning";
inline constexpr const char* kRootNames[] = {kRoot, "korva_tuning"};

// Children of the root.
inline constexpr char kToolVersion[] = "tool_version";
inline constexpr char kFormatVersion[] = "format_version";
inline constexpr char kAuthorizedTechnologies[] = "authorized_technologies";
inline constexpr char kPreset[] = "preset";
inline constexpr char kProfile[] = "profile";
inline constexpr char kTuning[] = "tuning";

// Below them.
inline constexpr char kGlobalSetting[] = "global_setting";
inline constexpr char kEndpoint[] = "endpoint_type";
inline constexpr char kInclude[] = "include";
inline constexpr char kDeviceBinding[] = "device_id";
// The wrapper of a record's parameters; its name is not checked by the reader.
inline constexpr char kData[] = "data";

// Attributes, each list in the order the parser reads it.
inline constexpr const char* kVersionAttributes[] = {"major", "minor", "maintenance"};
inline constexpr const char* kGlobalSettingAttributes[] = {
    "dynamic_speaker_optimization_enable", "orbex_game_system_gain", "virtual_bass_process"};
inline constexpr const char* kPresetAttributes[] = {"id", "name", "type"};
inline constexpr const char* kProfileAttributes[] = {"id", "name", "group"};
inline constexpr const char* kEndpointAttributes[] = {"id"};
// An include selects the endpoint's IEQ preset by number; files before 3.4 name it instead.
inline constexpr char kIncludePresetNumber[] = "ieq_preset";
inline constexpr char kIncludePresetName[] = "preset";
inline constexpr const char* kTuningAttributes[] = {"name", "endpoint_type", "mono_device",
                                                    "orientation", "output_channels"};
inline constexpr const char* kDeviceBindingAttributes[] = {"id", "endpoint_port"};

// Keywords of attribute values.
inline constexpr char kTrue[] = "true";
inline constexpr char kFalse[] = "false";
inline constexpr char kIeqType[] = "ieq";
inline constexpr char kGeqType[] = "geq";
inline constexpr char kMobilityGroup[] = "mobility";

// A scalar parameter element's attribute, and the one a list element is written with (the
// reader takes a list from the first attribute, whatever its name).
inline constexpr char kValueAttribute[] = "value";

// Rows below the band and matrix elements, as the tuning tool writes them. The reader checks the
// IEQ band's name only; the others are read by position.
inline constexpr char kIeqList[] = "ieq";
inline constexpr char kIeqBand[] = "band_ieq";
inline constexpr char kGeqList[] = "geq";
inline constexpr char kGeqBand[] = "band_geq";
inline constexpr char kBand[] = "band";
inline constexpr char kMixMatrices[] = "mix_matrices";
// Each matrix starts with its layout row (the channel layout code and the coefficient count),
// followed by one row per input channel.
inline constexpr char kMatrixLayoutRow[] = "layout";
inline constexpr const char* kMatrixChannelRows[] = {"l",   "r",   "c",   "lfe", "ls",  "rs",
                                                     "lrs", "rrs", "ltf", "rtf", "ltr", "rtr"};
// The virtual bass sub-harmonic gains are read in document order, whatever their names.
inline constexpr const char* kSubgainAttributes[] = {"second", "third", "fourth"};

}  // namespace korva::TuningFileLayout
