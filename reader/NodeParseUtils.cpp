#include "reader/NodeParseUtils.h"

#include <android/log.h>

#include "reader/ReadTrace.h"
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
        ReadTrace::word(iterator.currentNode(), "value", value[0], 1);
        return 1;
    }
    if (value[0] == "false") {
        ReadTrace::word(iterator.currentNode(), "value", value[0], 0);
        return 0;
    }
    return ReadTrace::readInt(iterator.currentNode(), "value", value[0]);
}

std::vector<int> parseDataRow(TagIterator& iterator) {
    std::vector<std::string> attributes;
    iterator.parseNodeAll(attributes);
    std::vector<int> row;
    if (!attributes.empty()) {
        const xmlNode* element = iterator.currentNode();
        ReadTrace::ignoredAfterFirst(element);
        ReadTrace::readIntList(element, ReadTrace::firstAttributeName(element), attributes[0], row);
    }
    return row;
}

std::vector<int> parseMixMatrix(TagIterator& iterator) {
    std::vector<int> matrix;
    iterator.pushNode();
    iterator.childrenNext();
    if (!iterator.isChildrenValid()) {
        iterator.popNode();
        return matrix;
    }
    ReadTrace::structure(iterator.currentNode(), Structure::kSetterLevel);
    iterator.childrenNext();
    for (; iterator.isCurValid(); iterator.next()) {
        std::vector<std::string> row;
        iterator.parseNodeAll(row);
        if (!row.empty()) {
            const xmlNode* element = iterator.currentNode();
            ReadTrace::structure(element, Structure::kSetterRow);
            ReadTrace::ignoredAfterFirst(element);
            ReadTrace::readIntList(element, ReadTrace::firstAttributeName(element), row[0], matrix);
        }
    }
    iterator.popNode();
    return matrix;
}

std::vector<std::vector<std::string>> parseChildRows(TagIterator& iterator, int levels,
                                                     const std::vector<std::string>& attrNames,
                                                     const std::string& rowName,
                                                     std::vector<const xmlNode*>* rowNodes) {
    std::vector<std::vector<std::string>> rows;
    iterator.pushNode();
    for (int level = 0; level < levels; level++) {
        iterator.childrenNext();
        if (level + 1 < levels && iterator.isElementNode()) {
            ReadTrace::structure(iterator.currentNode(), Structure::kSetterLevel);
        }
    }
    for (; iterator.isCurValid(); iterator.next()) {
        if (!iterator.isElementNode()) {
            continue;
        }
        if (!rowName.empty() && iterator.getNodeName() != rowName) {
            ReadTrace::skipped(iterator.currentNode(), Skip::kEndsList);
            __android_log_print(ANDROID_LOG_INFO, "ValueSetter", "No attribute %s was found!",
                                rowName.c_str());
            break;
        }
        ReadTrace::structure(iterator.currentNode(), Structure::kSetterRow);
        std::vector<std::string> row;
        iterator.parseNodeWithName(attrNames, row);
        rows.push_back(std::move(row));
        if (rowNodes != nullptr) {
            rowNodes->push_back(iterator.currentNode());
        }
    }
    iterator.popNode();
    return rows;
}

}  // namespace NodeParseUtils
}  // namespace korva
