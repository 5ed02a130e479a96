#include "reader/TuningFileParser.h"

#include <android/log.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "reader/FormatVersion.h"
#include "reader/NodeParseUtils.h"
#include "reader/String2Int.h"

namespace korva {

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

// Reads the listed attributes of the element under the cursor, one slot per name.
std::vector<std::string> readAttributes(TagIterator& iterator,
                                        const std::vector<std::string>& names) {
    std::vector<std::string> values;
    iterator.parseNodeWithName(names, values);
    values.resize(names.size());
    return values;
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
    // The versions and global settings come first: every later step depends on them.
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        if (name == "tool_version") {
            mToolVersion = parseVersion();
        } else if (name == "format_version") {
            mFormatVersion = parseVersion();
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "xml version: %s",
                                mFormatVersion.c_str());
        } else if (name == "authorized_technologies") {
            parseAuthorizedTechnologies();
        }
    }
    mIterator.popNode();

    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        const std::string name = mIterator.getNodeName();
        if (name == "profile") {
            parseProfile();
        } else if (name == "preset") {
            parsePreset();
        } else if (name == "tuning" && !parseTuning()) {
            break;
        }
    }
    mIsParsed = true;
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
    // The order matters for names that contain more than one of the words.
    if (name.find("off") != std::string::npos) return 0;
    if (name.find("balanced") != std::string::npos) return 2;
    if (name.find("warm") != std::string::npos) return 3;
    if (name.find("detailed") != std::string::npos) return 1;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "name is invalid, %d", 310);
    return 0;
}

std::string TuningFileParser::parseVersion() {
    std::vector<std::string> parts = readAttributes(mIterator, {"major", "minor", "maintenance"});
    return parts[0] + "." + parts[1] + "." + parts[2];
}

void TuningFileParser::parseAuthorizedTechnologies() {
    if (isVersion32()) {
        mVirtualBassProcessMode = 2;
        return;
    }
    mIterator.pushNode();
    if (NodeParseUtils::descend(mIterator, 1)) {
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode() || mIterator.getNodeName() != "global_setting") {
                continue;
            }
            const std::vector<std::string> names = mIterator.getAttrsName();
            std::vector<std::string> values;
            mIterator.parseNodeAll(values);
            for (size_t i = 0; i < names.size() && i < values.size(); i++) {
                if (names[i] == "dynamic_speaker_optimization_enable") {
                    mDsoEnable = values[i] == "true";
                    __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): mDsoEnable = %d",
                                        "parseAuthorizedTechnologies", mDsoEnable);
                } else if (names[i] == "orbex_game_system_gain") {
                    mGameSystemGain = string2Int(values[i]);
                } else if (names[i] == "virtual_bass_process") {
                    mVirtualBassProcessMode = string2Int(values[i]);
                }
            }
        }
    }
    mIterator.popNode();
}

void TuningFileParser::parsePreset() {
    const std::vector<std::string> attributes = readAttributes(mIterator, {"id", "name", "type"});
    const std::string& idText = attributes[0];
    const std::string& type = attributes[2];
    if (type == "ieq") {
        int presetId;
        std::string name;
        if (isVersion32() || isVersion330()) {
            presetId = getIeqPresetIdByName(idText);
            name = kIeqPresetNames[presetId];
        } else {
            presetId = std::atoi(idText.c_str());
            name = attributes[1];
        }
        IeqPreset* preset = new IeqPreset(presetId, name);
        if (ValueSetter* setter = sSetterCollection->getValueSetter("ieq")) {
            setter->set(*preset, mIterator);
        }
        mIeqPresets.insert(preset);
    } else if (type == "geq") {
        GeqPreset* preset = new GeqPreset(std::atoi(idText.c_str()));
        if (ValueSetter* setter = sSetterCollection->getValueSetter("geq")) {
            setter->set(*preset, mIterator);
        }
        mGeqPresets.insert(preset);
    }
}

void TuningFileParser::parseProfile() {
    mNumOfProfiles++;

    int presetId = 0;
    if (isVersion32()) {
        // 3.2 files select the profile's IEQ preset by name in an include after the data.
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): parse the ieq preset",
                            "parseProfile");
        std::string presetName;
        mIterator.pushNode();
        if (mIterator.isChildrenValid()) {
            mIterator.childrenNext();
            mIterator.next();
            mIterator.next();
            if (mIterator.isElementNode() && mIterator.getNodeName() == "include") {
                presetName = readAttributes(mIterator, {"preset"})[0];
            }
        }
        mIterator.popNode();
        presetId = getIeqPresetIdByName(presetName);
    }

    mIterator.pushNode();
    const std::vector<std::string> attributes = readAttributes(mIterator, {"id", "name", "group"});
    const int id = string2Int(attributes[0]);
    const bool mobility = !isVersion32() && attributes[2] == "mobility";
    mProfileNames[id] = attributes[1];
    Profile* profile = new Profile(id, attributes[1], mobility);

    // Parameters sit in the profile's first element, a wrapper whose name is not checked.
    if (NodeParseUtils::descend(mIterator, 2)) {
        int ieqEnable = 0;
        int ieqAmount = 0;
        for (; mIterator.isCurValid(); mIterator.next()) {
            if (!mIterator.isElementNode()) {
                continue;
            }
            const std::string name = mIterator.getNodeName();
            if (ValueSetter* setter = sSetterCollection->getValueSetter(name)) {
                // These two belong to the endpoints that follow them, not to the profile.
                if (name == "ieq-enable") {
                    ieqEnable = NodeParseUtils::parseValue(mIterator);
                } else if (name == "ieq-amount") {
                    ieqAmount = NodeParseUtils::parseValue(mIterator);
                } else {
                    setter->set(*profile, mIterator);
                }
            }
            if (name == "endpoint_type") {
                parseProfileEndpoint(id, ieqEnable, ieqAmount, presetId);
            }
        }
    }
    mIterator.popNode();

    // Older formats had no such settings; their fixed values override whatever the file says.
    if (isVersion32()) {
        profile->set(REVERB_SUPPRESSION_ENABLE, {0});
        profile->set(REVERB_SUPPRESSION_AMOUNT, {0});
    }
    if (isBeforeVersion34()) {
        profile->set(HEADPHONE_VIRTUALIZER_MODE, {1});
    }
    mProfiles.insert(profile);
}

