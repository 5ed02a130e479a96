// One store load of a tuning file, for comparing two builds of the library on the same file:
//
//   korva-load-once FILE        one untimed load, then one load inside measuredLoad(), which
//                               callgrind --toggle-collect='*measuredLoad*' counts alone
//   korva-load-once FILE N      one untimed load, then N timed loads; prints the medians of their
//                               CPU time and wall time in milliseconds
//
// It uses only what every version of the store exports (the singleton and
// loadSpatializerXMLFile), so it can be built against an older tree as well; bench/run
// --instructions builds it against this tree with and without the load report.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "store/SpatializerParamArray.h"

namespace {

using korva::SpatializerParamArray;

double nowMs(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Out of line so that callgrind can count this load and nothing else.
__attribute__((noinline)) void measuredLoad(SpatializerParamArray& store, std::string path) {
    store.loadSpatializerXMLFile(std::move(path));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: %s FILE [LOADS]\n", argv[0]);
        return 2;
    }
    const std::string path = argv[1];
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    // Like korva-bench-load: the first load grows the heap and fills the profile map.
    store.loadSpatializerXMLFile(path);
    // A load that read nothing would be fast for the wrong reason.
    if (!store.isXMLProfileValid(0) || !store.isXMLTuningValid("default_headphone")) {
        fprintf(stderr, "korva-load-once: the load produced no blobs from %s\n", path.c_str());
        return 1;
    }
    if (argc == 2) {
        measuredLoad(store, path);
        return 0;
    }
    const int loads = atoi(argv[2]);
    if (loads <= 0) {
        fprintf(stderr, "korva-load-once: LOADS must be a positive number\n");
        return 2;
    }
    std::vector<double> cpu;
    std::vector<double> wall;
    for (int i = 0; i < loads; i++) {
        const double cpuStart = nowMs(CLOCK_PROCESS_CPUTIME_ID);
        const double wallStart = nowMs(CLOCK_MONOTONIC);
        measuredLoad(store, path);
        cpu.push_back(nowMs(CLOCK_PROCESS_CPUTIME_ID) - cpuStart);
        wall.push_back(nowMs(CLOCK_MONOTONIC) - wallStart);
    }
    printf("%.4f %.4f\n", median(cpu), median(wall));
    return 0;
}
