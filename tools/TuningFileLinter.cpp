#include "tools/TuningFileLinter.h"

#include <algorithm>
#include <set>
#include <utility>

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "reader/AudioOptimizerValueSetter.h"
#include "reader/DrcRowDataValueSetter.h"
#include "reader/FormatVersion.h"
#include "reader/GeqValueSetter.h"
#include "reader/IeqValueSetter.h"
#include "reader/MixMatrixValueSetter.h"
#include "reader/NodeParseUtils.h"
#include "reader/RegulatorTuningValueSetter.h"
#include "reader/RowDataValueSetter.h"
#include "reader/SetterCollection.h"
#include "reader/SimpleValueSetter.h"
#include "reader/String2Int.h"
#include "reader/TuningFileParser.h"
#include "reader/VirtualBassSubgainValueSetter.h"
#include "reader/VirtualBassValueSetter.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/NumberText.h"

namespace korva::tool {

namespace {

using RecordKind = TuningFileLinter::RecordKind;

// What a setter writes, caught in a record of no kind so that every parameter it fills shows.
class ScratchRecord : public ParameterValues {
public:
    ScratchRecord() : ParameterValues(-1, false) {}
    int64_t getId() const override { return -1; }
    const std::set<Parameter>& getValidParams() const override {
        static const std::set<Parameter> kNone;
        return kNone;
    }
};

const std::set<Parameter>& validParams(RecordKind kind) {
    switch (kind) {
        case RecordKind::kProfile:
            return Profile::kValidParams;
        case RecordKind::kProfileEndpoint:
            return ProfileEndpoint::kValidParams;
        case RecordKind::kTuning:
            return Tuning::kValidParams;
        case RecordKind::kIeqPreset:
            return IeqPreset::kValidParams;
        case RecordKind::kGeqPreset:
            return GeqPreset::kValidParams;
    }
    return Tuning::kValidParams;
}

const char* kindName(RecordKind kind) {
    switch (kind) {
        case RecordKind::kProfile:
            return "profile";
        case RecordKind::kProfileEndpoint:
            return "profile endpoint";
        case RecordKind::kTuning:
            return "tuning";
        case RecordKind::kIeqPreset:
            return "IEQ preset";
        case RecordKind::kGeqPreset:
            return "GEQ preset";
    }
    return "record";
}

// Where a parameter is to be written, for the message that says it was written elsewhere.
std::string placeOf(Parameter parameter) {
    static const std::pair<RecordKind, const char*> kPlaces[] = {
        {RecordKind::kProfile, "a profile's data"},
        {RecordKind::kProfileEndpoint, "an <endpoint_type>"},
        {RecordKind::kTuning, "a tuning's data"},
        {RecordKind::kIeqPreset, "an IEQ preset"},
        {RecordKind::kGeqPreset, "a GEQ preset"},
    };
    for (const auto& [kind, place] : kPlaces) {
        if (validParams(kind).count(parameter) > 0) {
            return place;
        }
    }
    return std::string();
}

// The parser's next record of a kind: records are matched to elements by their order.
template <typename T>
const T* takeNext(const std::vector<T*>& records, size_t& next) {
    return next < records.size() ? records[next++] : nullptr;
}

const std::vector<int>& valuesOf(const ParameterValues& record, Parameter parameter) {
    static const std::vector<int> kNone;
    auto found = record.values.find(parameter);
    return found != record.values.end() ? found->second : kNone;
}

// "1 band", "2 bands".
std::string counted(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string tag(const std::string& name) {
    return "<" + name + ">";
}

size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); i++) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The closest candidate when it is close enough to be a slip of the keyboard.
std::string nearestName(const std::string& name, const std::vector<std::string>& candidates) {
    const size_t limit = std::max<size_t>(1, std::min<size_t>(3, name.size() / 4));
    std::string best;
    size_t bestDistance = limit + 1;
    for (const std::string& candidate : candidates) {
        const size_t distance = editDistance(name, candidate);
        if (distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

std::vector<std::string> parameterElementNames() {
    std::vector<std::string> names;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        names.push_back(setter->getNodeName());
    }
    return names;
}

bool isElement(const xmlNode* node) {
    return node != nullptr && node->type == XML_ELEMENT_NODE;
}

std::string nameOf(const xmlNode* node) {
    return node != nullptr && node->name != nullptr
               ? std::string(reinterpret_cast<const char*>(node->name))
               : std::string();
}

// The ports that have an output device, as the store files tuning devices by.
std::string knownPorts() {
    std::string names;
    for (const auto& [name, device] : kPortNameToDevice) {
        if (device != 0) {
            names += (names.empty() ? "" : ", ") + name;
        }
    }
    return names;
}

}  // namespace

TuningFileLinter::TuningFileLinter(const TuningFileRecords& records) : mRecords(records) {}

bool TuningFileLinter::lint(const std::string& path) {
    mPath = path;
    std::string error;
    int errorLine = 0;
    if (mIterator.open(path, &error, &errorLine) != 0) {
        add(errorLine, Severity::kError, "not a readable XML document: " + error);
        return false;
    }
    mRootLine = LineTrackingIterator::lineOf(mIterator.root());
    mFormatVersion = mRecords.formatVersion();
    lintHeader();
    lintBody();
    lintReferences();
    lintSpeakerTuning();
    lintSteppedOver();
    return true;
}

void TuningFileLinter::add(int line, Severity severity, std::string message) {
    mFindings.push_back({line, severity, std::move(message)});
}

std::vector<Finding> TuningFileLinter::findings() const {
    std::vector<Finding> sorted = mFindings;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return sorted;
}

void TuningFileLinter::lintHeader() {
    int formatLine = 0;
    int settingsBeforeFormat = 0;
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        const int line = mIterator.line();
        if (name == "format_version") {
            if (formatLine != 0) {
                add(line, Severity::kWarning,
                    "<format_version> again: it replaces the one at line " +
                        std::to_string(formatLine));
            }
            formatLine = line;
            for (const char* part : {"major", "minor", "maintenance"}) {
                bool present = false;
                attribute(part, &present);
                if (!present) {
                    add(line, Severity::kWarning,
                        std::string("<format_version> has no ") + part +
                            " attribute: the version reads " + quoted(mFormatVersion));
                }
            }
        } else if (name == "authorized_technologies") {
            if (formatLine == 0 && settingsBeforeFormat == 0) {
                settingsBeforeFormat = line;
            }
            lintGlobalSettings();
        }
    }
    mIterator.popNode();
    if (formatLine == 0) {
        add(mRootLine, Severity::kWarning,
            "no <format_version>: the file is read by the rules of formats before 3.4, whose "
            "defaults replace values it writes");
    }
    if (settingsBeforeFormat != 0 && isVersion32()) {
        add(settingsBeforeFormat, Severity::kWarning,
            "<authorized_technologies> comes before <format_version>: its global settings are "
            "read although 3.2 files ignore them");
    }
}

void TuningFileLinter::lintGlobalSettings() {
    static const std::vector<std::string> kSettings = {
        "dynamic_speaker_optimization_enable", "orbex_game_system_gain", "virtual_bass_process"};
    mIterator.pushNode();
    if (NodeParseUtils::descend(mIterator, 1)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const std::string name = mIterator.getNodeName();
            const int line = mIterator.line();
            if (name != "global_setting") {
                unknownElement(name, "<authorized_technologies>", false, {"global_setting"});
                continue;
            }
            for (const auto& [key, value] : attributes()) {
                if (key == kSettings[0]) {
                    lintBoolean(line, key, value);
                } else if (key == kSettings[1] || key == kSettings[2]) {
                    lintInt(line, key, value);
                } else {
                    const std::string guess = nearestName(key, kSettings);
                    add(line, Severity::kWarning,
                        "attribute " + quoted(key) + " of <global_setting> is not read" +
                            (guess.empty() ? "" : " (did you mean " + quoted(guess) + "?)"));
                }
            }
        }
    }
    mIterator.popNode();
}

