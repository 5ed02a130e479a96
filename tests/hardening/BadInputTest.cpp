// The hand-picked hostile inputs of the hardening table, kept as tests so that what the library
// does with each stays as documented: a file it cannot use leaves nothing loaded, one it can use
// becomes blobs that both blob readers accept whole, and extreme blob counts are refused or
// accepted exactly as each reader's rules say.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "SpatializerParamArrayTestPeer.h"
#include "TestPaths.h"
#include "engine/EffectParamParser.h"
#include "fuzz/StoreSnapshot.h"
#include "model/OutputDevice.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"
#include "translator/VexParameter.h"

namespace korva::test {
namespace {

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

const std::string kExample = exampleFile();

// The scratch files made so far, removed after each test.
std::vector<std::string> sScratch;

// A path of this test process's own in the temporary directory (on a device, the shell's).
std::string scratch(const std::string& name) {
    sScratch.push_back(testing::TempDir() + "korva-bad-input-" + std::to_string(getpid()) + "-" +
                       name);
    return sScratch.back();
}

// The store as construction left it (on the host it finds no device file), before each load.
class BadInputTest : public ::testing::Test {
protected:
    BadInputTest() : mPeer(mStore), mInitial(mPeer) {}
    ~BadInputTest() override { removeScratch(); }

    static void removeScratch() {
        for (const std::string& path : sScratch) {
            chmod(path.c_str(), 0600);
            if (unlink(path.c_str()) != 0) {
                rmdir(path.c_str());
            }
        }
        sScratch.clear();
    }

    void load(const std::string& path) {
        mInitial.restore(mPeer);
        mStore.loadSpatializerXMLFile(path);
    }

    void expectRefused(const std::string& path) {
        SCOPED_TRACE(path);
        LogCapture log;
        load(path);
        EXPECT_TRUE(
            log.contains("Spatializer Tuning XML parses error!", "KrvSpatializerParamArray"));
        EXPECT_TRUE(mPeer.xmlProfileParams().empty());
        EXPECT_TRUE(mPeer.xmlTuningParams().empty());
        EXPECT_EQ(0, mPeer.xmlTuningCount());
    }

