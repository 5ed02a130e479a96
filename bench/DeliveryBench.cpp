// Profile and tuning delivery, as the effect sees them when the user switches sound modes:
// SpatializerParamCache operations against an effect whose setParam does nothing, each beside a
// baseline loop that makes exactly the same setParam and commit calls over an already-decoded
// array of them (recorded from one run of the operation).
//
// A third figure, the floor, adds to the baseline the work that the declared interfaces leave no
// delivery without, done the cheapest way:
//   - the blob is checked whole before any entry goes out (a cut-short blob must send nothing),
//     then walked entry by entry: through the engine's parameter library (EffectParamParser)
//     for the tuning file's blobs, which the interface has read that way, and with the cheapest
//     reader there is for the built-in ones;
//   - switching content processing asks the engine's library how to treat each entry: whether
//     it is a device-processing entry of the profile, and (switching off) whether it is one to
//     switch off. The floor asks once per entry, for every entry;
//   - a profile is first copied out of the store;
//   - every store query takes a lock: one uncontended lock and unlock of a mutex per query the
//     operation makes (Case::storeQueries counts them along the operation's code path).
// On a device the engine library's share of that is the engine's cost, not this library's. The
// floor leaves out everything else (property reads), so it bounds from below what any
// implementation of the operation costs.
#include <benchmark/benchmark.h>
#include <utils/Mutex.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/BenchFiles.h"
#include "cache/SpatializerParamCache.h"
#include "engine/EffectParamParser.h"
#include "engine/RecordingEffect.h"
#include "engine/VexParamStore.h"
#include "model/OutputDevice.h"
#include "store/SpatializerParamArray.h"
#include "translator/GeqLayout.h"
#include "translator/VexParameter.h"

namespace korva::bench {

namespace {

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

// An effect whose getParam succeeds without touching the caller's buffer, so that the recorded
// run and the measured ones take the same paths. Recording off, it only counts the calls.
RecordingEffect benchEffect(bool recording) {
    RecordingEffect effect;
    effect.setRecording(recording);
    effect.setUnanswered(RecordingEffect::Unanswered::kSucceed);
    return effect;
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
    RecordingEffect recorder = benchEffect(true);
    if (!record(state, operation, &recorder)) return;

    SpatializerParamCache cache;
    RecordingEffect effect = benchEffect(false);
    IEffectKrv* target = &effect;
    benchmark::DoNotOptimize(target);
    CountedLoop counted;
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(cache, target));
    }
    counted.stop();
    // The baseline replays the recorded calls: both sides must have made the same ones.
    auto iterations = static_cast<long>(state.iterations());
    if (effect.setParamCount() != iterations * recorder.setParamCount() ||
        effect.commitCount() != iterations * recorder.commitCount()) {
        state.SkipWithError("the operation made other calls than the recorded run");
        return;
    }
    state.counters["setParam_calls"] = static_cast<double>(recorder.setParamCount());
}

// The setParam calls of a recorded run, then as many commits.
struct Replay {
    explicit Replay(const RecordingEffect& recorder)
        : sends(recorder.calls(EffectCall::kSetParam)), commits(recorder.commitCount()) {}

    void run(IEffectKrv* target) const {
        for (const EffectCall& call : sends) {
            target->setParam(call.deviceId, call.code, call.values.data(),
                             static_cast<int>(call.values.size()));
        }
        for (long i = 0; i < commits; i++) {
            benchmark::DoNotOptimize(target->commit(kOutputDeviceAll));
        }
    }

    std::vector<EffectCall> sends;
    long commits;
};

void replay(benchmark::State& state, const Operation& operation) {
    RecordingEffect recorder = benchEffect(true);
    if (!record(state, operation, &recorder)) return;

    const Replay calls(recorder);
    RecordingEffect effect = benchEffect(false);
    IEffectKrv* target = &effect;
    benchmark::DoNotOptimize(target);
    CountedLoop counted;
    for (auto _ : state) {
        calls.run(target);
    }
    counted.stop();
    state.counters["setParam_calls"] = static_cast<double>(calls.sends.size());
}

