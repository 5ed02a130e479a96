// Aligned plain-text tables. Every column but the last is as wide as its widest cell; the last
// column wraps at blanks, continuing under itself, so that no line is wider than asked for.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace korva::tool {

class TextTable {
public:
    // Empty headers print no header line.
    explicit TextTable(std::vector<std::string> headers);

    // Numbers read best right-aligned.
    void alignRight(size_t column);
    void addRow(std::vector<std::string> cells);
    // A row whose last cell is a path the user gave: never wrapped, since a path split at its
    // blanks can be neither read nor copied. Its line is as long as the path needs.
    void addPathRow(std::vector<std::string> cells);
    bool empty() const { return mRows.empty(); }

    std::string render(const std::string& indent = "", size_t width = kDefaultWidth) const;

    // Splits text into lines of at most width characters at blanks; a longer word stays whole.
    static std::vector<std::string> wrap(const std::string& text, size_t width);

    // A terminal's usual width: tables and help read without a wide window.
    static constexpr size_t kDefaultWidth = 80;

private:
    void renderRow(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                   const std::string& indent, size_t width, bool keepWhole, std::string& out) const;

    std::vector<std::string> mHeaders;
    std::vector<bool> mRightAligned;
    std::vector<std::vector<std::string>> mRows;
    std::vector<bool> mKeepWhole;  // per row: its last cell is never wrapped
};

}  // namespace korva::tool