    SpatializerParamArray& mStore = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer mPeer;
    fuzz::StoreSnapshot mInitial;
};

TEST_F(BadInputTest, UnusableFilesAreRefusedWhole) {
    const std::string example = fileText(kExample);
    ASSERT_GT(example.size(), 1000u);
    // 100 000 nested elements: beyond libxml2's depth limit.
    std::string nested = "<?xml version=\"1.0\"?>\n<root>\n";
    for (int i = 0; i < 100000; i++) nested += "<a>";
    for (int i = 0; i < 100000; i++) nested += "</a>";
    std::vector<std::pair<std::string, std::string>> files = {
        {"text.xml", "not a tuning file\n"},
        {"binary.xml", std::string("\x89PNG\r\n\x1a\n\0\0\xff", 11)},
        {"nested.xml", nested + "\n</root>\n"}};
    for (int eighth = 1; eighth <= 7; eighth++) {
        files.push_back({"cut-" + std::to_string(eighth) + ".xml",
                         example.substr(0, example.size() * eighth / 8)});
    }
    for (const auto& [name, text] : files) {
        writeFile(scratch(name), text);
        expectRefused(scratch(name));
    }
    mkdir(scratch("a-directory.xml").c_str(), 0755);
    for (const std::string& path :
         {scratch("a-directory.xml"), scratch("missing.xml"), std::string("/proc/self/mem")}) {
        expectRefused(path);
    }
    load(kExample);
    EXPECT_EQ(5u, mPeer.xmlProfileParams().size());

    // Root reads any file; on a device the effect process runs as an ordinary user. Each test
    // runs in a process of its own, so dropping privileges here affects nothing else.
    // Root's files in the sticky temporary folder are removed while root still may; the
    // unreadable one is the ordinary user's own, so that it can remove it.
    removeScratch();
    writeFile(scratch("unreadable.xml"), example);
    ASSERT_EQ(0, chmod(scratch("unreadable.xml").c_str(), 0));
    if (getuid() == 0) {
        ASSERT_EQ(0, chown(scratch("unreadable.xml").c_str(), 65534, 65534));
        ASSERT_EQ(0, setgid(65534));
        ASSERT_EQ(0, setuid(65534));
    }
    expectRefused(scratch("unreadable.xml"));
}

// A megabyte number and a megabyte list among ten thousand profiles. The reader steps over each
// element's first child node, so every element starts on a line of its own.
TEST_F(BadInputTest, HugeAttributesAndTenThousandProfilesBecomeWholeBlobs) {
    auto profile = [](int id, const std::string& data) {
        return "<profile id=\"" + std::to_string(id) + "\" name=\"p\">\n<data>\n" + data +
               "<endpoint_type id=\"speaker\">\n<include ieq_preset=\"0\"/>\n"
               "<volume-leveler-enable value=\"true\"/>\n</endpoint_type>\n</data>\n</profile>\n";
    };
    std::string list;
    while (list.size() < (1u << 20)) list += "12345,";
    std::string text =
        "<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n"
        "<format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n" +
        profile(0, "<volume-leveler-amount value=\"" + std::string(1 << 20, '7') +
                       "\"/>\n<complex-equalizer-tuning-left value=\"" + list + "\"/>\n");
    for (int id = 1; id < 10000; id++) {
        text += profile(id, "<volume-leveler-amount value=\"3\"/>\n");
    }
    writeFile(scratch("large.xml"), text + "</kvx_spatializer_tuning>\n");
    load(scratch("large.xml"));
    EXPECT_EQ(10000, mPeer.xmlProfileCount());
    ASSERT_EQ(10000u, mPeer.xmlProfileParams().size());
    for (auto& [id, blob] : mPeer.xmlProfileParams()) {
        const int bytes = static_cast<int>(blob.size() * sizeof(int));
        ASSERT_TRUE(SpatializerParamParser(blob.data(), bytes).validate()) << "profile " << id;
        ASSERT_TRUE(EffectParamParser(blob.data(), bytes).validate()) << "profile " << id;
    }
}

// Loads while another thread keeps replacing the file, by rename and by rewriting in place:
// each load either files all of the example's blobs or none; none crashes or half-loads.
TEST_F(BadInputTest, FileReplacedWhileBeingReadLoadsWholeOrNothing) {
    const std::string example = fileText(kExample);
    const std::string variants[] = {example, example.substr(0, example.size() / 2), "not xml", ""};
    std::string path = scratch("replaced.xml");
    writeFile(path, example);
    std::atomic<bool> stop{false};
    std::thread replacer([&] {
        std::string next = path + ".next";
        for (unsigned i = 0; !stop.load(); i++) {
            writeFile(i % 2 == 0 ? next : path, variants[i % 4]);
            if (i % 2 == 0) rename(next.c_str(), path.c_str());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    for (int i = 0; i < 100; i++) {
        load(path);
        size_t profiles = mPeer.xmlProfileParams().size(), tunings = mPeer.xmlTuningParams().size();
        EXPECT_TRUE((profiles == 0 && tunings == 0) || (profiles == 5 && tunings == 8))
            << profiles << " profile blobs, " << tunings << " tuning blobs";
    }
    stop = true;
    replacer.join();
}

TEST(BadBlobTest, ExtremeCountsFollowEachReadersRules) {
    constexpr int32_t kAll = kOutputDeviceAll;
    constexpr int32_t kCode = vexParameterCode("mdle");
    // The store's reader counts an entry before reading it, so a cut-short last entry still
    // validates; the engine's reader refuses it. Neither reads outside the blob.
    const struct {
        const char* name;
        std::vector<int32_t> words;
        bool storeValid;
        bool engineValid;
    } kCases[] = {
        {"INT_MAX entries announced, one held", {0, INT_MAX, kAll, kCode, 1, 5}, false, false},
        {"INT_MAX values announced", {0, 1, kAll, kCode, INT_MAX, 5}, true, false},
        {"value bytes overflow 32 bits", {0, 1, kAll, kCode, INT_MAX / 4 + 1, 5}, true, false},
        {"-1 entries", {0, -1, kAll, kCode, 1, 5}, false, false},
        {"-1 values", {0, 1, kAll, kCode, -1, 5}, true, false},
        {"INT_MIN values", {0, 1, kAll, kCode, INT_MIN, 5}, true, false},
        {"-3 values stepping back onto the entry", {0, 1000, kAll, kCode, -3}, true, false},
        {"a well-formed entry", {0, 1, kAll, kCode, 1, 5}, true, true},
    };
    for (const auto& c : kCases) {
        std::vector<int32_t> words = c.words;
        int bytes = static_cast<int>(words.size() * sizeof(int32_t));
        EXPECT_EQ(c.storeValid, SpatializerParamParser(words.data(), bytes).validate()) << c.name;
        EXPECT_EQ(c.engineValid, EffectParamParser(words.data(), bytes).validate()) << c.name;
    }
}

}  // namespace
}  // namespace korva::test
