#include "reader/TagIterator.h"

#include <android/log.h>
#include <libxml/parser.h>

#include <cerrno>
#include <cstring>

#include "observer/LoadObserver.h"
#include "reader/ReadTrace.h"
#include "reader/String2Int.h"

namespace korva {

namespace {

constexpr const char* kLogTag = "TagIterator";

// Whether an earlier attribute of the element has the same name, so that looking the name up
// (as xmlGetProp does) would find that one instead. Only names in different namespaces can
// repeat in a well-formed document.
bool isShadowed(const xmlNode* node, const xmlAttr* attribute) {
    for (const xmlAttr* earlier = node->properties; earlier != attribute; earlier = earlier->next) {
        if (xmlStrEqual(earlier->name, attribute->name)) {
            return true;
        }
    }
    return false;
}

// Reads one attribute value of an element; a value libxml2 cannot give reads as empty. The
// usual value, one text node, is copied straight from the tree: going through xmlGetProp would
// look the name up again and copy the text twice, once per attribute of the whole file.
std::string readAttributeValue(const xmlNode* node, const xmlAttr* attribute) {
    const xmlNode* text = attribute->children;
    if (text != nullptr && text->next == nullptr && text->type == XML_TEXT_NODE &&
        !isShadowed(node, attribute)) {
        return toString(text->content);
    }
    XmlCharPtr value(xmlGetProp(node, attribute->name));
    return toString(value.get());
}

// readAttributeValue without the copy where the tree holds the text whole; else the copy goes
// into scratch.
const char* attributeTextOf(const xmlNode* node, const xmlAttr* attribute, std::string& scratch) {
    const xmlNode* text = attribute->children;
    if (text != nullptr && text->next == nullptr && text->type == XML_TEXT_NODE &&
        !isShadowed(node, attribute)) {
        return text->content != nullptr ? reinterpret_cast<const char*>(text->content) : "";
    }
    scratch = readAttributeValue(node, attribute);
    return scratch.c_str();
}

}  // namespace

std::string attributeValue(const xmlNode* node, const xmlAttr* attribute) {
    return readAttributeValue(node, attribute);
}

int TagIterator::mInstanceCount = 0;

TagIterator::TagIterator() {
    mInstanceCount++;
}

TagIterator::~TagIterator() {
    clearAll();
    mInstanceCount--;
    if (mInstanceCount == 0) {
        xmlCleanupParser();
    }
}

int TagIterator::init(std::string& path) {
    if (path.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Invalide xml file path, %d", __LINE__);
        return -EINVAL;
    }
    // No parser options: blank text nodes must stay, the walk relies on them.
    xmlDoc* document = xmlReadFile(path.c_str(), nullptr, 0);
    if (document == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "fail to call xmlReadFile,  %d", __LINE__);
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onReadFailed(path, -EINVAL, xmlGetLastError());
        }
        return -EINVAL;
    }
    return adoptDocument(document);
}

int TagIterator::adoptDocument(xmlDoc* document) {
    mDocument.reset(document);
    mRoot = xmlDocGetRootElement(document);
    if (mRoot == nullptr) {
        // The document stays owned until clearAll or the destructor.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "fail to call xmlDocGetRootElement, %d",
                            __LINE__);
        if (LoadObserver* observer = LoadObserver::current()) {
            static const std::string kUnnamed;
            observer->onReadFailed(kUnnamed, -ENODEV, nullptr);
        }
        return -ENODEV;
    }
    mCurrent = mRoot->children;
    ReadTrace::landed(mCurrent);
    return 0;
}

void TagIterator::next() {
    if (mCurrent != nullptr) {
        mCurrent = mCurrent->next;
        ReadTrace::landed(mCurrent);
    }
}

void TagIterator::childrenNext() {
    if (mCurrent != nullptr && mCurrent->children != nullptr) {
        ReadTrace::steppedOver(mCurrent);
        mCurrent = mCurrent->children->next;
        ReadTrace::landed(mCurrent);
    }
}

bool TagIterator::isChildrenValid() {
    return mCurrent != nullptr && mCurrent->children != nullptr;
}