void TuningFileLinter::lintBody() {
    static const std::set<std::string> kFirstPass = {"tool_version", "format_version",
                                                     "authorized_technologies"};
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        if (name == "profile") {
            lintProfile();
        } else if (name == "preset") {
            lintPreset();
        } else if (name == "tuning") {
            if (!lintTuning()) {
                return;
            }
        } else if (kFirstPass.count(name) == 0) {
            unknownElement(name, "the root element", false,
                           {"profile", "preset", "tuning", "tool_version", "format_version",
                            "authorized_technologies"});
        }
    }
}

void TuningFileLinter::lintPreset() {
    const int line = mIterator.line();
    bool hasType = false;
    const std::string type = attribute("type", &hasType);
    const std::string idText = attribute("id");
    if (type == "ieq") {
        const IeqPreset* record = takeNext(mRecords.ieqPresets(), mNextIeqPreset);
        // Files before 3.4 name their IEQ presets instead of numbering them.
        if (!isVersion32() && !isVersion330()) {
            lintInt(line, "<preset> id", idText);
        }
        lintPresetBands("ieq", RecordKind::kIeqPreset);
        if (record == nullptr) {
            return;
        }
        const std::string id = std::to_string(record->getPresetId());
        auto [earlier, isNew] = mIeqPresetLines.emplace(record->getPresetId(), line);
        if (!isNew) {
            add(line, Severity::kWarning,
                "IEQ preset " + id + " is already defined at line " +
                    std::to_string(earlier->second) + ": endpoints that select " + id +
                    " get that one");
        }
        const size_t frequencies = valuesOf(*record, IEQ_FREQUENCY).size();
        const size_t targets = valuesOf(*record, IEQ_TARGET).size();
        if (frequencies != targets) {
            add(line, Severity::kWarning,
                "IEQ preset " + id + " has " + std::to_string(frequencies) +
                    " band frequencies but " + std::to_string(targets) +
                    " targets: the effect reads the curve out of step");
        } else if (frequencies == 0) {
            add(line, Severity::kWarning, "IEQ preset " + id + " has no bands");
        }
        // Every preset describes the same bands: one of another length is likely cut short.
        if (mIeqBands.line == 0) {
            mIeqBands = {line, record->getPresetId(), frequencies};
        } else if (frequencies != mIeqBands.bands) {
            add(line, Severity::kWarning,
                "IEQ preset " + id + " has " + counted(frequencies, "band") + ", but IEQ preset " +
                    std::to_string(mIeqBands.presetId) + " at line " +
                    std::to_string(mIeqBands.line) + " has " + std::to_string(mIeqBands.bands));
        }
    } else if (type == "geq") {
        const GeqPreset* record = takeNext(mRecords.geqPresets(), mNextGeqPreset);
        lintInt(line, "<preset> id", idText);
        lintPresetBands("geq", RecordKind::kGeqPreset);
        if (record == nullptr) {
            return;
        }
        const std::string profile = std::to_string(record->getProfileId());
        auto [earlier, isNew] = mGeqPresetLines.emplace(record->getProfileId(), line);
        if (!isNew) {
            add(line, Severity::kWarning,
                "profile " + profile + " already has a GEQ preset at line " +
                    std::to_string(earlier->second) + ": this one is not used");
        }
        const size_t frequencies = valuesOf(*record, GEQ_FREQUENCY).size();
        const size_t gains = valuesOf(*record, GEQ_GAIN).size();
        // The effect takes the graphic EQ as one entry of band count, 20 frequencies and 20
        // gains; the cache sends no other length.
        constexpr size_t kGeqBands = 20;
        if (frequencies != gains) {
            add(line, Severity::kWarning,
                "GEQ preset of profile " + profile + " has " + std::to_string(frequencies) +
                    " band frequencies but " + std::to_string(gains) + " gains");
        }
        if (frequencies != kGeqBands || gains != kGeqBands) {
            add(line, Severity::kWarning,
                "GEQ preset of profile " + profile + " makes a \"gebs\" of " +
                    std::to_string(1 + frequencies + gains) +
                    " values: the effect gets \"gebs\" only with 41 (20 bands), so this graphic "
                    "EQ never reaches it");
        }
    } else {
        add(line, Severity::kWarning,
            hasType ? "preset type " + quoted(type) + " is neither ieq nor geq: not read"
                    : std::string("<preset> has no type attribute: not read"));
    }
}

