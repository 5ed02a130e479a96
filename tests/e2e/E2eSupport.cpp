#include "E2eSupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <sstream>

#include "store/SpatializerParamParser.h"

namespace korva::test {

namespace {

constexpr const char* kOdmTuningFile = "/odm/etc/korva/kvx-default-spatializer.xml";

std::string makeRoot() {
    std::error_code error;
    std::string pattern =
        (std::filesystem::temp_directory_path(error) / "korva-e2e-root-XXXXXX").string();
    const char* made = mkdtemp(pattern.data());
    return made != nullptr ? made : "";
}

void dumpValues(std::ostream& out, const std::vector<int>& values) {
    for (int value : values) {
        out << ' ' << value;
    }
    out << '\n';
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const BlobEntry& entry) {
    out << "{0x" << std::hex << entry.device << std::dec << ", \"" << entry.code << "\", {";
    for (size_t i = 0; i < entry.values.size(); i++) {
        out << (i == 0 ? "" : ", ") << entry.values[i];
    }
    return out << "}}";
}

namespace {

// Reads every entry and fails the calling test unless the words validate and the last entry ends
// at the last word.
std::vector<BlobEntry> readEntries(std::vector<int> words, int* header) {
    const int size = static_cast<int>(words.size() * sizeof(int));
    SpatializerParamParser parser(words.data(), size);
    EXPECT_TRUE(parser.validate());
    std::vector<BlobEntry> entries;
    if (!parser.begin()) {
        ADD_FAILURE() << "blob without header";
        return entries;
    }
    *header = parser.mProfileId;
    const int* end = words.data() + 2;
    while (parser.next()) {
        entries.push_back({parser.mDeviceId, codeText(parser.mParamId),
                           std::vector<int>(parser.mValues, parser.mValues + parser.mNumValues)});
        end = parser.mValues + parser.mNumValues;
    }
    EXPECT_EQ(parser.mParamIndex, parser.mNumParams);
    EXPECT_EQ(end, words.data() + words.size()) << "words after the last entry";
    return entries;
}

}  // namespace

std::vector<BlobEntry> readBlob(const std::vector<int>& blob) {
    int header = 0;
    std::vector<BlobEntry> entries = readEntries(blob, &header);
    EXPECT_EQ(header, kAllDevices);
    return entries;
}

std::vector<BlobEntry> readBuiltinTable(const int* table, int words) {
    int header = 0;
    return readEntries(std::vector<int>(table, table + words), &header);
}

std::vector<BlobEntry> entriesFor(int device, const std::vector<std::string>& codes,
                                  const std::map<std::string, std::vector<int>>& values) {
    std::vector<BlobEntry> entries;
    for (const std::string& code : codes) {
        auto found = values.find(code);
        entries.push_back(
            {device, code, found != values.end() ? found->second : std::vector<int>()});
    }
    return entries;
}

void append(std::vector<BlobEntry>& to, const std::vector<BlobEntry>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

std::vector<BlobEntry> withCode(const std::vector<BlobEntry>& entries, const std::string& code) {
    std::vector<BlobEntry> out;
    for (const BlobEntry& entry : entries) {
        if (entry.code == code) {
            out.push_back(entry);
        }
    }
    return out;
}

int codeOf(const std::string& text) {
    uint32_t code = 0;
    for (size_t i = 0; i < text.size() && i < 4; i++) {
        code |= static_cast<uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    }
    return static_cast<int>(code);
}

std::vector<EffectCall> sendsOf(const std::vector<BlobEntry>& entries) {
    std::vector<EffectCall> calls;
    for (const BlobEntry& entry : entries) {
        calls.push_back(EffectCall::setParam(entry.device, codeOf(entry.code), entry.values));
    }
    return calls;
}

std::vector<int> deviceGroups(const std::vector<BlobEntry>& entries) {
    std::vector<int> groups;
    for (const BlobEntry& entry : entries) {
        if (groups.empty() || groups.back() != entry.device) {
            groups.push_back(entry.device);
        }
    }
    return groups;
}

LoadedStore::LoadedStore(const std::string& file)
    : mRoot(makeRoot()), mStore(createStore(mRoot, file, mLoadedPath)), mPeer(mStore) {}

LoadedStore::~LoadedStore() {
    unsetenv("KORVA_HOST_ROOT");
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
}

SpatializerParamArray& LoadedStore::createStore(const std::string& root, const std::string& file,
                                                std::string& loadedPath) {
    EXPECT_FALSE(SpatializerParamArray::hasInstance()) << "the store was made before the file";
    EXPECT_FALSE(root.empty()) << "no temporary root";
    loadedPath = root + kOdmTuningFile;
    if (!file.empty()) {
        std::filesystem::path target(loadedPath);
        std::error_code error;
        std::filesystem::create_directories(target.parent_path(), error);
        std::filesystem::copy_file(file, target, error);
        EXPECT_FALSE(error) << "cannot lay out " << file << ": " << error.message();
    }
    setenv("KORVA_HOST_ROOT", root.c_str(), 1);
    return SpatializerParamArray::getInstance();
}

std::string dumpLoadedStore(SpatializerParamArrayTestPeer& peer) {
    std::ostringstream out;
    out << "profiles " << peer.xmlProfileCount() << '\n';
    for (const auto& [id, blob] : peer.xmlProfileParams()) {
        out << "profile " << id;
        dumpValues(out, blob);
    }
    out << "tunings " << peer.xmlTuningCount() << '\n';
    for (const auto& [device, blob] : peer.xmlTuningParams()) {
        out << "tuning " << device;
        dumpValues(out, blob);
    }
    for (const auto& [device, port] : peer.tuningDevicePorts()) {
        out << "port " << device << ' ' << port << '\n';
    }
    for (const auto& [device, words] : peer.tuningMixMatrices()) {
        out << "matrix " << device;
        dumpValues(out, words);
    }
    for (const auto& [id, gains] : peer.profileGeqGains()) {
        out << "gains " << id;
        dumpValues(out, gains);
    }
    out << "channels " << peer.tuningParamValue() << '\n';
    out << "matrix length " << peer.defaultMixMatrixLength() << '\n';
    return out.str();
}

}  // namespace korva::test
