// Host replacement of the effect engine's process-wide parameter store. The real one is a closed
// library of the engine's maker; this one keeps what it is given so that tests can read it back:
// entries by (device, parameter code), the number of commits, and two sets of parameter codes
// that the engine classifies (see the defaults in VexParamStore.cpp), which tests may replace.
#pragma once

#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#ifndef KORVA_AUDIO_DEVICES_T_DEFINED
#define KORVA_AUDIO_DEVICES_T_DEFINED
typedef uint32_t audio_devices_t;
#endif

class VexParamStore : public android::Singleton<VexParamStore> {
public:
    VexParamStore();

    int setParam(audio_devices_t device, int param, const int* values, int count);
    int commitChange();

    // Parameters that content processing switches off (set to 0) when it is disabled.
    static bool isContentProcDisableParam(int code);
    // Device-level processing that a profile carries whatever the content.
    static bool isDeviceProcParamInProfile(int code);

    // Host inspection, for tests and tools.
    bool hasParam(audio_devices_t device, int param);
    std::vector<int> getParam(audio_devices_t device, int param);
    size_t paramCount();
    int commitCount();
    void clear();

    static void setContentProcDisableParams(const std::set<int>& codes);
    static void setDeviceProcParamsInProfile(const std::set<int>& codes);
    static void resetParamClasses();

private:
    android::Mutex mLock;
    std::map<std::pair<uint32_t, int>, std::vector<int>> mParams;
    int mCommitCount = 0;
};
