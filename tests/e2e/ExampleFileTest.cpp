// The bundled example tuning file: a readable blob for every profile and tuning device, and the
// same blobs whichever process loads the file.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "E2eSupport.h"
#include "TestPaths.h"

namespace korva::test {
namespace {

std::string exampleFile() {
    return examplesDir() + "/kvx-default-spatializer.xml";
}

template <typename Key>
void dumpValues(std::ostream& out, const char* what, const Key& key,
                const std::vector<int>& values) {
    out << what << ' ' << key << ':';
    for (int value : values) out << ' ' << value;
    out << '\n';
}

// Everything loading filed, as text.
std::string dump(SpatializerParamArrayTestPeer& peer) {
    std::ostringstream out;
    out << peer.xmlProfileCount() << " profiles, " << peer.xmlTuningCount() << " tunings, "
        << peer.tuningParamValue() << " channels, matrix length " << peer.defaultMixMatrixLength()
        << '\n';
    for (const auto& [id, blob] : peer.xmlProfileParams()) dumpValues(out, "profile", id, blob);
    for (const auto& [name, blob] : peer.xmlTuningParams()) dumpValues(out, "tuning", name, blob);
    for (const auto& [name, port] : peer.tuningDevicePorts()) out << name << " on " << port << '\n';
    for (const auto& [name, words] : peer.tuningMixMatrices()) dumpValues(out, "mix", name, words);
    for (const auto& [id, gains] : peer.profileGeqGains()) dumpValues(out, "gains", id, gains);
    return out.str();
}

// Loads the example in a forked process whose heap was laid out differently first (blocks freed
// in an order unrelated to the one they were taken in), and returns its dump; empty when the
// child failed. The fork comes before this process makes its own store.
std::string dumpFromChildProcess() {
    std::string path = std::filesystem::temp_directory_path() / "korva-e2e-dump-XXXXXX";
    int fd = mkstemp(path.data());
    if (fd < 0) return "";
    close(fd);
    pid_t pid = fork();
    if (pid == 0) {
        std::vector<void*> blocks;
        for (int i = 0; i < 4000; i++) blocks.push_back(malloc(16 + (i * 97) % 480));
        for (size_t i = 0; i < blocks.size(); i += 3) free(blocks[i]);
        for (size_t i = blocks.size(); i-- > 0;) {
            if (i % 3 != 0) free(blocks[i]);
        }
        bool written = false;
        {
            LoadedStore loaded(exampleFile());
            std::ofstream out(path);
            out << dump(loaded.peer());
            out.close();
            written = out.good();
        }
        _exit(written ? 0 : 1);
    }
    int status = 0;
    bool done =
        pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    unlink(path.c_str());
    return done ? text.str() : "";
}

TEST(ExampleFileTest, EveryBlobIsReadableAndAnotherProcessLoadsTheSameBytes) {
    const std::string theirs = dumpFromChildProcess();
    ASSERT_FALSE(theirs.empty()) << "the child process failed";
    LoadedStore loaded(exampleFile());
    SpatializerParamArrayTestPeer& peer = loaded.peer();
    EXPECT_EQ(theirs, dump(peer));

    // Five profiles, each with its 20-band graphic EQ and a speaker and a headphone endpoint.
    ASSERT_EQ(5u, peer.xmlProfileParams().size());
    for (const auto& [id, blob] : peer.xmlProfileParams()) {
        std::vector<int> groups;
        for (const BlobEntry& entry : readBlob(blob)) {
            if (groups.empty() || groups.back() != entry.device) groups.push_back(entry.device);
        }
        EXPECT_EQ((std::vector<int>{kAllDevices, kSpeakerDevice, kA2dpDevice, kUsbDevice}), groups)
            << "profile " << id;
        EXPECT_EQ(20u, peer.profileGeqGains()[id].size()) << id;
    }
    const std::map<std::string, std::string> ports = {{"", "internal_speaker"},
                                                      {"speaker_game", "internal_speaker"},
                                                      {"default_headphone", "headphone"},
                                                      {"inear_monitor", "headphone"},
                                                      {"default_bluetooth", "bluetooth"},
                                                      {"overear_closed", "bluetooth"},
                                                      {"default_usb", "usb"},
                                                      {"usb_dac", "usb"}};
    EXPECT_EQ(ports, peer.tuningDevicePorts());
    const std::map<std::string, int> bits = {{"internal_speaker", kSpeakerDevice},
                                             {"headphone", kWiredHeadphoneDevice},
                                             {"bluetooth", kA2dpDevice},
                                             {"usb", kUsbDevice}};
    ASSERT_EQ(ports.size(), peer.xmlTuningParams().size());
    for (const auto& [device, blob] : peer.xmlTuningParams()) {
        std::vector<BlobEntry> entries = readBlob(blob);
        EXPECT_FALSE(entries.empty()) << device;
        for (const BlobEntry& entry : entries) {
            EXPECT_EQ(bits.at(ports.at(device)), entry.device) << device << " " << entry.code;
        }
    }
    EXPECT_EQ(8, peer.xmlTuningCount());
}

}  // namespace
}  // namespace korva::test
