// Several effect instances, one per thread, drive the one store at the same time: profile
// switches, content-processing updates, tuning selections and gain changes. Each effect records
// what it received, and each operation's calls must be exactly what the same operation produces
// when run alone on the store in some state that the other threads could have left it in:
// nothing lost, nothing from two states mixed inside one operation.
//
// The expected outputs are taken from single-threaded runs of the library itself, before the
// threads start, for every state the workload can create (current profile, that profile's gains,
// the selected tuning device of each port).

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "RecordingEffect.h"
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
const std::vector<int> kProfiles = {0, 1, 2, 3, 4};
const std::map<int, std::vector<std::string>> kPortDevices = {
    {3, {"default_headphone", "studio_headphone"}},
    {4, {"default_bluetooth", "car_bluetooth"}},
    {5, {"default_usb", "dock_usb"}},
};

std::vector<int> gains(int base) {
    std::vector<int> out;
    for (int band = 0; band < 20; band++) {
        out.push_back(base + band);
    }
    return out;
}

// The gains the threads write: even threads one vector, odd threads the other.
const std::vector<int> kThreadGains[2] = {gains(100), gains(-300)};

std::vector<int> geqEntry() {
    std::vector<int> values = {20};
    for (int band = 0; band < 40; band++) {
        values.push_back(1000 + band);
    }
    return values;
}

// A blob of the tuning file for each profile: every rule of the content-processing update has
// an entry, with values that tell the profiles apart.
std::vector<int> profileBlob(int id) {
    return Blob()
        .add(kAll, GEBS, geqEntry())
        .add(kAll, MDLE, {id})
        .add(kSpeaker, DOM, {1, 10 + id, 20 + id})
        .add(kSpeaker, DSOE, {id})
        .add(kBluetooth, VBON, {1})
        .add(kSpeaker, DEON, {1})
        .add(kUsb, IEON, {id % 2})
        .add(kSpeaker, AOON, {1});
}

std::vector<int> tuningBlob(int device, int seed) {
    return Blob().add(device, VBM, {seed}).add(device, DSB, {seed, seed + 1}).add(device, DEA, {3});
}

// Fills the store as loading a tuning file would: five profiles with blobs and gains, a speaker
// tuning that brings its own mix matrix, and two tuning devices for each switchable port.
void fillStore() {
    SpatializerParamArrayTestPeer peer;
    for (int id : kProfiles) {
        peer.xmlProfileParams()[id] = profileBlob(id);
        peer.xmlProfileCount()++;
        peer.profileGeqGains()[id] = gains(10 * id);
    }
    peer.addTuningDevice("speaker_main", "internal_speaker", tuningBlob(kSpeaker, 7),
                         {0, 1, 2, 2, 16384, 0, 0, 16384});
    peer.selectedTuningDevices()[0] = "speaker_main";
    const std::map<int, int> portDevice = {{3, kHeadphone}, {4, kBluetooth}, {5, kUsb}};
    int seed = 0;
    for (const auto& [port, devices] : kPortDevices) {
        for (const std::string& device : devices) {
            peer.addTuningDevice(device, kAndroidDeviceNames[port],
                                 tuningBlob(portDevice.at(port), seed++));
        }
    }
    peer.tuningParamValue() = 4;
}

// An effect that answers the two reads the cache makes.
void prepare(RecordingEffect& effect) {
    effect.setAnswer(kAll, code(GEBS), geqEntry());
    effect.setAnswer(kSpeaker, code(DOM), {0, 5, 5, 5});
}

Calls record(const std::function<void(RecordingEffect&)>& operation) {
    RecordingEffect effect;
    prepare(effect);
    operation(effect);
    return effect.calls();
}

enum class Op { SWITCH_PROFILE, CONTENT_ON, CONTENT_OFF, CONTENT_MCC, SELECT, LOAD, GAINS };

struct Step {
    Op op;
    int profile;
    int port;
    std::string device;
};

std::vector<Step> workload(int thread) {
    std::mt19937 random(1234 + thread);
    std::vector<Step> steps;
    for (int i = 0; i < kOperationsPerThread; i++) {
        Step step{static_cast<Op>(random() % 7), kProfiles[random() % kProfiles.size()], 0, ""};
        auto port = kPortDevices.begin();
        std::advance(port, random() % kPortDevices.size());
        step.port = port->first;
        step.device = port->second[random() % port->second.size()];
        steps.push_back(step);
    }
    return steps;
}

void run(SpatializerParamCache& cache, const Step& step, int thread, IEffectKrv* effect) {
    switch (step.op) {
        case Op::SWITCH_PROFILE:
            cache.setProfile(static_cast<KrvSpatializerProfileId>(step.profile));
            cache.setKorvaContentProfile(static_cast<KrvSpatializerProfileId>(step.profile), effect);
            break;
        case Op::CONTENT_ON:
            cache.updateContentProcEnabled(effect, true, false);
            break;
        case Op::CONTENT_OFF:
            cache.updateContentProcEnabled(effect, false, false);
            break;
        case Op::CONTENT_MCC:
            cache.updateContentProcEnabled(effect, true, true);
            break;
        case Op::SELECT:
            cache.setSelectedTuningDevice(step.port, step.device, effect);
            break;
        case Op::LOAD:
            cache.loadTuning(effect);
            break;
        case Op::GAINS: {
            std::vector<int> threadGains = kThreadGains[thread % 2];
            cache.setProfileGeqGains(threadGains, effect);
            break;
        }
    }
}

