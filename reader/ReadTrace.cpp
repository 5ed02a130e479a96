#include "reader/ReadTrace.h"

#include <unordered_set>

#include "model/ParameterValues.h"
#include "reader/NodeInfo.h"
#include "reader/String2Int.h"
#include "reader/TagIterator.h"

namespace korva {
namespace ReadTrace {

namespace {

// The nodes of the document being read that some event has named already.
thread_local std::unordered_set<const xmlNode*> tSeen;

bool firstTime(const xmlNode* node) {
    return tSeen.insert(node).second;
}

// Whether a node says anything: whitespace between elements is the file's indentation.
bool hasContent(const xmlNode* node) {
    return node->type != XML_TEXT_NODE || NodeInfo::isTextWithContent(node);
}

// Reports the elements of the subtree that no event named: the topmost of each part.
void sweep(LoadObserver& observer, const xmlNode* node, Skip why) {
    if (node->type != XML_ELEMENT_NODE) {
        return;
    }
    if (tSeen.count(node) == 0) {
        observer.onSkipped(node, why);
        return;
    }
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
        sweep(observer, child, why);
    }
}

}  // namespace

namespace observed {

void beginDocument() {
    tSeen.clear();
}

void endDocument(LoadObserver& observer, const xmlNode* root, const xmlNode* cutAt) {
    if (root != nullptr) {
        bool cut = false;
        for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
            sweep(observer, node, cut ? Skip::kAfterCut : Skip::kNotWalked);
            cut = cut || node == cutAt;
        }
    }
    tSeen.clear();
}

void landed(LoadObserver& observer, const xmlNode* node) {
    if (node != nullptr && node->type != XML_ELEMENT_NODE && hasContent(node) && firstTime(node)) {
        observer.onSkipped(node, Skip::kNotElement);
    }
}

void steppedOver(LoadObserver& observer, const xmlNode* parent) {
    if (parent == nullptr || parent->children == nullptr) {
        return;
    }
    const xmlNode* first = parent->children;
    if (hasContent(first)) {
        tSeen.insert(first);
        observer.onSkipped(first, Skip::kSteppedOver);
    }
}

void structure(LoadObserver& observer, const xmlNode* node, Structure what) {
    tSeen.insert(node);
    observer.onStructure(node, what);
}

void skipped(LoadObserver& observer, const xmlNode* node, Skip why) {
    tSeen.insert(node);
    observer.onSkipped(node, why);
}

void setter(LoadObserver& observer, const xmlNode* element, ValueSetter& setter,
            const ParameterValues& record) {
    tSeen.insert(element);
    observer.onSetter(element, setter, record);
}

void record(LoadObserver& observer, const xmlNode* element, const ParameterValues& record,
            RecordKind kind) {
    tSeen.insert(element);
    observer.onRecord(element, record, kind);
}

void attributes(LoadObserver& observer, const xmlNode* element,
                const std::vector<std::string>& names) {
    std::vector<bool> found(names.size());
    for (const xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        const char* name = reinterpret_cast<const char*>(attribute->name);
        const std::string text = attributeValue(element, attribute);
        bool used = names.empty();
        for (size_t i = 0; i < names.size(); i++) {
            if (names[i] == name) {
                found[i] = true;
                used = true;
                observer.onAttribute(element, name, text, AttributeRead::kRead);
            }
        }
        if (names.empty()) {
            observer.onAttribute(element, name, text, AttributeRead::kRead);
        } else if (!used) {
            observer.onAttribute(element, name, text, AttributeRead::kIgnored);
        }
    }
    static const std::string kEmpty;
    for (size_t i = 0; i < found.size(); i++) {
        if (!found[i]) {
            observer.onAttribute(element, names[i].c_str(), kEmpty, AttributeRead::kMissing);
        }
    }
}

void ignoredAfterFirst(LoadObserver& observer, const xmlNode* element) {
    if (element == nullptr || element->type != XML_ELEMENT_NODE || element->properties == nullptr) {
        return;
    }
    for (const xmlAttr* attribute = element->properties->next; attribute != nullptr;
         attribute = attribute->next) {
        xmlChar* text = xmlNodeListGetString(element->doc, attribute->children, 1);
        const std::string value = text != nullptr ? reinterpret_cast<const char*>(text) : "";
        xmlFree(text);
        observer.onAttribute(element, reinterpret_cast<const char*>(attribute->name), value,
                             AttributeRead::kIgnored);
    }
}

void number(LoadObserver& observer, const xmlNode* element, const char* attribute,
            const std::string& text, int value) {
    observer.onNumber(element, attribute, text, value, classifyInt(text));
}

void readIntList(LoadObserver& observer, const xmlNode* element, const char* attribute,
                 const std::string& text, std::vector<int>& out) {
    const size_t before = out.size();
    size_t rest = intListEnd(text, out);
    while (rest < text.size() &&
           (text[rest] == ' ' || text[rest] == '\t' || text[rest] == '\n' || text[rest] == '\r')) {
        rest++;
    }
    const std::vector<int> read(out.begin() + before, out.end());
    observer.onNumberList(element, attribute, text, read, rest == text.size());
}

}  // namespace observed
}  // namespace ReadTrace
}  // namespace korva
