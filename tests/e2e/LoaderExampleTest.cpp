// The bundled example tuning file: a blob for every profile and every tuning device, each one
// readable, and the same blobs whichever process loads the file.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "E2eSupport.h"
#include "TestPaths.h"
#include "model/Parameter.h"

extern char** environ;

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

constexpr const char* kDumpEnv = "KORVA_E2E_DUMP_TO";

// Runs this test binary again, only `test`, with `dumpPath` in the environment; the exit status.
int runChild(const std::string& test, const std::string& dumpPath) {
    char self[4096] = {};
    ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (length <= 0) {
        return -1;
    }
    std::string filter = "--gtest_filter=" + test;
    std::vector<std::string> env;
    for (char** entry = environ; *entry != nullptr; entry++) {
        env.push_back(*entry);
    }
    env.push_back(std::string(kDumpEnv) + "=" + dumpPath);
    std::vector<char*> envp;
    for (std::string& entry : env) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    char* argv[] = {self, filter.data(), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, self, nullptr, nullptr, argv, envp.data()) != 0) {
        return -1;
    }
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

TEST(ExampleFileTest, AnotherProcessLoadsTheSameBlobs) {
    const char* dumpTo = getenv(kDumpEnv);
    if (dumpTo != nullptr) {
        // The second process: its records land elsewhere in memory.
        scatterHeap();
        LoadedStore loaded(exampleFile());
        std::ofstream out(dumpTo);
        out << dumpLoadedStore(loaded.peer());
        ASSERT_TRUE(out.good());
        return;
    }

    LoadedStore loaded(exampleFile());
    const std::string mine = dumpLoadedStore(loaded.peer());
    EXPECT_NE(mine.find("profile 4 "), std::string::npos);

    std::error_code error;
    std::string pattern =
        (std::filesystem::temp_directory_path(error) / "korva-e2e-dump-XXXXXX").string();
    int fd = mkstemp(pattern.data());
    ASSERT_GE(fd, 0);
    close(fd);
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    EXPECT_EQ(runChild(std::string(info->test_suite_name()) + "." + info->name(), pattern), 0);
    std::ifstream in(pattern);
    std::stringstream theirs;
    theirs << in.rdbuf();
    unlink(pattern.c_str());
    EXPECT_EQ(theirs.str(), mine);
}

}  // namespace
}  // namespace korva::test
