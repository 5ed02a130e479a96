#include "tools/lsp/LspText.h"

#include <algorithm>

namespace korva::tool {

namespace {

// The UTF-16 code units a byte of UTF-8 starts: none for a continuation byte, two for the lead
// of a four-byte sequence (0xF0 or above). A byte that is no UTF-8 counts as one, as editors show
// it.
size_t utf16Units(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
}

size_t utf16Units(std::string_view bytes) {
    size_t units = 0;
    for (const char c : bytes) {
        units += utf16Units(c);
    }
    return units;
}

}  // namespace

LspText::LspText(const std::string& text) : mText(text), mStarts{0} {
    for (size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 1)) {
        mStarts.push_back(i + 1);
    }
}

std::string_view LspText::line(size_t index) const {
    if (index >= mStarts.size()) {
        return {};
    }
    const size_t end = index + 1 < mStarts.size() ? mStarts[index + 1] - 1 : mText.size();
    std::string_view text(mText.data() + mStarts[index], end - mStarts[index]);
    return !text.empty() && text.back() == '\r' ? text.substr(0, text.size() - 1) : text;
}

Json LspText::position(size_t offset) const {
    offset = std::min(offset, mText.size());
    const size_t index =
        std::upper_bound(mStarts.begin(), mStarts.end(), offset) - mStarts.begin() - 1;
    return {{"line", index},
            {"character",
             utf16Units(std::string_view(mText).substr(mStarts[index], offset - mStarts[index]))}};
}

size_t LspText::offset(long line, long character) const {
    if (line < 0 || static_cast<size_t>(line) >= mStarts.size() || character < 0) {
        return std::string::npos;
    }
    const std::string_view bytes = this->line(line);
    size_t i = 0;
    for (long units = 0; units < character && i < bytes.size(); i++) {
        units += utf16Units(bytes[i]);
    }
    while (i < bytes.size() && utf16Units(bytes[i]) == 0) {
        i++;
    }
    return mStarts[line] + i;
}

Json LspText::trimmedLine(size_t index) const {
    const std::string_view text = line(index);
    const size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    const size_t end = text.find_last_not_of(" \t") + 1;
    const size_t start = index < mStarts.size() ? mStarts[index] : mText.size();
    return range(start + begin, start + std::max(begin, end));
}

bool LspText::contains(long line, long character) const {
    return line >= 0 && character >= 0 && static_cast<size_t>(line) < mStarts.size() &&
           static_cast<size_t>(character) <= utf16Units(this->line(line));
}

}  // namespace korva::tool
