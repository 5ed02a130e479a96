#include "engine/VexParamStore.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "translator/VexParameter.h"

ANDROID_SINGLETON_STATIC_INSTANCE(VexParamStore);

namespace {

using korva::vexParameterCode;

// The on/off switches of content processing: dialog enhancer, volume leveler, intelligent and
// graphic equalisers, surround decoder, virtual bass.
std::set<int> defaultContentProcDisableParams() {
    return {vexParameterCode("DEON"), vexParameterCode("DVLE"), vexParameterCode("IEON"),
            vexParameterCode("GEON"), vexParameterCode("NGON"), vexParameterCode("VBON")};
}

// Device-level processing that stays in a profile whatever the content: audio optimiser,
// regulator, bass enhancer, complex equaliser, bass multiband compressor, speaker optimisation.
std::set<int> defaultDeviceProcParamsInProfile() {
    return {vexParameterCode("AOON"), vexParameterCode("AOBS"), vexParameterCode("ARON"),
            vexParameterCode("ARDS"), vexParameterCode("ARDE"), vexParameterCode("AROD"),
            vexParameterCode("ARTP"), vexParameterCode("ARBS"), vexParameterCode("ARTI"),
            vexParameterCode("ARSA"), vexParameterCode("BEON"), vexParameterCode("BEB"),
            vexParameterCode("BECF"), vexParameterCode("BEW"),  vexParameterCode("CEON"),
            vexParameterCode("CEQT"), vexParameterCode("BMDE"), vexParameterCode("BMDT"),
            vexParameterCode("DSOE"), vexParameterCode("DSOA"), vexParameterCode("DSOI")};
}

// A sorted set of codes with a 256-bit filter in front of it. Content processing switches ask
// about every entry of a profile and most codes belong to neither class: the filter turns those
// away without the branches of a search.
class CodeSet {
public:
    explicit CodeSet(const std::set<int>& codes) { assign(codes); }

    void assign(const std::set<int>& codes) {
        mCodes.assign(codes.begin(), codes.end());
        std::fill(std::begin(mFilter), std::end(mFilter), 0);
        for (int code : codes) {
            const unsigned slot = filterSlot(code);
            mFilter[slot / 64] |= uint64_t{1} << (slot % 64);
        }
    }

    bool contains(int code) const {
        const unsigned slot = filterSlot(code);
        if ((mFilter[slot / 64] & (uint64_t{1} << (slot % 64))) == 0) {
            return false;
        }
        return std::binary_search(mCodes.begin(), mCodes.end(), code);
    }

private:
    // Multiplicative hash: the top bits of the product depend on every byte of the packed name.
    static unsigned filterSlot(int code) {
        return (static_cast<uint32_t>(code) * 2654435761u) >> 24;
    }

    std::vector<int> mCodes;
    uint64_t mFilter[4] = {};
};

// The two classes are read on every delivery, from any effect thread, and replaced only by tests.
// Readers take the current snapshot without a lock; a replaced snapshot is kept until exit, since
// a reader may still be looking at it.
struct ParamClasses {
    ParamClasses(const std::set<int>& disable, const std::set<int>& inProfile)
        : contentProcDisable(disable), deviceProcInProfile(inProfile) {}

    CodeSet contentProcDisable;
    CodeSet deviceProcInProfile;
};

android::Mutex sClassLock;
std::vector<std::unique_ptr<const ParamClasses>>& classHistory() {
    static std::vector<std::unique_ptr<const ParamClasses>> history;
    return history;
}
std::atomic<const ParamClasses*>& currentClasses() {
    static std::atomic<const ParamClasses*> current = [] {
        classHistory().push_back(std::make_unique<const ParamClasses>(
            ParamClasses{defaultContentProcDisableParams(), defaultDeviceProcParamsInProfile()}));
        return classHistory().back().get();
    }();
    return current;
}

const ParamClasses& classes() {
    return *currentClasses().load(std::memory_order_acquire);
}

// Publishes a changed copy of the current classes.
template <typename Change>
void changeClasses(Change change) {
    android::Mutex::Autolock lock(sClassLock);
    auto changed = std::make_unique<ParamClasses>(classes());
    change(*changed);
    currentClasses().store(changed.get(), std::memory_order_release);
    classHistory().push_back(std::move(changed));
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
    return classes().contentProcDisable.contains(code);
}

bool VexParamStore::isDeviceProcParamInProfile(int code) {
    return classes().deviceProcInProfile.contains(code);
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
    changeClasses([&](ParamClasses& changed) { changed.contentProcDisable.assign(codes); });
}

void VexParamStore::setDeviceProcParamsInProfile(const std::set<int>& codes) {
    changeClasses([&](ParamClasses& changed) { changed.deviceProcInProfile.assign(codes); });
}

void VexParamStore::resetParamClasses() {
    changeClasses([](ParamClasses& changed) {
        changed =
            ParamClasses(defaultContentProcDisableParams(), defaultDeviceProcParamsInProfile());
    });
}
