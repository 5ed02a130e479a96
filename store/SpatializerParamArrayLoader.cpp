// Turns the tuning file into the store's blobs: one per profile, one per tuning device, plus the
// graphic-EQ gains per profile, the port and mix matrix of every tuning device. Runs once, from
// the constructor; a file that cannot be read leaves the built-in tables serving alone.

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "model/CreationOrder.h"
#include "model/DeviceData.h"
#include "model/OutputDevice.h"
#include "model/Parameter.h"
#include "observer/LoadObserver.h"
#include "reader/TuningFileParser.h"
#include "store/LogLevel.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"
#include "translator/ParameterTranslator.h"
#include "translator/SetParamCommand.h"

namespace korva {

namespace {

// Headphone endpoints are played on a fixed orientation, speakers on theirs.
const std::vector<int> kHeadphoneOrientation = {2};
const std::vector<int> kSpeakerOrientation = {1};

// The tuning file does not promise a value where a single one is expected: none reads as 0.
int firstValueOf(const ParameterValues& record, Parameter parameter) {
    const std::vector<int>& values = storedValues(record, parameter);
    return values.empty() ? 0 : values[0];
}

// The command's words as a blob, with its entry count where readers expect it.
std::vector<int> blobOf(SetParamCommand& cmd) {
    cmd.mBuffer[1] = cmd.mCount;
    return cmd.mBuffer;
}

// A value the loader decides for every record of a kind, reported to the load's listener.
void writeByLoader(ParameterValues& record, Parameter parameter, const std::vector<int>& values,
                   ValueSource source) {
    record.set(parameter, values);
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onValue(nullptr, record, parameter, values, source);
    }
}

void missingPartner(MissingPartner what, const ParameterValues* record,
                    const DeviceTuning* binding) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onPartnerMissing(what, record, binding);
    }
}

// The first record that matches, or null.
template <typename T, typename Matches>
T* findFirst(const std::vector<T*>& records, Matches matches) {
    auto found = std::find_if(records.begin(), records.end(), matches);
    return found != records.end() ? *found : nullptr;
}

Tuning* findTuning(const std::vector<Tuning*>& tunings, const std::string& name) {
    return findFirst(tunings, [&name](const Tuning* tuning) { return tuning->getName() == name; });
}

// The first binding of a tuning device name, or null.
DeviceTuning* findBinding(const std::vector<DeviceTuning*>& deviceTunings,
                          const std::string& device) {
    return findFirst(deviceTunings,
                     [&device](const DeviceTuning* dt) { return dt->getDevice() == device; });
}

// The IEQ preset translator. An endpoint whose preset does not exist is translated with the
// preset used last; before any preset was found there is none to translate.
class IeqTranslation {
public:
    void select(IeqPreset* preset, Endpoint endpoint, const ProfileEndpoint& selector) {
        if (preset != nullptr) {
            mTranslator.setSource(preset, endpoint, false);
            mHasSource = true;
        } else {
            missingPartner(MissingPartner::kIeqPreset, &selector, nullptr);
        }
    }
    void translateAll(SetParamCommand& cmd) {
        if (mHasSource) {
            mTranslator.translateAll(cmd);
        }
    }

private:
    ParameterTranslator mTranslator;
    bool mHasSource = false;
};

// The mix matrix words of a tuning device are the effect's "dom" values less their enable word:
// endpoint, orientation, then the matrix. A tuning without a matrix files none, so that the
// effect keeps the matrix it has instead of getting one without coefficients.
void fileMixMatrix(const std::string& device, const Tuning& tuning,
                   std::map<std::string, std::vector<int>>& mixMatrices,
                   int& defaultMixMatrixLength) {
    const std::vector<int>& matrix = storedValues(tuning, OUTPUT_MIX_MATRIX);
    const int endpoint = tuning.getEndpoint();
    const int orientation = firstValueOf(tuning, ORIENTATION);
    KORVA_LOGD(kStoreLogTag, "Tuning id(%s): endpoint %i, orientation %i, mix matrices length %zu",
               device.c_str(), endpoint, orientation, matrix.size());
    if (matrix.empty()) {
        return;
    }
    std::vector<int> words = {endpoint, orientation};
    words.insert(words.end(), matrix.begin(), matrix.end());
    // The cache reads the effect's matrix back into defaultMixMatrixLength + 1 words (enable word
    // included): keep room for the longest matrix a tuning device can send, so that switching
    // content processing off reads it back whole.
    defaultMixMatrixLength = std::max(defaultMixMatrixLength, static_cast<int>(words.size()));
    mixMatrices[device] = std::move(words);
}

// The speaker's values that every speaker endpoint is translated with.
struct SpeakerValues {
    std::vector<int> mixMatrix;
    std::vector<int> vbMode;
};