bool TagIterator::isNextValid() {
    return mCurrent != nullptr && mCurrent->next != nullptr;
}

bool TagIterator::isCurValid() {
    return mCurrent != nullptr;
}

bool TagIterator::isElementNode() {
    return mCurrent != nullptr && mCurrent->type == XML_ELEMENT_NODE;
}

void TagIterator::pushNode() {
    mNodeStack.push_back(mCurrent);
}

void TagIterator::popNode() {
    if (mNodeStack.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "It's empty in node stack!");
        return;
    }
    mCurrent = mNodeStack.back();
    mNodeStack.pop_back();
}

std::string TagIterator::getNodeName() {
    return mCurrent != nullptr ? toString(mCurrent->name) : std::string();
}

std::vector<std::string> TagIterator::getAttrsName() {
    std::vector<std::string> names;
    if (!isElementNode()) {
        return names;
    }
    for (const xmlAttr* attribute = mCurrent->properties; attribute != nullptr;
         attribute = attribute->next) {
        names.push_back(toString(attribute->name));
    }
    return names;
}

bool TagIterator::isReadableElement() {
    if (mCurrent == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Invalid node when parsing String vector.");
        return false;
    }
    return mCurrent->type == XML_ELEMENT_NODE;
}

void TagIterator::parseNodeIntVector(std::vector<int>& out) {
    if (!isReadableElement()) {
        return;
    }
    LoadObserver* observer = LoadObserver::current();
    for (const xmlAttr* attribute = mCurrent->properties; attribute != nullptr;
         attribute = attribute->next) {
        const std::string text = readAttributeValue(mCurrent, attribute);
        out.push_back(string2Int(text));
        if (observer != nullptr) {
            const char* name = reinterpret_cast<const char*>(attribute->name);
            observer->onAttribute(mCurrent, name, text, AttributeRead::kRead);
            ReadTrace::number(mCurrent, name, text, out.back());
        }
    }
}

void TagIterator::parseNodeAll(std::vector<std::string>& out) {
    parseNodeWithName({}, out);
}

void TagIterator::parseNodeWithName(const std::vector<std::string>& names,
                                    std::vector<std::string>& out) {
    if (!isReadableElement()) {
        return;
    }
    if (!names.empty()) {
        out.resize(names.size());
    }
    for (const xmlAttr* attribute = mCurrent->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (names.empty()) {
            out.push_back(readAttributeValue(mCurrent, attribute));
            continue;
        }
        // Lengths first: most names differ in length, and this runs for every attribute read.
        const char* name = reinterpret_cast<const char*>(attribute->name);
        const size_t length = strlen(name);
        for (size_t i = 0; i < names.size(); i++) {
            if (names[i].size() == length && memcmp(names[i].data(), name, length) == 0) {
                out[i] = readAttributeValue(mCurrent, attribute);
            }
        }
    }
    ReadTrace::attributes(mCurrent, names);
}

const char* TagIterator::attributeText(const char* name, std::string& scratch) {
    if (!isReadableElement()) {
        return nullptr;
    }
    // The last attribute of that name wins, as in parseNodeWithName.
    const char* text = "";
    for (const xmlAttr* attribute = mCurrent->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (strcmp(reinterpret_cast<const char*>(attribute->name), name) == 0) {
            text = attributeTextOf(mCurrent, attribute, scratch);
        }
    }
    ReadTrace::attribute(mCurrent, name);
    return text;
}

const char* TagIterator::firstAttributeText(std::string& scratch) {
    if (!isReadableElement() || mCurrent->properties == nullptr) {
        return nullptr;
    }
    const char* text = attributeTextOf(mCurrent, mCurrent->properties, scratch);
    // Read as parseNodeAll reads: a listener hears of every attribute.
    static const std::vector<std::string> kEvery;
    ReadTrace::attributes(mCurrent, kEvery);
    return text;
}

void TagIterator::clearAll() {
    mDocument.reset();
    mRoot = nullptr;
    mCurrent = nullptr;
}

}  // namespace korva