// The contents of the stored blob an operation reads, and whether the operation must copy it
// out of the store.
struct BlobRead {
    std::vector<int> blob;
    bool copied;
};

// How an operation must read a blob's entries: with a reader of its own (a built-in blob), or
// through the engine's library, which may also be asked how to treat each entry.
enum class Classify {
    kOwnReader,
    kNothing,
    kDeviceProc,           // isDeviceProcParamInProfile
    kDeviceProcOrDisable,  // that, then isContentProcDisableParam for the others
};

struct Case {
    const char* name;
    Operation operation;
    std::function<BlobRead(SpatializerParamArray&)> blobRead;
    // The store queries (each one lock of a mutex) the operation makes for this blob.
    std::function<int(const std::vector<int>&)> storeQueries;
    Classify classify;
};

// Where the entry at word `at` of a blob of `words` ends, or 0 when it is cut short. Laid out as
// device id, parameter code, value count, values.
inline size_t entryEnd(const int* blob, size_t words, size_t at) {
    if (at + 3 > words || blob[at + 2] < 0) return 0;
    size_t end = at + 3 + static_cast<size_t>(blob[at + 2]);
    return end <= words ? end : 0;
}

// Entries of the blob (header: profile id, entry count), walked once to check it and once to
// read it, with the cheapest reader there is; -1 when it does not check.
int walkTwice(const std::vector<int>& blob) {
    const int* words = blob.data();
    if (blob.size() < 2 || words[1] < 0) return -1;
    const int count = words[1];
    size_t at = 2;
    for (int i = 0; i < count; i++) {
        at = entryEnd(words, blob.size(), at);
        if (at == 0) return -1;
    }
    at = 2;
    for (int i = 0; i < count; i++) {
        benchmark::DoNotOptimize(words[at + 1]);
        at = entryEnd(words, blob.size(), at);
    }
    return count;
}

// Entries of a blob whose code is `code` and that carry `count` values.
int countEntries(const std::vector<int>& blob, int32_t code, int count) {
    if (walkTwice(blob) < 0) return 0;
    int found = 0;
    size_t at = 2;
    for (int i = 0; i < blob[1]; i++) {
        found += blob[at + 1] == code && blob[at + 2] == count;
        at = entryEnd(blob.data(), blob.size(), at);
    }
    return found;
}

// The blob's entries read through EffectParamParser, checked whole first, each asked about as
// the operation must; -1 when the blob does not check.
int readEntries(std::vector<int>& blob, Classify classify) {
    if (classify == Classify::kOwnReader) return walkTwice(blob);
    EffectParamParser parser(blob.data(), static_cast<int>(blob.size() * sizeof(int)));
    if (!parser.validate()) return -1;
    parser.begin();
    int entries = 0;
    while (parser.next()) {
        benchmark::DoNotOptimize(parser.mValues);
        if (classify != Classify::kNothing) {
            const bool deviceProc = VexParamStore::isDeviceProcParamInProfile(parser.mParamId);
            benchmark::DoNotOptimize(deviceProc);
            if (classify == Classify::kDeviceProcOrDisable && !deviceProc) {
                benchmark::DoNotOptimize(VexParamStore::isContentProcDisableParam(parser.mParamId));
            }
        }
        entries++;
    }
    return entries;
}

