#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "bench/TuningFileGenerator.h"
#include "reader/TuningFileParser.h"

namespace korva::bench {
namespace {

// A temporary file that is removed when the test ends.
class TempFile {
public:
    TempFile() {
        char pattern[] = "/tmp/korva-gen-test-XXXXXX";
        int fd = mkstemp(pattern);
        if (fd >= 0) close(fd);
        mPath = pattern;
    }
    ~TempFile() { unlink(mPath.c_str()); }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

std::string name(xmlNode* node) {
    return reinterpret_cast<const char*>(node->name);
}

std::vector<xmlNode*> elementChildren(xmlNode* node) {
    std::vector<xmlNode*> out;
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) out.push_back(child);
    }
    return out;
}

// Names of the elements where the reader expects parameter elements that have no setter.
std::vector<std::string> unknownParameterElements(const std::string& text) {
    std::vector<std::string> unknown;
    xmlDoc* document =
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "generated.xml", nullptr, 0);
    if (document == nullptr) return {"<not well-formed>"};
    const SetterCollection& setters = *TuningFileParser::sSetterCollection;
    auto expectParameter = [&](xmlNode* element) {
        if (setters.getValueSetter(name(element)) == nullptr) unknown.push_back(name(element));
    };
    const std::set<std::string> kRootChildren = {
        "tool_version", "format_version", "authorized_technologies", "preset", "profile", "tuning"};
    for (xmlNode* child : elementChildren(xmlDocGetRootElement(document))) {
        std::string kind = name(child);
        if (kRootChildren.count(kind) == 0) unknown.push_back(kind);
        if (kind == "profile") {
            std::vector<xmlNode*> wrapper = elementChildren(child);
            if (wrapper.size() != 1) unknown.push_back("<profile without one wrapper>");
            for (xmlNode* element : elementChildren(wrapper.front())) {
                if (name(element) != "endpoint_type") {
                    expectParameter(element);
                    continue;
                }
                std::vector<xmlNode*> endpoint = elementChildren(element);
                for (size_t i = 0; i < endpoint.size(); i++) {
                    if (i == 0 && name(endpoint[i]) == "include") continue;
                    expectParameter(endpoint[i]);
                }
            }
        } else if (kind == "tuning") {
            std::vector<xmlNode*> parts = elementChildren(child);
            size_t i = 0;
            while (i < parts.size() && name(parts[i]) == "device_id") i++;
            if (i + 1 != parts.size()) unknown.push_back("<tuning without one data element>");
            if (i < parts.size()) {
                for (xmlNode* element : elementChildren(parts[i])) expectParameter(element);
            }
        }
    }
    xmlFreeDoc(document);
    return unknown;
}

TEST(TuningFileGeneratorTest, sameSeedAndSizeGiveTheSameBytes) {
    TuningFileGenerator first(200 * 1000, 42);
    TuningFileGenerator second(200 * 1000, 42);
    TuningFileGenerator otherSeed(200 * 1000, 43);
    std::string text = first.generate();
    EXPECT_EQ(text, second.generate());
    EXPECT_NE(text, otherSeed.generate());
    // A generator gives the same document when asked twice.
    EXPECT_EQ(text, first.generate());
}

TEST(TuningFileGeneratorTest, sizeLandsJustAboveTheTarget) {
    struct Case {
        size_t target;
        size_t atLeast;
        size_t atMost;
    };
    const Case kCases[] = {
        {10 * 1000, 8 * 1000, 16 * 1000},  // the standard set alone, shrunk
        {100 * 1000, 100 * 1000, 116 * 1000},
        {1000 * 1000, 1000 * 1000, 1016 * 1000},
    };
    for (const Case& c : kCases) {
        size_t size = TuningFileGenerator(c.target, 1).generate().size();
        EXPECT_GE(size, c.atLeast) << "target " << c.target;
        EXPECT_LE(size, c.atMost) << "target " << c.target;
    }
}