// The records of the file, in the order they were read. The sets order them by address, which
// differs from run to run; this order makes the same file give the same blobs every time.
struct OrderedRecords {
    explicit OrderedRecords(DeviceData& data)
        : ieqPresets(inCreationOrder(data.getIeqPresets())),
          geqPresets(inCreationOrder(data.getGeqPresets())),
          profiles(inCreationOrder(data.getProfiles())),
          profileEndpoints(inCreationOrder(data.getProfileEndpoints())),
          tunings(inCreationOrder(data.getTunings())),
          deviceTunings(inCreationOrder(data.getDeviceTunings())) {}

    std::vector<IeqPreset*> ieqPresets;
    std::vector<GeqPreset*> geqPresets;
    std::vector<Profile*> profiles;
    std::vector<ProfileEndpoint*> profileEndpoints;
    std::vector<Tuning*> tunings;
    std::vector<DeviceTuning*> deviceTunings;
};

// The partners of each record, looked up once instead of by a walk over every record of the
// other kind: a load stays linear in the size of the file. Lists keep the records' order, and
// where the first match counts, the first one read is the one kept.
struct RecordIndex {
    explicit RecordIndex(const OrderedRecords& records) {
        for (IeqPreset* preset : records.ieqPresets) {
            firstIeqPreset.emplace(preset->getPresetId(), preset);
        }
        for (GeqPreset* preset : records.geqPresets) {
            firstGeqPreset.emplace(preset->getProfileId(), preset);
        }
        for (ProfileEndpoint* endpoint : records.profileEndpoints) {
            profileEndpoints[endpoint->getProfileId()].push_back(endpoint);
        }
        for (DeviceTuning* deviceTuning : records.deviceTunings) {
            deviceTunings[deviceTuning->getTuning()].push_back(deviceTuning);
        }
    }

    template <typename Key, typename Value>
    static Value find(const std::map<Key, Value>& index, const Key& key) {
        auto found = index.find(key);
        return found != index.end() ? found->second : Value();
    }

    std::map<int, IeqPreset*> firstIeqPreset;
    std::map<int, GeqPreset*> firstGeqPreset;
    std::map<int, std::vector<ProfileEndpoint*>> profileEndpoints;
    std::map<std::string, std::vector<DeviceTuning*>> deviceTunings;
};

}  // namespace

