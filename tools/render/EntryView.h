// An entry's values read by the layout of its list: bands with their frequencies and levels in
// dB, or the output mode with its mix matrices as rows of Q14 coefficients. Entries of codes
// without a layout are plain. The raw words are always kept beside the reading.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/render/NumberText.h"
#include "tools/render/ToolOutput.h"
#include "translator/ListLayout.h"

namespace korva::tool {

class Printer;

struct BandColumnView {
    std::string name;
    ListUnit unit;
    std::vector<int> raw;  // one word per band; fewer when the list ends early
};

struct MixMatrixView {
    int layout = 0;
    int coefficients = 0;                // as the matrix's head word announces them
    std::vector<std::vector<int>> rows;  // Q14 words, kMixMatrixColumns per row
};

struct EntryView {
    enum class Kind { kPlain, kBands, kOutputMode };

    Kind kind = Kind::kPlain;
    int32_t code = 0;
    std::vector<int> raw;
    // Whether the words hold exactly what the lead words announce.
    bool complete = true;

    // Band lists.
    int bands = 0;
    int channels = 0;  // per-channel lists only
    std::vector<BandColumnView> columns;

    // The output mode.
    int enable = 0;
    int endpoint = 0;
    int orientation = 0;
    std::vector<MixMatrixView> matrices;

    static EntryView decode(int32_t code, const std::vector<int>& values);
    // An entry's device and code as titles name them ("speaker dea"), and written to JSON as
    // "device" (the id), "device_name" and "code"; the device alone for a call without a code.
    static std::string identity(int32_t deviceId, std::optional<int32_t> code);
    static void printIdentity(Printer& out, int32_t deviceId, std::optional<int32_t> code);

    static double decibels(int sixteenths) { return sixteenths / 16.0; }
    static double q14(int coefficient) { return static_cast<double>(coefficient) / kQ14One; }

    // One line per band or matrix row, with the units and the raw words; the words alone, on one
    // line, for plain entries or when words.
    std::vector<std::string> lines(bool words = false) const;
    // Where the value at index sits ("band 3 (234 Hz) target", "matrix 1 (layout 15) row 2 right",
    // or "value 7" for plain entries and words past the layout), and the value in its unit beside
    // its word ("1.5 dB (24)", "0.7070 (11583)", or the word alone).
    struct Place {
        std::string where;
        std::string value;
        int band = -1;  // the band's index, for values of a band
    };
    Place place(size_t index) const;
    // The raw words, and the reading when there is one.
    Json toJson() const;

private:
    void decodeBands(const BandListLayout& layout);
    void decodeOutputMode();

    std::vector<Place> mPlaces;  // of the words the layout reads
};

}  // namespace korva::tool
