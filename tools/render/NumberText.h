// Tells whether the tuning-file reader's decimal conversions read a text whole, so the linter can
// point at values such as 1.5, 0x10 or 12abc that the reader silently shortens.
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

    // "1 2 3".
    static std::string join(const std::vector<int>& values);
    // "[1, 2, 3]", for messages.
    static std::string bracketed(const std::vector<int>& values);
};

}  // namespace korva::tool