void floor(benchmark::State& state, const Case& c) {
    RecordingEffect recorder = benchEffect(true);
    if (!record(state, c.operation, &recorder)) return;
    BlobRead read = c.blobRead(android::Singleton<SpatializerParamArray>::getInstance());
    const int queries = c.storeQueries(read.blob);

    const Replay calls(recorder);
    RecordingEffect effect = benchEffect(false);
    IEffectKrv* target = &effect;
    benchmark::DoNotOptimize(target);
    android::Mutex lock;
    int entries = 0;
    CountedLoop counted;
    for (auto _ : state) {
        for (int i = 0; i < queries; i++) {
            lock.lock();
            benchmark::ClobberMemory();
            lock.unlock();
        }
        if (read.copied) {
            std::vector<int> copy(read.blob);
            entries = readEntries(copy, c.classify);
        } else {
            entries = readEntries(read.blob, c.classify);
        }
        calls.run(target);
    }
    counted.stop();
    if (entries < 0) {
        state.SkipWithError("the stored blob does not check");
        return;
    }
    state.counters["setParam_calls"] = static_cast<double>(calls.sends.size());
    state.counters["blob_entries"] = entries;
    state.counters["store_queries"] = queries;
}

// setKorvaContentProfile sends the built-in blob of a profile, which it copies; switching
// content processing sends the tuning file's blob of the current profile in place.
BlobRead builtInProfile(SpatializerParamArray& store, KrvSpatializerProfileId id) {
    std::vector<int> blob((store.getProfileParamsSize(id) + sizeof(int) - 1) / sizeof(int), 0);
    store.getProfileParams(id, blob.data());
    return {std::move(blob), true};
}

// getInstance, one read of the store's state, isXMLProfileValid, getXMLProfileParams, and for
// every graphic-EQ entry of the whole band layout the user's gains copied under the store's lock.
// (A speaker mix matrix taken from the tuning would add two more; the bench files' speakers have
// two output channels, which never take it.)
int contentProcQueries(const std::vector<int>& blob) {
    return 4 + countEntries(blob, vexParameterCode(GEBS), kGeqWords);
}

const std::vector<Case>& cases() {
    static const std::vector<Case> sCases = {
        {"profile_delivery/set_content_profile_movie",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.setKorvaContentProfile(PROFILE_MOVIE, effect);
         },
         [](SpatializerParamArray& store) { return builtInProfile(store, PROFILE_MOVIE); },
         // getInstance, getProfileParamsSize, getProfileParams and one read of the store's
         // state (the tunings and the speaker's channels).
         [](const std::vector<int>&) { return 4; }, Classify::kOwnReader},
        {"profile_delivery/content_proc_on",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.updateContentProcEnabled(effect, true, false);
         },
         [](SpatializerParamArray& store) {
             return BlobRead{store.getXMLProfileParams(PROFILE_MOVIE), false};
         },
         contentProcQueries, Classify::kDeviceProc},
        {"profile_delivery/content_proc_off",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.updateContentProcEnabled(effect, false, false);
         },
         [](SpatializerParamArray& store) {
             return BlobRead{store.getXMLProfileParams(PROFILE_MOVIE), false};
         },
         contentProcQueries, Classify::kDeviceProcOrDisable},
        {"tuning_delivery/default_headphone",
         [](SpatializerParamCache& cache, IEffectKrv* effect) {
             return cache.loadTuningDevice(kTuningDevice, effect);
         },
         [](SpatializerParamArray& store) {
             return BlobRead{store.getXMLTuningParams(kTuningDevice), false};
         },
         // getInstance, isXMLTuningValid and getXMLTuningParams.
         [](const std::vector<int>&) { return 3; }, Classify::kNothing},
    };
    return sCases;
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const Case& c : cases()) {
        std::string name = c.name;
        size_t slash = name.find('/');
        std::string group = name.substr(0, slash);
        std::string rest = name.substr(slash);
        benchmark::RegisterBenchmark(name.c_str(), deliver, c.operation);
        benchmark::RegisterBenchmark((group + "_baseline" + rest).c_str(), replay, c.operation);
        benchmark::RegisterBenchmark((group + "_floor" + rest).c_str(), floor, c);
    }
    return true;
}();

}  // namespace

}  // namespace korva::bench
