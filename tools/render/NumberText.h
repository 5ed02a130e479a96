// Whether the tuning-file reader's decimal conversions read a text whole (so the linter can point
// at 1.5, 0x10 or 12abc, which the reader silently shortens), and numbers joined for display.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

class NumberText {
public:
    // One int: blanks around an optional sign and decimal digits, within the int range.
    static bool isWholeInt(const std::string& text);
    // A list written with commas or blanks of which string2IntVector reads every number.
    static bool isWholeIntList(const std::string& text);

    // "1 2 3", or with another separator.
    static std::string join(const std::vector<int>& values, const char* separator = " ");
    // "[1, 2, 3]", for messages.
    static std::string bracketed(const std::vector<int>& values) {
        return "[" + join(values, ", ") + "]";
    }
};

}  // namespace korva::tool