void TuningFileLinter::lintPresetBands(const char* setterName, RecordKind kind) {
    if (ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(setterName)) {
        lintParameter(*setter, kind, nullptr);
    }
}

void TuningFileLinter::lintProfile() {
    mIterator.pushNode();
    const int line = mIterator.line();
    lintInt(line, "<profile> id", attribute("id"));
    const Profile* record = takeNext(mRecords.profiles(), mNextProfile);
    if (record != nullptr) {
        for (const ProfileInfo& earlier : mProfiles) {
            if (earlier.record->getProfileId() == record->getProfileId()) {
                add(line, Severity::kWarning,
                    "profile id " + std::to_string(record->getProfileId()) +
                        " is already used at line " + std::to_string(earlier.line) +
                        ": only the first profile of an id gets a blob, this one never reaches "
                        "the effect");
                break;
            }
        }
        mProfiles.push_back({line, record});
    }

    // The reader takes the node after the profile's first child as its data element.
    xmlNode* node = mIterator.node();
    xmlNode* data = node->children != nullptr ? node->children->next : nullptr;
    bool hasElements = false;
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        hasElements = hasElements || isElement(child);
    }
    if (hasElements && !isElement(data)) {
        add(line, Severity::kWarning,
            "the profile's parameters are not read: its data element must be its first child "
            "(on a line of its own)");
    } else if (data != nullptr) {
        bool first = true;
        for (xmlNode* after = data->next; after != nullptr; after = after->next) {
            if (!isElement(after)) {
                continue;
            }
            // 3.2 files name the profile's IEQ preset in an include right after the data.
            if (!(first && isVersion32() && nameOf(after) == "include")) {
                add(LineTrackingIterator::lineOf(after), Severity::kWarning,
                    tag(nameOf(after)) + " after the profile's data element " + tag(nameOf(data)) +
                        " is not read");
            }
            first = false;
        }
    }

    WrittenValues written;
    const std::string where = record != nullptr
                                  ? "the data of profile " + std::to_string(record->getProfileId())
                                  : std::string("a profile's data");
    if (NodeParseUtils::descend(mIterator, 2)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const std::string name = mIterator.getNodeName();
            ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(name);
            if (name == "endpoint_type") {
                lintEndpoint();
            } else if (name == "ieq-enable" || name == "ieq-amount") {
                // Not profile values: 3.2 files pass them on to the endpoints after them.
                if (setter != nullptr) {
                    lintAttributes(*setter);
                }
            } else if (setter != nullptr) {
                lintParameter(*setter, RecordKind::kProfile, &written);
            } else {
                unknownElement(name, where, true, {"endpoint_type"});
            }
        }
    }
    mIterator.popNode();
    if (record != nullptr) {
        lintReplaced(written, record);
    }
}

