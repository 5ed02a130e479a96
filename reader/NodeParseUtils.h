// Value readers shared by the setters and the tuning-file parser. Each reads the element under
// the cursor and leaves the cursor where it found it.
#pragma once

#include <string>
#include <vector>

#include "reader/TagIterator.h"

namespace korva {
namespace NodeParseUtils {

// The "value" attribute: "true" is 1, "false" 0, anything else a decimal int (0 when missing
// or when the cursor is not on an element).
int parseValue(TagIterator& iterator);

// The first attribute, whatever its name, as a list of ints; empty when there is none.
std::vector<int> parseDataRow(TagIterator& iterator);

// A matrix written as element > wrapper > one row element per row, each row's first attribute
// holding its comma-separated coefficients. The rows are concatenated.
std::vector<int> parseMixMatrix(TagIterator& iterator);

// The attributes attrNames of every element found the given number of levels below the element
// under the cursor, one row per element, one slot per name (empty when missing). With a rowName,
// the first element of another name ends the rows and is logged.
std::vector<std::vector<std::string>> parseChildRows(TagIterator& iterator, int levels,
                                                     const std::vector<std::string>& attrNames,
                                                     const std::string& rowName = "");

// Steps down the given number of levels, each time onto the first child element of an indented
// file. Returns false, somewhere on the way down, when a level has nothing below it. The caller
// saves the cursor before and restores it after.
bool descend(TagIterator& iterator, int levels);

// Steps into a tuning element, whose device bindings come first, and calls onBinding() with the
// cursor on each "device_id" element. Returns true with the cursor on the first other element,
// the tuning's data; false when there is none. The caller saves and restores the cursor.
template <typename OnBinding>
bool walkDeviceBindings(TagIterator& iterator, OnBinding onBinding) {
    if (!iterator.isChildrenValid()) {
        return false;
    }
    iterator.childrenNext();
    for (; iterator.isCurValid(); iterator.next()) {
        if (!iterator.isElementNode()) {
            continue;
        }
        if (iterator.getNodeName() != "device_id") {
            return true;
        }
        onBinding();
    }
    return false;
}

}  // namespace NodeParseUtils
}  // namespace korva
