// The benchmarks' inputs must stay tuning files the reader reads whole: same bytes for the same
// seed, the size asked for, only elements the reader knows, and every record found again.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "bench/TuningFileGenerator.h"
#include "reader/TuningFileParser.h"

namespace korva::bench {
namespace {

TEST(TuningFileGeneratorTest, SameSeedGivesTheSameBytesJustAboveTheTargetSize) {
    const struct {
        size_t target, atLeast, atMost;
    } kCases[] = {
        {10 * 1000, 8 * 1000, 16 * 1000},  // the standard set alone, shrunk
        {100 * 1000, 100 * 1000, 116 * 1000},
        {1000 * 1000, 1000 * 1000, 1016 * 1000},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE("target " + std::to_string(c.target));
        TuningFileGenerator generator(c.target, 42);
        const std::string text = generator.generate();
        EXPECT_EQ(text, generator.generate());
        EXPECT_EQ(text, TuningFileGenerator(c.target, 42).generate());
        EXPECT_NE(text, TuningFileGenerator(c.target, 43).generate());
        EXPECT_GE(text.size(), c.atLeast);
        EXPECT_LE(text.size(), c.atMost);
    }
}

TEST(TuningFileGeneratorTest, ReaderFindsEveryRecordTheGeneratorWrote) {
    // The reader skips elements it does not know without a word: any element that is neither
    // structure (or a part of a parameter element) nor has a setter would be silently left out of
    // the benchmark.
    const std::string kStructure =
        " korva_tuning tool_version format_version authorized_technologies "
        "global_setting preset profile data bands band_ieq band_geq band endpoint_type "
        "include tuning device_id matrix row ";
    for (size_t size : {size_t{10 * 1000}, size_t{300 * 1000}}) {
        SCOPED_TRACE("size " + std::to_string(size));
        char path[] = "/tmp/korva-gen-test-XXXXXX";
        close(mkstemp(path));
        TuningFileGenerator generator(size, 3);
        ASSERT_TRUE(generator.writeTo(path));
        const GeneratedTuningSummary& summary = generator.summary();
        const std::string text = generator.generate();
        for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1)) {
            size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz_-", at + 1);
            std::string name = text.substr(at + 1, end - at - 1);
            EXPECT_TRUE(name.empty() || kStructure.find(" " + name + " ") != std::string::npos ||
                        TuningFileParser::sSetterCollection->getValueSetter(name) != nullptr)
                << "<" << name << "> is unknown to the reader";
        }

        TuningFileParser parser;
        ASSERT_EQ(0, parser.setTuningFile(path));
        unlink(path);
        DeviceData* data = parser.getDeviceData();
        ASSERT_NE(nullptr, data);
        EXPECT_EQ("3.4.0", data->getFormatVersion());
        EXPECT_EQ(summary.profiles, parser.getNumOfProfiles());
        EXPECT_EQ(static_cast<size_t>(summary.profiles), data->getProfiles().size());
        EXPECT_EQ(static_cast<size_t>(summary.ieqPresets), data->getIeqPresets().size());
        EXPECT_EQ(static_cast<size_t>(summary.geqPresets), data->getGeqPresets().size());
        EXPECT_EQ(static_cast<size_t>(summary.endpoints), data->getProfileEndpoints().size());
        EXPECT_EQ(static_cast<size_t>(summary.tunings), data->getTunings().size());
        using Binding = std::pair<std::string, std::string>;  // tuning device, port
        std::set<Binding> read;
        for (DeviceTuning* device : data->getDeviceTunings()) {
            read.emplace(device->getDevice(), device->getPort());
        }
        EXPECT_EQ(std::set<Binding>(summary.deviceTunings.begin(), summary.deviceTunings.end()),
                  read);
        for (const Binding& binding : {Binding{"", "internal_speaker"},
                                       {"default_headphone", "headphone"},
                                       {"default_bluetooth", "bluetooth"},
                                       {"default_usb", "usb"}}) {
            EXPECT_EQ(1u, read.count(binding)) << binding.first;
        }
        // Every tuning carries a mix matrix, and the standard GEQ presets have the 20 bands of the
        // effect's graphic EQ (8 when shrunk).
        for (Tuning* tuning : data->getTunings()) {
            EXPECT_FALSE(tuning->values[OUTPUT_MIX_MATRIX].empty()) << tuning->getName();
        }
        for (GeqPreset* preset : data->getGeqPresets()) {
            if (preset->getProfileId() < 5) {
                EXPECT_EQ(size < 20 * 1000 ? 8u : 20u, preset->values[GEQ_GAIN].size());
            }
        }
    }
}

TEST(TuningFileGeneratorTest, ParseByteSizeReadsSuffixes) {
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
