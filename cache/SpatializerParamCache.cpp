#include "cache/SpatializerParamCache.h"

#include <android/log.h>
#include <utils/Mutex.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "engine/EffectParamParser.h"
#include "engine/VexParamStore.h"
#include "model/OutputDevice.h"
#include "model/Parameter.h"
#include "observer/DeliveryObserver.h"
#include "store/LogLevel.h"
#include "store/SpatializerParamParser.h"
#include "translator/GeqLayout.h"
#include "translator/VexParameter.h"

namespace korva {

namespace {

constexpr const char* kTag = "KrvSpatializerParamCache";
constexpr int kSpeakerPort = DEVICE_INTERNAL_SPEAKER;

// The ports whose tuning devices the effect may switch.
const std::set<int> kTuningPorts = {DEVICE_HEADPHONE, DEVICE_BLUETOOTH, DEVICE_USB};

const int32_t kDomCode = vexParameterCode(DOM);
const int32_t kGebsCode = vexParameterCode(GEBS);
const int32_t kDsoeCode = vexParameterCode(DSOE);
const int32_t kVbonCode = vexParameterCode(VBON);

SpatializerParamArray& store() {
    return android::Singleton<SpatializerParamArray>::getInstance();
}

// The per-entry traces of one operation. The level is read once when the operation starts, not
// per entry: a property read costs more than sending an entry to the effect.
class EntryTracer {
public:
    explicit EntryTracer(const char* function)
        : mFunction(function), mEnabled(isLogLevelAtLeast(kLogLevelTrace)) {}

    void trace(const EffectParamParser& parser) const {
        if (mEnabled) {
            __android_log_print(
                ANDROID_LOG_VERBOSE, kTag, "%s() deviceId=%d, param=%s, paramLength=%d", mFunction,
                parser.mDeviceId, vexParameterText(parser.mParamId).c_str(), parser.mNumValues);
        }
    }

private:
    const char* mFunction;
    bool mEnabled;
};

// Tells the thread's delivery listener, if there is one, what the calls that follow carry. Made
// once per operation: with nobody listening, each report is a test of a null pointer, and
// without the report built in, nothing.
class DeliveryReport {
public:
    DeliveryReport() : mObserver(DeliveryObserver::current()) {}

    void blob(DeliveredBlob blob, int profileId, const std::string& device = noDevice()) const {
        if (kLoadReport && mObserver != nullptr) {
            mObserver->onBlob(blob, profileId, device);
        }
    }
    void entry(int index, Delivery how, int profileId = 0,
               const std::string& device = noDevice()) const {
        if (kLoadReport && mObserver != nullptr) {
            mObserver->onEntry(index, how, profileId, device);
        }
    }
    void effectValues(Delivery how, int profileId, const std::string& device = noDevice()) const {
        if (kLoadReport && mObserver != nullptr) {
            mObserver->onEffectValues(how, profileId, device);
        }
    }

private:
    static const std::string& noDevice() {
        static const std::string sNone;
        return sNone;
    }

