#include "reader/NodeParseUtils.h"

#include <android/log.h>

#include <cstring>

#include "observer/LoadObserver.h"
#include "reader/ReadTrace.h"
#include "reader/String2Int.h"
#include "reader/TuningFileLayout.h"

namespace korva {
namespace NodeParseUtils {

int parseValue(TagIterator& iterator) {
    std::string scratch;
    const char* text = iterator.attributeText(TuningFileLayout::kValueAttribute, scratch);
    if (text == nullptr) {
        return 0;
    }
    if (strcmp(text, TuningFileLayout::kTrue) == 0) {
        ReadTrace::word(iterator.currentNode(), TuningFileLayout::kValueAttribute, text, 1);
        return 1;
    }
    if (strcmp(text, TuningFileLayout::kFalse) == 0) {
        ReadTrace::word(iterator.currentNode(), TuningFileLayout::kValueAttribute, text, 0);
        return 0;
    }
    return ReadTrace::readInt(iterator.currentNode(), TuningFileLayout::kValueAttribute, text);
}

namespace {

// Reads the text of the element's first attribute as a list of ints appended to out; the
// element's other attributes are passed over.
void readFirstAttributeList(const xmlNode* element, const char* text, std::vector<int>& out) {
    ReadTrace::ignoredAfterFirst(element);
    ReadTrace::readIntList(element, ReadTrace::firstAttributeName(element), text, out);
}

}  // namespace

std::vector<int> parseDataRow(TagIterator& iterator) {
    std::string scratch;
    std::vector<int> row;
    if (const char* text = iterator.firstAttributeText(scratch)) {
        readFirstAttributeList(iterator.currentNode(), text, row);
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
    std::string scratch;
    for (; iterator.isCurValid(); iterator.next()) {
        if (const char* text = iterator.firstAttributeText(scratch)) {
            ReadTrace::structure(iterator.currentNode(), Structure::kSetterRow);
            readFirstAttributeList(iterator.currentNode(), text, matrix);
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