TEST(TuningFileGeneratorTest, largerFilesHoldMoreOfEveryRecord) {
    TuningFileGenerator small(100 * 1000, 1);
    TuningFileGenerator large(1000 * 1000, 1);
    small.generate();
    large.generate();
    EXPECT_GT(large.summary().profiles, 5 * small.summary().profiles);
    EXPECT_GT(large.summary().ieqPresets, 3 * small.summary().ieqPresets);
    EXPECT_GT(large.summary().geqPresets, 5 * small.summary().geqPresets);
    EXPECT_GT(large.summary().tunings, 5 * small.summary().tunings);
    EXPECT_GT(large.summary().deviceTunings.size(), 5 * small.summary().deviceTunings.size());
}

TEST(TuningFileGeneratorTest, everyParameterElementHasASetter) {
    for (size_t size : {size_t{10 * 1000}, size_t{300 * 1000}}) {
        std::string text = TuningFileGenerator(size, 7).generate();
        EXPECT_EQ(std::vector<std::string>(), unknownParameterElements(text)) << "size " << size;
    }
}

TEST(TuningFileGeneratorTest, readerFindsEveryRecordTheGeneratorWrote) {
    for (size_t size : {size_t{10 * 1000}, size_t{300 * 1000}}) {
        SCOPED_TRACE("size " + std::to_string(size));
        TempFile file;
        TuningFileGenerator generator(size, 3);
        ASSERT_TRUE(generator.writeTo(file.path()));
        const GeneratedTuningSummary& summary = generator.summary();

        TuningFileParser parser;
        ASSERT_EQ(0, parser.setTuningFile(file.path()));
        DeviceData* data = parser.getDeviceData();
        ASSERT_NE(nullptr, data);
        EXPECT_EQ("3.4.0", data->getFormatVersion());
        EXPECT_EQ(summary.profiles, parser.getNumOfProfiles());
        EXPECT_EQ(static_cast<size_t>(summary.profiles), data->getProfiles().size());
        EXPECT_EQ(static_cast<size_t>(summary.ieqPresets), data->getIeqPresets().size());
        EXPECT_EQ(static_cast<size_t>(summary.geqPresets), data->getGeqPresets().size());
        EXPECT_EQ(static_cast<size_t>(summary.endpoints), data->getProfileEndpoints().size());
        EXPECT_EQ(static_cast<size_t>(summary.tunings), data->getTunings().size());

        std::set<std::pair<std::string, std::string>> read;
        for (DeviceTuning* device : data->getDeviceTunings()) {
            read.emplace(device->getDevice(), device->getPort());
        }
        std::set<std::pair<std::string, std::string>> written(summary.deviceTunings.begin(),
                                                              summary.deviceTunings.end());
        EXPECT_EQ(written, read);
        EXPECT_EQ(1u, read.count({"default_headphone", "headphone"}));
        EXPECT_EQ(1u, read.count({"default_bluetooth", "bluetooth"}));
        EXPECT_EQ(1u, read.count({"default_usb", "usb"}));
        EXPECT_EQ(1u, read.count({"", "internal_speaker"}));

        // The standard profiles come first, and every tuning carries a mix matrix.
        ASSERT_GE(summary.profileIds.size(), 5u);
        EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}),
                  std::vector<int>(summary.profileIds.begin(), summary.profileIds.begin() + 5));
        for (Tuning* tuning : data->getTunings()) {
            EXPECT_FALSE(tuning->values[OUTPUT_MIX_MATRIX].empty()) << tuning->getName();
        }
        // Standard GEQ presets have the 20 bands of the effect's graphic EQ (8 when shrunk).
        size_t standardBands = size < 20 * 1000 ? 8 : 20;
        for (GeqPreset* preset : data->getGeqPresets()) {
            if (preset->getProfileId() < 5) {
                EXPECT_EQ(standardBands, preset->values[GEQ_GAIN].size());
            }
        }
    }
}

TEST(TuningFileGeneratorTest, parseByteSizeReadsSuffixes) {
    const std::pair<const char*, size_t> kCases[] = {
        {"4096", 4096},    {"10K", 10000}, {"100k", 100000}, {"1M", 1000000},
        {"10m", 10000000}, {"", 0},        {"K", 0},         {"10X", 0},
        {"1.5M", 0},       {"10KB", 0},    {"-1", 0},
    };
    for (const auto& [text, expected] : kCases) {
        EXPECT_EQ(expected, parseByteSize(text)) << text;
    }
}

}  // namespace
}  // namespace korva::bench
