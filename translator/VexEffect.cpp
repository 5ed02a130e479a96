#include "translator/VexEffect.h"

#include <android/log.h>

#include "engine/EffectParamParser.h"
#include "engine/VexParamStore.h"

namespace korva {

namespace {
constexpr const char* kLogTag = "VexEffect";
}  // namespace

VexEffect::VexEffect(int, android::String16) {}

VexEffect::~VexEffect() {}

int VexEffect::send(int, std::vector<int>& data) {
    unsigned int size = static_cast<unsigned int>(data.size() * sizeof(int)) & ~3u;
    sendSharedStore(data.data(), size);
    return -22;
}

int VexEffect::sendSharedStore(void* data, unsigned int size) {
    EffectParamParser parser(data, static_cast<int>(size));
    if (!parser.validate()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "%s() Invalid data for setting parameter values.", __func__);
        return -22;
    }
    parser.begin();
    while (true) {
        bool more = parser.next();
        VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
        if (!more) {
            break;
        }
        store.setParam(static_cast<audio_devices_t>(parser.mDeviceId), parser.mParamId,
                       parser.mValues, parser.mNumValues);
    }
    android::Singleton<VexParamStore>::getInstance().commitChange();
    return 0;
}

int VexEffect::receive(int, std::vector<int>&) {
    return 0;
}

bool VexEffect::hasControl() {
    return true;
}

int VexEffect::setEnabled(bool) {
    return 0;
}

}  // namespace korva
