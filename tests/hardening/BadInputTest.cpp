// The hand-picked hostile inputs of the hardening table, kept as tests so that what the library
// does with each stays as documented: a file it cannot use leaves only the built-in tables, one
// it can use becomes blobs that both blob readers accept whole, and extreme blob counts are
// refused or accepted exactly as the readers' rules say.

#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "SpatializerParamArrayTestPeer.h"
#include "TestPaths.h"
#include "engine/EffectParamParser.h"
#include "fuzz/StoreSnapshot.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"

namespace korva::test {
namespace {

constexpr const char* kParseError = "Spatializer Tuning XML parses error!";

std::string exampleFile() {
    return examplesDir() + "/kvx-default-spatializer.xml";
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

// A folder of this test process's own under the temporary directory (on a device, the shell's).
std::string scratch(const std::string& name) {
    const char* tmp = getenv("TMPDIR");
    std::string base = tmp != nullptr                         ? tmp
                       : access("/data/local/tmp", W_OK) == 0 ? "/data/local/tmp"
                                                              : "/tmp";
    std::string dir = base + "/korva-bad-input-" + std::to_string(getpid());
    mkdir(dir.c_str(), 0755);
    return dir + "/" + name;
}

bool readsWhole(std::vector<int>& blob) {
    int bytes = static_cast<int>(blob.size() * sizeof(int));
    SpatializerParamParser parser(blob.data(), bytes);
    EffectParamParser engine(blob.data(), bytes);
    return parser.validate() && engine.validate();
}

// The store, constructed (on the host it finds no device file), with each load starting from
// what construction left.
class BadInputTest : public ::testing::Test {
protected:
    BadInputTest() : mStore(SpatializerParamArray::getInstance()), mPeer(mStore), mInitial(mPeer) {}

    void load(const std::string& path) {
        mInitial.restore(mPeer);
        mStore.loadSpatializerXMLFile(path);
    }

    void expectRefused(const std::string& path) {
        LogCapture log;
        load(path);
        EXPECT_TRUE(log.contains(kParseError, "KrvSpatializerParamArray")) << path;
        EXPECT_TRUE(mPeer.xmlProfileParams().empty()) << path;
        EXPECT_TRUE(mPeer.xmlTuningParams().empty()) << path;
        EXPECT_EQ(0, mPeer.xmlTuningCount()) << path;
    }

    SpatializerParamArray& mStore;
    SpatializerParamArrayTestPeer mPeer;
    fuzz::StoreSnapshot mInitial;
};

TEST_F(BadInputTest, ExampleCutAtEveryEighthIsRefusedWhole) {
    const std::string example = readFile(exampleFile());
    ASSERT_GT(example.size(), 1000u);
    for (int eighth = 1; eighth <= 7; eighth++) {
        std::string path = scratch("cut-" + std::to_string(eighth) + ".xml");
        writeFile(path, example.substr(0, example.size() * eighth / 8));
        expectRefused(path);
    }
    load(exampleFile());
    EXPECT_EQ(5u, mPeer.xmlProfileParams().size());
}

TEST_F(BadInputTest, DeepNestingIsRefusedByTheXmlReader) {
    std::string text = "<?xml version=\"1.0\"?>\n<root>\n";
    for (int i = 0; i < 100000; i++) text += "<a>";
    for (int i = 0; i < 100000; i++) text += "</a>";
    std::string path = scratch("nested.xml");
    writeFile(path, text + "\n</root>\n");
    expectRefused(path);
}

TEST_F(BadInputTest, PathsThatAreNotReadableFilesAreRefused) {
    std::string directory = scratch("a-directory.xml");
    mkdir(directory.c_str(), 0755);
    expectRefused(directory);
    expectRefused(scratch("missing.xml"));
    expectRefused("/proc/self/mem");
}

std::string profile(int id, const std::string& data) {
    return "    <profile id=\"" + std::to_string(id) + "\" name=\"p\">\n        <data>\n" + data +
           "            <endpoint_type id=\"speaker\">\n"
           "                <include ieq_preset=\"0\"/>\n"
           "                <volume-leveler-enable value=\"true\"/>\n"
           "            </endpoint_type>\n        </data>\n    </profile>\n";
}

std::string document(const std::string& body) {
    return "<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n"
           "    <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n" +
           body + "</kvx_spatializer_tuning>\n";
}

TEST_F(BadInputTest, MegabyteAttributesBecomeOneWholeBlob) {
    std::string list;
    while (list.size() < (1u << 20)) list += "12345,";
    std::string path = scratch("megabyte.xml");
    writeFile(path, document(profile(1, "            <volume-leveler-amount value=\"" +
                                            std::string(1 << 20, '7') + "\"/>\n" +
                                            "            <complex-equalizer-tuning-left value=\"" +
                                            list + "\"/>\n")));
    load(path);
    ASSERT_EQ(1u, mPeer.xmlProfileParams().count(1));
    std::vector<int>& blob = mPeer.xmlProfileParams()[1];
    EXPECT_TRUE(readsWhole(blob));
}

TEST_F(BadInputTest, TenThousandProfilesEachGetAWholeBlob) {
    std::string body;
    for (int id = 0; id < 10000; id++) {
        body += profile(id, "            <volume-leveler-amount value=\"3\"/>\n");
    }
    std::string path = scratch("profiles.xml");
    writeFile(path, document(body));
    load(path);
    EXPECT_EQ(10000, mPeer.xmlProfileCount());
    ASSERT_EQ(10000u, mPeer.xmlProfileParams().size());
    for (auto& [id, blob] : mPeer.xmlProfileParams()) {
        ASSERT_TRUE(readsWhole(blob)) << "profile " << id;
    }
}

// Loads while another thread keeps replacing the file, by rename and by rewriting in place:
// each load either reads a whole example or refuses the file; none crashes or half-loads.
TEST_F(BadInputTest, FileReplacedWhileBeingReadLoadsWholeOrNothing) {
    const std::string example = readFile(exampleFile());
    const std::string variants[] = {example, example.substr(0, example.size() / 2), "not xml", ""};
    std::string path = scratch("replaced.xml");
    writeFile(path, example);
    std::atomic<bool> stop{false};
    std::thread replacer([&] {
        std::string next = path + ".next";
        for (unsigned i = 0; !stop.load(); i++) {
            if (i % 2 == 0) {
                writeFile(next, variants[i % 4]);
                rename(next.c_str(), path.c_str());
            } else {
                writeFile(path, variants[i % 4]);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    for (int i = 0; i < 100; i++) {
        load(path);
        size_t profiles = mPeer.xmlProfileParams().size();
        EXPECT_TRUE(profiles == 0 || profiles == 5) << profiles << " profile blobs";
        for (auto& [id, blob] : mPeer.xmlProfileParams()) {
            EXPECT_TRUE(readsWhole(blob)) << "profile " << id;
        }
    }
    stop = true;
    replacer.join();
}

TEST(BadInputUnprivilegedTest, UnreadableFileIsRefused) {
    std::string path = scratch("unreadable.xml");
    writeFile(path, readFile(exampleFile()));
    ASSERT_EQ(0, chmod(path.c_str(), 0));
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    // Root reads any file; on a device the effect process runs as an ordinary user. This test
    // runs in a process of its own, so dropping privileges affects nothing else.
    if (getuid() == 0) {
        ASSERT_EQ(0, setgid(65534));
        ASSERT_EQ(0, setuid(65534));
    }
    LogCapture log;
    store.loadSpatializerXMLFile(path);
    EXPECT_TRUE(log.contains(kParseError, "KrvSpatializerParamArray"));
    EXPECT_TRUE(SpatializerParamArrayTestPeer(store).xmlProfileParams().empty());
}

struct BlobCase {
    const char* name;
    std::vector<int32_t> words;
    bool storeValid;
    bool engineValid;
};

constexpr int32_t kAll = 0x40000000;
constexpr int32_t kCode = 0x656c646d;  // "mdle"

// The store's reader counts an entry before reading it, so a cut-short last entry still
// validates; the engine's reader refuses it. Neither reads outside the blob.
const BlobCase kBlobCases[] = {
    {"INT_MAX entries announced, one held", {0, INT_MAX, kAll, kCode, 1, 5}, false, false},
    {"INT_MAX values announced", {0, 1, kAll, kCode, INT_MAX, 5}, true, false},
    {"values whose byte count overflows 32 bits",
     {0, 1, kAll, kCode, INT_MAX / 4 + 1, 5},
     true,
     false},
    {"-1 entries", {0, -1, kAll, kCode, 1, 5}, false, false},
    {"-1 values", {0, 1, kAll, kCode, -1, 5}, true, false},
    {"INT_MIN values", {0, 1, kAll, kCode, INT_MIN, 5}, true, false},
    {"-3 values stepping back onto the entry", {0, 1000, kAll, kCode, -3}, true, false},
    {"a well-formed entry", {0, 1, kAll, kCode, 1, 5}, true, true},
};

TEST(BadBlobTest, ExtremeCountsFollowEachReadersRules) {
    for (const BlobCase& c : kBlobCases) {
        std::vector<int32_t> words = c.words;
        int bytes = static_cast<int>(words.size() * sizeof(int32_t));
        SpatializerParamParser store(words.data(), bytes);
        EffectParamParser engine(words.data(), bytes);
        EXPECT_EQ(c.storeValid, store.validate()) << c.name;
        EXPECT_EQ(c.engineValid, engine.validate()) << c.name;
    }
}

}  // namespace
}  // namespace korva::test
