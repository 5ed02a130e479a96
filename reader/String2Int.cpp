#include "reader/String2Int.h"

#include <climits>
#include <cstdint>
#include <cstring>

namespace korva {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads one int from [at, end) as a stream's extraction would in the classic locale, but
// without building a stream (and without regard to the process's global locale). Returns where
// reading stopped, with ok false when there are no digits (value 0) or the number is out of range
// (value clamped). Works on pointers held in locals: every number of a tuning file goes through
// here, and the loop must not reload the string at each character.
const char* extractInt(const char* at, const char* end, int& value, bool& ok) {
    while (at < end && isSpace(*at)) {
        at++;
    }
    bool negative = false;
    if (at < end && (*at == '+' || *at == '-')) {
        negative = *at == '-';
        at++;
    }
    const char* firstDigit = at;
    // One past INT_MAX's magnitude is enough to tell every overflow.
    constexpr int64_t kLimit = int64_t{INT_MAX} + 1;
    int64_t magnitude = 0;
    for (; at < end && isDigit(*at); at++) {
        if (magnitude <= kLimit) {
            magnitude = magnitude * 10 + (*at - '0');
        }
    }
    if (at == firstDigit) {
        value = 0;
        ok = false;
    } else if (negative) {
        value = magnitude >= kLimit ? INT_MIN : static_cast<int>(-magnitude);
        ok = magnitude <= kLimit;
    } else {
        value = magnitude > INT_MAX ? INT_MAX : static_cast<int>(magnitude);
        ok = magnitude <= INT_MAX;
    }
    return at;
}

// The list reader over [begin, end); returns where reading stopped.
const char* readIntList(const char* begin, const char* end, std::vector<int>& out) {
    const char* at = begin;
    int value = 0;
    bool ok = false;
    for (at = extractInt(at, end, value, ok); ok; at = extractInt(at, end, value, ok)) {
        out.push_back(value);
        // One separator is allowed between numbers; a second one ends the list.
        if (at < end && (*at == ',' || *at == ' ' || *at == '\t')) {
            at++;
        }
    }
    return at;
}

}  // namespace

int string2Int(std::string& text) {
    return string2Int(static_cast<const std::string&>(text));
}

void string2IntVector(std::string& text, std::vector<int>& out) {
    string2IntVector(static_cast<const std::string&>(text), out);
}

int string2Int(const std::string& text) {
    int value = 0;
    bool ok = false;
    extractInt(text.data(), text.data() + text.size(), value, ok);
    return value;
}

void string2IntVector(const std::string& text, std::vector<int>& out) {
    intListEnd(text, out);
}

int string2Int(const char* text) {
    int value = 0;
    bool ok = false;
    extractInt(text, text + strlen(text), value, ok);
    return value;
}

void string2IntVector(const char* text, std::vector<int>& out) {
    readIntList(text, text + strlen(text), out);
}

size_t intListEnd(const std::string& text, std::vector<int>& out) {
    const char* const at = readIntList(text.data(), text.data() + text.size(), out);
    return static_cast<size_t>(at - text.data());
}

#ifdef KORVA_LOAD_REPORT
NumberRead classifyInt(const std::string& text) {
    int value = 0;
    bool ok = false;
    const char* const end = text.data() + text.size();
    const char* at = extractInt(text.data(), end, value, ok);
    if (!ok) {
        // Digits that did not fit clamp; no digits at all read as 0.
        const char* digits = text.data();
        while (digits < end && isSpace(*digits)) {
            digits++;
        }
        if (digits < end && (*digits == '+' || *digits == '-')) {
            digits++;
        }
        return digits < end && isDigit(*digits) ? NumberRead::kClamped : NumberRead::kNone;
    }
    while (at < end && isSpace(*at)) {
        at++;
    }
    return at == end ? NumberRead::kWhole : NumberRead::kPart;
}
#endif  // KORVA_LOAD_REPORT

}  // namespace korva
