// End-to-end helpers: a store loaded from a chosen tuning file the way a device loads it, and
// blobs read back entry by entry so that tests compare them with entries worked out by hand.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "RecordingEffect.h"
#include "SpatializerParamArrayTestPeer.h"
#include "store/SpatializerParamArray.h"

namespace korva::test {

constexpr int kAllDevices = 0x40000000;
constexpr int kSpeakerDevice = 0x2;
constexpr int kWiredHeadphoneDevice = 0x8;
constexpr int kA2dpDevice = 0x80;
constexpr int kUsbDevice = 0x4000;

// One parameter entry of a blob, its code as text ("dom", "ieon").
struct BlobEntry {
    int device;
    std::string code;
    std::vector<int> values;

    bool operator==(const BlobEntry& other) const {
        return device == other.device && code == other.code && values == other.values;
    }
};
std::ostream& operator<<(std::ostream& out, const BlobEntry& entry);

// The entries of a blob built from the tuning file. Fails the calling test when the blob does not
// validate, when its header is not the command header 0x40000000, or when the entries do not
// end exactly at its last word.
std::vector<BlobEntry> readBlob(const std::vector<int>& blob);

// The entries of a built-in table (header: a profile id).
std::vector<BlobEntry> readBuiltinTable(const int* table, int words);

// Entries of one device for the codes given, in order: no values unless `values` names the code.
std::vector<BlobEntry> entriesFor(int device, const std::vector<std::string>& codes,
                                  const std::map<std::string, std::vector<int>>& values = {});

void append(std::vector<BlobEntry>& to, const std::vector<BlobEntry>& more);

// The entries of one code, in blob order.
std::vector<BlobEntry> withCode(const std::vector<BlobEntry>& entries, const std::string& code);

// The code of an effect parameter from its text, as the effect knows it ("dom" -> 0x6d6f64).
int codeOf(const std::string& text);

// The setParam calls that send the entries unchanged, in order.
std::vector<EffectCall> sendsOf(const std::vector<BlobEntry>& entries);

// The device ids of a blob's entries in order, each run of equal ids listed once.
std::vector<int> deviceGroups(const std::vector<BlobEntry>& entries);

// Lays `file` out as the ODM default tuning file below a fresh host root and creates the store,
// which loads it; an empty `file` leaves the root without tuning file. Must come before anything
// else in the process asks for the store.
class LoadedStore {
public:
    explicit LoadedStore(const std::string& file);
    ~LoadedStore();
    LoadedStore(const LoadedStore&) = delete;
    LoadedStore& operator=(const LoadedStore&) = delete;

    SpatializerParamArray& store() { return mStore; }
    SpatializerParamArrayTestPeer& peer() { return mPeer; }
    // The path the store was given, as the loader logs it.
    const std::string& loadedPath() const { return mLoadedPath; }

private:
    static SpatializerParamArray& createStore(const std::string& root, const std::string& file,
                                              std::string& loadedPath);

    std::string mRoot;
    std::string mLoadedPath;
    SpatializerParamArray& mStore;
    SpatializerParamArrayTestPeer mPeer;
};

// Everything the loader filed, as text: blobs, counters, ports, matrices and gains. Two loads of
// the same file must give the same text.
std::string dumpLoadedStore(SpatializerParamArrayTestPeer& peer);

}  // namespace korva::test
