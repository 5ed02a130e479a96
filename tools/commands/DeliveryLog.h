// The cache's report of what it sends, matched to the calls the recording effect records, so
// that each call names the blob entry it carries and what the cache put in its place.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/RecordingEffect.h"
#include "observer/DeliveryObserver.h"

namespace korva::tool {

// What the cache reported before a call.
struct CallSource {
    bool reported = false;  // false for commits and calls no report preceded
    bool fromBlob = false;  // false: the effect's own values, read back
    DeliveredBlob blob = DeliveredBlob::kBuiltinProfile;
    int profileId = 0;
    std::string device;  // the blob's tuning device
    int entry = -1;
    Delivery how = Delivery::kAsIs;
    int gainsProfile = 0;      // kUserGeqGains
    std::string matrixDevice;  // kTuningMixMatrix
};

class DeliveryLog : public DeliveryObserver {
public:
    explicit DeliveryLog(const RecordingEffect& effect) : mEffect(effect) {}

    // The source of each of the calls taken from the effect since the last take.
    std::vector<CallSource> take(const std::vector<EffectCall>& calls);

    void onBlob(DeliveredBlob blob, int profileId, const std::string& device) override {
        mBlob = {true, true, blob, profileId, device, -1, Delivery::kAsIs, 0, ""};
    }
    void onEntry(int entry, Delivery how, int profileId, const std::string& device) override;
    void onEffectValues(Delivery how, int profileId, const std::string& device) override;

private:
    void mark(CallSource source, Delivery how, int profileId, const std::string& device);

    const RecordingEffect& mEffect;
    CallSource mBlob;
    // Each report, after the number of calls the effect held when it came.
    std::vector<std::pair<size_t, CallSource>> mMarks;
};

}  // namespace korva::tool