void TuningFileLinter::lintEndpoint() {
    mIterator.pushNode();
    const int line = mIterator.line();
    bool hasId = false;
    const std::string id = attribute("id", &hasId);
    const ProfileEndpoint* record = takeNext(mRecords.profileEndpoints(), mNextEndpoint);
    if (record != nullptr) {
        mEndpoints.push_back({line, record});
    }
    if (id != "speaker" && id != "headphone" && id != "other") {
        add(line, Severity::kWarning,
            (hasId ? "endpoint_type " + quoted(id) : std::string("<endpoint_type> without id")) +
                " is read as other: nothing of this endpoint reaches the effect");
    }

    WrittenValues written;
    xmlNode* node = mIterator.node();
    xmlNode* first = node->children != nullptr ? node->children->next : nullptr;
    if (NodeParseUtils::descend(mIterator, 1)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const std::string name = mIterator.getNodeName();
            if (name == "include") {
                if (mIterator.node() != first || isVersion32()) {
                    add(mIterator.line(), Severity::kWarning,
                        "<include> is read only as the first element of an endpoint_type of a "
                        "3.3 or later file: this one is not read");
                } else if (!isVersion330()) {
                    bool present = false;
                    const std::string preset = attribute("ieq_preset", &present);
                    if (!present) {
                        add(mIterator.line(), Severity::kWarning,
                            "<include> has no ieq_preset attribute: IEQ preset 0 is selected");
                    } else {
                        lintInt(mIterator.line(), "<include> ieq_preset", preset);
                    }
                }
                continue;
            }
            if (ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(name)) {
                lintParameter(*setter, RecordKind::kProfileEndpoint, &written);
            } else {
                unknownElement(name, "<endpoint_type>", true, {"include"});
            }
        }
    }
    mIterator.popNode();
    if (record != nullptr) {
        lintReplaced(written, record);
    }
}

