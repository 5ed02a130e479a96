// The inputs of the benchmarks: the bundled example tuning file and generated files of chosen
// sizes, written once per process into a temporary folder that is removed at exit.
#pragma once

#include <valgrind/callgrind.h>

#include <cstddef>
#include <map>
#include <string>

#include "bench/TuningFileGenerator.h"

namespace korva::bench {

// Sizes the load benchmarks are run at, and the seed of every generated file.
constexpr size_t kSize100K = 100 * 1000;
constexpr size_t kSize1M = 1000 * 1000;
constexpr size_t kSize10M = 10 * 1000 * 1000;
constexpr uint64_t kBenchSeed = 1;

// The files the load and memory benchmarks are run on; size 0 stands for the bundled example.
struct FileCase {
    const char* name;
    size_t bytes;
};
inline constexpr FileCase kFileCases[] = {
    {"example", 0}, {"100K", kSize100K}, {"1M", kSize1M}, {"10M", kSize10M}};

// Around a benchmark's timing loop: under callgrind started with collection off (bench/run
// --instructions), the instructions of the loop alone are counted. Outside valgrind the two
// toggles are a few instructions each, outside the timed iterations.
class CountedLoop {
public:
    CountedLoop() { CALLGRIND_TOGGLE_COLLECT; }
    ~CountedLoop() { stop(); }
    CountedLoop(const CountedLoop&) = delete;
    CountedLoop& operator=(const CountedLoop&) = delete;

    void stop() {
        if (mCounting) {
            CALLGRIND_TOGGLE_COLLECT;
            mCounting = false;
        }
    }

private:
    bool mCounting = true;
};

class BenchFiles {
public:
    static BenchFiles& get();

    // A generated file of about `bytes`, written on first request.
    const std::string& generated(size_t bytes);
    // What that file holds.
    const GeneratedTuningSummary& summary(size_t bytes);
    // The bundled example, or an empty string when the tree has none.
    std::string example() const;
    // The file of a FileCase: the example for size 0, else the generated file.
    std::string path(size_t bytes);

    static size_t fileSize(const std::string& path);

    ~BenchFiles();

private:
    BenchFiles();

    std::string mDir;
    std::map<size_t, std::string> mFiles;
    std::map<size_t, GeneratedTuningSummary> mSummaries;
};

}  // namespace korva::bench
