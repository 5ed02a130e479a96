#include "store/SpatializerParamArray.h"

#include <cutils/properties.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "store/LogLevel.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {

namespace {

constexpr const char* kMeridaneProductName = "quenthorn";
constexpr const char* kFs19xxSmartPaType = "fs19xx";

// Host hook, compiled only into host builds: when KORVA_HOST_ROOT is set and not empty, every
// fixed tuning file path is looked up and returned below that folder, so tests and the
// workstation tool can lay out a fake /odm and /vendor. Device builds use the paths as they are.
std::string fixedPath(const char* path) {
#ifdef KORVA_HOST_BUILD
    const char* root = getenv("KORVA_HOST_ROOT");
    if (root != nullptr && root[0] != '\0') {
        return std::string(root) + path;
    }
#endif
    return path;
}

bool fileExists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

}  // namespace

SpatializerParamArray::SpatializerParamArray()
    : mProfileParamsMap(nullptr),
      mProfileParamsSizeMap(0),
      mCurrentProfileId(PROFILE_MOVIE),
      mXMLProfileCount(0),
      mXMLTuningCount(0),
      mTuningParamValue(2),
      mDefaultMixMatrixLength(0),
      mProductName{},
      mSmartPaType{} {
    property_get(kProductNameProperty, mProductName, "");
    KORVA_LOGD(kStoreLogTag, "%s(product_name = %s)", "SpatializerParamArray", mProductName);
    property_get(kSmartPaTypeProperty, mSmartPaType, "");
    KORVA_LOGD(kStoreLogTag, "smartpa_type: %s", mSmartPaType);

    mProfileParamsMap.add(PROFILE_DYNAMIC, mDynamicProfileParams);
    mProfileParamsMap.add(PROFILE_MOVIE, mMovieProfileParams);
    mProfileParamsMap.add(PROFILE_MUSIC, mMusicProfileParams);
    mProfileParamsMap.add(PROFILE_CUSTOM, mCustomProfileParams);
    mProfileParamsMap.add(PROFILE_COMMON, mCommonParams);
    mProfileParamsMap.add(PROFILE_CINEMA, mCinemaProfileParams);
    mProfileParamsSizeMap.add(PROFILE_DYNAMIC, sizeof(mDynamicProfileParams));
    mProfileParamsSizeMap.add(PROFILE_MOVIE, sizeof(mMovieProfileParams));
    mProfileParamsSizeMap.add(PROFILE_MUSIC, sizeof(mMusicProfileParams));
    mProfileParamsSizeMap.add(PROFILE_CUSTOM, sizeof(mCustomProfileParams));
    mProfileParamsSizeMap.add(PROFILE_COMMON, sizeof(mCommonParams));
    mProfileParamsSizeMap.add(PROFILE_CINEMA, sizeof(mCinemaProfileParams));

    for (Port port : kDefaultTuningPorts) {
        const char* name = portName(port, __func__);
        if (name != nullptr) {
            mSelectedTuningDevices.emplace(port, std::string("default_") + name);
        }
    }
    // The effect's "dom" also carries its enable word and the endpoint before the matrices.
    mDefaultMixMatrixLength = static_cast<int>(kDefaultMixMatrix.size()) + 2;

    loadSpatializerXMLFile(getXmlPath());
    restoreUserGEQ();
}

int SpatializerParamArray::getProfileParams(KrvSpatializerProfileId id, void* dst) {
    KORVA_LOGD(kStoreLogTag, "%s(profile = %d)", __func__, id);
    android::Mutex::Autolock lock(mLock);
    if (dst == nullptr) {
        return -EINVAL;
    }
    const int* table = mProfileParamsMap.valueFor(id);
    unsigned int size = mProfileParamsSizeMap.valueFor(id);
    if (table != nullptr && size > 0) {
        memcpy(dst, table, size);
    }
    return 0;
}

unsigned int SpatializerParamArray::getProfileParamsSize(KrvSpatializerProfileId id) {
    android::Mutex::Autolock lock(mLock);
    return mProfileParamsSizeMap.valueFor(id);
}

bool SpatializerParamArray::isXMLProfileValid(int id) {
    android::Mutex::Autolock lock(mLock);
    return mXMLProfileParams.count(id) > 0;
}

std::vector<int>& SpatializerParamArray::getXMLProfileParams(int id) {
    KORVA_LOGD(kStoreLogTag, "%s(profile = %d)", __func__, id);
    android::Mutex::Autolock lock(mLock);
    return mXMLProfileParams[id];
}

std::string SpatializerParamArray::getXmlPath() {
    std::string path = fixedPath(kDefaultOdmTuningFile);
    if (strcmp(mProductName, kMeridaneProductName) == 0) {
        path = fixedPath(kMeridaneTuningFile);
    }
    if (!fileExists(path)) {
        path = fixedPath(kDefaultVendorTuningFile);
    }
    // Devices with this amplifier always use its own file, present or not.
    if (strcmp(mSmartPaType, kFs19xxSmartPaType) == 0) {
        path = fixedPath(kFs19xxTuningFile);
    }
    KORVA_LOGD(kStoreLogTag, "%s(): using tuning file %s", __func__, path.c_str());
    return path;
}

}  // namespace korva

ANDROID_SINGLETON_STATIC_INSTANCE(korva::SpatializerParamArray)
