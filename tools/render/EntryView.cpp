#include "tools/render/EntryView.h"

#include <cstdio>

#include "tools/render/BlobDecoder.h"
#include "tools/render/Printer.h"

namespace korva::tool {

namespace {

const char* unitName(ListUnit unit) {
    return unit == ListUnit::kHz ? "Hz" : unit == ListUnit::kSixteenthDb ? "1/16 dB" : "flag";
}

// A value in its unit beside its word, where the unit is not the word itself.
std::string withWord(const std::string& text, int word) {
    return text + " (" + std::to_string(word) + ")";
}

// "47 Hz", "-1.5 dB", "yes", as a reader of the tuning wants to see a value.
std::string valueText(ListUnit unit, int raw) {
    char text[32];
    if (unit == ListUnit::kFlag) {
        return raw == 0 ? "no" : raw == 1 ? "yes" : std::to_string(raw);
    }
    snprintf(text, sizeof(text), unit == ListUnit::kHz ? "%.0f Hz" : "%g dB",
             unit == ListUnit::kHz ? raw : EntryView::decibels(raw));
    return text;
}

// Words in their unit, for JSON.
Json inUnit(const std::vector<int>& words, double (*unit)(int)) {
    Json values = Json::array();
    for (int word : words) {
        values.push_back(unit(word));
    }
    return values;
}

std::string q14Text(int coefficient) {
    char text[32];
    snprintf(text, sizeof(text), "%.4f", EntryView::q14(coefficient));
    return text;
}

}  // namespace

EntryView EntryView::decode(int32_t code, const std::vector<int>& values) {
    EntryView view;
    view.code = code;
    view.raw = values;
    if (const BandListLayout* layout = bandListLayout(code)) {
        view.decodeBands(*layout);
    } else if (code == vexParameterCode(DOM)) {
        view.decodeOutputMode();
    }
    return view;
}

std::string EntryView::identity(int32_t deviceId, std::optional<int32_t> code) {
    return BlobDecoder::deviceName(deviceId) + (code ? " " + BlobDecoder::codeText(*code) : "");
}

void EntryView::printIdentity(Printer& out, int32_t deviceId, std::optional<int32_t> code) {
    out.json("device", deviceId);
    out.json("device_name", BlobDecoder::deviceName(deviceId));
    if (code) {
        out.json("code", BlobDecoder::codeText(*code));
    }
}

void EntryView::decodeBands(const BandListLayout& layout) {
    const size_t lead = layout.perChannel ? 2 : 1;
    if (raw.size() < lead || raw[0] < 0) {
        complete = false;
        return;
    }
    kind = Kind::kBands;
    bands = raw[0];
    mPlaces = {{"band count", std::to_string(raw[0])}};
    int numColumns = layout.numColumns;
    if (layout.perChannel) {
        channels = raw[1];
        numColumns = channels >= 0 && channels < layout.numColumns ? channels + 1 : 0;
        complete = numColumns > 0;
        mPlaces.push_back({"channel count", std::to_string(raw[1])});
    }
    for (int c = 0; c < numColumns; c++) {
        BandColumnView column{layout.columns[c].name, layout.columns[c].unit, {}};
        for (int band = 0; band < bands && mPlaces.size() < raw.size(); band++) {
            const int word = raw[mPlaces.size()];
            column.raw.push_back(word);
            const std::string hz =
                valueText(ListUnit::kHz, columns.empty() ? word : columns[0].raw[band]);
            mPlaces.push_back({"band " + std::to_string(band + 1) + " (" + hz + ") " + column.name,
                               column.unit == ListUnit::kSixteenthDb
                                   ? withWord(valueText(column.unit, word), word)
                                   : std::to_string(word),
                               band});
        }
        complete = complete && static_cast<int>(column.raw.size()) == bands;
        columns.push_back(std::move(column));
    }
    complete = complete && mPlaces.size() == raw.size();
}

void EntryView::decodeOutputMode() {
    if (raw.size() < static_cast<size_t>(kOutputModeLeadWords)) {
        complete = false;
        return;
    }
    kind = Kind::kOutputMode;
    enable = raw[0];
    endpoint = raw[1];
    orientation = raw[2];
    for (const char* lead : {"enable", "endpoint", "orientation"}) {
        mPlaces.push_back({lead, std::to_string(raw[mPlaces.size()])});
    }
    while (mPlaces.size() < raw.size()) {
        const size_t at = mPlaces.size();
        MixMatrixView matrix{raw[at], at + 1 < raw.size() ? raw[at + 1] : 0, {}};
        const std::string name = "matrix " + std::to_string(matrices.size() + 1) + " (layout " +
                                 std::to_string(matrix.layout) + ")";
        mPlaces.push_back({name + " layout code", std::to_string(raw[at])});
        if (at + 1 < raw.size()) {
            mPlaces.push_back({name + " coefficient count", std::to_string(raw[at + 1])});
        }
        int taken = 0;
        for (; taken < matrix.coefficients && mPlaces.size() < raw.size(); taken++) {
            if (taken % kMixMatrixColumns == 0) {
                matrix.rows.emplace_back();
            }
            const int word = raw[mPlaces.size()];
            matrix.rows.back().push_back(word);
            mPlaces.push_back({name + " row " + std::to_string(matrix.rows.size()) +
                                   (taken % kMixMatrixColumns == 0 ? " left" : " right"),
                               withWord(q14Text(word), word)});
        }
        const bool whole = taken == matrix.coefficients && matrix.coefficients >= 0;
        complete = complete && whole;
        matrices.push_back(std::move(matrix));
        if (!whole) {
            break;
        }
    }
    complete = complete && mPlaces.size() == raw.size();
}

std::vector<std::string> EntryView::lines(bool words) const {
    if (words || kind == Kind::kPlain) {
        return {NumberText::join(raw)};
    }
    std::vector<std::string> out;
    for (int band = 0; kind == Kind::kBands && band < bands; band++) {
        std::string line = "band " + std::to_string(band + 1) + ":";
        for (size_t c = 0; c < columns.size() && static_cast<size_t>(band) < columns[c].raw.size();
             c++) {
            const int word = columns[c].raw[band];
            const std::string text = valueText(columns[c].unit, word);
            line += (c == 0 ? " " : "  " + columns[c].name + " ") +
                    (columns[c].unit == ListUnit::kSixteenthDb ? withWord(text, word) : text);
        }
        out.push_back(line);
    }
    if (kind == Kind::kOutputMode) {
        out.push_back("enable " + std::to_string(enable) + ", endpoint " +
                      std::to_string(endpoint) + ", orientation " + std::to_string(orientation));
    }
    for (size_t m = 0; m < matrices.size(); m++) {
        out.push_back("matrix " + std::to_string(m + 1) + ": layout " +
                      std::to_string(matrices[m].layout) + ", " +
                      std::to_string(matrices[m].coefficients) + " coefficients (Q14)");
        for (size_t r = 0; r < matrices[m].rows.size(); r++) {
            std::string decimals;
            for (int coefficient : matrices[m].rows[r]) {
                decimals += (decimals.empty() ? "" : " ") + q14Text(coefficient);
            }
            out.push_back("  row " + std::to_string(r + 1) + ": " + decimals + "  (" +
                          NumberText::join(matrices[m].rows[r]) + ")");
        }
    }
    if (!complete) {
        out.push_back("(the words do not match the layout's counts)");
    }
    return out;
}

EntryView::Place EntryView::place(size_t index) const {
    if (index < mPlaces.size()) {
        return mPlaces[index];
    }
    return {"value " + std::to_string(index + 1),
            index < raw.size() ? std::to_string(raw[index]) : ""};
}

Json EntryView::toJson() const {
    Json json = {{"raw", raw}};
    if (kind == Kind::kPlain) {
        return json;
    }
    Json list = Json::array();
    for (const BandColumnView& column : columns) {
        const bool db = column.unit == ListUnit::kSixteenthDb;
        list.push_back({{"name", column.name},
                        {"unit", db ? "dB" : unitName(column.unit)},
                        {"raw_unit", unitName(column.unit)},
                        {"raw", column.raw},
                        {"values", db ? inUnit(column.raw, decibels) : Json(column.raw)}});
    }
    for (const MixMatrixView& matrix : matrices) {
        Json rows = Json::array();
        for (const std::vector<int>& row : matrix.rows) {
            rows.push_back({{"raw", row}, {"values", inUnit(row, q14)}});
        }
        list.push_back(
            {{"layout", matrix.layout}, {"coefficients", matrix.coefficients}, {"rows", rows}});
    }
    if (kind == Kind::kBands) {
        json.update({{"layout", "bands"}, {"bands", bands}});
        if (channels > 0) {
            json["channels"] = channels;
        }
        json["columns"] = list;
    } else {
        json.update({{"layout", "output_mode"},
                     {"enable", enable},
                     {"endpoint", endpoint},
                     {"orientation", orientation},
                     {"matrices", list}});
    }
    json["complete"] = complete;
    return json;
}

}  // namespace korva::tool
