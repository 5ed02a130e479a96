// Memory of the start-up load, each figure in a fresh child process so that every file meets a
// newly constructed store:
// - retained: heap in use (glibc mallinfo2) after constructing the store and loading the file,
//   less the heap in use before, against the bytes of the blobs the store then holds;
// - peak: the highest heap (HeapCounter, in front of malloc) during loadSpatializerXMLFile,
//   above the heap at its start, against the size of the file.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "bench/BenchFiles.h"
#include "bench/HeapCounter.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArray.h"

namespace korva::bench {

namespace {

struct MemoryFigures {
    bool loaded;
    double retainedBytes;
    double blobBytes;
    double profileBlobs;
    double tuningBlobs;
    double peakBytes;
};

size_t heapInUse() {
    struct mallinfo2 info = mallinfo2();
    // Large blocks are mapped apart from the arena and counted on their own.
    return info.uordblks + info.hblkhd;
}

// Profile ids span the standard ones and those a generated file adds (5 and up).
constexpr int kLastProfileId = 100000;

MemoryFigures measure(const std::string& path) {
    MemoryFigures figures = {};
    size_t before = heapInUse();

    // The store looks for the device's tuning file first; the host has none, and the error
    // that reports it is not what is measured here.
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    __android_log_set_minimum_priority(ANDROID_LOG_INFO);

    size_t start = HeapCounter::current();
    HeapCounter::resetPeak();
    store.loadSpatializerXMLFile(path);
    figures.peakBytes = static_cast<double>(HeapCounter::peak() - start);
    figures.retainedBytes = static_cast<double>(heapInUse() - before);

    for (int id = -1; id <= kLastProfileId; id++) {
        if (store.isXMLProfileValid(id)) {
            figures.blobBytes += store.getXMLProfileParams(id).size() * sizeof(int);
            figures.profileBlobs++;
        }
    }
    for (int port = 0; port < kNumAndroidDevices; port++) {
        std::istringstream names(store.getAvailableTuningDevices(port));
        std::string name;
        while (names >> name) {
            if (store.isXMLTuningValid(name)) {
                figures.blobBytes += store.getXMLTuningParams(name).size() * sizeof(int);
                figures.tuningBlobs++;
            }
        }
    }
    figures.loaded = figures.profileBlobs > 0 && figures.tuningBlobs > 0;
    return figures;
}

// Runs measure() in a child process and hands its figures back through a pipe.
bool measureApart(const std::string& path, MemoryFigures* figures) {
    int fds[2];
    if (pipe(fds) != 0) return false;
    fflush(nullptr);
    pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        close(fds[0]);
        MemoryFigures measured = measure(path);
        bool sent = write(fds[1], &measured, sizeof(measured)) == sizeof(measured);
        _exit(sent ? 0 : 1);
    }
    close(fds[1]);
    bool received = read(fds[0], figures, sizeof(*figures)) == sizeof(*figures);
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return received && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void memory(benchmark::State& state, size_t bytes) {
    std::string path = BenchFiles::get().path(bytes);
    if (path.empty()) {
        state.SkipWithError("no example tuning file in examples/");
        return;
    }
    MemoryFigures figures = {};
    for (auto _ : state) {
        if (!measureApart(path, &figures)) {
            state.SkipWithError("the measuring process failed");
            return;
        }
    }
    if (!figures.loaded) {
        state.SkipWithError("the load produced no blobs from the file");
        return;
    }
    state.counters["file_bytes"] = static_cast<double>(BenchFiles::fileSize(path));
    state.counters["retained_bytes"] = figures.retainedBytes;
    state.counters["blob_bytes"] = figures.blobBytes;
    state.counters["profile_blobs"] = figures.profileBlobs;
    state.counters["tuning_blobs"] = figures.tuningBlobs;
    state.counters["peak_bytes"] = figures.peakBytes;
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const FileCase& c : kFileCases) {
        benchmark::RegisterBenchmark((std::string("memory/") + c.name).c_str(), memory, c.bytes)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace

}  // namespace korva::bench