bool TuningFileLinter::lintTuning() {
    mIterator.pushNode();
    xmlNode* node = mIterator.node();
    const int line = mIterator.line();
    const std::string name = attribute("name");
    bool hasEndpoint = false;
    const std::string endpoint = attribute("endpoint_type", &hasEndpoint);
    if (endpoint != "speaker" && endpoint != "headphone" && endpoint != "other") {
        add(line, Severity::kWarning,
            (hasEndpoint ? "endpoint_type " + quoted(endpoint)
                         : std::string("<tuning> without endpoint_type")) +
                " of tuning " + quoted(name) + " is read as speaker");
    }
    bool hasMono = false;
    const std::string mono = attribute("mono_device", &hasMono);
    if (hasMono) {
        lintBoolean(line, "mono_device", mono);
    }
    for (const char* key : {"orientation", "output_channels"}) {
        bool present = false;
        const std::string text = attribute(key, &present);
        if (!present) {
            add(line, Severity::kWarning,
                "tuning " + quoted(name) + " has no " + key + " attribute: read as 0");
        } else {
            lintInt(line, std::string("<tuning> ") + key, text);
        }
    }
    for (const TuningInfo& earlier : mTunings) {
        if (earlier.name == name) {
            add(line, Severity::kWarning,
                "tuning name " + quoted(name) + " is already used at line " +
                    std::to_string(earlier.line) +
                    ": the device_ids of both tunings get the later one's blob");
            break;
        }
    }

    const bool hasData =
        NodeParseUtils::walkDeviceBindings(mIterator, [&] { lintDeviceTuning(name); });
    if (!hasData) {
        int skipped = 0;
        int from = 0;
        for (xmlNode* after = node->next; after != nullptr; after = after->next) {
            if (isElement(after)) {
                from = from == 0 ? LineTrackingIterator::lineOf(after) : from;
                skipped++;
            }
        }
        add(line, Severity::kError,
            "tuning " + quoted(name) + " has no data element: the reader drops it and stops, " +
                (skipped > 0
                     ? "so " + std::to_string(skipped) + (skipped == 1 ? " element" : " elements") +
                           " after it (from line " + std::to_string(from) + ") " +
                           (skipped == 1 ? "is" : "are") + " not read"
                     : std::string("though nothing follows it")));
        mIterator.popNode();
        return false;
    }

    xmlNode* data = mIterator.node();
    if (nameOf(data) != "data") {
        add(mIterator.line(), Severity::kWarning,
            tag(nameOf(data)) + " is taken as the data element of tuning " + quoted(name) +
                ": the first element that is not a device_id is");
    }
    for (xmlNode* after = data->next; after != nullptr; after = after->next) {
        if (isElement(after)) {
            add(LineTrackingIterator::lineOf(after), Severity::kWarning,
                tag(nameOf(after)) + " after the data element of tuning " + quoted(name) +
                    " is not read" +
                    (nameOf(after) == "device_id" ? ": device_ids come first" : ""));
        }
    }
    const Tuning* record = takeNext(mRecords.tunings(), mNextTuning);
    mTunings.push_back({line, name, record});

    WrittenValues written;
    if (NodeParseUtils::descend(mIterator, 1)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const std::string element = mIterator.getNodeName();
            if (ValueSetter* setter = TuningFileParser::sSetterCollection->getValueSetter(element)) {
                lintParameter(*setter, RecordKind::kTuning, &written);
            } else {
                unknownElement(element, "the data of tuning " + quoted(name), true, {});
            }
        }
    }
    mIterator.popNode();
    if (record != nullptr) {
        lintReplaced(written, record);
    }
    return true;
}

void TuningFileLinter::lintDeviceTuning(const std::string& tuningName) {
    const int line = mIterator.line();
    const std::string device = attribute("id");
    const std::string port = attribute("endpoint_port");
    auto known = kPortNameToDevice.find(port);
    if (known == kPortNameToDevice.end() || known->second == 0) {
        add(line, Severity::kError,
            "endpoint_port " + quoted(port) + " of tuning device " + quoted(device) +
                " is not one of the ports " + knownPorts() +
                ": its entries are filed for device 0, which no output matches");
    }
    for (const DeviceInfo& earlier : mDevices) {
        if (earlier.device == device) {
            add(line, Severity::kWarning,
                "tuning device " + quoted(device) + " is already bound at line " +
                    std::to_string(earlier.line) + ": the later binding replaces it");
            break;
        }
    }
    mDevices.push_back({line, device, port, tuningName});
}

void TuningFileLinter::lintReferences() {
    std::set<int> reported;
    for (const ProfileInfo& profile : mProfiles) {
        const int id = profile.record->getProfileId();
        const auto& presets = mRecords.geqPresets();
        const bool hasGeq = std::any_of(presets.begin(), presets.end(), [id](const GeqPreset* p) {
            return p->getProfileId() == id;
        });
        if (!hasGeq && reported.insert(id).second) {
            add(profile.line, Severity::kWarning,
                "profile " + std::to_string(id) +
                    " has no GEQ preset: its blob carries no graphic EQ and the persisted user "
                    "gains are not restored for it");
        }
    }
    for (const EndpointInfo& endpoint : mEndpoints) {
        if (endpoint.record->getEndpoint() == ENDPOINT_OTHER) {
            continue;
        }
        const int preset = endpoint.record->getSelectedIeqPreset();
        const auto& presets = mRecords.ieqPresets();
        if (std::none_of(presets.begin(), presets.end(),
                         [preset](const IeqPreset* p) { return p->getPresetId() == preset; })) {
            add(endpoint.line, Severity::kWarning,
                "endpoint selects IEQ preset " + std::to_string(preset) +
                    ", which the file does not define: it gets the IEQ curve translated before "
                    "it, if any");
        }
    }
    for (const DeviceInfo& device : mDevices) {
        if (std::none_of(mTunings.begin(), mTunings.end(),
                         [&device](const TuningInfo& t) { return t.name == device.tuning; })) {
            add(device.line, Severity::kError,
                "tuning device " + quoted(device.device) + " names tuning " +
                    quoted(device.tuning) + ", which is not kept: the device gets no blob");
        }
    }
    for (const TuningInfo& tuning : mTunings) {
        if (std::none_of(mDevices.begin(), mDevices.end(),
                         [&tuning](const DeviceInfo& d) { return d.tuning == tuning.name; })) {
            add(tuning.line, Severity::kWarning,
                "tuning " + quoted(tuning.name) + " has no device_id: no tuning device uses it");
        }
    }
}

