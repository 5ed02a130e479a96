#include "reader/String2Int.h"

#include <climits>
#include <cstdint>

namespace korva {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads one int from text at pos as a stream's extraction would in the classic locale, but
// without building a stream (and without regard to the process's global locale). Returns false
// when there are no digits (value 0) or the number is out of range (value clamped).
bool extractInt(const std::string& text, size_t& pos, int& value) {
    while (pos < text.size() && isSpace(text[pos])) {
        pos++;
    }
    bool negative = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
        negative = text[pos] == '-';
        pos++;
    }
    const size_t firstDigit = pos;
    // One past INT_MAX's magnitude is enough to tell every overflow.
    constexpr int64_t kLimit = int64_t{INT_MAX} + 1;
    int64_t magnitude = 0;
    for (; pos < text.size() && isDigit(text[pos]); pos++) {
        if (magnitude <= kLimit) {
            magnitude = magnitude * 10 + (text[pos] - '0');
        }
    }
    if (pos == firstDigit) {
        value = 0;
        return false;
    }
    if (negative) {
        value = magnitude >= kLimit ? INT_MIN : static_cast<int>(-magnitude);
        return magnitude <= kLimit;
    }
    value = magnitude > INT_MAX ? INT_MAX : static_cast<int>(magnitude);
    return magnitude <= INT_MAX;
}

}  // namespace

int string2Int(const std::string& text) {
    size_t pos = 0;
    int value = 0;
    extractInt(text, pos, value);
    return value;
}

void string2IntVector(const std::string& text, std::vector<int>& out) {
    size_t pos = 0;
    int value = 0;
    while (extractInt(text, pos, value)) {
        out.push_back(value);
        // One separator is allowed between numbers; a second one ends the list.
        if (pos < text.size() && (text[pos] == ',' || text[pos] == ' ' || text[pos] == '\t')) {
            pos++;
        }
    }
}

}  // namespace korva
