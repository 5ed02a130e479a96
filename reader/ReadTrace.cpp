#include "reader/ReadTrace.h"

#include <unordered_set>

#include "model/ParameterValues.h"
#include "reader/NodeInfo.h"
#include "reader/String2Int.h"

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

void beginDocument() {
    // Unobserved parses never touch the set: the thread keeps no state for a listener it lacks.
    if (LoadObserver::current() != nullptr) {
        tSeen.clear();
    }
}

void endDocument(const xmlNode* root, const xmlNode* cutAt) {
    LoadObserver* observer = LoadObserver::current();
    if (observer == nullptr) {
        return;
    }
    if (root != nullptr) {
        bool cut = false;
        for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
            sweep(*observer, node, cut ? Skip::kAfterCut : Skip::kNotWalked);
            cut = cut || node == cutAt;
        }
    }
    tSeen.clear();
}

void landed(const xmlNode* node) {
    LoadObserver* observer = LoadObserver::current();
    if (observer == nullptr || node == nullptr || node->type == XML_ELEMENT_NODE) {
        return;
    }
    if (hasContent(node) && firstTime(node)) {
        observer->onSkipped(node, Skip::kNotElement);
    }
}

void steppedOver(const xmlNode* parent) {
    LoadObserver* observer = LoadObserver::current();
    if (observer == nullptr || parent == nullptr || parent->children == nullptr) {
        return;
    }
    const xmlNode* first = parent->children;
    if (hasContent(first)) {
        tSeen.insert(first);
        observer->onSkipped(first, Skip::kSteppedOver);
    }
}

void structure(const xmlNode* node, Structure what) {
    if (LoadObserver* observer = LoadObserver::current()) {
        tSeen.insert(node);
        observer->onStructure(node, what);
    }
}

void skipped(const xmlNode* node, Skip why) {
    if (LoadObserver* observer = LoadObserver::current()) {
        tSeen.insert(node);
        observer->onSkipped(node, why);
    }
}

void lookup(const xmlNode* lookedAt, Structure expected, bool found) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onLookup(lookedAt, expected, found);
    }
}

void keyword(const xmlNode* element, const char* attribute, const std::string& text, int value,
             bool recognised) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onKeyword(element, attribute, text, value, recognised);
    }
}

void setter(const xmlNode* element, ValueSetter& setter, const ParameterValues& record) {
    if (LoadObserver* observer = LoadObserver::current()) {
        tSeen.insert(element);
        observer->onSetter(element, setter, record);
    }
}

void record(const xmlNode* element, const ParameterValues& record, RecordKind kind) {
    if (LoadObserver* observer = LoadObserver::current()) {
        tSeen.insert(element);
        observer->onRecord(element, record, kind);
    }
}

void value(const xmlNode* element, const ParameterValues& record, Parameter parameter,
           const std::vector<int>& values, ValueSource source) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onValue(element, record, parameter, values, source);
    }
}

void write(const xmlNode* element, ParameterValues& record, Parameter parameter,
           std::vector<int> values, ValueSource source) {
    record.set(parameter, std::move(values));
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onValue(element, record, parameter, record.values[parameter], source);
    }
}

void word(const xmlNode* element, const char* attribute, const std::string& text, int value) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onNumber(element, attribute, text, value, NumberRead::kWord);
    }
}

const char* firstAttributeName(const xmlNode* element) {
    return element != nullptr && element->type == XML_ELEMENT_NODE && element->properties != nullptr
               ? reinterpret_cast<const char*>(element->properties->name)
               : nullptr;
}

void ignoredAfterFirst(const xmlNode* element) {
    LoadObserver* observer = LoadObserver::current();
    if (observer == nullptr || element == nullptr || element->type != XML_ELEMENT_NODE ||
        element->properties == nullptr) {
        return;
    }
    for (const xmlAttr* attribute = element->properties->next; attribute != nullptr;
         attribute = attribute->next) {
        xmlChar* text = xmlNodeListGetString(element->doc, attribute->children, 1);
        const std::string value = text != nullptr ? reinterpret_cast<const char*>(text) : "";
        xmlFree(text);
        observer->onAttribute(element, reinterpret_cast<const char*>(attribute->name), value,
                              AttributeRead::kIgnored);
    }
}

void number(const xmlNode* element, const char* attribute, const std::string& text, int value) {
    if (LoadObserver* observer = LoadObserver::current()) {
        observer->onNumber(element, attribute, text, value, classifyInt(text));
    }
}

int readInt(const xmlNode* element, const char* attribute, const std::string& text) {
    const int value = string2Int(text);
    number(element, attribute, text, value);
    return value;
}

void readIntList(const xmlNode* element, const char* attribute, const std::string& text,
                 std::vector<int>& out) {
    LoadObserver* observer = LoadObserver::current();
    if (observer == nullptr) {
        string2IntVector(text, out);
        return;
    }
    const size_t before = out.size();
    const size_t end = intListEnd(text, out);
    size_t rest = end;
    while (rest < text.size() &&
           (text[rest] == ' ' || text[rest] == '\t' || text[rest] == '\n' || text[rest] == '\r')) {
        rest++;
    }
    const std::vector<int> read(out.begin() + before, out.end());
    observer->onNumberList(element, attribute, text, read, rest == text.size());
}

}  // namespace ReadTrace
}  // namespace korva
