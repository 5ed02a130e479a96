// The user's graphic-EQ gains. Another component of the device persists ten band gains in dB;
// the effect works on twenty bands in 1/16 dB, relative to their mean unless the product keeps
// the user's values as they are.

#include <cutils/properties.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>

#include "store/LogLevel.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {

namespace {

constexpr const char* kNoUserGains = "000";
constexpr size_t kUserBands = 10;
constexpr float kMaxUserGainDb = 6.0f;

// Products whose gains stay raw when the feature bit is set: any name not starting with
// "talve", and the "talve_d" family. Only the leading characters count, on purpose.
bool keepsRawGains(const char* productName) {
    return strncmp(productName, "talve", 5) != 0 || strncmp(productName, "talve_d", 7) == 0;
}

bool useRawGains() {
    char mask[PROPERTY_VALUE_MAX] = {};
    property_get(kEqFeatureMaskProperty, mask, "0");
    if ((atoi(mask) & 1) == 0) {
        return false;
    }
    char productName[PROPERTY_VALUE_MAX] = {};
    property_get(kProductNameProperty, productName, "unknown");
    return keepsRawGains(productName);
}

// Numbers one after another, each optionally followed by one comma or space; stops at the
// first text that is not a number.
std::vector<float> parseGains(const char* text) {
    std::vector<float> gains;
    std::istringstream in(text);
    float gain;
    while (in >> gain) {
        gains.push_back(gain);
        int separator = in.peek();
        if (separator == ',' || separator == ' ') {
            in.get();
        }
    }
    return gains;
}

// Onto a 0.5 dB grid within +-6 dB.
float quantise(float gain) {
    if (gain <= -kMaxUserGainDb) {
        return -kMaxUserGainDb;
    }
    if (gain >= kMaxUserGainDb) {
        return kMaxUserGainDb;
    }
    float whole = floorf(gain);
    float fraction = gain - whole;
    if (fraction < 0.25f) {
        return whole;
    }
    if (fraction <= 0.75f) {
        return whole + 0.5f;
    }
    return whole + 1.0f;
}

// dB to 1/16 dB, truncated toward zero. Raw gains are not bounded, so values beyond the int
// range saturate instead of overflowing the conversion.
int toSixteenths(float gainDb) {
    float scaled = gainDb * 16.0f;
    if (scaled >= 2147483648.0f) {
        return std::numeric_limits<int>::max();
    }
    if (scaled <= -2147483648.0f) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(scaled);
}

// Ten bands to twenty: each user band followed by the midpoint to the next, the last band twice.
std::vector<int> expandToTwentyBands(const std::vector<float>& gains) {
    std::vector<int> bands;
    bands.reserve(2 * kUserBands);
    for (size_t i = 0; i + 1 < kUserBands; i++) {
        bands.push_back(toSixteenths(gains[i]));
        bands.push_back(toSixteenths((gains[i] + gains[i + 1]) * 0.5f));
    }
    bands.push_back(toSixteenths(gains[kUserBands - 1]));
    bands.push_back(toSixteenths(gains[kUserBands - 1]));
    return bands;
}

// Only used on quantised gains, whose sum is far from overflowing.
void subtractMean(std::vector<int>& bands) {
    int sum = 0;
    for (int band : bands) {
        sum += band;
    }
    int mean = sum / static_cast<int>(bands.size());
    for (int& band : bands) {
        band -= mean;
    }
}

}  // namespace

// Runs inside construction only, under the singleton's creation lock: takes no lock itself.
void SpatializerParamArray::restoreUserGEQ() {
    char text[PROPERTY_VALUE_MAX] = {};
    property_get(kUserGainsProperty, text, kNoUserGains);
    bool raw = useRawGains();
    if (strncmp(text, kNoUserGains, strlen(kNoUserGains)) == 0) {
        return;
    }
    KORVA_LOGD(kStoreLogTag, "%s(): there're persistent user gains: %s", __func__, text);

    std::vector<float> gains = parseGains(text);
    if (gains.size() != kUserBands) {
        // 0 stands in for the count: the line is kept as integrators already know it.
        KORVA_LOGE(kStoreLogTag, "%s(): the length of user GEQ gains(%zu) is not %d!", __func__,
                   size_t{0}, static_cast<int>(kUserBands));
        return;
    }
    if (!raw) {
        for (float& gain : gains) {
            gain = quantise(gain);
        }
    }
    std::vector<int> bands = expandToTwentyBands(gains);
    if (!raw) {
        subtractMean(bands);
    }

    KORVA_LOGD(kStoreLogTag, "%s(): store the relative gains in all profiles", __func__);
    // Only profiles that the tuning file gave gains to.
    for (auto& [profile, profileGains] : mProfileGeqGains) {
        profileGains = bands;
    }
}

std::vector<int>& SpatializerParamArray::getProfileGeqGains(KrvSpatializerProfileId id) {
    android::Mutex::Autolock lock(mLock);
    return mProfileGeqGains[id];
}

int SpatializerParamArray::setProfileGeqGains(KrvSpatializerProfileId id, std::vector<int>& gains) {
    android::Mutex::Autolock lock(mLock);
    // Unchecked on purpose: the effect decides what a valid gain vector is.
    mProfileGeqGains[id] = gains;
    return 0;
}

}  // namespace korva
