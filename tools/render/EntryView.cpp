#include "tools/render/EntryView.h"

#include <cstdio>

namespace korva::tool {

namespace {

const char* unitName(ListUnit unit) {
    switch (unit) {
        case ListUnit::kHz:
            return "Hz";
        case ListUnit::kSixteenthDb:
            return "1/16 dB";
        case ListUnit::kFlag:
            return "flag";
    }
    return "";
}

const char* const kColumnNames[kMixMatrixColumns] = {"left", "right"};

std::string rowText(const std::vector<int>& row) {
    std::string decimals;
    std::string words;
    for (int coefficient : row) {
        decimals += (decimals.empty() ? "" : " ") + EntryView::q14Text(coefficient);
        words += (words.empty() ? "" : " ") + std::to_string(coefficient);
    }
    return decimals + "  (" + words + ")";
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

void EntryView::decodeBands(const BandListLayout& layout) {
    const size_t lead = layout.perChannel ? 2 : 1;
    if (raw.size() < lead || raw[0] < 0) {
        complete = false;
        return;
    }
    kind = Kind::kBands;
    bands = raw[0];
    int numColumns = layout.numColumns;
    if (layout.perChannel) {
        channels = raw[1];
        numColumns = channels >= 0 && channels < layout.numColumns ? channels + 1 : 0;
        complete = numColumns > 0;
    }
    size_t at = lead;
    for (int c = 0; c < numColumns; c++) {
        BandColumnView column{layout.columns[c].name, layout.columns[c].unit, {}};
        for (int band = 0; band < bands && at < raw.size(); band++) {
            column.raw.push_back(raw[at++]);
        }
        complete = complete && static_cast<int>(column.raw.size()) == bands;
        columns.push_back(std::move(column));
    }
    complete = complete && at == raw.size();
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
    size_t at = kOutputModeLeadWords;
    while (at < raw.size()) {
        MixMatrixView matrix;
        matrix.layout = raw[at];
        matrix.coefficients = at + 1 < raw.size() ? raw[at + 1] : 0;
        at += kMixMatrixHeadWords;
        int taken = 0;
        while (taken < matrix.coefficients && at < raw.size()) {
            if (taken % kMixMatrixColumns == 0) {
                matrix.rows.emplace_back();
            }
            matrix.rows.back().push_back(raw[at++]);
            taken++;
        }
        const bool whole = taken == matrix.coefficients && matrix.coefficients >= 0;
        complete = complete && whole;
        matrices.push_back(std::move(matrix));
        if (!whole) {
            break;
        }
    }
    complete = complete && at == raw.size();
}

std::string EntryView::valueText(ListUnit unit, int raw) {
    char text[32];
    switch (unit) {
        case ListUnit::kHz:
            snprintf(text, sizeof(text), "%d Hz", raw);
            return text;
        case ListUnit::kSixteenthDb:
            snprintf(text, sizeof(text), "%g dB", decibels(raw));
            return text;
        case ListUnit::kFlag:
            return raw == 0 ? "no" : raw == 1 ? "yes" : std::to_string(raw);
    }
    return std::to_string(raw);
}

std::string EntryView::q14Text(int coefficient) {
    char text[32];
    snprintf(text, sizeof(text), "%.4f", q14(coefficient));
    return text;
}

std::vector<std::string> EntryView::lines() const {
    std::vector<std::string> out;
    if (kind == Kind::kBands) {
        for (int band = 0; band < bands; band++) {
            std::string line = "band " + std::to_string(band + 1) + ":";
            for (size_t c = 0; c < columns.size(); c++) {
                if (static_cast<size_t>(band) >= columns[c].raw.size()) {
                    continue;
                }
                const int word = columns[c].raw[band];
                line +=
                    (c == 0 ? " " : "  " + columns[c].name + " ") +
                    valueText(columns[c].unit, word) +
                    (columns[c].unit == ListUnit::kSixteenthDb ? " (" + std::to_string(word) + ")"
                                                               : "");
            }
            out.push_back(line);
        }
    } else if (kind == Kind::kOutputMode) {
        out.push_back("enable " + std::to_string(enable) + ", endpoint " +
                      std::to_string(endpoint) + ", orientation " + std::to_string(orientation));
        for (size_t m = 0; m < matrices.size(); m++) {
            const MixMatrixView& matrix = matrices[m];
            out.push_back("matrix " + std::to_string(m + 1) + ": layout " +
                          std::to_string(matrix.layout) + ", " +
                          std::to_string(matrix.coefficients) + " coefficients (Q14)");
            for (size_t r = 0; r < matrix.rows.size(); r++) {
                out.push_back("  row " + std::to_string(r + 1) + ": " + rowText(matrix.rows[r]));
            }
        }
    }
    if (kind != Kind::kPlain && !complete) {
        out.push_back("(the words do not match the layout's counts)");
    }
    return out;
}

EntryView::Place EntryView::place(size_t index) const {
    Place at;
    at.where = "value " + std::to_string(index + 1);
    if (index >= raw.size()) {
        return at;
    }
    at.value = std::to_string(raw[index]);
    if (kind == Kind::kBands) {
        const size_t lead = bandListLayout(code)->perChannel ? 2 : 1;
        if (index < lead) {
            at.where = index == 0 ? "band count" : "channel count";
            return at;
        }
        size_t start = lead;
        for (const BandColumnView& column : columns) {
            if (index < start + column.raw.size()) {
                const size_t band = index - start;
                at.where = "band " + std::to_string(band + 1);
                at.band = static_cast<int>(band);
                if (!columns.empty() && band < columns[0].raw.size()) {
                    at.where += " (" + valueText(ListUnit::kHz, columns[0].raw[band]) + ")";
                }
                at.where += " " + column.name;
                if (column.unit == ListUnit::kSixteenthDb) {
                    at.value = valueText(column.unit, raw[index]) + " (" + at.value + ")";
                }
                return at;
            }
            start += column.raw.size();
        }
        return at;
    }
    if (kind != Kind::kOutputMode) {
        return at;
    }
    static const char* const kLead[] = {"enable", "endpoint", "orientation"};
    if (index < static_cast<size_t>(kOutputModeLeadWords)) {
        at.where = kLead[index];
        return at;
    }
    size_t start = kOutputModeLeadWords;
    for (size_t m = 0; m < matrices.size(); m++) {
        const std::string name = "matrix " + std::to_string(m + 1) + " (layout " +
                                 std::to_string(matrices[m].layout) + ")";
        if (index < start + kMixMatrixHeadWords) {
            at.where = name + (index == start ? " layout code" : " coefficient count");
            return at;
        }
        start += kMixMatrixHeadWords;
        for (size_t r = 0; r < matrices[m].rows.size(); r++) {
            if (index < start + matrices[m].rows[r].size()) {
                at.where =
                    name + " row " + std::to_string(r + 1) + " " + kColumnNames[index - start];
                at.value = q14Text(raw[index]) + " (" + at.value + ")";
                return at;
            }
            start += matrices[m].rows[r].size();
        }
    }
    return at;
}

Json EntryView::toJson() const {
    Json json = {{"raw", raw}};
    if (kind == Kind::kBands) {
        Json list = Json::array();
        for (const BandColumnView& column : columns) {
            Json values = Json::array();
            for (int word : column.raw) {
                values.push_back(column.unit == ListUnit::kSixteenthDb ? Json(decibels(word))
                                                                       : Json(word));
            }
            list.push_back(
                {{"name", column.name},
                 {"unit", column.unit == ListUnit::kSixteenthDb ? "dB" : unitName(column.unit)},
                 {"raw_unit", unitName(column.unit)},
                 {"raw", column.raw},
                 {"values", values}});
        }
        json["layout"] = "bands";
        json["bands"] = bands;
        if (channels > 0) {
            json["channels"] = channels;
        }
        json["columns"] = list;
    } else if (kind == Kind::kOutputMode) {
        Json list = Json::array();
        for (const MixMatrixView& matrix : matrices) {
            Json rows = Json::array();
            for (const std::vector<int>& row : matrix.rows) {
                Json decimals = Json::array();
                for (int coefficient : row) {
                    decimals.push_back(q14(coefficient));
                }
                rows.push_back({{"raw", row}, {"values", decimals}});
            }
            list.push_back(
                {{"layout", matrix.layout}, {"coefficients", matrix.coefficients}, {"rows", rows}});
        }
        json["layout"] = "output_mode";
        json["enable"] = enable;
        json["endpoint"] = endpoint;
        json["orientation"] = orientation;
        json["matrices"] = list;
    }
    if (kind != Kind::kPlain) {
        json["complete"] = complete;
    }
    return json;
}

}  // namespace korva::tool
