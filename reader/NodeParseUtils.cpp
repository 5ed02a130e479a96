#include "reader/NodeParseUtils.h"

#include <android/log.h>

#include "reader/String2Int.h"

namespace korva {
namespace NodeParseUtils {

int parseValue(TagIterator& iterator) {
    static const std::vector<std::string> kValueName = {"value"};
    std::vector<std::string> value;
    iterator.parseNodeWithName(kValueName, value);
    if (value.empty()) {
        return 0;
    }
    if (value[0] == "true") {
        return 1;
    }
    if (value[0] == "false") {
        return 0;
    }
    return string2Int(value[0]);
}

std::vector<int> parseDataRow(TagIterator& iterator) {
    std::vector<std::string> attributes;
    iterator.parseNodeAll(attributes);
    std::vector<int> row;
    if (!attributes.empty()) {
        string2IntVector(attributes[0], row);
    }
    return row;
}

std::vector<int> parseMixMatrix(TagIterator& iterator) {
    std::vector<int> matrix;
    iterator.pushNode();
    if (descend(iterator, 2)) {
        for (; iterator.isCurValid(); iterator.next()) {
            std::vector<std::string> row;
            iterator.parseNodeAll(row);
            if (!row.empty()) {
                string2IntVector(row[0], matrix);
            }
        }
    }
    iterator.popNode();
    return matrix;
}

std::vector<std::vector<std::string>> parseChildRows(TagIterator& iterator, int levels,
                                                     const std::vector<std::string>& attrNames,
                                                     const std::string& rowName) {
    std::vector<std::vector<std::string>> rows;
    iterator.pushNode();
    if (descend(iterator, levels)) {
        for (; iterator.isCurValid(); iterator.next()) {
            if (!iterator.isElementNode()) {
                continue;
            }
            if (!rowName.empty() && iterator.getNodeName() != rowName) {
                __android_log_print(ANDROID_LOG_INFO, "ValueSetter", "No attribute %s was found!",
                                    rowName.c_str());
                break;
            }
            std::vector<std::string> row;
            iterator.parseNodeWithName(attrNames, row);
            rows.push_back(std::move(row));
        }
    }
    iterator.popNode();
    return rows;
}

bool descend(TagIterator& iterator, int levels) {
    // Without the check, stepping down from a childless element would leave the cursor on it
    // and the caller would read the element's siblings as its children.
    for (int level = 0; level < levels; level++) {
        if (!iterator.isChildrenValid()) {
            return false;
        }
        iterator.childrenNext();
    }
    return iterator.isCurValid();
}

}  // namespace NodeParseUtils
}  // namespace korva
