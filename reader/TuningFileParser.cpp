#include "reader/TuningFileParser.h"

#include <android/log.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "reader/FormatVersion.h"
#include "reader/NodeParseUtils.h"
#include "reader/ReadTrace.h"
#include "reader/String2Int.h"
#include "reader/TuningFileLayout.h"

namespace korva {

namespace Layout = TuningFileLayout;

namespace {

constexpr const char* kLogTag = "TuningFileParser";

// Files older than 3.4 name IEQ presets instead of numbering them; these are the names by number.
const char* const kIeqPresetNames[] = {"off", "detailed", "balanced", "warm"};

template <typename T>
void deleteAll(std::set<T*>& records) {
    for (T* record : records) {
        delete record;
    }
    records.clear();
}

// The canonical preset number named in the text, and whether the text named one at all. The order
// matters for names that contain more than one of the words.
int ieqPresetIdOf(const std::string& name, bool* found) {
    *found = true;
    if (name.find("off") != std::string::npos) return 0;
    if (name.find("balanced") != std::string::npos) return 2;
    if (name.find("warm") != std::string::npos) return 3;
    if (name.find("detailed") != std::string::npos) return 1;
    *found = false;
    return 0;
}

// Whether a walk that recognises nodes by name alone can find a setter's name on the node. Text
// and comments carry libxml2's fixed names, which no setter has, and other kinds carry none.
bool hasDocumentName(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE || node->type == XML_PI_NODE ||
           node->type == XML_ENTITY_REF_NODE;
}

// Writes a value that a rule of the format decides, not the file.
void writeByRule(const xmlNode* element, ParameterValues& record, Parameter parameter,
                 std::vector<int> values, ValueSource source) {
    ReadTrace::write(element, record, parameter, std::move(values), source);
}

// Reads the listed attributes of the element under the cursor, one slot per name.
std::vector<std::string> readAttributes(TagIterator& iterator,
                                        const std::vector<std::string>& names) {
    std::vector<std::string> values;
    iterator.parseNodeWithName(names, values);
    values.resize(names.size());
    return values;
}

template <size_t N>
std::vector<std::string> readAttributes(TagIterator& iterator, const char* const (&names)[N]) {
    return readAttributes(iterator, std::vector<std::string>(names, names + N));
}

}  // namespace

TuningFileParser::TuningFileParser() = default;

TuningFileParser::~TuningFileParser() {
    mIterator.clearAll();
    deleteAll(mIeqPresets);
    deleteAll(mGeqPresets);
    deleteAll(mProfiles);
    deleteAll(mProfileEndpoints);
    deleteAll(mTunings);
    deleteAll(mDeviceTunings);
    mDeviceData.reset();
}

int TuningFileParser::setTuningFile(std::string path) {
    if (mIterator.init(path) != 0) {
        return -EINVAL;
    }
    parseTuningFile();
    mDeviceData = std::make_unique<DeviceData>();
    mDeviceData->setFormatVersion(mFormatVersion);
    mDeviceData->setToolVersion(mToolVersion);
    mDeviceData->setIeqPresets(mIeqPresets);
    mDeviceData->setGeqPresets(mGeqPresets);
    mDeviceData->setProfiles(mProfiles);
    mDeviceData->setProfileEndPoints(mProfileEndpoints);
    mDeviceData->setTunings(mTunings);
    mDeviceData->setDeviceTunings(mDeviceTunings);
    mDeviceData->setOrbexGameSystemGain(mGameSystemGain);
    return 0;
}

void TuningFileParser::parseTuningFile() {
    ReadTrace::beginDocument();
    const xmlNode* first = mIterator.currentNode();
    // The versions and global settings come first: every later step depends on them.
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        if (name == Layout::kToolVersion) {
            ReadTrace::structure(mIterator.currentNode(), Structure::kToolVersion);
            mToolVersion = parseVersion();
        } else if (name == Layout::kFormatVersion) {
            ReadTrace::structure(mIterator.currentNode(), Structure::kFormatVersion);
            mFormatVersion = parseVersion();
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "xml version: %s",
                                mFormatVersion.c_str());
        } else if (name == Layout::kAuthorizedTechnologies) {
            ReadTrace::structure(mIterator.currentNode(), Structure::kAuthorizedTechnologies);
            parseAuthorizedTechnologies();
        }
    }
    mIterator.popNode();

    const xmlNode* cutAt = nullptr;
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        if (name == Layout::kProfile) {
            parseProfile();
        } else if (name == Layout::kPreset) {
            parsePreset();
        } else if (name == Layout::kTuning) {
            const xmlNode* tuning = mIterator.currentNode();
            if (!parseTuning()) {
                cutAt = tuning;
                break;
            }
        } else if (name != Layout::kToolVersion && name != Layout::kFormatVersion &&
                   name != Layout::kAuthorizedTechnologies) {
            ReadTrace::skipped(mIterator.currentNode(), Skip::kUnknown);
        }
    }
    mIsParsed = true;
    ReadTrace::endDocument(first != nullptr ? first->parent : nullptr, cutAt);
}