void SpatializerParamArray::loadSpatializerXMLFile(std::string path) {
    KORVA_LOGD(kStoreLogTag, "%s(%s)", __func__, path.c_str());
    android::Mutex::Autolock lock(mLock);

    // Owns the records and the DeviceData: they go when the load ends, whichever way.
    auto parser = std::make_unique<TuningFileParser>();
    LoadObserver* observer = LoadObserver::current();
    if (parser->setTuningFile(path) != 0 || parser->getDeviceData() == nullptr) {
        KORVA_LOGE(kStoreLogTag, "Spatializer Tuning XML parses error!");
        if (observer != nullptr) {
            observer->onLoadEnd();
        }
        return;
    }
    if (observer != nullptr) {
        observer->onParsed(*parser);
    }
    const OrderedRecords records(*parser->getDeviceData());
    const RecordIndex index(records);

    // The speaker's tuning is the one bound to the device selected for the speaker port. Nothing
    // selects one before loading, so the lookup files an empty selection for the port; a binding
    // without a device id then serves the speaker.
    SpeakerValues speaker;
    const std::string speakerDevice = mSelectedTuningDevices[DEVICE_INTERNAL_SPEAKER];
    const DeviceTuning* speakerBinding = findBinding(records.deviceTunings, speakerDevice);
    const Tuning* speakerTuning = speakerBinding != nullptr
                                      ? findTuning(records.tunings, speakerBinding->getTuning())
                                      : nullptr;
    if (speakerTuning != nullptr) {
        speaker.mixMatrix = storedValues(*speakerTuning, OUTPUT_MIX_MATRIX);
        speaker.vbMode = storedValues(*speakerTuning, VIRTUAL_BASS_MODE);
        mTuningParamValue = firstValueOf(*speakerTuning, OUTPUT_CHANNELS);
    }
    if (observer != nullptr) {
        observer->onSpeakerTuning(speakerBinding, speakerTuning);
    }
    if (speaker.mixMatrix.empty()) {
        KORVA_LOGD(kStoreLogTag, "use the default mix matrix");
        speaker.mixMatrix = kDefaultMixMatrix;
        if (observer != nullptr) {
            observer->onLoaderDefault(LoaderDefault::kMixMatrix);
        }
    }
    if (speaker.vbMode.empty()) {
        KORVA_LOGD(kStoreLogTag, "use the default vb mode");
        speaker.vbMode = kDefaultVbMode;
        if (observer != nullptr) {
            observer->onLoaderDefault(LoaderDefault::kVbMode);
        }
    }

    ParameterTranslator translator;
    IeqTranslation ieqTranslation;

    for (Profile* profile : records.profiles) {
        const int id = profile->getProfileId();
        static const std::string kNoDevice;
        const BlobKey key{false, id, kNoDevice};
        if (observer != nullptr) {
            observer->onBlobBegin(key);
        }
        SetParamCommand cmd(kOutputDeviceAll);
        translator.setSource(profile, ENDPOINT_OTHER, false);
        cmd.setDeviceId(kOutputDeviceAll);
        translator.translateAll(cmd);

        GeqPreset* geq = RecordIndex::find(index.firstGeqPreset, id);
        if (geq != nullptr) {
            translator.setSource(geq, ENDPOINT_OTHER, false);
            cmd.setDeviceId(kOutputDeviceAll);
            translator.translateAll(cmd);
            mProfileGeqGains.emplace(id, storedValues(*geq, GEQ_GAIN));
        } else {
            missingPartner(MissingPartner::kGeqPreset, profile, nullptr);
        }

        for (ProfileEndpoint* endpoint : RecordIndex::find(index.profileEndpoints, id)) {
            writeByLoader(*endpoint, VIRTUAL_BASS_MODE, speaker.vbMode, ValueSource::kLoaderVbMode);
            const Endpoint type = endpoint->getEndpoint();
            translator.setSource(endpoint, type, false);
            ieqTranslation.select(
                RecordIndex::find(index.firstIeqPreset, endpoint->getSelectedIeqPreset()), type,
                *endpoint);
            if (type == ENDPOINT_HEADPHONE) {
                // The file's headphone values serve Bluetooth and USB outputs; wired headphones
                // keep the built-in ones.
                writeByLoader(*endpoint, ORIENTATION, kHeadphoneOrientation,
                              ValueSource::kLoaderOrientation);
                for (int device : kA2dpUsbDevices) {
                    cmd.setDeviceId(device);
                    ieqTranslation.translateAll(cmd);
                    translator.translateAll(cmd);
                }
            } else if (type == ENDPOINT_SPEAKER) {
                cmd.setDeviceId(kOutputDeviceSpeaker);
                writeByLoader(*endpoint, ORIENTATION, kSpeakerOrientation,
                              ValueSource::kLoaderOrientation);
                writeByLoader(*endpoint, OUTPUT_MIX_MATRIX, speaker.mixMatrix,
                              ValueSource::kLoaderMixMatrix);
                ieqTranslation.translateAll(cmd);
                translator.translateAll(cmd);
            } else {
                missingPartner(MissingPartner::kEndpointOther, endpoint, nullptr);
            }
        }

        std::vector<int> blob = blobOf(cmd);
        KORVA_LOGD(kStoreLogTag, "Profile %d, numParameters = %d", id, cmd.mCount);
        // A second profile with the same id is counted but does not replace the first.
        const auto [slot, stored] = mXMLProfileParams.try_emplace(id, std::move(blob));
        if (observer != nullptr) {
            // Not moved from when the id had its blob already.
            observer->onBlobFiled(key, stored ? slot->second : blob,
                                  stored ? BlobFate::kStored : BlobFate::kDropped);
        }
        mXMLProfileCount++;
    }

    for (Tuning* tuning : records.tunings) {
        const std::string name = tuning->getName();
        for (DeviceTuning* deviceTuning : RecordIndex::find(index.deviceTunings, name)) {
            const std::string device = deviceTuning->getDevice();
            const std::string port = deviceTuning->getPort();
            // A port the store does not know is filed with no device bit.
            const int deviceBit = kPortNameToDevice[port];
            if (deviceBit == 0) {
                missingPartner(MissingPartner::kPortDevice, tuning, deviceTuning);
            }
            const BlobKey key{true, 0, device};
            if (observer != nullptr) {
                observer->onBlobBegin(key);
            }

            SetParamCommand cmd(kOutputDeviceAll);
            translator.setSource(tuning, tuning->getEndpoint(), false);
            cmd.setDeviceId(deviceBit);
            translator.translateAll(cmd);
            std::vector<int> blob = blobOf(cmd);
            KORVA_LOGD(kStoreLogTag, "Tuning id(%s), tuningName(%s) numParameters = %d",
                       device.c_str(), name.c_str(), cmd.mCount);
            if (observer != nullptr) {
                observer->onBlobFiled(
                    key, blob,
                    mXMLTuningParams.count(device) > 0 ? BlobFate::kReplaced : BlobFate::kStored);
            }
            mXMLTuningParams[device] = std::move(blob);
            mXMLTuningCount++;
            mTuningDevicePorts[device] = port;
            fileMixMatrix(device, *tuning, mTuningMixMatrices, mDefaultMixMatrixLength);
        }
    }

    if (observer != nullptr) {
        // Bindings whose tuning name no tuning has are never reached by the walk above.
        std::set<std::string> names;
        for (const Tuning* tuning : records.tunings) {
            names.insert(tuning->getName());
        }
        for (const DeviceTuning* binding : records.deviceTunings) {
            if (names.count(binding->getTuning()) == 0) {
                observer->onPartnerMissing(MissingPartner::kTuning, nullptr, binding);
            }
        }
    }
    checkDefaultTuningDevices();
    if (observer != nullptr) {
        observer->onLoadEnd();
    }
}

}  // namespace korva
