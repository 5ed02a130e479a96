#include "engine/VexParamStore.h"

#include <cstring>
#include <string>

ANDROID_SINGLETON_STATIC_INSTANCE(VexParamStore);

namespace {

// Packs a parameter name as the engine does: lower case, first character in the low byte.
constexpr int code(const char (&name)[5]) {
    return (name[0] | 0x20) | ((name[1] | 0x20) << 8) | ((name[2] | 0x20) << 16) |
           (name[3] == 0 ? 0 : (name[3] | 0x20) << 24);
}
constexpr int code(const char (&name)[4]) {
    return (name[0] | 0x20) | ((name[1] | 0x20) << 8) | ((name[2] | 0x20) << 16);
}

// The on/off switches of content processing: dialog enhancer, volume leveler, intelligent and
// graphic equalisers, surround decoder, virtual bass.
std::set<int> defaultContentProcDisableParams() {
    return {code("DEON"), code("DVLE"), code("IEON"), code("GEON"), code("NGON"), code("VBON")};
}

// Device-level processing that stays in a profile whatever the content: audio optimiser,
// regulator, bass enhancer, complex equaliser, bass multiband compressor, speaker optimisation.
std::set<int> defaultDeviceProcParamsInProfile() {
    return {code("AOON"), code("AOBS"), code("ARON"), code("ARDS"), code("ARDE"), code("AROD"),
            code("ARTP"), code("ARBS"), code("ARTI"), code("ARSA"), code("BEON"), code("BEB"),
            code("BECF"), code("BEW"),  code("CEON"), code("CEQT"), code("BMDE"), code("BMDT"),
            code("DSOE"), code("DSOA"), code("DSOI")};
}

android::Mutex sClassLock;
std::set<int>& contentProcDisableParams() {
    static std::set<int> codes = defaultContentProcDisableParams();
    return codes;
}
std::set<int>& deviceProcParamsInProfile() {
    static std::set<int> codes = defaultDeviceProcParamsInProfile();
    return codes;
}

}  // namespace

VexParamStore::VexParamStore() {}

int VexParamStore::setParam(audio_devices_t device, int param, const int* values, int count) {
    android::Mutex::Autolock lock(mLock);
    std::vector<int>& stored = mParams[{device, param}];
    if (values == nullptr || count <= 0) {
        stored.clear();
    } else {
        stored.assign(values, values + count);
    }
    return 0;
}

int VexParamStore::commitChange() {
    android::Mutex::Autolock lock(mLock);
    mCommitCount++;
    return 0;
}

bool VexParamStore::isContentProcDisableParam(int code) {
    android::Mutex::Autolock lock(sClassLock);
    return contentProcDisableParams().count(code) != 0;
}

bool VexParamStore::isDeviceProcParamInProfile(int code) {
    android::Mutex::Autolock lock(sClassLock);
    return deviceProcParamsInProfile().count(code) != 0;
}

bool VexParamStore::hasParam(audio_devices_t device, int param) {
    android::Mutex::Autolock lock(mLock);
    return mParams.count({device, param}) != 0;
}

std::vector<int> VexParamStore::getParam(audio_devices_t device, int param) {
    android::Mutex::Autolock lock(mLock);
    auto it = mParams.find({device, param});
    return it == mParams.end() ? std::vector<int>() : it->second;
}

size_t VexParamStore::paramCount() {
    android::Mutex::Autolock lock(mLock);
    return mParams.size();
}

int VexParamStore::commitCount() {
    android::Mutex::Autolock lock(mLock);
    return mCommitCount;
}

void VexParamStore::clear() {
    android::Mutex::Autolock lock(mLock);
    mParams.clear();
    mCommitCount = 0;
}

void VexParamStore::setContentProcDisableParams(const std::set<int>& codes) {
    android::Mutex::Autolock lock(sClassLock);
    contentProcDisableParams() = codes;
}

void VexParamStore::setDeviceProcParamsInProfile(const std::set<int>& codes) {
    android::Mutex::Autolock lock(sClassLock);
    deviceProcParamsInProfile() = codes;
}

void VexParamStore::resetParamClasses() {
    android::Mutex::Autolock lock(sClassLock);
    contentProcDisableParams() = defaultContentProcDisableParams();
    deviceProcParamsInProfile() = defaultDeviceProcParamsInProfile();
}
