// Profile and tuning delivery, as the effect sees them when the user switches sound modes:
// SpatializerParamCache operations against an effect whose setParam does nothing, each beside a
// baseline loop that makes exactly the same setParam and commit calls over an already-decoded
// array of them (recorded from one run of the operation).
#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/BenchFiles.h"
#include "bench/NullEffect.h"
#include "bench/RecordingEffect.h"
#include "cache/SpatializerParamCache.h"
#include "store/SpatializerParamArray.h"

namespace korva::bench {

namespace {

constexpr int kEveryDevice = 0x40000000;
const char* const kTuningDevice = "default_headphone";

using Operation = std::function<int(SpatializerParamCache&, IEffectKrv*)>;

// Loads the example (or, in a tree without one, the generated 100 KB file) once per process.
// Returns an error text, or null when the store holds what the benchmarks deliver.
const char* prepareStore() {
    static const char* sError = []() -> const char* {
        std::string path = BenchFiles::get().example();
        if (path.empty()) path = BenchFiles::get().generated(kSize100K);
        SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
        store.loadSpatializerXMLFile(path);
        if (!store.isXMLProfileValid(PROFILE_MOVIE)) return "the file gave no movie profile blob";
        if (!store.isXMLTuningValid(kTuningDevice)) return "the file gave no default_headphone";
        SpatializerParamCache().setProfile(PROFILE_MOVIE);
        return nullptr;
    }();
    return sError;
}

// Runs the operation once against a recording effect; false (and the benchmark skipped) when
// the store is not ready.
bool record(benchmark::State& state, const Operation& operation, RecordingEffect* recorder) {
    if (const char* error = prepareStore()) {
        state.SkipWithError(error);
        return false;
    }
    SpatializerParamCache cache;
    operation(cache, recorder);
    return true;
}

void deliver(benchmark::State& state, const Operation& operation) {
    RecordingEffect recorder;
    if (!record(state, operation, &recorder)) return;

    SpatializerParamCache cache;
    NullEffect effect;
    IEffectKrv* target = &effect;
    benchmark::DoNotOptimize(target);
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(cache, target));
    }
    // The baseline replays the recorded calls: both sides must have made the same ones.
    auto iterations = static_cast<long>(state.iterations());
    if (effect.setParamCalls() != iterations * static_cast<long>(recorder.calls().size()) ||
        effect.commitCalls() != iterations * recorder.commits()) {
        state.SkipWithError("the operation made other calls than the recorded run");
        return;
    }
    state.counters["setParam_calls"] = static_cast<double>(recorder.calls().size());
}

void replay(benchmark::State& state, const Operation& operation) {
    RecordingEffect recorder;
    if (!record(state, operation, &recorder)) return;
    const std::vector<RecordedCall>& calls = recorder.calls();
    int commits = recorder.commits();

    NullEffect effect;
    IEffectKrv* target = &effect;
    benchmark::DoNotOptimize(target);
    for (auto _ : state) {
        for (const RecordedCall& call : calls) {
            target->setParam(call.deviceId, call.code, call.values.data(),
                             static_cast<int>(call.values.size()));
        }
        for (int i = 0; i < commits; i++) {
            benchmark::DoNotOptimize(target->commit(kEveryDevice));
        }
    }
    state.counters["setParam_calls"] = static_cast<double>(calls.size());
}

struct Case {
    const char* name;
    Operation operation;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> sCases = {
        {"profile_delivery/set_content_profile_movie",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.setKorvaContentProfile(PROFILE_MOVIE, effect);
         }},
        {"profile_delivery/content_proc_on",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.updateContentProcEnabled(effect, true, false);
         }},
        {"profile_delivery/content_proc_off",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.updateContentProcEnabled(effect, false, false);
         }},
        {"tuning_delivery/default_headphone",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.loadTuningDevice(kTuningDevice, effect);
         }},
    };
    return sCases;
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const Case& c : cases()) {
        std::string name = c.name;
        size_t slash = name.find('/');
        std::string baseline = name.substr(0, slash) + "_baseline" + name.substr(slash);
        benchmark::RegisterBenchmark(name.c_str(), deliver, c.operation);
        benchmark::RegisterBenchmark(baseline.c_str(), replay, c.operation);
    }
    return true;
}();

}  // namespace

}  // namespace korva::bench
