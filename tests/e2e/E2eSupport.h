// End-to-end helpers: a store loaded from a chosen tuning file the way a device loads it, and
// blobs read back entry by entry so that tests compare them with entries worked out by hand.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "RecordingEffect.h"
#include "SpatializerParamArrayTestPeer.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"

namespace korva::test {

constexpr int kAllDevices = 0x40000000;
constexpr int kSpeakerDevice = 0x2;
constexpr int kWiredHeadphoneDevice = 0x8;
constexpr int kA2dpDevice = 0x80;
constexpr int kUsbDevice = 0x4000;

// The parameters a profile and a profile endpoint turn into, in blob order, written out by hand
// from the translation rules: every parameter a record kind accepts is translated, held or not.
inline const std::vector<std::string> kProfileCodes = {
    "mdle", "miee", "msce", "mave", "dvme", "drcm", "rvsa", "rvse", "hvm", "hvrc", "hlra", "sdfa"};
inline const std::vector<std::string> kEndpointCodes = {
    "geon", "ieon", "iea",  "mdee", "mvbe", "beon", "plb",  "dea",  "deon", "ded",
    "ngon", "dsb",  "vbm",  "vbon", "vmb",  "dvla", "dvle", "dvli", "dvlo", "dom",
    "svsb", "vssd", "dplp", "hpon", "hptw", "hpat", "hpaa", "hpar"};

// One parameter entry of a blob, its code as text ("dom", "ieon").
struct BlobEntry {
    int device;
    std::string code;
    std::vector<int> values;
    bool operator==(const BlobEntry& o) const {
        return device == o.device && code == o.code && values == o.values;
    }
};

inline std::ostream& operator<<(std::ostream& out, const BlobEntry& e) {
    return out << "{0x" << std::hex << e.device << std::dec << ", " << e.code << ", "
               << testing::PrintToString(e.values) << "}";
}

// The entries of a blob. Fails the calling test unless the blob validates, its header is
// `header` and the last entry ends at its last word.
inline std::vector<BlobEntry> readBlob(std::vector<int> words, int header = kAllDevices) {
    SpatializerParamParser parser(words.data(), static_cast<int>(words.size() * sizeof(int)));
    EXPECT_TRUE(parser.validate());
    std::vector<BlobEntry> entries;
    if (!parser.begin()) {
        ADD_FAILURE() << "blob without header";
        return entries;
    }
    EXPECT_EQ(header, parser.mProfileId);
    const int* end = words.data() + 2;
    while (parser.next()) {
        entries.push_back({parser.mDeviceId, codeText(parser.mParamId),
                           std::vector<int>(parser.mValues, parser.mValues + parser.mNumValues)});
        end = parser.mValues + parser.mNumValues;
    }
    EXPECT_EQ(end, words.data() + words.size()) << "words after the last entry";
    return entries;
}

// Entries of one device for the codes given, in order: no values unless `values` names the code.
inline std::vector<BlobEntry> entriesFor(int device, const std::vector<std::string>& codes,
                                         const std::map<std::string, std::vector<int>>& values) {
    std::vector<BlobEntry> entries;
    for (const std::string& code : codes) {
        auto found = values.find(code);
        entries.push_back(
            {device, code, found != values.end() ? found->second : std::vector<int>()});
    }
    return entries;
}

inline void append(std::vector<BlobEntry>& to, const std::vector<BlobEntry>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

// The values of the one entry with this code.
inline std::vector<int> valuesOf(const std::vector<BlobEntry>& entries, const std::string& code) {
    std::vector<int> values;
    int found = 0;
    for (const BlobEntry& entry : entries) {
        if (entry.code == code && found++ == 0) values = entry.values;
    }
    EXPECT_EQ(1, found) << code;
    return values;
}

// The code of an effect parameter from its text ("dom" -> 0x6d6f64).
inline int codeOf(const std::string& text) {
    uint32_t code = 0;
    for (size_t i = 0; i < text.size() && i < 4; i++) {
        code |= static_cast<uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    }
    return static_cast<int>(code);
}

// Lays `file` out as the ODM default tuning file below a fresh host root and creates the store,
// which loads it. Must come before anything else in the process asks for the store.
class LoadedStore {
public:
    explicit LoadedStore(const std::string& file)
        : mRoot(makeRoot(file)), mStore(SpatializerParamArray::getInstance()), mPeer(mStore) {}
    ~LoadedStore() {
        unsetenv("KORVA_HOST_ROOT");
        std::error_code ignored;
        std::filesystem::remove_all(mRoot, ignored);
    }

    SpatializerParamArray& store() { return mStore; }
    SpatializerParamArrayTestPeer& peer() { return mPeer; }
    std::string loadedPath() const { return mRoot + "/odm/etc/korva/kvx-default-spatializer.xml"; }

private:
    static std::string makeRoot(const std::string& file) {
        EXPECT_FALSE(SpatializerParamArray::hasInstance()) << "the store was made before the file";
        std::error_code error;
        std::string root = (std::filesystem::temp_directory_path(error) / "korva-e2e-XXXXXX");
        EXPECT_NE(nullptr, mkdtemp(root.data()));
        std::filesystem::path target = root + "/odm/etc/korva/kvx-default-spatializer.xml";
        std::filesystem::create_directories(target.parent_path(), error);
        std::filesystem::copy_file(file, target, error);
        EXPECT_FALSE(error) << "cannot lay out " << file << ": " << error.message();
        setenv("KORVA_HOST_ROOT", root.c_str(), 1);
        return root;
    }

    std::string mRoot;
    SpatializerParamArray& mStore;
    SpatializerParamArrayTestPeer mPeer;
};

}  // namespace korva::test
