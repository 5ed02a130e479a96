// korva-gen-tuning: writes a synthetic tuning file of a chosen size.
//
//   korva-gen-tuning <size> <output.xml> [seed]
//
// size is a byte count with an optional K (1000) or M (1000000) suffix: 10K, 100K, 1M, 10M.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/TuningFileGenerator.h"

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4) {
        fprintf(stderr, "usage: %s <size, e.g. 100K or 10M> <output.xml> [seed]\n", argv[0]);
        return 2;
    }
    size_t size = korva::bench::parseByteSize(argv[1]);
    if (size == 0) {
        fprintf(stderr, "%s: not a size: %s\n", argv[0], argv[1]);
        return 2;
    }
    uint64_t seed = argc == 4 ? strtoull(argv[3], nullptr, 10) : 1;
    korva::bench::TuningFileGenerator generator(size, seed);
    if (!generator.writeTo(argv[2])) {
        fprintf(stderr, "%s: cannot write %s\n", argv[0], argv[2]);
        return 1;
    }
    const korva::bench::GeneratedTuningSummary& summary = generator.summary();
    printf(
        "%s: %d profiles, %d IEQ presets, %d GEQ presets, %d endpoints, %d tunings, "
        "%zu tuning devices\n",
        argv[2], summary.profiles, summary.ieqPresets, summary.geqPresets, summary.endpoints,
        summary.tunings, summary.deviceTunings.size());
    return 0;
}
