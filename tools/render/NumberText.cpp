#include "tools/render/NumberText.h"

#include <cctype>
#include <climits>
#include <cstdlib>

#include "reader/String2Int.h"

namespace korva::tool {

namespace {

bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool isSeparator(char c) {
    return c == ',' || isBlank(c);
}

// The text's pieces between commas and blanks.
std::vector<std::string> tokens(const std::string& text) {
    std::vector<std::string> out;
    std::string token;
    for (char c : text) {
        if (isSeparator(c)) {
            if (!token.empty()) {
                out.push_back(token);
            }
            token.clear();
        } else {
            token += c;
        }
    }
    if (!token.empty()) {
        out.push_back(token);
    }
    return out;
}

}  // namespace

bool NumberText::isWholeInt(const std::string& text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && isBlank(text[begin])) {
        begin++;
    }
    while (end > begin && isBlank(text[end - 1])) {
        end--;
    }
    bool negative = false;
    if (begin < end && (text[begin] == '+' || text[begin] == '-')) {
        negative = text[begin] == '-';
        begin++;
    }
    if (begin == end) {
        return false;
    }
    for (size_t i = begin; i < end; i++) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) {
            return false;
        }
    }
    while (begin + 1 < end && text[begin] == '0') {
        begin++;
    }
    // Eleven digits and more are out of range whatever they are; fewer fit a long long.
    if (end - begin > 10) {
        return false;
    }
    const long long magnitude = std::strtoll(text.substr(begin, end - begin).c_str(), nullptr, 10);
    return negative ? -magnitude >= INT_MIN : magnitude <= INT_MAX;
}

bool NumberText::isWholeIntList(const std::string& text) {
    const std::vector<std::string> pieces = tokens(text);
    for (const std::string& piece : pieces) {
        if (!isWholeInt(piece)) {
            return false;
        }
    }
    std::vector<int> read;
    string2IntVector(text, read);
    return read.size() == pieces.size();
}

std::string NumberText::join(const std::vector<int>& values) {
    std::string out;
    for (size_t i = 0; i < values.size(); i++) {
        out += (i == 0 ? "" : " ") + std::to_string(values[i]);
    }
    return out;
}

std::string NumberText::bracketed(const std::vector<int>& values) {
    std::string out = "[";
    for (size_t i = 0; i < values.size(); i++) {
        out += (i == 0 ? "" : ", ") + std::to_string(values[i]);
    }
    return out + "]";
}

}  // namespace korva::tool
