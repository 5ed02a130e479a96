#include "tools/LineTrackingIterator.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cerrno>

namespace korva::tool {

namespace {

struct ReadError {
    std::string message;
    int line = 0;
};

// Keeps libxml2's first complaint about the file instead of letting it print.
void keepFirstError(void* context, xmlErrorPtr error) {
    auto* kept = static_cast<ReadError*>(context);
    if (kept->message.empty() && error != nullptr && error->message != nullptr) {
        kept->message = error->message;
        while (!kept->message.empty() && kept->message.back() == '\n') {
            kept->message.pop_back();
        }
        kept->line = error->line;
    }
}

void dropError(void*, xmlErrorPtr) {}

}  // namespace

int LineTrackingIterator::open(const std::string& path, std::string* error, int* errorLine) {
    ReadError readError;
    xmlSetStructuredErrorFunc(&readError, keepFirstError);
    // No option but big line numbers: blank text must stay, as the reader relies on it.
    xmlDoc* document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_BIG_LINES);
    xmlSetStructuredErrorFunc(nullptr, dropError);
    if (document == nullptr) {
        *error = readError.message.empty() ? "cannot be read" : readError.message;
        *errorLine = readError.line;
        return -EINVAL;
    }
    mRoot = xmlDocGetRootElement(document);
    mNode = mRoot != nullptr ? mRoot->children : nullptr;
    const int result = adoptDocument(document);
    if (result != 0) {
        *error = "the document has no root element";
        *errorLine = 0;
    }
    return result;
}

void LineTrackingIterator::next() {
    TagIterator::next();
    if (mNode != nullptr) {
        mNode = mNode->next;
    }
}

void LineTrackingIterator::childrenNext() {
    TagIterator::childrenNext();
    if (mNode != nullptr && mNode->children != nullptr) {
        xmlNode* first = mNode->children;
        if (first->type == XML_ELEMENT_NODE &&
            std::find(mSteppedOver.begin(), mSteppedOver.end(), first) == mSteppedOver.end()) {
            mSteppedOver.push_back(first);
        }
        mNode = first->next;
    }
}

void LineTrackingIterator::pushNode() {
    TagIterator::pushNode();
    mStack.push_back(mNode);
}

void LineTrackingIterator::popNode() {
    TagIterator::popNode();
    if (!mStack.empty()) {
        mNode = mStack.back();
        mStack.pop_back();
    }
}

int LineTrackingIterator::line() const {
    return lineOf(mNode);
}

int LineTrackingIterator::lineOf(const xmlNode* node) {
    return node != nullptr ? static_cast<int>(xmlGetLineNo(node)) : 0;
}

}  // namespace korva::tool