bool TuningFileParser::isParsed() {
    return mIsParsed;
}

DeviceData* TuningFileParser::getDeviceData() {
    return mDeviceData.get();
}

int TuningFileParser::getNumOfProfiles() {
    return mNumOfProfiles;
}

std::string TuningFileParser::getProfileName(int id) {
    return mProfileNames[id];
}

int TuningFileParser::getIeqPresetIdByName(std::string& name) {
    return getIeqPresetIdByName(static_cast<const std::string&>(name));
}

int TuningFileParser::getIeqPresetIdByName(const std::string& name) {
    bool found = false;
    const int id = ieqPresetIdOf(name, &found);
    if (!found) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "name is invalid, %d", 310);
    }
    return id;
}

int TuningFileParser::readIeqPresetName(const xmlNode* element, const char* attribute,
                                        const std::string& name) {
    const int id = getIeqPresetIdByName(name);
    if (LoadObserver::current() != nullptr) {
        bool found = false;
        ieqPresetIdOf(name, &found);
        ReadTrace::keyword(element, attribute, name, id, found);
    }
    return id;
}

std::string TuningFileParser::parseVersion() {
    std::vector<std::string> parts = readAttributes(mIterator, Layout::kVersionAttributes);
    return parts[0] + "." + parts[1] + "." + parts[2];
}

void TuningFileParser::parseAuthorizedTechnologies() {
    if (isVersion32()) {
        ReadTrace::skipped(mIterator.currentNode(), Skip::kVersionRule);
        mVirtualBassProcessMode = 2;
        return;
    }
    mIterator.pushNode();
    mIterator.childrenNext();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const xmlNode* element = mIterator.currentNode();
        if (mIterator.getNodeName() != Layout::kGlobalSetting) {
            ReadTrace::skipped(element, Skip::kUnknown);
            continue;
        }
        ReadTrace::structure(element, Structure::kGlobalSetting);
        const std::vector<std::string> names = mIterator.getAttrsName();
        std::vector<std::string> values;
        mIterator.parseNodeAll(values);
        for (size_t i = 0; i < names.size() && i < values.size(); i++) {
            const char* name = names[i].c_str();
            if (names[i] == Layout::kGlobalSettingAttributes[0]) {
                mDsoEnable = values[i] == Layout::kTrue;
                ReadTrace::keyword(element, name, values[i], mDsoEnable,
                                   mDsoEnable || values[i] == Layout::kFalse);
                __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): mDsoEnable = %d",
                                    "parseAuthorizedTechnologies", mDsoEnable);
            } else if (names[i] == Layout::kGlobalSettingAttributes[1]) {
                mGameSystemGain = ReadTrace::readInt(element, name, values[i]);
            } else if (names[i] == Layout::kGlobalSettingAttributes[2]) {
                mVirtualBassProcessMode = ReadTrace::readInt(element, name, values[i]);
            } else if (LoadObserver* observer = LoadObserver::current()) {
                observer->onAttribute(element, name, values[i], AttributeRead::kIgnored);
            }
        }
    }
    mIterator.popNode();
}

void TuningFileParser::parsePreset() {
    const xmlNode* element = mIterator.currentNode();
    ReadTrace::structure(element, Structure::kPreset);
    const std::vector<std::string> attributes = readAttributes(mIterator, Layout::kPresetAttributes);
    const std::string& idText = attributes[0];
    const std::string& type = attributes[2];
    ReadTrace::keyword(element, Layout::kPresetAttributes[2], type, type == Layout::kIeqType ? 0 : 1,
                       type == Layout::kIeqType || type == Layout::kGeqType);
    if (type == Layout::kIeqType) {
        int presetId;
        std::string name;
        if (isVersion32() || isVersion330()) {
            presetId = readIeqPresetName(element, Layout::kPresetAttributes[0], idText);
            name = kIeqPresetNames[presetId];
        } else {
            presetId = std::atoi(idText.c_str());
            ReadTrace::number(element, Layout::kPresetAttributes[0], idText, presetId);
            name = attributes[1];
        }
        IeqPreset* preset = new IeqPreset(presetId, name);
        ReadTrace::record(element, *preset, RecordKind::kIeqPreset);
        applySetter(Layout::kIeqList, *preset);
        mIeqPresets.insert(preset);
    } else if (type == Layout::kGeqType) {
        GeqPreset* preset = new GeqPreset(std::atoi(idText.c_str()));
        ReadTrace::number(element, Layout::kPresetAttributes[0], idText, preset->getProfileId());
        ReadTrace::record(element, *preset, RecordKind::kGeqPreset);
        applySetter(Layout::kGeqList, *preset);
        mGeqPresets.insert(preset);
    }
}

