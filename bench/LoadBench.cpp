// Start-up load: the whole SpatializerParamArray::loadSpatializerXMLFile on the example and on
// generated files, each beside libxml2 alone reading and freeing the same file, and beside the
// load's floor: that parse plus the model objects the store's interfaces make a load build, no
// more and the cheapest way (bench/LoadFloor.h): one record object per record element, one map
// node and one value vector per parameter value the file sets, and the blobs with their words.
// The counts come from the library's report of one load of the same file, taken before timing.
// A fourth figure adds to the parse one walk over the tree that finds the end of every attribute
// value.
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
#include "bench/LoadFloor.h"
#include "store/SpatializerParamArray.h"

namespace korva::bench {

namespace {

void reportFile(benchmark::State& state, const std::string& path) {
    double bytes = static_cast<double>(BenchFiles::fileSize(path));
    state.counters["file_bytes"] = bytes;
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

// The file of that size, or empty (and the benchmark skipped) when there is none.
std::string fileOrSkip(benchmark::State& state, size_t bytes) {
    std::string path = BenchFiles::get().path(bytes);
    if (path.empty()) {
        state.SkipWithError("no example tuning file in examples/");
    }
    return path;
}

// The file for a libxml2 figure, after one untimed round, so that no side pays for growing the
// heap from the system; empty when there is no file.
std::string libxmlFile(benchmark::State& state, size_t bytes) {
    std::string path = fileOrSkip(state, bytes);
    if (!path.empty()) {
        xmlFreeDoc(xmlReadFile(path.c_str(), nullptr, 0));
    }
    return path;
}

void libxmlParse(benchmark::State& state, size_t bytes) {
    std::string path = libxmlFile(state, bytes);
    if (path.empty()) return;
    CountedLoop counted;
    for (auto _ : state) {
        xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
        if (document == nullptr) {
            state.SkipWithError("libxml2 cannot read the file");
            break;
        }
        xmlFreeDoc(document);
    }
    counted.stop();
    reportFile(state, path);
}

// Visits every node in document order and measures the text of every attribute value.
size_t walkValues(const xmlDoc* document) {
    size_t total = 0;
    const xmlNode* node = xmlDocGetRootElement(document);
    while (node != nullptr) {
        for (const xmlAttr* attribute = node->type == XML_ELEMENT_NODE ? node->properties : nullptr;
             attribute != nullptr; attribute = attribute->next) {
            for (const xmlNode* text = attribute->children; text != nullptr; text = text->next) {
                total += static_cast<size_t>(xmlStrlen(text->content));
            }
        }
        if (node->children != nullptr) {
            node = node->children;
            continue;
        }
        while (node != nullptr && node->next == nullptr) {
            node = node->parent != nullptr && node->parent->type != XML_DOCUMENT_NODE ? node->parent
                                                                                      : nullptr;
        }
        if (node != nullptr) {
            node = node->next;
        }
    }
    return total;
}

void libxmlWalk(benchmark::State& state, size_t bytes) {
    std::string path = libxmlFile(state, bytes);
    if (path.empty()) return;
    size_t valueBytes = 0;
    CountedLoop counted;
    for (auto _ : state) {
        xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
        if (document == nullptr) {
            state.SkipWithError("libxml2 cannot read the file");
            break;
        }
        valueBytes = walkValues(document);
        benchmark::DoNotOptimize(valueBytes);
        xmlFreeDoc(document);
    }
    counted.stop();
    if (valueBytes == 0) {
        state.SkipWithError("the walk found no attribute values");
        return;
    }
    state.counters["value_bytes"] = static_cast<double>(valueBytes);
    reportFile(state, path);
}

void loadFloor(benchmark::State& state, size_t bytes) {
    std::string path = libxmlFile(state, bytes);
    if (path.empty()) return;
    const LoadFloor floor = LoadFloor::count(path);
    if (!floor.error().empty()) {
        state.SkipWithError(floor.error().c_str());
        return;
    }
    CountedLoop counted;
    for (auto _ : state) {
        xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
        if (document == nullptr) {
            state.SkipWithError("libxml2 cannot read the file");
            break;
        }
        benchmark::DoNotOptimize(floor.build());
        xmlFreeDoc(document);
    }
    counted.stop();
    state.counters["records"] = static_cast<double>(floor.records());
    state.counters["values"] = static_cast<double>(floor.values());
    state.counters["blobs"] = static_cast<double>(floor.blobs());
    state.counters["blob_words"] = static_cast<double>(floor.blobWords());
    reportFile(state, path);
}

void load(benchmark::State& state, size_t bytes) {
    std::string path = fileOrSkip(state, bytes);
    if (path.empty()) return;
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    store.loadSpatializerXMLFile(path);
    CountedLoop counted;
    for (auto _ : state) {
        store.loadSpatializerXMLFile(path);
    }
    counted.stop();
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
        benchmark::RegisterBenchmark((std::string("load_floor/") + c.name).c_str(), loadFloor,
                                     c.bytes)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("libxml2_parse/") + c.name).c_str(), libxmlParse,
                                     c.bytes)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("libxml2_walk/") + c.name).c_str(), libxmlWalk,
                                     c.bytes)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace

}  // namespace korva::bench
