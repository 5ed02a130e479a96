// The store's lock is not re-entrant, and the singleton has a creation lock of its own: a nested
// or out-of-order locking would hang. Every cache operation runs here from threads racing the
// store's creation, on a worker with a deadline, so such a hang fails the test instead of the run.

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "CacheTestSupport.h"

namespace korva::test {
namespace {

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

TEST(CacheLockDisciplineTest, ThreadsRacingTheStoresCreationAllFinish) {
    constexpr int kThreads = 4;
    std::atomic<int> finished{0};
    // A hung worker is left behind, detached: the process ends with the failure.
    auto done = std::make_shared<std::promise<void>>();
    std::thread([&finished, done] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; t++) {
            threads.emplace_back([&finished, t] {
                SpatializerParamCache cache;
                RecordingEffect effect;
                for (int round = 0; round < 50; round++) everyOperation(cache, effect, round + t);
                finished++;
            });
        }
        for (std::thread& thread : threads) thread.join();
        done->set_value();
    }).detach();
    ASSERT_EQ(std::future_status::ready, done->get_future().wait_for(std::chrono::seconds(30)));
    EXPECT_EQ(kThreads, finished.load());
}

}  // namespace
}  // namespace korva::test