void TuningFileParser::parseProfile() {
    mNumOfProfiles++;
    const xmlNode* element = mIterator.currentNode();
    ReadTrace::structure(element, Structure::kProfile);

    int presetId = 0;
    if (isVersion32()) {
        // 3.2 files select the profile's IEQ preset by name in an include after the data.
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): parse the ieq preset",
                            "parseProfile");
        std::string presetName;
        mIterator.pushNode();
        mIterator.childrenNext();
        mIterator.next();
        mIterator.next();
        const bool found = mIterator.isElementNode() && mIterator.getNodeName() == Layout::kInclude;
        const xmlNode* include = mIterator.currentNode();
        ReadTrace::lookup(include, Structure::kInclude, found);
        if (found) {
            ReadTrace::structure(include, Structure::kInclude);
            presetName = readAttributes(mIterator, {Layout::kIncludePresetName})[0];
        }
        presetId =
            readIeqPresetName(found ? include : element, Layout::kIncludePresetName, presetName);
        mIterator.popNode();
    }

    mIterator.pushNode();
    const std::vector<std::string> attributes =
        readAttributes(mIterator, Layout::kProfileAttributes);
    const int id = ReadTrace::readInt(element, Layout::kProfileAttributes[0], attributes[0]);
    const bool mobility = !isVersion32() && attributes[2] == Layout::kMobilityGroup;
    mProfileNames[id] = attributes[1];
    Profile* profile = new Profile(id, attributes[1], mobility);
    ReadTrace::record(element, *profile, RecordKind::kProfile);

    // Parameters sit in the profile's first element, a wrapper whose name is not checked.
    mIterator.childrenNext();
    if (mIterator.isElementNode()) {
        ReadTrace::structure(mIterator.currentNode(), Structure::kProfileData);
    }
    mIterator.childrenNext();
    int ieqEnable = 0;
    int ieqAmount = 0;
    for (; mIterator.isCurValid(); mIterator.next()) {
        // Recognised by name alone: a processing instruction named like a parameter is read too.
        if (!hasDocumentName(mIterator.currentNode())) {
            continue;
        }
        // The name where the document holds it: compared and looked up for every parameter.
        const std::string_view name = reinterpret_cast<const char*>(mIterator.currentNode()->name);
        if (ValueSetter* setter = sSetterCollection->findValueSetter(name)) {
            // These two belong to the endpoints that follow them, not to the profile.
            if (name == "ieq-enable") {
                ReadTrace::structure(mIterator.currentNode(), Structure::kProfileIeqSwitch);
                ieqEnable = NodeParseUtils::parseValue(mIterator);
            } else if (name == "ieq-amount") {
                ReadTrace::structure(mIterator.currentNode(), Structure::kProfileIeqSwitch);
                ieqAmount = NodeParseUtils::parseValue(mIterator);
            } else {
                ReadTrace::setter(mIterator.currentNode(), *setter, *profile);
                setter->set(*profile, mIterator);
            }
        } else if (name != Layout::kEndpoint && mIterator.isElementNode()) {
            ReadTrace::skipped(mIterator.currentNode(), Skip::kNoSetter);
        }
        if (name == Layout::kEndpoint) {
            parseProfileEndpoint(id, ieqEnable, ieqAmount, presetId);
        }
    }
    mIterator.popNode();

    // Older formats had no such settings; their fixed values override whatever the file says.
    if (isVersion32()) {
        writeByRule(element, *profile, REVERB_SUPPRESSION_ENABLE, {0}, ValueSource::kVersion32);
        writeByRule(element, *profile, REVERB_SUPPRESSION_AMOUNT, {0}, ValueSource::kVersion32);
    }
    if (isBeforeVersion34()) {
        writeByRule(element, *profile, HEADPHONE_VIRTUALIZER_MODE, {1}, ValueSource::kBefore34);
    }
    mProfiles.insert(profile);
}