void TuningFileLinter::lintSpeakerTuning() {
    // Loading looks up the speaker port's selection, which is the empty name at that time, so
    // the speaker's tuning is the one bound to the tuning device with the empty name.
    auto speaker = std::find_if(mDevices.begin(), mDevices.end(),
                                [](const DeviceInfo& d) { return d.device.empty(); });
    if (speaker == mDevices.end()) {
        return;
    }
    auto tuning = std::find_if(mTunings.begin(), mTunings.end(), [&speaker](const TuningInfo& t) {
        return t.name == speaker->tuning;
    });
    if (tuning == mTunings.end() || tuning->record == nullptr) {
        return;
    }
    if (valuesOf(*tuning->record, OUTPUT_MIX_MATRIX).empty()) {
        add(tuning->line, Severity::kWarning,
            "speaker tuning " + quoted(tuning->name) +
                " has no mix matrix (<output-mode>): every speaker endpoint of every profile "
                "gets the default one");
    }
    if (valuesOf(*tuning->record, VIRTUAL_BASS_MODE).empty()) {
        add(tuning->line, Severity::kWarning,
            "speaker tuning " + quoted(tuning->name) +
                " has no <virtual-bass-mode>: every profile endpoint gets vb mode 3");
    }
}

void TuningFileLinter::lintSteppedOver() {
    for (const xmlNode* node : mIterator.steppedOver()) {
        add(LineTrackingIterator::lineOf(node), Severity::kWarning,
            tag(nameOf(node)) + " follows " + tag(nameOf(node->parent)) +
                " on the same line: the reader steps over the first child of each element it "
                "enters, so " +
                tag(nameOf(node)) + " is not read");
    }
}

void TuningFileLinter::lintParameter(ValueSetter& setter, RecordKind kind, WrittenValues* written) {
    const int line = mIterator.line();
    const std::string name = element();
    ScratchRecord scratch;
    setter.set(scratch, mIterator);
    for (const auto& [parameter, values] : scratch.values) {
        const std::string parameterName = kParameterNames[parameter];
        if (validParams(kind).count(parameter) == 0) {
            const std::string place = placeOf(parameter);
            add(line, Severity::kWarning,
                name + " sets " + parameterName + ", which a " + kindName(kind) +
                    " does not use: it is ignored here" +
                    (place.empty() ? "" : " (it belongs in " + place + ")"));
            continue;
        }
        if (written == nullptr) {
            continue;
        }
        auto earlier = written->find(parameter);
        if (earlier != written->end()) {
            add(line, Severity::kWarning,
                name + " sets " + parameterName + " again: the value at line " +
                    std::to_string(earlier->second.line) + " is replaced");
        }
        (*written)[parameter] = {values, line};
    }
    lintAttributes(setter);
}

void TuningFileLinter::lintAttributes(ValueSetter& setter) {
    if (dynamic_cast<SimpleValueSetter*>(&setter) != nullptr) {
        lintSimple();
    } else if (dynamic_cast<DrcRowDataValueSetter*>(&setter) != nullptr) {
        lintRow(true);
    } else if (dynamic_cast<RowDataValueSetter*>(&setter) != nullptr) {
        lintRow(false);
    } else if (dynamic_cast<MixMatrixValueSetter*>(&setter) != nullptr) {
        lintMixMatrix();
    } else if (dynamic_cast<VirtualBassSubgainValueSetter*>(&setter) != nullptr) {
        lintIntAttributes();
    } else if (dynamic_cast<VirtualBassValueSetter*>(&setter) != nullptr) {
        lintNamedInts(VirtualBassValueSetter::kAttrNames);
    } else if (dynamic_cast<IeqValueSetter*>(&setter) != nullptr) {
        lintRows(3, IeqValueSetter::kAttrNames, "band_ieq", "");
    } else if (dynamic_cast<GeqValueSetter*>(&setter) != nullptr) {
        lintRows(3, GeqValueSetter::kAttrNames, "", "");
    } else if (dynamic_cast<AudioOptimizerValueSetter*>(&setter) != nullptr) {
        lintRows(1, AudioOptimizerValueSetter::kAttrNames, "", "");
    } else if (dynamic_cast<RegulatorTuningValueSetter*>(&setter) != nullptr) {
        lintRows(1, RegulatorTuningValueSetter::kAttrNames, "", "isolated_band");
    }
}

