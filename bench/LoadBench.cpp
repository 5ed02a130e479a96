// Start-up load: the whole SpatializerParamArray::loadSpatializerXMLFile on the example and on
// generated files, each beside libxml2 alone reading and freeing the same file, the floor of any
// reader built on libxml2's tree.
//
// The store is a process-wide singleton that is never destroyed, so every iteration loads into
// the one instance, after one untimed load (each side gets one untimed round). Profile blobs keep
// the first load's (the first blob of an id wins), so a timed load translates everything as the
// first did but no longer allocates the profile map's nodes; tuning blobs are replaced each time.
// That leaves a few hundred small allocations out of a load that makes tens of thousands.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <string>

#include "bench/BenchFiles.h"
#include "store/SpatializerParamArray.h"

namespace korva::bench {

namespace {

void reportFile(benchmark::State& state, const std::string& path) {
    double bytes = static_cast<double>(BenchFiles::fileSize(path));
    state.counters["file_bytes"] = bytes;
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void libxmlParse(benchmark::State& state, size_t bytes) {
    std::string path = BenchFiles::get().path(bytes);
    if (path.empty()) {
        state.SkipWithError("no example tuning file in examples/");
        return;
    }
    // One untimed round first, so that neither side pays for growing the heap from the system.
    xmlFreeDoc(xmlReadFile(path.c_str(), nullptr, 0));
    for (auto _ : state) {
        xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
        if (document == nullptr) {
            state.SkipWithError("libxml2 cannot read the file");
            break;
        }
        xmlFreeDoc(document);
    }
    reportFile(state, path);
}

void load(benchmark::State& state, size_t bytes) {
    std::string path = BenchFiles::get().path(bytes);
    if (path.empty()) {
        state.SkipWithError("no example tuning file in examples/");
        return;
    }
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    store.loadSpatializerXMLFile(path);
    for (auto _ : state) {
        store.loadSpatializerXMLFile(path);
    }
    // A load that read nothing would be fast for the wrong reason.
    if (!store.isXMLProfileValid(0) || !store.isXMLTuningValid("default_headphone")) {
        state.SkipWithError("the load produced no blobs from the file");
        return;
    }
    reportFile(state, path);
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const FileCase& c : kFileCases) {
        benchmark::RegisterBenchmark((std::string("load/") + c.name).c_str(), load, c.bytes)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("libxml2_parse/") + c.name).c_str(), libxmlParse,
                                     c.bytes)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace

}  // namespace korva::bench
