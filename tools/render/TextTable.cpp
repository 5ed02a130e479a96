#include "tools/render/TextTable.h"

#include <algorithm>
#include <utility>

namespace korva::tool {

namespace {

constexpr const char* kGap = "  ";
// The last column never gets narrower than this, even when the others leave less room.
constexpr size_t kMinLastWidth = 24;

void rtrim(std::string& text) {
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
}

}  // namespace

std::vector<std::string> TextTable::wrap(const std::string& text, size_t width) {
    std::vector<std::string> lines;
    std::string line;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(' ', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        std::string word = text.substr(start, end - start);
        if (!line.empty() && line.size() + 1 + word.size() > width) {
            lines.push_back(line);
            line.clear();
        }
        // A name longer than the width breaks after one of its underscores.
        while (line.empty() && word.size() > width) {
            const size_t cut = word.rfind('_', width - 1);
            if (cut == std::string::npos || cut == 0) {
                break;
            }
            lines.push_back(word.substr(0, cut + 1));
            word.erase(0, cut + 1);
        }
        line += line.empty() ? word : " " + word;
        start = end + 1;
    }
    lines.push_back(line);
    return lines;
}

TextTable::TextTable(std::vector<std::string> headers)
    : mHeaders(std::move(headers)), mRightAligned(mHeaders.size(), false) {}

void TextTable::alignRight(size_t column) {
    if (column < mRightAligned.size()) {
        mRightAligned[column] = true;
    }
}

void TextTable::addRow(std::vector<std::string> cells) {
    cells.resize(mHeaders.size());
    mRows.push_back(std::move(cells));
    mKeepWhole.push_back(false);
}

void TextTable::addPathRow(std::vector<std::string> cells) {
    addRow(std::move(cells));
    mKeepWhole.back() = true;
}

std::string TextTable::render(const std::string& indent, size_t width) const {
    const size_t columns = mHeaders.size();
    std::vector<size_t> widths(columns, 0);
    const bool hasHeader = std::any_of(mHeaders.begin(), mHeaders.end(),
                                       [](const std::string& h) { return !h.empty(); });
    // Every column as wide as its widest cell; the last one wraps to what is left of that.
    for (size_t r = 0; r <= mRows.size(); r++) {
        const bool header = r == mRows.size();
        for (size_t i = 0; i < columns && (!header || hasHeader); i++) {
            widths[i] = std::max(widths[i], (header ? mHeaders : mRows[r])[i].size());
        }
    }
    std::string out;
    if (hasHeader) {
        renderRow(mHeaders, widths, indent, width, false, out);
    }
    for (size_t r = 0; r < mRows.size(); r++) {
        renderRow(mRows[r], widths, indent, width, mKeepWhole[r], out);
    }
    return out;
}

void TextTable::renderRow(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                          const std::string& indent, size_t width, bool keepWhole,
                          std::string& out) const {
    const size_t columns = cells.size();
    if (columns == 0) {
        return;
    }
    std::string prefix = indent;
    for (size_t i = 0; i + 1 < columns; i++) {
        const size_t pad = widths[i] - std::min(widths[i], cells[i].size());
        if (mRightAligned[i]) {
            prefix += std::string(pad, ' ') + cells[i];
        } else {
            prefix += cells[i] + std::string(pad, ' ');
        }
        prefix += kGap;
    }
    size_t lastStart = prefix.size();
    if (!keepWhole && lastStart + std::min(kMinLastWidth, widths.back()) > width &&
        !cells.back().empty()) {
        // The other columns leave the last too little room: it goes below them, indented.
        rtrim(prefix);
        out += prefix + "\n";
        lastStart = indent.size() + 4;
        prefix = std::string(lastStart, ' ');
    }
    const size_t lastWidth = width > lastStart + kMinLastWidth ? width - lastStart : kMinLastWidth;
    const std::vector<std::string> lines =
        keepWhole ? std::vector<std::string>{cells.back()} : wrap(cells.back(), lastWidth);
    for (size_t i = 0; i < lines.size(); i++) {
        std::string line = (i == 0 ? prefix : std::string(lastStart, ' ')) + lines[i];
        rtrim(line);
        out += line + "\n";
    }
}

}  // namespace korva::tool
