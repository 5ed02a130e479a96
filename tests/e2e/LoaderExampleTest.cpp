// The bundled example tuning file: a blob for every profile and every tuning device, each one
// readable, and the same blobs whichever process loads the file.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "E2eSupport.h"
#include "TestPaths.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

std::string exampleFile() {
    return examplesDir() + "/kvx-default-spatializer.xml";
}

TEST(ExampleFileTest, EveryProfileAndTuningDeviceHasAReadableBlob) {
    LoadedStore loaded(exampleFile());
    SpatializerParamArrayTestPeer& peer = loaded.peer();

    EXPECT_EQ(peer.xmlProfileCount(), 5);
    ASSERT_EQ(peer.xmlProfileParams().size(), 5u);
    for (const auto& [id, blob] : peer.xmlProfileParams()) {
        EXPECT_GE(id, 0);
        EXPECT_LE(id, 4);
        // Each profile has a speaker and a headphone endpoint.
        EXPECT_EQ(deviceGroups(readBlob(blob)),
                  (std::vector<int>{kAllDevices, kSpeakerDevice, kA2dpDevice, kUsbDevice}))
            << "profile " << id;
    }
    // Every profile has its GEQ preset, 20 bands.
    for (int id = 0; id <= 4; id++) {
        ASSERT_EQ(peer.profileGeqGains().count(id), 1u) << id;
        EXPECT_EQ(peer.profileGeqGains().at(id).size(), 20u) << id;
    }

    const std::map<std::string, std::string> ports = {{"", "internal_speaker"},
                                                      {"speaker_game", "internal_speaker"},
                                                      {"default_headphone", "headphone"},
                                                      {"inear_monitor", "headphone"},
                                                      {"default_bluetooth", "bluetooth"},
                                                      {"overear_closed", "bluetooth"},
                                                      {"default_usb", "usb"},
                                                      {"usb_dac", "usb"}};
    EXPECT_EQ(peer.tuningDevicePorts(), ports);
    const std::map<std::string, int> bits = {{"internal_speaker", kSpeakerDevice},
                                             {"headphone", kWiredHeadphoneDevice},
                                             {"bluetooth", kA2dpDevice},
                                             {"usb", kUsbDevice}};
    ASSERT_EQ(peer.xmlTuningParams().size(), ports.size());
    for (const auto& [device, blob] : peer.xmlTuningParams()) {
        std::vector<BlobEntry> entries = readBlob(blob);
        EXPECT_FALSE(entries.empty()) << device;
        EXPECT_EQ(deviceGroups(entries), std::vector<int>{bits.at(ports.at(device))}) << device;
        // Every tuning of the example has a mix matrix: endpoint, orientation, coefficients.
        ASSERT_EQ(peer.tuningMixMatrices().count(device), 1u) << device;
        EXPECT_GT(peer.tuningMixMatrices().at(device).size(), 2u) << device;
    }

    // The speaker's tuning is bound under the empty name that the speaker port starts with, so
    // every default selection is served and the tunings are usable.
    EXPECT_EQ(peer.xmlTuningCount(), 8);
    EXPECT_EQ(peer.tuningParamValue(), 2);
}

// Lays the heap out so that the next allocations do not come in address order: blocks of the
// sizes records take are freed in an order unrelated to the one they were taken in.
void scatterHeap() {
    std::vector<void*> blocks;
    for (int i = 0; i < 4000; i++) {
        blocks.push_back(malloc(16 + (i * 97) % 480));
    }
    for (size_t i = 0; i < blocks.size(); i += 3) {
        free(blocks[i]);
    }
    for (size_t i = blocks.size(); i-- > 0;) {
        if (i % 3 != 0) {
            free(blocks[i]);
        }
    }
}

// Loads the example in a forked process whose heap was scattered first, and returns its dump;
// empty when the child failed. The fork comes before this process makes its own store.
std::string dumpFromChildProcess() {
    std::error_code error;
    std::string path =
        (std::filesystem::temp_directory_path(error) / "korva-e2e-dump-XXXXXX").string();
    int fd = mkstemp(path.data());
    if (fd < 0) {
        return "";
    }
    close(fd);
    pid_t pid = fork();
    if (pid == 0) {
        bool written = false;
        {
            scatterHeap();
            LoadedStore loaded(exampleFile());
            std::ofstream out(path);
            out << dumpLoadedStore(loaded.peer());
            out.close();
            written = out.good();
        }
        _exit(written ? 0 : 1);
    }
    int status = 0;
    bool done =
        pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::ifstream in(path);
    std::stringstream dump;
    dump << in.rdbuf();
    unlink(path.c_str());
    return done ? dump.str() : "";
}

TEST(ExampleFileTest, AnotherProcessLoadsTheSameBlobs) {
    const std::string theirs = dumpFromChildProcess();
    ASSERT_FALSE(theirs.empty()) << "the child process failed";

    LoadedStore loaded(exampleFile());
    const std::string mine = dumpLoadedStore(loaded.peer());
    EXPECT_NE(mine.find("profile 4 "), std::string::npos);
    EXPECT_EQ(theirs, mine);
}

}  // namespace
}  // namespace korva::test
