#include "tools/commands/DeliveryLog.h"

namespace korva::tool {

void DeliveryLog::onEntry(int entry, Delivery how, int profileId, const std::string& device) {
    CallSource source = mBlob;
    source.entry = entry;
    mark(std::move(source), how, profileId, device);
}

void DeliveryLog::onEffectValues(Delivery how, int profileId, const std::string& device) {
    CallSource source;
    source.reported = true;
    mark(std::move(source), how, profileId, device);
}

void DeliveryLog::mark(CallSource source, Delivery how, int profileId, const std::string& device) {
    source.how = how;
    source.gainsProfile = profileId;
    source.matrixDevice = device;
    mMarks.emplace_back(mEffect.calls().size(), std::move(source));
}

std::vector<CallSource> DeliveryLog::take(const std::vector<EffectCall>& calls) {
    std::vector<CallSource> sources(calls.size());
    size_t next = 0;
    size_t afterCommit = 0;
    for (size_t i = 0; i < calls.size(); i++) {
        // The last report made before the call; a commit ends what a report covers.
        while (next < mMarks.size() && mMarks[next].first <= i) {
            next++;
        }
        if (calls[i].kind == EffectCall::kCommit) {
            afterCommit = i + 1;
        } else if (next > 0 && mMarks[next - 1].first >= afterCommit) {
            sources[i] = mMarks[next - 1].second;
        }
    }
    mMarks.clear();
    return sources;
}

}  // namespace korva::tool
