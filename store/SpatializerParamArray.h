// The process-wide store of spatializer parameters. Created on first use, it picks the tuning
// file from system properties, turns it into parameter blobs, restores the user's graphic-EQ
// gains, and then answers every effect instance: built-in default blobs per profile, blobs from
// the tuning file per profile and per tuning device, tuning devices per output port and the
// user's gains. Everything stays in memory for the life of the process.
#pragma once

#include <cutils/properties.h>
#include <utils/KeyedVector.h>
#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <map>
#include <string>
#include <vector>

#include "store/KrvSpatializerProfileId.h"

namespace korva {

class SpatializerParamArray : public android::Singleton<SpatializerParamArray> {
public:
    // Built-in default blobs, one per profile plus the common parameters (blob layout of
    // SpatializerParamParser; the header word is the profile id).
    static constexpr int kProfileTableWords = 117;
    static constexpr int kCommonTableWords = 456;
    static const int mCommonParams[kCommonTableWords];
    static const int mDynamicProfileParams[kProfileTableWords];
    static const int mMovieProfileParams[kProfileTableWords];
    static const int mMusicProfileParams[kProfileTableWords];
    static const int mCustomProfileParams[kProfileTableWords];
    static const int mCinemaProfileParams[kProfileTableWords];

    // Built-in tables. Copies the table of `id` into `dst` (getProfileParamsSize bytes; nothing
    // for an unknown id). Returns 0, or -EINVAL for a null `dst`.
    int getProfileParams(KrvSpatializerProfileId id, void* dst);
    unsigned int getProfileParamsSize(KrvSpatializerProfileId id);

    // Blobs built from the tuning file per profile. The getter inserts an empty blob for an
    // unknown id, so ask isXMLProfileValid first. References stay valid for the store's life.
    bool isXMLProfileValid(int id);
    std::vector<int>& getXMLProfileParams(int id);

    std::string getXmlPath();

    // Tuning devices per port. A port indexes kAndroidDeviceNames.
    bool isXMLTuningValid(std::string name);
    std::vector<int>& getXMLTuningParams(std::string name);
    unsigned int getAvailableTuningDevicesLen(int port);
    std::string getAvailableTuningDevices(int port);
    std::string getSelectedTuningDevice(int port);
    int setSelectedTuningDevice(int port, std::string device);
    // Takes no lock: meant for when the tables no longer change, i.e. after loading.
    bool isValidTuningDevice(int port, std::string device);
    const std::vector<int>& getXMLTuningMixMatrix(std::string device);

    // User graphic-EQ gains per profile, in 1/16 dB per band.
    void restoreUserGEQ();
    std::vector<int>& getProfileGeqGains(KrvSpatializerProfileId id);
    int setProfileGeqGains(KrvSpatializerProfileId id, std::vector<int>& gains);

    void loadSpatializerXMLFile(std::string path);

private:
    friend class android::Singleton<SpatializerParamArray>;
    // The effect parameter cache reads and sets the profile and tuning state directly.
    friend class SpatializerParamCache;
    // Lets tests fill and inspect the tables without a tuning file.
    friend class SpatializerParamArrayTestPeer;

    SpatializerParamArray();

    // The kAndroidDeviceNames name of `port`, or null (reported for `caller`) when the port is
    // outside that table.
    static const char* portName(int port, const char* caller);

    // Refuses every tuning when a preselected default device is missing for its port.
    // The caller holds mLock.
    void checkDefaultTuningDevices();

    android::DefaultKeyedVector<KrvSpatializerProfileId, const int*> mProfileParamsMap;
    android::DefaultKeyedVector<KrvSpatializerProfileId, unsigned int> mProfileParamsSizeMap;
    android::Mutex mLock;
    int mCurrentProfileId;
    std::map<int, std::vector<int>> mXMLProfileParams;
    int mXMLProfileCount;
    std::map<std::string, std::vector<int>> mXMLTuningParams;
    // 0 means no usable tuning.
    int mXMLTuningCount;
    // Output channels of the speaker tuning.
    int mTuningParamValue;
    // Tuning device name -> name of the port it serves.
    std::map<std::string, std::string> mTuningDevicePorts;
    // Port -> selected tuning device name.
    std::map<int, std::string> mSelectedTuningDevices;
    std::map<int, std::vector<int>> mProfileGeqGains;
    std::map<std::string, std::vector<int>> mTuningMixMatrices;
    int mDefaultMixMatrixLength;
    char mProductName[PROPERTY_VALUE_MAX];
    char mSmartPaType[128];
};

}  // namespace korva
