// The persisted user graphic-EQ gains are a property that other components, and anything with
// property access, can write. This target feeds arbitrary text through restoreUserGEQ in both
// quantisation modes and checks what ends up stored: either the gains that were there, or twenty
// values that the mode can produce.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "platform/LocalProperties.h"
#include "store/SpatializerParamArray.h"

namespace {

constexpr int kProfiles[] = {0, 1, 2, 3, 4};
// Ten gains quantised within +-6 dB, in 1/16 dB, less their mean.
constexpr int kAdjustedLimit = 2 * 6 * 16;

const char* const kProductNames[] = {"unknown", "talve", "talve_d", "talvex"};

bool isRawMode(bool featureBit, const std::string& product) {
    if (!featureBit) {
        return false;
    }
    return product.compare(0, 5, "talve") != 0 || product.compare(0, 7, "talve_d") == 0;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    korva::fuzz::quietLog();
    korva::fuzz::setLogLevel(2);
    // Constructed once, with no tuning file: the gains below are set by hand.
    android::Singleton<korva::SpatializerParamArray>::getInstance();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    korva::fuzz::InputCursor input(data, size);
    uint8_t mode = input.takeByte();
    bool featureBit = (mode & 1) != 0;
    std::string product = kProductNames[(mode >> 1) & 3];
    std::string text(reinterpret_cast<const char*>(input.data()), input.size());

    korva::setLocalProperty("ro.vendor.audio.effect.eq.featuremask", featureBit ? "1" : "0");
    korva::setLocalProperty("ro.product.name", product);
    korva::setLocalProperty("persist.vendor.audio.sfx.hd.eq", text);

    korva::SpatializerParamArray& store =
        android::Singleton<korva::SpatializerParamArray>::getInstance();
    const std::vector<int> before = {7, 7, 7};
    for (int id : kProfiles) {
        std::vector<int> gains = before;
        store.setProfileGeqGains(static_cast<korva::KrvSpatializerProfileId>(id), gains);
    }

    store.restoreUserGEQ();

    bool raw = isRawMode(featureBit, product);
    std::vector<int> first;
    for (int id : kProfiles) {
        const std::vector<int>& gains =
            store.getProfileGeqGains(static_cast<korva::KrvSpatializerProfileId>(id));
        if (gains == before) {
            // Left alone: then every profile is.
            if (!first.empty()) {
                abort();
            }
            continue;
        }
        if (gains.size() != 20 || (!first.empty() && gains != first) ||
            (id != kProfiles[0] && first.empty())) {
            abort();
        }
        for (int gain : gains) {
            if (!raw && (gain < -kAdjustedLimit || gain > kAdjustedLimit)) {
                abort();
            }
        }
        first = gains;
    }
    return 0;
}