void TuningFileParser::parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount,
                                            int ieqPresetId) {
    const xmlNode* element = mIterator.currentNode();
    ReadTrace::structure(element, Structure::kEndpoint);
    mIterator.pushNode();
    const std::string idText = readAttributes(mIterator, Layout::kEndpointAttributes)[0];
    // Unlike a tuning's endpoint_type, an unknown name here means "other".
    Endpoint endpoint = ENDPOINT_OTHER;
    if (idText == kEndpointNames[ENDPOINT_SPEAKER]) {
        endpoint = ENDPOINT_SPEAKER;
    } else if (idText == kEndpointNames[ENDPOINT_HEADPHONE]) {
        endpoint = ENDPOINT_HEADPHONE;
    }
    ReadTrace::keyword(element, Layout::kEndpointAttributes[0], idText, endpoint,
                       endpoint != ENDPOINT_OTHER || idText == kEndpointNames[ENDPOINT_OTHER]);

    int presetId = ieqPresetId;
    if (!isVersion32()) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): %s, parse the include ieq preset",
                            "parseProfileEndpoint", idText.c_str());
        mIterator.pushNode();
        mIterator.childrenNext();
        const bool found = mIterator.isElementNode() && mIterator.getNodeName() == Layout::kInclude;
        ReadTrace::lookup(mIterator.currentNode(), Structure::kInclude, found);
        if (found) {
            const xmlNode* include = mIterator.currentNode();
            ReadTrace::structure(include, Structure::kInclude);
            if (isVersion330()) {
                presetId =
                    readIeqPresetName(include, Layout::kIncludePresetName,
                                      readAttributes(mIterator, {Layout::kIncludePresetName})[0]);
            } else {
                const std::string text =
                    readAttributes(mIterator, {Layout::kIncludePresetNumber})[0];
                presetId = std::atoi(text.c_str());
                ReadTrace::number(include, Layout::kIncludePresetNumber, text, presetId);
            }
        }
        mIterator.popNode();
    }

    ProfileEndpoint* profileEndpoint = new ProfileEndpoint(profileId, endpoint, presetId);
    ReadTrace::record(element, *profileEndpoint, RecordKind::kProfileEndpoint);
    mIterator.childrenNext();
    applySetters(*profileEndpoint, NodeTest::kByName);
    mIterator.popNode();

    // Steering follows the dialog enhancer switch: its first value is appended to the steering
    // list. Both entries exist afterwards, empty when the file has neither.
    std::vector<int>& steering = profileEndpoint->values[MI_DIALOG_ENHANCER_STEERING_ENABLE];
    const std::vector<int>& dialogEnhancer = profileEndpoint->values[DIALOG_ENHANCER_ENABLE];
    if (!steering.empty() && !dialogEnhancer.empty()) {
        std::vector<int> combined = steering;
        combined.push_back(dialogEnhancer[0]);
        writeByRule(element, *profileEndpoint, MI_DIALOG_ENHANCER_STEERING_ENABLE,
                    std::move(combined), ValueSource::kDialogSteering);
    }

    if (isVersion32()) {
        writeByRule(element, *profileEndpoint, IEQ_ENABLE, {ieqEnable},
                    ValueSource::kProfileIeqSwitch);
        writeByRule(element, *profileEndpoint, IEQ_AMOUNT, {ieqAmount},
                    ValueSource::kProfileIeqSwitch);
        if (isVersion322()) {
            writeByRule(element, *profileEndpoint, HEARING_PROTECTION_ENABLE, {0},
                        ValueSource::kVersion322);
            writeByRule(element, *profileEndpoint, VIRTUALIZER_START_BAND, {0},
                        ValueSource::kVersion322);
        }
        writeByRule(element, *profileEndpoint, HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {4},
                    ValueSource::kVersion32);
    }
    writeByRule(element, *profileEndpoint, VIRTUAL_BASS_TYPE, {mVirtualBassProcessMode},
                ValueSource::kGlobalSetting);
    mProfileEndpoints.insert(profileEndpoint);
}

