#include "bench/LoadFloor.h"

#include <benchmark/benchmark.h>

#include <unordered_map>

#include "model/ParameterValues.h"
#include "observer/LoadObserver.h"
#include "store/SpatializerParamArray.h"

namespace korva::bench {

namespace {

// Collects, per record, the last values the file set for each parameter (a value set twice is
// one map node), and the words of every blob the store keeps.
class Counter : public LoadObserver {
public:
    void onRecord(const xmlNode* /*element*/, const ParameterValues& record,
                  RecordKind /*kind*/) override {
        slot(record);
    }

    void onValue(const xmlNode* /*element*/, const ParameterValues& record, Parameter parameter,
                 const std::vector<int>& values, ValueSource source) override {
        // Only what the file itself sets: the loader's and the translators' rules are work of
        // the library's own choosing.
        if (source != ValueSource::kFile && source != ValueSource::kRecordAttribute) return;
        slot(record)[parameter] = values;
    }

    void onBlobFiled(const BlobKey& /*blob*/, const std::vector<int>& words,
                     BlobFate fate) override {
        if (fate != BlobFate::kDropped) mBlobs.push_back(words);
    }

    std::vector<std::map<Parameter, std::vector<int>>> mRecords;
    std::vector<std::vector<int>> mBlobs;

private:
    std::map<Parameter, std::vector<int>>& slot(const ParameterValues& record) {
        auto [found, added] = mIndex.try_emplace(&record, mRecords.size());
        if (added) mRecords.emplace_back();
        return mRecords[found->second];
    }

    // Records live until the load ends, so their addresses tell them apart.
    std::unordered_map<const ParameterValues*, size_t> mIndex;
};

// What a record object must hold at least: its values keyed by parameter.
struct FloorRecord {
    std::map<Parameter, std::vector<int>> values;
};

}  // namespace

LoadFloor LoadFloor::count(const std::string& path) {
    Counter counter;
    {
        LoadObserver::Scope listening(&counter);
        android::Singleton<SpatializerParamArray>::getInstance().loadSpatializerXMLFile(path);
    }
    LoadFloor floor;
    for (const auto& values : counter.mRecords) {
        floor.mRecords.emplace_back(values.begin(), values.end());
    }
    floor.mBlobs = std::move(counter.mBlobs);
    if (floor.mRecords.empty() || floor.mBlobs.empty()) {
        floor.mError = "the load reported no record or no blob";
    }
    return floor;
}

size_t LoadFloor::build() const {
    size_t words = 0;
    std::vector<std::unique_ptr<FloorRecord>> records;
    records.reserve(mRecords.size());
    for (const RecordValues& plan : mRecords) {
        auto record = std::make_unique<FloorRecord>();
        for (const auto& [parameter, values] : plan) {
            record->values.emplace_hint(record->values.end(), parameter,
                                        std::vector<int>(values.begin(), values.end()));
            words += values.size();
        }
        benchmark::DoNotOptimize(record.get());
        records.push_back(std::move(record));
    }
    std::vector<std::vector<int>> blobs;
    blobs.reserve(mBlobs.size());
    for (const std::vector<int>& blob : mBlobs) {
        blobs.emplace_back(blob.begin(), blob.end());
        words += blob.size();
    }
    benchmark::DoNotOptimize(blobs.data());
    benchmark::ClobberMemory();
    return words;
}

size_t LoadFloor::values() const {
    size_t count = 0;
    for (const RecordValues& plan : mRecords) count += plan.size();
    return count;
}

size_t LoadFloor::blobWords() const {
    size_t count = 0;
    for (const std::vector<int>& blob : mBlobs) count += blob.size();
    return count;
}

}  // namespace korva::bench