    DeliveryObserver* mObserver;
};

void sendEntry(IEffectKrv* effect, const EffectParamParser& parser) {
    effect->setParam(parser.mDeviceId, parser.mParamId, parser.mValues, parser.mNumValues);
}

bool checkEffect(const char* function, IEffectKrv* effect) {
    if (effect == nullptr) {
        KORVA_LOGE(kTag, "%s(): no effect to send to", function);
        return false;
    }
    return true;
}

// A buffer for the effect's mix-matrix parameter. The store gives the length of its default
// matrix plus 2; one more word holds the whole built-in speaker parameter.
std::vector<int> mixMatrixBuffer(int defaultMixMatrixLength) {
    return std::vector<int>(std::max(defaultMixMatrixLength + 1, 1), 0);
}

// A count reported by the effect, kept within the buffer it describes so that sending the
// buffer back never reads past its end.
int clampCount(int count, const std::vector<int>& buffer) {
    return std::clamp(count, 0, static_cast<int>(buffer.size()));
}

// Reads a blob that the store built from the tuning file. Its length is its whole words.
EffectParamParser blobParser(std::vector<int>& blob) {
    return EffectParamParser(blob.data(), static_cast<int>(blob.size() * sizeof(int)));
}

}  // namespace

SpatializerParamCache::StoreState SpatializerParamCache::readStoreState(SpatializerParamArray& array) {
    android::Mutex::Autolock lock(array.mLock);
    return {array.mCurrentProfileId, array.mXMLTuningCount, array.mTuningParamValue,
            array.mDefaultMixMatrixLength};
}

void SpatializerParamCache::setProfile(KrvSpatializerProfileId id) {
    KORVA_LOGD(kTag, "%s(profile=%d)", __func__, id);
    SpatializerParamArray& array = store();
    android::Mutex::Autolock lock(array.mLock);
    array.mCurrentProfileId = id;
}

std::vector<int> SpatializerParamCache::copyProfileGeqGains(SpatializerParamArray& array,
                                                            int profile) {
    // Copied under the store's lock: another effect instance may replace these gains meanwhile,
    // and the store's getter hands out a reference that is read after its lock is released.
    android::Mutex::Autolock lock(array.mLock);
    return array.mProfileGeqGains[profile];
}

std::vector<int> SpatializerParamCache::getProfileGeqGains() {
    SpatializerParamArray& array = store();
    return copyProfileGeqGains(array, readStoreState(array).currentProfileId);
}

bool SpatializerParamCache::isTuningAvailable() {
    return readStoreState(store()).xmlTuningCount > 0;
}

bool SpatializerParamCache::isValidPort(int port) {
    return kTuningPorts.count(port) != 0;
}

int SpatializerParamCache::setKorvaContentProfile(KrvSpatializerProfileId id, IEffectKrv* effect) {
    if (!checkEffect(__func__, effect)) {
        return -EINVAL;
    }
    SpatializerParamArray& array = store();
    unsigned int size = array.getProfileParamsSize(id);
    std::vector<int> blob((size + sizeof(int) - 1) / sizeof(int), 0);
    array.getProfileParams(id, blob.data());

    SpatializerParamParser parser(blob.data(), static_cast<int>(size));
    if (!parser.validate()) {
        KORVA_LOGE(kTag, "%s() Invalid data for profile parameter values.", __func__);
        return -EINVAL;
    }
    const StoreState state = readStoreState(array);
    // A speaker with more than two output channels has its mix matrix from its tuning device.
    const bool tunedSpeakerMatrix = state.tuningParamValue >= 3 && state.xmlTuningCount >= 1;
    const DeliveryReport report;
    report.blob(DeliveredBlob::kBuiltinProfile, id);
    int entry = 0;
    parser.forEachEntry([&] {
        const int index = entry++;
        if (!tunedSpeakerMatrix || parser.mDeviceId != kOutputDeviceSpeaker ||
            parser.mParamId != kDomCode) {
            report.entry(index, Delivery::kAsIs);
            effect->setParam(parser.mDeviceId, parser.mParamId, parser.mValues, parser.mNumValues);
            return;
        }
        // Keep the effect's matrix; only make sure that it is switched on.
        KORVA_LOGD(kTag, "%s(): Hardcoded dom parameter values skipped", "setKorvaContentProfile");
        report.entry(index, Delivery::kEffectMatrixOn);
        std::vector<int> dom = mixMatrixBuffer(state.defaultMixMatrixLength);
        int count = static_cast<int>(dom.size());
        if (effect->getParam(kOutputDeviceSpeaker, kDomCode, dom.data(), &count) == 0 &&
            dom[0] == 0) {
            dom[0] = 1;
            effect->setParam(kOutputDeviceSpeaker, kDomCode, dom.data(), clampCount(count, dom));
        }
    });
    return effect->commit(kOutputDeviceAll);
}

int SpatializerParamCache::updateContentProcEnabled(IEffectKrv* effect, bool isContentProcEnabled,
                                                    bool isKorvaContentWithMcc) {
    if (!checkEffect(__func__, effect)) {
        return -EINVAL;
    }
    SpatializerParamArray& array = store();
    const StoreState state = readStoreState(array);
    KORVA_LOGD(kTag, "%s(profile=%d, isContentProcEnabled=%d, isKorvaContentWithMcc=%d)", __func__,
               state.currentProfileId, isContentProcEnabled, isKorvaContentWithMcc);

    int result = 0;
    if (array.isXMLProfileValid(state.currentProfileId)) {
        EffectParamParser parser = blobParser(array.getXMLProfileParams(state.currentProfileId));
        if (!parser.validate()) {
            KORVA_LOGE(kTag, "%s() Invalid data for setting parameter values.", __func__);
            return -EINVAL;
        }
        const bool hasTunings = state.xmlTuningCount >= 1;
        const EntryTracer tracer(__func__);
        const DeliveryReport report;
        report.blob(DeliveredBlob::kFileProfile, state.currentProfileId);
        parser.begin();
        for (int index = 0; parser.next(); index++) {
            tracer.trace(parser);
            const int device = parser.mDeviceId;
            const int code = parser.mParamId;

            if (code == kDsoeCode || code == kVbonCode) {
                // Speaker optimisation and virtual bass come with the tuning devices; without
                // them the effect keeps its own.
                if (hasTunings) {
                    report.entry(index, Delivery::kAsIs);
                    sendEntry(effect, parser);
                }
            } else if (code == kGebsCode) {
                if (parser.mNumValues == kGeqWords) {
                    // The tuning's bands with the user's gains of this profile.
                    std::vector<int> geq(parser.mValues, parser.mValues + kGeqWords);
                    // The gains of the profile this blob belongs to, even if another effect
                    // instance has switched the current profile since.
                    std::vector<int> gains = copyProfileGeqGains(array, state.currentProfileId);
                    std::copy_n(gains.begin(), std::min<size_t>(gains.size(), kGeqBands),
                                geq.begin() + kGeqGainsOffset);
                    report.entry(index, Delivery::kUserGeqGains, state.currentProfileId);
                    effect->setParam(device, code, geq.data(), kGeqWords);
                }
            } else if (isContentProcEnabled && hasTunings && device == kOutputDeviceSpeaker &&
                       code == kDomCode && state.tuningParamValue > 2) {
                const std::string speaker = array.getSelectedTuningDevice(kSpeakerPort);
                const std::vector<int>& matrix = array.getXMLTuningMixMatrix(speaker);
                if (matrix.empty()) {
                    report.entry(index, Delivery::kAsIs);
                    sendEntry(effect, parser);
                } else {
                    report.entry(index, Delivery::kTuningMixMatrix, 0, speaker);
                    // The entry's own count goes with the tuning's matrix, as the effect expects;
                    // the buffer covers both so that neither reaches past it.
                    size_t length = std::max(matrix.size() + 1,
                                             static_cast<size_t>(std::max(parser.mNumValues, 0)));
                    std::vector<int> dom(length, 0);
                    dom[0] = parser.mNumValues > 0 ? parser.mValues[0] : 0;
                    std::copy(matrix.begin(), matrix.end(), dom.begin() + 1);
                    effect->setParam(device, code, dom.data(), parser.mNumValues);
                }
            } else if (VexParamStore::isDeviceProcParamInProfile(code)) {
                report.entry(index, Delivery::kAsIs);
                sendEntry(effect, parser);
            } else if (isKorvaContentWithMcc) {
                // Multichannel content: the built-in blobs sent below decide the rest.
            } else if (isContentProcEnabled) {
                report.entry(index, Delivery::kAsIs);
                sendEntry(effect, parser);
            } else if (code == kDomCode) {
                // Switching off keeps the effect's matrix and only disables it.
                report.entry(index, Delivery::kEffectMatrixOff);
                std::vector<int> dom = mixMatrixBuffer(state.defaultMixMatrixLength);
                int count = static_cast<int>(dom.size());
                effect->getParam(device, code, dom.data(), &count);
                dom[0] = 0;
                effect->setParam(device, code, dom.data(), clampCount(count, dom));
            } else if (VexParamStore::isContentProcDisableParam(code)) {
                const int off = 0;
                report.entry(index, Delivery::kSwitchedOff);
                effect->setParam(device, code, &off, 1);
            }
        }
        result = effect->commit(kOutputDeviceAll);
    }

    if (isKorvaContentWithMcc) {
        setKorvaContentProfile(PROFILE_COMMON, effect);
        // The profile read when the operation began: re-reading it could pair another instance's
        // profile with this one's update.
        setKorvaContentProfile(static_cast<KrvSpatializerProfileId>(state.currentProfileId), effect);
    }
    return result;
}

int SpatializerParamCache::loadTuning(IEffectKrv* effect) {
    KORVA_LOGD(kTag, "%s", __func__);
    int result = 0;
    for (int port : kTuningPorts) {
        result = loadTuningDevice(store().getSelectedTuningDevice(port), effect);
    }
    return result;
}

int SpatializerParamCache::loadTuningDevice(std::string device, IEffectKrv* effect) {
    KORVA_LOGD(kTag, "%s(%s)", __func__, device.c_str());
    if (!checkEffect(__func__, effect)) {
        return -EINVAL;
    }
    SpatializerParamArray& array = store();
    if (!array.isXMLTuningValid(device)) {
        return -EINVAL;
    }
    EffectParamParser parser = blobParser(array.getXMLTuningParams(device));
    if (!parser.validate()) {
        return -EINVAL;
    }
    const EntryTracer tracer(__func__);
    const DeliveryReport report;
    report.blob(DeliveredBlob::kTuningDevice, 0, device);
    parser.begin();
    for (int index = 0; parser.next(); index++) {
        tracer.trace(parser);
        report.entry(index, Delivery::kAsIs);
        sendEntry(effect, parser);
    }
    return effect->commit(kOutputDeviceAll);
}

int SpatializerParamCache::setSelectedTuningDevice(int port, std::string device,
                                                   IEffectKrv* effect) {
    KORVA_LOGD(kTag, "%s(port=%s, device=%s)", __func__, androidDeviceName(port), device.c_str());
    if (!checkEffect(__func__, effect)) {
        return -EINVAL;
    }
    SpatializerParamArray& array = store();
    if (array.getSelectedTuningDevice(port) == device) {
        return 0;
    }
    int result = array.setSelectedTuningDevice(port, device);
    if (result != 0) {
        return result;
    }
    const StoreState state = readStoreState(array);
    if (port == kSpeakerPort && state.tuningParamValue > 2) {
        std::vector<int> dom = mixMatrixBuffer(state.defaultMixMatrixLength);
        int count = static_cast<int>(dom.size());
        DeliveryReport().effectValues(Delivery::kTuningMixMatrix, 0, device);
        if (effect->getParam(kOutputDeviceSpeaker, kDomCode, dom.data(), &count) == 0) {
            const std::vector<int>& matrix = array.getXMLTuningMixMatrix(device);
            if (!matrix.empty()) {
                KORVA_LOGD(kTag, "%s(): Update the mix matrix with tuning %s", __func__,
                           device.c_str());
                // The effect's first word, the matrix switch, stays as it is.
                dom.resize(std::max(dom.size(), matrix.size() + 1), 0);
                std::copy(matrix.begin(), matrix.end(), dom.begin() + 1);
                effect->setParam(kOutputDeviceSpeaker, kDomCode, dom.data(),
                                 static_cast<int>(matrix.size() + 1));
            }
        }
    }
    return loadTuningDevice(device, effect);
}

int SpatializerParamCache::setProfileGeqGains(std::vector<int>& gains, IEffectKrv* effect) {
    SpatializerParamArray& array = store();
    auto profile = static_cast<KrvSpatializerProfileId>(readStoreState(array).currentProfileId);
    array.setProfileGeqGains(profile, gains);
    if (!checkEffect(__func__, effect)) {
        return -EINVAL;
    }
    std::vector<int> geq(kGeqWords, 0);
    int count = kGeqWords;
    DeliveryReport().effectValues(Delivery::kUserGeqGains, profile);
    if (effect->getParam(kOutputDeviceAll, kGebsCode, geq.data(), &count) == 0 &&
        count == kGeqWords) {
        std::copy_n(gains.begin(), std::min<size_t>(gains.size(), kGeqBands),
                    geq.begin() + kGeqGainsOffset);
        effect->setParam(kOutputDeviceAll, kGebsCode, geq.data(), kGeqWords);
        return effect->commit(kOutputDeviceAll);
    }
    KORVA_LOGE(kTag, "%s(): could not get proper GEQ parameters!", __func__);
    return -EINVAL;
}

}  // namespace korva
