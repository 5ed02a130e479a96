// Decimal number parsing of tuning-file attribute text.
#pragma once

#include <string>
#include <vector>

#include "observer/LoadObserver.h"

namespace korva {

// One decimal int read the way a stream reads it: leading white space skipped, an optional sign,
// then digits up to the first other character. No digits gives 0; a value outside the int range
// is clamped to the nearest limit. Hexadecimal, octal and fractions are never accepted.
int string2Int(std::string& text);
int string2Int(const std::string& text);

// The same for NUL-terminated text, read in place.
int string2Int(const char* text);

// Appends the ints of a list such as "1,2,3", "1 2 3" or "1, 2, 3," to out. Reading stops at the
// first text that is not a number, so "1,,2" gives [1] and "1.5,2" gives [1].
void string2IntVector(std::string& text, std::vector<int>& out);
void string2IntVector(const std::string& text, std::vector<int>& out);

void string2IntVector(const char* text, std::vector<int>& out);

// As string2IntVector; returns where reading stopped (the text's size when it read to the end,
// a trailing separator included).
size_t intListEnd(const std::string& text, std::vector<int>& out);
#ifdef KORVA_LOAD_REPORT
// How string2Int reads the text, for the load's report.
NumberRead classifyInt(const std::string& text);
#endif

}  // namespace korva