// Every output a single-threaded run gives for each operation, over the states the threads can
// leave the store in.
class Expectations {
public:
    explicit Expectations(SpatializerParamCache& cache) {
        SpatializerParamArrayTestPeer peer;
        SpatializerParamArray& store = SpatializerParamArray::getInstance();
        const int savedProfile = peer.currentProfileId();
        const auto savedGains = peer.profileGeqGains();
        const auto savedSelection = peer.selectedTuningDevices();

        for (int profile : kProfiles) {
            Step step{Op::SWITCH_PROFILE, profile, 0, ""};
            add(step, record([&](RecordingEffect& e) { run(cache, step, 0, &e); }));
            // The update reads the current profile and that profile's gains.
            std::vector<std::vector<int>> gainStates = {savedGains.at(profile), kThreadGains[0],
                                                        kThreadGains[1]};
            for (std::vector<int>& state : gainStates) {
                peer.currentProfileId() = profile;
                store.setProfileGeqGains(static_cast<KrvSpatializerProfileId>(profile), state);
                for (Op op : {Op::CONTENT_ON, Op::CONTENT_OFF, Op::CONTENT_MCC}) {
                    Step update{op, 0, 0, ""};
                    add(update, record([&](RecordingEffect& e) { run(cache, update, 0, &e); }));
                }
            }
            peer.profileGeqGains() = savedGains;
        }
        for (int thread : {0, 1}) {
            Step step{Op::GAINS, 0, 0, ""};
            add(step, record([&](RecordingEffect& e) { run(cache, step, thread, &e); }), thread);
        }
        // Selecting sends the device unless it is already the port's; loading sends the
        // selection of every port, in any of the combinations.
        for (const auto& [port, devices] : kPortDevices) {
            for (const std::string& device : devices) {
                Step step{Op::SELECT, 0, port, device};
                add(step, {});
                peer.selectedTuningDevices()[port] = "";
                add(step, record([&](RecordingEffect& e) { run(cache, step, 0, &e); }));
            }
        }
        for (int combination = 0; combination < 8; combination++) {
            int bit = 0;
            for (const auto& [port, devices] : kPortDevices) {
                peer.selectedTuningDevices()[port] = devices[(combination >> bit++) & 1];
            }
            Step step{Op::LOAD, 0, 0, ""};
            add(step, record([&](RecordingEffect& e) { run(cache, step, 0, &e); }));
        }

        peer.currentProfileId() = savedProfile;
        peer.profileGeqGains() = savedGains;
        peer.selectedTuningDevices() = savedSelection;
    }

    bool allows(const Step& step, int thread, const Calls& calls) const {
        for (const Calls& candidate : mOutputs.at(key(step, thread))) {
            if (candidate == calls) {
                return true;
            }
        }
        return false;
    }

    size_t count(const Step& step, int thread) const {
        return mOutputs.at(key(step, thread)).size();
    }

private:
    // What an operation's output may depend on besides the store's state.
    static std::string key(const Step& step, int thread) {
        switch (step.op) {
            case Op::SWITCH_PROFILE:
                return "switch " + std::to_string(step.profile);
            case Op::SELECT:
                return "select " + step.device;
            case Op::GAINS:
                return "gains " + std::to_string(thread % 2);
            default:
                return "op " + std::to_string(static_cast<int>(step.op));
        }
    }

    void add(const Step& step, Calls calls, int thread = 0) {
        mOutputs[key(step, thread)].push_back(std::move(calls));
    }

    std::map<std::string, std::vector<Calls>> mOutputs;
};

std::string describe(const Calls& calls) {
    std::string text;
    for (const EffectCall& call : calls) {
        text += call.toString() + "\n";
    }
    return text;
}

struct Segment {
    size_t begin;
    size_t end;
};

TEST(ConcurrencyTest, EveryEffectReceivesWhatASingleThreadedRunWouldSend) {
    fillStore();
    SpatializerParamCache cache;
    const Expectations expectations(cache);
    // The store's expected outputs must tell states apart, or the check below proves nothing.
    ASSERT_EQ(15u, expectations.count({Op::CONTENT_ON, 0, 0, ""}, 0));
    ASSERT_EQ(8u, expectations.count({Op::LOAD, 0, 0, ""}, 0));

    std::vector<RecordingEffect> effects(kThreads);
    std::vector<std::vector<Step>> steps(kThreads);
    std::vector<std::vector<Segment>> segments(kThreads);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++) {
        prepare(effects[t]);
        steps[t] = workload(t);
        threads.emplace_back([&, t] {
            SpatializerParamCache threadCache;
            ready++;
            while (ready.load() < kThreads) {
                std::this_thread::yield();
            }
            for (const Step& step : steps[t]) {
                size_t begin = effects[t].calls().size();
                run(threadCache, step, t, &effects[t]);
                segments[t].push_back({begin, effects[t].calls().size()});
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int t = 0; t < kThreads; t++) {
        const Calls& calls = effects[t].calls();
        ASSERT_EQ(steps[t].size(), segments[t].size());
        for (size_t i = 0; i < steps[t].size(); i++) {
            Calls segment(calls.begin() + segments[t][i].begin, calls.begin() + segments[t][i].end);
            EXPECT_TRUE(expectations.allows(steps[t][i], t, segment))
                << "thread " << t << ", operation " << i << " (kind "
                << static_cast<int>(steps[t][i].op) << ") received:\n"
                << describe(segment);
        }
    }
}

}  // namespace
}  // namespace korva::test