void TuningFileLinter::lintSimple() {
    const int line = mIterator.line();
    for (const auto& [key, value] : attributes()) {
        if (key != "value") {
            add(line, Severity::kWarning,
                "attribute " + quoted(key) + " of " + element() + " is not read" +
                    (editDistance(key, "value") <= 2 ? " (did you mean \"value\"?)" : ""));
        }
    }
    bool present = false;
    const std::string value = attribute("value", &present);
    if (!present) {
        add(line, Severity::kWarning, element() + " has no value attribute: read as 0");
    } else if (value != "true" && value != "false" && !NumberText::isWholeInt(value)) {
        add(line, Severity::kWarning,
            element() + " value " + quoted(value) +
                " is neither true, false nor a whole decimal number: read as " +
                std::to_string(string2Int(value)));
    }
}

void TuningFileLinter::lintRow(bool isDrc) {
    const int line = mIterator.line();
    const auto attrs = attributes();
    if (attrs.empty()) {
        add(line, Severity::kWarning,
            element() + " has no values: read as " + (isDrc ? "[0]" : "an empty list"));
        return;
    }
    if (!NumberText::isWholeIntList(attrs[0].second)) {
        std::vector<int> read;
        string2IntVector(attrs[0].second, read);
        if (isDrc && read.empty()) {
            read.push_back(0);
        }
        add(line, Severity::kWarning,
            element() + " " + attrs[0].first + " " + quoted(attrs[0].second) +
                " is not a list of whole decimal numbers: read as " + NumberText::bracketed(read));
    }
    for (size_t i = 1; i < attrs.size(); i++) {
        add(line, Severity::kWarning,
            "only the first attribute of " + element() + " is read, not " + quoted(attrs[i].first));
    }
}

void TuningFileLinter::lintMixMatrix() {
    const int line = mIterator.line();
    const std::string name = element();
    if (NodeParseUtils::parseMixMatrix(mIterator).empty()) {
        add(line, Severity::kWarning,
            name + " holds no matrix: the reader expects " + name +
                ", one element inside it, and one element per row inside that");
    }
    mIterator.pushNode();
    if (NodeParseUtils::descend(mIterator, 2)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const int rowLine = mIterator.line();
            const auto attrs = attributes();
            if (attrs.empty()) {
                add(rowLine, Severity::kWarning, "matrix row " + element() + " has no values");
                continue;
            }
            if (!NumberText::isWholeIntList(attrs[0].second)) {
                std::vector<int> read;
                string2IntVector(attrs[0].second, read);
                add(rowLine, Severity::kWarning,
                    "matrix row " + element() + " " + quoted(attrs[0].second) +
                        " is not a list of whole decimal numbers: read as " +
                        NumberText::bracketed(read));
            }
            for (size_t i = 1; i < attrs.size(); i++) {
                add(rowLine, Severity::kWarning,
                    "only the first attribute of matrix row " + element() + " is read, not " +
                        quoted(attrs[i].first));
            }
        }
    }
    mIterator.popNode();
}

void TuningFileLinter::lintIntAttributes() {
    const int line = mIterator.line();
    const auto attrs = attributes();
    if (attrs.empty()) {
        add(line, Severity::kWarning, element() + " has no values: read as an empty list");
    }
    for (const auto& [key, value] : attrs) {
        lintInt(line, element() + " " + key, value);
    }
}

void TuningFileLinter::lintNamedInts(const std::vector<std::string>& names) {
    const int line = mIterator.line();
    for (const std::string& name : names) {
        bool present = false;
        const std::string value = attribute(name, &present);
        if (!present) {
            add(line, Severity::kWarning, element() + " has no " + name + ": read as 0");
        } else {
            lintInt(line, element() + " " + name, value);
        }
    }
    for (const auto& [key, value] : attributes()) {
        if (std::find(names.begin(), names.end(), key) == names.end()) {
            const std::string guess = nearestName(key, names);
            add(line, Severity::kWarning,
                "attribute " + quoted(key) + " of " + element() + " is not read" +
                    (guess.empty() ? "" : " (did you mean " + quoted(guess) + "?)"));
        }
    }
}

