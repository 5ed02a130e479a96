#include "reader/String2Int.h"

#include <sstream>

namespace korva {

int string2Int(const std::string& text) {
    std::istringstream stream(text);
    // Extraction stores 0 when there are no digits and the clamped limit on overflow.
    int value = 0;
    stream >> value;
    return value;
}

void string2IntVector(const std::string& text, std::vector<int>& out) {
    std::istringstream stream(text);
    int value = 0;
    while (stream >> value) {
        out.push_back(value);
        // One separator is allowed between numbers; a second one ends the list.
        int separator = stream.peek();
        if (separator == ',' || separator == ' ' || separator == '\t') {
            stream.get();
        }
    }
}

}  // namespace korva
