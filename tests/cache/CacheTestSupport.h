// Shared pieces of the cache tests: blobs written by hand, the calls expected of the cache, and
// the calls that sending a built-in table must produce.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"
#include "engine/RecordingEffect.h"
#include "model/OutputDevice.h"
#include "store/SpatializerParamArray.h"
#include "translator/GeqLayout.h"
#include "translator/VexParameter.h"

namespace korva::test {

constexpr const char* kTag = "KrvSpatializerParamCache";
constexpr int kAll = kOutputDeviceAll;
constexpr int kSpeaker = kOutputDeviceSpeaker;
constexpr int kHeadphone = kOutputDeviceWiredHeadphone;
constexpr int kBluetooth = kOutputDeviceBluetoothA2dp;
constexpr int kUsb = kOutputDeviceUsb;
// The store's default mix matrix length (58) plus 2, plus 1: what the cache asks the effect for.
constexpr int kDomCapacity = 61;

inline int code(VexParameter param) {
    return vexParameterCode(param);
}

// A blob in the profile layout, built entry by entry.
class Blob {
public:
    explicit Blob(int header = kAll) : mWords{header, 0} {}

    Blob& add(int deviceId, VexParameter param, const std::vector<int>& values) {
        mWords.push_back(deviceId);
        mWords.push_back(code(param));
        mWords.push_back(static_cast<int>(values.size()));
        mWords.insert(mWords.end(), values.begin(), values.end());
        mWords[1]++;
        return *this;
    }
    operator std::vector<int>() const { return mWords; }

private:
    std::vector<int> mWords;
};

// One setParam per entry of a built-in table, read word by word here rather than through the
// store's parser, so that a fault in the parser cannot hide itself.
template <size_t N>
std::vector<EffectCall> builtinSends(const int (&table)[N]) {
    std::vector<EffectCall> calls;
    size_t at = 2;
    for (int entry = 0; entry < table[1]; entry++, at += 3 + table[at + 2]) {
        calls.push_back(
            EffectCall::setParam(table[at], table[at + 1],
                                 std::vector<int>(table + at + 3, table + at + 3 + table[at + 2])));
    }
    EXPECT_EQ(N, at) << "the table ends after its last entry";
    return calls;
}

inline std::vector<int> counting(int first, int step, size_t count) {
    std::vector<int> values(count);
    for (size_t i = 0; i < count; i++) values[i] = first + step * static_cast<int>(i);
    return values;
}

inline EffectCall sent(int deviceId, VexParameter param, const std::vector<int>& values) {
    return EffectCall::setParam(deviceId, code(param), values);
}

inline void append(std::vector<EffectCall>& to, const std::vector<EffectCall>& calls) {
    to.insert(to.end(), calls.begin(), calls.end());
}

}  // namespace korva::test