void TuningFileLinter::lintRows(int levels, const std::vector<std::string>& names,
                                const std::string& rowName, const std::string& booleanName) {
    // Band lists are joined into one text per attribute before they are read, so one bad value
    // cuts its whole list; other rows are read value by value.
    const bool joined = levels > 1;
    mIterator.pushNode();
    if (NodeParseUtils::descend(mIterator, levels)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const int line = mIterator.line();
            if (!rowName.empty() && mIterator.getNodeName() != rowName) {
                add(line, Severity::kWarning,
                    element() + " ends the list of " + tag(rowName) +
                        " bands: the bands after it are not read");
                break;
            }
            for (const std::string& name : names) {
                bool present = false;
                const std::string value = attribute(name, &present);
                const std::string what = element() + " " + name;
                if (name == booleanName) {
                    lintBoolean(line, what, value);
                } else if (!present) {
                    add(line, Severity::kWarning,
                        element() + " has no " + name +
                            (joined ? ": the " + name + " list is cut here"
                                    : std::string(": read as 0")));
                } else if (!NumberText::isWholeInt(value)) {
                    add(line, Severity::kWarning,
                        what + " " + quoted(value) + " is not a whole decimal number: " +
                            (joined ? "the " + name + " list is cut here"
                                    : "read as " + std::to_string(string2Int(value))));
                }
            }
            for (const auto& [key, value] : attributes()) {
                if (std::find(names.begin(), names.end(), key) == names.end()) {
                    const std::string guess = nearestName(key, names);
                    add(line, Severity::kWarning,
                        "attribute " + quoted(key) + " of " + element() + " is not read" +
                            (guess.empty() ? "" : " (did you mean " + quoted(guess) + "?)"));
                }
            }
        }
    }
    mIterator.popNode();
}

void TuningFileLinter::lintReplaced(const WrittenValues& written, const ParameterValues* record) {
    for (const auto& [parameter, write] : written) {
        auto held = record->values.find(parameter);
        if (held == record->values.end()) {
            continue;
        }
        std::vector<int> expected = write.values;
        // The dialog enhancer's switch is appended to its steering flag by design.
        if (parameter == MI_DIALOG_ENHANCER_STEERING_ENABLE && !expected.empty()) {
            const std::vector<int>& enable = valuesOf(*record, DIALOG_ENHANCER_ENABLE);
            if (!enable.empty()) {
                expected.push_back(enable[0]);
            }
        }
        if (held->second != expected) {
            add(write.line, Severity::kWarning,
                std::string(kParameterNames[parameter]) + " " +
                    NumberText::bracketed(write.values) + " written here is replaced by " +
                    NumberText::bracketed(held->second) + " " + versionNote());
        }
    }
}

void TuningFileLinter::unknownElement(const std::string& name, const std::string& where,
                                      bool parameters, const std::vector<std::string>& structural) {
    std::vector<std::string> candidates = structural;
    if (parameters) {
        static const std::vector<std::string> kParameterElements = parameterElementNames();
        candidates.insert(candidates.end(), kParameterElements.begin(), kParameterElements.end());
    }
    const std::string guess = nearestName(name, candidates);
    add(mIterator.line(), Severity::kWarning,
        tag(name) + " in " + where + " is not read: " +
            (parameters ? "no parameter has this name" : "the reader does not know it") +
            (guess.empty() ? "" : " (did you mean " + tag(guess) + "?)"));
}

void TuningFileLinter::lintInt(int line, const std::string& what, const std::string& text) {
    if (NumberText::isWholeInt(text)) {
        return;
    }
    const std::string read = std::to_string(string2Int(text));
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        add(line, Severity::kWarning, what + " is empty: read as " + read);
    } else {
        add(line, Severity::kWarning,
            what + " " + quoted(text) + " is not a whole decimal number: read as " + read);
    }
}

void TuningFileLinter::lintBoolean(int line, const std::string& what, const std::string& text) {
    if (text == "true" || text == "false") {
        return;
    }
    add(line, Severity::kWarning,
        what + " " + quoted(text) + " is neither true nor false: read as false");
}

std::vector<std::pair<std::string, std::string>> TuningFileLinter::attributes() {
    const std::vector<std::string> names = mIterator.getAttrsName();
    std::vector<std::string> values;
    mIterator.parseNodeAll(values);
    std::vector<std::pair<std::string, std::string>> pairs;
    for (size_t i = 0; i < names.size() && i < values.size(); i++) {
        pairs.emplace_back(names[i], values[i]);
    }
    return pairs;
}

std::string TuningFileLinter::attribute(const std::string& name, bool* present) {
    for (const auto& [key, value] : attributes()) {
        if (key == name) {
            if (present != nullptr) {
                *present = true;
            }
            return value;
        }
    }
    if (present != nullptr) {
        *present = false;
    }
    return std::string();
}

std::string TuningFileLinter::element() const {
    return tag(nameOf(mIterator.node()));
}

std::string TuningFileLinter::versionNote() const {
    return mFormatVersion.empty() ? "(the file has no format version)"
                                  : "by the rules of format version " + mFormatVersion;
}

bool TuningFileLinter::isVersion32() const {
    return isFormatVersion32(mFormatVersion);
}

bool TuningFileLinter::isVersion330() const {
    return isFormatVersion330(mFormatVersion);
}

}  // namespace korva::tool
