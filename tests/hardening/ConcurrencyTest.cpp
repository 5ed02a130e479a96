// Several effect instances, one per thread, drive the one store at the same time: profile
// switches, content-processing updates, tuning selections and gain changes. Each operation's calls
// must be exactly what the same operation sends when run alone on the store in some state the
// other threads could have left: nothing lost, nothing from two states mixed within one operation.
// The expected outputs come from single-threaded runs of the library before the threads start.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArray.h"
#include "tests/cache/CacheTestSupport.h"

namespace korva::test {
namespace {

using Calls = std::vector<EffectCall>;

constexpr int kThreads = 4;
constexpr int kOperationsPerThread = 400;
constexpr int kProfiles = 5;
// The switchable ports, their device bits and two tuning devices for each.
const struct {
    int port;
    int bit;
    std::vector<std::string> devices;
} kPorts[] = {{3, kHeadphone, {"default_headphone", "studio_headphone"}},
              {4, kBluetooth, {"default_bluetooth", "car_bluetooth"}},
              {5, kUsb, {"default_usb", "dock_usb"}}};

// The two gain vectors the threads write.
const std::vector<int> kThreadGains[2] = {counting(100, 1, 20), counting(-300, 1, 20)};

std::vector<int> geqEntry() {
    std::vector<int> values = counting(1000, 1, 40);
    values.insert(values.begin(), 20);
    return values;
}

// Fills the store as loading a tuning file would: five profiles whose blobs hit every rule of the
// content-processing update with values that tell them apart, a speaker tuning with its own mix
// matrix, and two tuning devices for each switchable port.
void fillStore() {
    SpatializerParamArrayTestPeer peer;
    for (int id = 0; id < kProfiles; id++) {
        // clang-format off
        peer.xmlProfileParams()[id] = Blob().add(kAll, GEBS, geqEntry()).add(kAll, MDLE, {id})
            .add(kSpeaker, DOM, {1, 10 + id, 20 + id}).add(kSpeaker, DSOE, {id})
            .add(kBluetooth, VBON, {1}).add(kSpeaker, DEON, {1}).add(kUsb, IEON, {id % 2})
            .add(kSpeaker, AOON, {1});
        // clang-format on
        peer.xmlProfileCount()++;
        peer.profileGeqGains()[id] = counting(10 * id, 1, 20);
    }
    // Tuning blobs go to the effect as they are: only that each is the device's own matters.
    auto tuningBlob = [](int device, int seed) -> std::vector<int> {
        return Blob().add(device, VBM, {seed}).add(device, DSB, {seed, seed + 1});
    };
    peer.addTuningDevice("speaker_main", "internal_speaker", tuningBlob(kSpeaker, 7),
                         {0, 1, 2, 2, 16384, 0, 0, 16384});
    peer.selectedTuningDevices()[0] = "speaker_main";
    int seed = 0;
    for (const auto& port : kPorts) {
        for (const std::string& device : port.devices) {
            peer.addTuningDevice(device, kAndroidDeviceNames[port.port],
                                 tuningBlob(port.bit, seed++));
        }
    }
    peer.tuningParamValue() = 4;
}

enum class Op { SWITCH_PROFILE, CONTENT_ON, CONTENT_OFF, CONTENT_MCC, SELECT, LOAD, GAINS };

// `profile` also picks which of the two gain vectors GAINS writes.
struct Step {
    Op op;
    int profile = 0;
    int port = 0;
    std::string device = "";
};

// Runs one operation on an effect of its own that answers the two reads the cache makes.
Calls send(SpatializerParamCache& cache, const Step& step) {
    RecordingEffect recording;
    recording.setAnswer(kAll, code(GEBS), geqEntry());
    recording.setAnswer(kSpeaker, code(DOM), {0, 5, 5, 5});
    IEffectKrv* effect = &recording;
    const auto profile = static_cast<KrvSpatializerProfileId>(step.profile);
    std::vector<int> gains = kThreadGains[step.profile % 2];
    switch (step.op) {
        case Op::SWITCH_PROFILE:
            cache.setProfile(profile);
            cache.setKorvaContentProfile(profile, effect);
            break;
        case Op::CONTENT_ON:
        case Op::CONTENT_OFF:
        case Op::CONTENT_MCC:
            cache.updateContentProcEnabled(effect, step.op != Op::CONTENT_OFF,
                                           step.op == Op::CONTENT_MCC);
            break;
        case Op::SELECT:
            cache.setSelectedTuningDevice(step.port, step.device, effect);
            break;
        case Op::LOAD:
            cache.loadTuning(effect);
            break;
        case Op::GAINS:
            cache.setProfileGeqGains(gains, effect);
            break;
    }
    return recording.calls();
}

// The operation and what its output may depend on besides the store's state.
std::string key(const Step& step) {
    std::string text = std::to_string(static_cast<int>(step.op));
    if (step.op == Op::SWITCH_PROFILE) text += " " + std::to_string(step.profile);
    if (step.op == Op::GAINS) text += " " + std::to_string(step.profile % 2);
    return step.op == Op::SELECT ? text + " " + step.device : text;
}

using Outputs = std::map<std::string, std::vector<Calls>>;

// Every output a single-threaded run gives for each operation, over the states the threads can
// leave the store in.
Outputs expectedOutputs(SpatializerParamCache& cache) {
    SpatializerParamArrayTestPeer peer;
    const int savedProfile = peer.currentProfileId();
    const auto savedGains = peer.profileGeqGains();
    const auto savedSelection = peer.selectedTuningDevices();
    Outputs outputs;
    auto record = [&](const Step& step) { outputs[key(step)].push_back(send(cache, step)); };
    for (int profile = 0; profile < kProfiles; profile++) {
        record({Op::SWITCH_PROFILE, profile});
        // The update reads the current profile and that profile's gains.
        for (std::vector<int> gains : {savedGains.at(profile), kThreadGains[0], kThreadGains[1]}) {
            peer.currentProfileId() = profile;
            SpatializerParamArray::getInstance().setProfileGeqGains(
                static_cast<KrvSpatializerProfileId>(profile), gains);
            for (Op op : {Op::CONTENT_ON, Op::CONTENT_OFF, Op::CONTENT_MCC}) record({op});
        }
        peer.profileGeqGains() = savedGains;
    }
    record({Op::GAINS, 0});
    record({Op::GAINS, 1});
    // Selecting sends the device unless it is already the port's; loading sends the selection of
    // every port, in any of the combinations.
    for (const auto& port : kPorts) {
        for (const std::string& device : port.devices) {
            Step step{Op::SELECT, 0, port.port, device};
            outputs[key(step)].push_back({});
            peer.selectedTuningDevices()[port.port] = "";
            record(step);
        }
    }
    for (int combination = 0; combination < 8; combination++) {
        for (int bit = 0; bit < 3; bit++) {
            peer.selectedTuningDevices()[kPorts[bit].port] =
                kPorts[bit].devices[(combination >> bit) & 1];
        }
        record({Op::LOAD});
    }
    peer.currentProfileId() = savedProfile;
    peer.profileGeqGains() = savedGains;
    peer.selectedTuningDevices() = savedSelection;
    return outputs;
}

TEST(ConcurrencyTest, EveryEffectReceivesWhatASingleThreadedRunWouldSend) {
    fillStore();
    SpatializerParamCache cache;
    const Outputs expected = expectedOutputs(cache);
    // The expected outputs must tell the states apart, or the check below proves nothing.
    ASSERT_EQ(15u, expected.at(key({Op::CONTENT_ON})).size());
    ASSERT_EQ(8u, expected.at(key({Op::LOAD})).size());

    std::vector<std::vector<std::pair<Step, Calls>>> done(kThreads);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++) {
        threads.emplace_back([&, t] {
            std::mt19937 random(1234 + t);
            SpatializerParamCache threadCache;
            for (ready++; ready.load() < kThreads;) std::this_thread::yield();
            for (int i = 0; i < kOperationsPerThread; i++) {
                const auto& port = kPorts[random() % 3];
                Step step{static_cast<Op>(random() % 7), static_cast<int>(random() % kProfiles),
                          port.port, port.devices[random() % 2]};
                done[t].push_back({step, send(threadCache, step)});
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; t++) {
        for (const auto& [step, calls] : done[t]) {
            const std::vector<Calls>& allowed = expected.at(key(step));
            EXPECT_TRUE(std::find(allowed.begin(), allowed.end(), calls) != allowed.end())
                << "thread " << t << ", operation " << key(step)
                << ", received: " << testing::PrintToString(calls);
        }
    }
}

}  // namespace
}  // namespace korva::test
