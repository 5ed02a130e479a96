#include "reader/NodeParseUtils.h"

#include <android/log.h>

#include <cstring>

#include "model/LoadObserver.h"
#include "reader/ReadTrace.h"
#include "reader/String2Int.h"

namespace korva {
namespace NodeParseUtils {

namespace {

// Readers for a load that nobody listens to, the usual one: the same values, read where the
// document holds the text (every parameter element of a file goes through one of them).
int parseValueUnobserved(TagIterator& iterator) {
    std::string scratch;
    const char* text = iterator.attributeText("value", scratch);
    if (text == nullptr || strcmp(text, "false") == 0) {
        return 0;
    }
    return strcmp(text, "true") == 0 ? 1 : string2Int(text);
}

std::vector<int> parseDataRowUnobserved(TagIterator& iterator) {
    std::string scratch;
    std::vector<int> row;
    if (const char* text = iterator.firstAttributeText(scratch)) {
        string2IntVector(text, row);
    }
    return row;
}

}  // namespace

int parseValue(TagIterator& iterator) {
    if (LoadObserver::current() == nullptr) {
        return parseValueUnobserved(iterator);
    }
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
    if (LoadObserver::current() == nullptr) {
        return parseDataRowUnobserved(iterator);
    }
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
    const bool observed = LoadObserver::current() != nullptr;
    std::string scratch;
    for (; iterator.isCurValid(); iterator.next()) {
        if (!observed) {
            if (const char* text = iterator.firstAttributeText(scratch)) {
                string2IntVector(text, matrix);
            }
            continue;
        }
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
        // The name compared where the document holds it: this runs for every band.
        if (!rowName.empty() &&
            rowName.compare(reinterpret_cast<const char*>(iterator.currentNode()->name)) != 0) {
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
