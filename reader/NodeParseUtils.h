// Value readers shared by the setters and the tuning-file parser. Each reads the element under
// the cursor and leaves the cursor where it found it.
#pragma once

#include <libxml/tree.h>

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

// The rows of a band list: steps into the element under the cursor the given number of times
// (each time onto the second child, whatever is there) and reads the attributes attrNames of
// every element from there to the end of that sibling list, one row per element, one slot per
// name (empty when missing). With a rowName, the first element of another name ends the rows and
// is logged. rowNodes, when given, gets the element of each row.
std::vector<std::vector<std::string>> parseChildRows(
    TagIterator& iterator, int levels, const std::vector<std::string>& attrNames,
    const std::string& rowName = "", std::vector<const xmlNode*>* rowNodes = nullptr);

// Steps into a tuning element, whose device bindings come first, and calls onBinding() with the
// cursor on each "device_id" element. Returns true with the cursor on the first other element,
// the tuning's data; false when the walk ran off the end. A tuning without children leaves the
// cursor on itself, which then counts as that other element. The caller saves and restores the
// cursor.
template <typename OnBinding>
bool walkDeviceBindings(TagIterator& iterator, OnBinding onBinding) {
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