bool TuningFileParser::parseTuning() {
    const xmlNode* element = mIterator.currentNode();
    ReadTrace::structure(element, Structure::kTuning);
    mIterator.pushNode();
    std::vector<std::string> attributes = readAttributes(mIterator, Layout::kTuningAttributes);
    std::string& name = attributes[0];
    const std::string& endpointText = attributes[1];
    // Unlike a profile's endpoint_type, an unknown name here means the speaker.
    Endpoint endpoint = ENDPOINT_SPEAKER;
    if (endpointText == kEndpointNames[ENDPOINT_OTHER]) {
        endpoint = ENDPOINT_OTHER;
    } else if (endpointText == kEndpointNames[ENDPOINT_HEADPHONE]) {
        endpoint = ENDPOINT_HEADPHONE;
    }
    ReadTrace::keyword(
        element, Layout::kTuningAttributes[1], endpointText, endpoint,
        endpoint != ENDPOINT_SPEAKER || endpointText == kEndpointNames[ENDPOINT_SPEAKER]);
    const bool mono = attributes[2] == Layout::kTrue;
    ReadTrace::keyword(element, Layout::kTuningAttributes[2], attributes[2], mono,
                       mono || attributes[2] == Layout::kFalse);
    Tuning* tuning = new Tuning(name, endpoint, mono);
    ReadTrace::record(element, *tuning, RecordKind::kTuning);
    writeByRule(element, *tuning, ORIENTATION,
                {ReadTrace::readInt(element, Layout::kTuningAttributes[3], attributes[3])},
                ValueSource::kRecordAttribute);
    writeByRule(element, *tuning, OUTPUT_CHANNELS,
                {ReadTrace::readInt(element, Layout::kTuningAttributes[4], attributes[4])},
                ValueSource::kRecordAttribute);

    const bool hasData =
        NodeParseUtils::walkDeviceBindings(mIterator, [&] { parseDeviceTuning(name); });
    if (!hasData) {
        // The cursor has run off the end of the tuning's children and is not restored: the
        // document's walk ends here.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "There is no <data> in Tuning section");
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onRecordDropped(*tuning);
        }
        delete tuning;
        return false;
    }

    ReadTrace::structure(mIterator.currentNode(), Structure::kTuningData);
    mIterator.childrenNext();
    applySetters(*tuning, NodeTest::kElements);
    mIterator.popNode();

    if (isVersion322()) {
        writeByRule(element, *tuning, BASS_MBDRC_ENABLE, {0}, ValueSource::kVersion322);
    }
    if (isBeforeVersion34()) {
        writeByRule(element, *tuning, SPEAKER_VIRTUALIZER_MODE, {1}, ValueSource::kBefore34);
    }
    writeByRule(element, *tuning, DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {mDsoEnable ? 1 : 0},
                ValueSource::kGlobalSetting);
    mTunings.insert(tuning);
    return true;
}

void TuningFileParser::parseDeviceTuning(std::string& tuningName) {
    const xmlNode* element = mIterator.currentNode();
    ReadTrace::structure(element, Structure::kDeviceBinding);
    const std::vector<std::string> attributes =
        readAttributes(mIterator, Layout::kDeviceBindingAttributes);
    DeviceTuning* binding = new DeviceTuning(attributes[0], attributes[1], tuningName);
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onDeviceTuning(element, *binding);
    }
    mDeviceTunings.insert(binding);
}

void TuningFileParser::applySetters(ParameterValues& record, NodeTest test) {
    for (; mIterator.isCurValid(); mIterator.next()) {
        const bool element = mIterator.isElementNode();
        if (!(element || (test == NodeTest::kByName && hasDocumentName(mIterator.currentNode())))) {
            continue;
        }
        const char* name = reinterpret_cast<const char*>(mIterator.currentNode()->name);
        if (ValueSetter* setter = sSetterCollection->findValueSetter(name)) {
            ReadTrace::setter(mIterator.currentNode(), *setter, record);
            setter->set(record, mIterator);
        } else if (element) {
            ReadTrace::skipped(mIterator.currentNode(), Skip::kNoSetter);
        }
    }
}

void TuningFileParser::applySetter(const std::string& name, ParameterValues& record) {
    if (ValueSetter* setter = sSetterCollection->getValueSetter(name)) {
        ReadTrace::setter(mIterator.currentNode(), *setter, record);
        setter->set(record, mIterator);
    }
}

bool TuningFileParser::isVersion32() const {
    return isFormatVersion32(mFormatVersion);
}

bool TuningFileParser::isVersion322() const {
    return isFormatVersion322(mFormatVersion);
}

bool TuningFileParser::isVersion330() const {
    return isFormatVersion330(mFormatVersion);
}

bool TuningFileParser::isBeforeVersion34() const {
    return isFormatVersionBefore34(mFormatVersion);
}

}  // namespace korva
