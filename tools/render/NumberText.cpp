#include "tools/render/NumberText.h"

#include <algorithm>

#include "reader/String2Int.h"

namespace korva::tool {

bool NumberText::isWholeInt(const std::string& text) {
    return classifyInt(text) == NumberRead::kWhole;
}

bool NumberText::isWholeIntList(const std::string& text) {
    // Each piece between commas and blanks whole, and the list reader reading every one of them.
    size_t pieces = 0;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find_first_of(", \t\r\n", start), text.size());
        if (end > start && (++pieces, !isWholeInt(text.substr(start, end - start)))) {
            return false;
        }
        start = end + 1;
    }
    std::vector<int> read;
    string2IntVector(text, read);
    return read.size() == pieces;
}

std::string NumberText::join(const std::vector<int>& values, const char* separator) {
    std::string out;
    for (size_t i = 0; i < values.size(); i++) {
        out += (i == 0 ? "" : separator) + std::to_string(values[i]);
    }
    return out;
}

}  // namespace korva::tool
