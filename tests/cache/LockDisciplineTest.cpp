// The store's lock is not re-entrant: a store member that called another one while holding it
// would hang the calling thread. Every cache operation is run here on a worker with a deadline,
// alone and from several threads racing the store's creation, so such a hang fails the test
// instead of the run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>

#include "CacheTestSupport.h"
#include "SpatializerParamArrayTestPeer.h"
#include "cache/SpatializerParamCache.h"

namespace korva::test {
namespace {

// Runs `work` on a detached thread; false when it has not finished within 30 s. A hung worker is
// left behind: the process ends with the failure.
bool finishesInTime(std::function<void()> work) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread([work = std::move(work), done] {
        work();
        done->set_value();
    }).detach();
    return finished.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
}

// Every cache operation once, each store member it reaches included.
void everyOperation(SpatializerParamCache& cache, RecordingEffect& effect, int round) {
    std::vector<int> gains(20, round);
    cache.setProfile(static_cast<KrvSpatializerProfileId>(round % 5));
    cache.isTuningAvailable();
    cache.setKorvaContentProfile(PROFILE_COMMON, &effect);
    cache.updateContentProcEnabled(&effect, round % 2 == 0, round % 3 == 0);
    cache.loadTuning(&effect);
    cache.setSelectedTuningDevice(3, round % 2 == 0 ? "studio" : "default_headphone", &effect);
    cache.setSelectedTuningDevice(0, round % 2 == 0 ? "speaker_b" : "speaker_a", &effect);
    cache.setSelectedTuningDevice(4, "studio", &effect);
    cache.loadTuningDevice("unknown", &effect);
    cache.setProfileGeqGains(gains, &effect);
    cache.getProfileGeqGains();
}

TEST(CacheLockDisciplineTest, EveryOperationReturnsOnAFilledStore) {
    SpatializerParamArrayTestPeer peer;
    peer.addTuningDevice("default_headphone", "headphone", Blob().add(kHeadphone, IEON, {1}));
    peer.addTuningDevice("studio", "headphone", Blob().add(kHeadphone, DED, {2}));
    peer.addTuningDevice("default_bluetooth", "bluetooth", Blob());
    peer.addTuningDevice("default_usb", "usb", Blob());
    peer.addTuningDevice("speaker_a", "internal_speaker", Blob(), {1, 2});
    peer.addTuningDevice("speaker_b", "internal_speaker", Blob(), {3, 4});
    peer.selectedTuningDevices()[0] = "speaker_a";
    peer.tuningParamValue() = 3;
    for (int profile = PROFILE_COMMON; profile <= PROFILE_CUSTOM; profile++) {
        peer.xmlProfileParams()[profile] = Blob()
                                               .add(kSpeaker, DOM, {1, 0, 1})
                                               .add(kAll, GEBS, std::vector<int>(41, 1))
                                               .add(kHeadphone, DEON, {1})
                                               .add(kSpeaker, DSOE, {1});
    }
    SpatializerParamCache cache;
    RecordingEffect effect;
    effect.setAnswer(kSpeaker, code(DOM), {0, 1, 2});
    effect.setAnswer(kAll, code(GEBS), std::vector<int>(41, 3));
    ASSERT_TRUE(finishesInTime([&] {
        for (int round = 0; round < 6; round++) {
            everyOperation(cache, effect, round);
        }
    }));
    // The operations ran to their ends: they reached the effect.
    EXPECT_FALSE(effect.calls(EffectCall::COMMIT).empty());
    EXPECT_FALSE(effect.calls(EffectCall::GET_PARAM).empty());
}

// The first use builds the store under the singleton's creation lock while other threads
// already call into it.
TEST(CacheLockDisciplineTest, ThreadsRacingTheStoresCreationAllFinish) {
    constexpr int kThreads = 4;
    std::atomic<int> finished{0};
    ASSERT_TRUE(finishesInTime([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; t++) {
            threads.emplace_back([&finished, t] {
                SpatializerParamCache cache;
                RecordingEffect effect;
                for (int round = 0; round < 50; round++) {
                    everyOperation(cache, effect, round + t);
                }
                finished++;
            });
        }
        for (std::thread& thread : threads) thread.join();
    }));
    EXPECT_EQ(kThreads, finished.load());
}

}  // namespace
}  // namespace korva::test
