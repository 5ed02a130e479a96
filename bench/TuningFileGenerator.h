// Writes synthetic tuning files of a chosen size for the benchmarks: valid format 3.4.0
// documents with the five standard profiles, the default headphone, bluetooth and usb tuning
// devices, and as many further profiles, presets and tunings as the size asks for. The same
// seed and size always give the same bytes, whatever the platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korva::bench {

// What a generated file holds, so that callers can check the store against it.
struct GeneratedTuningSummary {
    int profiles = 0;
    std::vector<int> profileIds;  // every profile element's id, in document order
    int ieqPresets = 0;
    int geqPresets = 0;
    int endpoints = 0;
    int tunings = 0;
    // Tuning device name and its port name, in document order.
    std::vector<std::pair<std::string, std::string>> deviceTunings;
};

class TuningFileGenerator {
public:
    TuningFileGenerator(size_t targetBytes, uint64_t seed);

    // The document: at least targetBytes long and at most one record (about 10 KB) over it;
    // the five standard profiles and the default tunings make the smallest file about 12 KB.
    std::string generate();

    const GeneratedTuningSummary& summary() const { return mSummary; }

    // Writes generate() to path; false when the file cannot be written.
    bool writeTo(const std::string& path);

private:
    size_t mTargetBytes;
    uint64_t mSeed;
    GeneratedTuningSummary mSummary;
};

// Parses sizes such as 10K, 100k, 1M, 10M or 4096; 0 when the text is not a size.
size_t parseByteSize(const std::string& text);

}  // namespace korva::bench