void TuningFileParser::parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount,
                                            int ieqPresetId) {
    mIterator.pushNode();
    const std::string idText = readAttributes(mIterator, {"id"})[0];
    // Unlike a tuning's endpoint_type, an unknown name here means "other".
    Endpoint endpoint = ENDPOINT_OTHER;
    if (idText == "speaker") {
        endpoint = ENDPOINT_SPEAKER;
    } else if (idText == "headphone") {
        endpoint = ENDPOINT_HEADPHONE;
    }

    int presetId = ieqPresetId;
    if (!isVersion32()) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s(): %s, parse the include ieq preset",
                            "parseProfileEndpoint", idText.c_str());
        mIterator.pushNode();
        if (NodeParseUtils::descend(mIterator, 1) && mIterator.isElementNode() &&
            mIterator.getNodeName() == "include") {
            presetId = isVersion330()
                           ? getIeqPresetIdByName(readAttributes(mIterator, {"preset"})[0])
                           : std::atoi(readAttributes(mIterator, {"ieq_preset"})[0].c_str());
        }
        mIterator.popNode();
    }

    ProfileEndpoint* profileEndpoint = new ProfileEndpoint(profileId, endpoint, presetId);
    if (NodeParseUtils::descend(mIterator, 1)) {
        applySetters(*profileEndpoint);
    }
    mIterator.popNode();

    // Steering follows the dialog enhancer switch: its first value is appended to the steering
    // list. Both entries exist afterwards, empty when the file has neither.
    std::vector<int>& steering = profileEndpoint->values[MI_DIALOG_ENHANCER_STEERING_ENABLE];
    const std::vector<int>& dialogEnhancer = profileEndpoint->values[DIALOG_ENHANCER_ENABLE];
    if (!steering.empty() && !dialogEnhancer.empty()) {
        std::vector<int> combined = steering;
        combined.push_back(dialogEnhancer[0]);
        profileEndpoint->set(MI_DIALOG_ENHANCER_STEERING_ENABLE, combined);
    }

    if (isVersion32()) {
        profileEndpoint->set(IEQ_ENABLE, {ieqEnable});
        profileEndpoint->set(IEQ_AMOUNT, {ieqAmount});
        if (isVersion322()) {
            profileEndpoint->set(HEARING_PROTECTION_ENABLE, {0});
            profileEndpoint->set(VIRTUALIZER_START_BAND, {0});
        }
        profileEndpoint->set(HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {4});
    }
    profileEndpoint->set(VIRTUAL_BASS_TYPE, {mVirtualBassProcessMode});
    mProfileEndpoints.insert(profileEndpoint);
}

bool TuningFileParser::parseTuning() {
    mIterator.pushNode();
    std::vector<std::string> attributes = readAttributes(
        mIterator, {"name", "endpoint_type", "mono_device", "orientation", "output_channels"});
    std::string& name = attributes[0];
    const std::string& endpointText = attributes[1];
    // Unlike a profile's endpoint_type, an unknown name here means the speaker.
    Endpoint endpoint = ENDPOINT_SPEAKER;
    if (endpointText == "other") {
        endpoint = ENDPOINT_OTHER;
    } else if (endpointText == "headphone") {
        endpoint = ENDPOINT_HEADPHONE;
    }
    Tuning* tuning = new Tuning(name, endpoint, attributes[2] == "true");
    tuning->set(ORIENTATION, {string2Int(attributes[3])});
    tuning->set(OUTPUT_CHANNELS, {string2Int(attributes[4])});

    const bool hasData =
        NodeParseUtils::walkDeviceBindings(mIterator, [&] { parseDeviceTuning(name); });
    if (!hasData) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "There is no <data> in Tuning section");
        delete tuning;
        mIterator.popNode();
        return false;
    }

    if (NodeParseUtils::descend(mIterator, 1)) {
        applySetters(*tuning);
    }
    mIterator.popNode();

    if (isVersion322()) {
        tuning->set(BASS_MBDRC_ENABLE, {0});
    }
    if (isBeforeVersion34()) {
        tuning->set(SPEAKER_VIRTUALIZER_MODE, {1});
    }
    tuning->set(DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {mDsoEnable ? 1 : 0});
    mTunings.insert(tuning);
    return true;
}

void TuningFileParser::parseDeviceTuning(std::string& tuningName) {
    const std::vector<std::string> attributes = readAttributes(mIterator, {"id", "endpoint_port"});
    mDeviceTunings.insert(new DeviceTuning(attributes[0], attributes[1], tuningName));
}

void TuningFileParser::applySetters(ParameterValues& record) {
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        if (ValueSetter* setter = sSetterCollection->getValueSetter(mIterator.getNodeName())) {
            setter->set(record, mIterator);
        }
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
