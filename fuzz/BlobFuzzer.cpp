// Blob bytes through both readers of the profile blob layout: the store's parser and the engine's.
// Every value of every accepted entry is read, so an entry that claims more than the buffer holds
// shows up as an out-of-bounds read. The two readers must also agree: what the strict engine
// reader accepts, the store's reader accepts entry for entry.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "engine/EffectParamParser.h"
#include "fuzz/FuzzSupport.h"
#include "store/SpatializerParamParser.h"

namespace {

// A negative value count moves the store reader's cursor backwards, which it accepts, so a blob can
// make it visit the same entry until the announced count is reached. With a count near INT_MAX
// that is billions of steps: a known cost (measured in the README), not something to rediscover
// on every run, so such headers skip the store reader here.
constexpr int32_t kMaxWalkedEntries = 1 << 12;

struct Entry {
    int32_t deviceId;
    int32_t paramId;
    int32_t numValues;
    std::vector<int32_t> values;

    bool operator==(const Entry& other) const {
        return deviceId == other.deviceId && paramId == other.paramId &&
               numValues == other.numValues && values == other.values;
    }
};

// The values of an accepted entry lie inside the blob; a negative count has none to read.
template <typename Parser>
Entry readEntry(const Parser& parser, const uint8_t* begin, const uint8_t* end) {
    Entry entry{parser.mDeviceId, parser.mParamId, parser.mNumValues, {}};
    if (parser.mNumValues <= 0) {
        return entry;
    }
    const auto* first = reinterpret_cast<const uint8_t*>(parser.mValues);
    if (first < begin || first + int64_t{parser.mNumValues} * 4 > end) {
        abort();
    }
    // Read through mValues as the callers do.
    for (int32_t i = 0; i < parser.mNumValues; i++) {
        entry.values.push_back(parser.mValues[i]);
        korva::fuzz::consume(parser.mValues[i]);
    }
    return entry;
}

// Walks as callers do: validate, then begin and next until next says no.
template <typename Parser>
bool walk(Parser& parser, const uint8_t* begin, const uint8_t* end, std::vector<Entry>* out) {
    if (!parser.validate()) {
        return false;
    }
    if (!parser.begin()) {
        // A blob that validated has a header.
        abort();
    }
    while (parser.next()) {
        out->push_back(readEntry(parser, begin, end));
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    korva::fuzz::quietLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    korva::fuzz::InputCursor input(data, size);
    // The first byte picks the log level, so the entry descriptions are formatted too.
    korva::fuzz::setLogLevel((input.takeByte() & 1) != 0 ? 4 : 2);

    // The blob in a buffer of its own exact size, so any read past it is out of bounds.
    std::vector<uint8_t> blob(input.data(), input.data() + input.size());
    const uint8_t* begin = blob.data();
    const uint8_t* end = begin + blob.size();
    int blobSize = static_cast<int>(blob.size());

    std::vector<Entry> engineEntries;
    EffectParamParser engineParser(blob.data(), blobSize);
    bool engineValid = walk(engineParser, begin, end, &engineEntries);

    int32_t announced = 0;
    if (blob.size() >= 8) {
        memcpy(&announced, begin + 4, sizeof(announced));
    }
    if (announced > kMaxWalkedEntries) {
        return 0;
    }
    std::vector<Entry> storeEntries;
    korva::SpatializerParamParser storeParser(blob.data(), blobSize);
    bool storeValid = walk(storeParser, begin, end, &storeEntries);

    if (engineValid && (!storeValid || engineEntries != storeEntries)) {
        abort();
    }
    return 0;
}
