// The store's lock is not re-entrant: a store member that called another one while holding it
// would hang the calling thread, as would a lock-order fault between the store's lock and the
// singleton's creation lock. Every cache operation is run here from several threads racing the
// store's creation, on a worker with a deadline, so such a hang fails the test instead of the run.
// (Single-threaded hangs show in every other cache test; a filled store shared by threads is the
// concurrency test's.)
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>

#include "CacheTestSupport.h"
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
