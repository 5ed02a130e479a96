// The reader's XML cursor, made to remember where it is in the file. It moves exactly as the
// library's TagIterator does (every move goes through TagIterator first) and follows along with a
// node of its own, so that whoever drives it, the linter or one of the library's value setters,
// can ask for the line of the node under the cursor.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "reader/TagIterator.h"

namespace korva::tool {

class LineTrackingIterator : public TagIterator {
public:
    // Reads the file as the reader does (blank text kept), keeping line numbers. Returns 0, or
    // -EINVAL with libxml2's complaint and its line in *error and *errorLine.
    int open(const std::string& path, std::string* error, int* errorLine);

    void next() override;
    void childrenNext() override;
    void pushNode() override;
    void popNode() override;

    xmlNode* node() const { return mNode; }
    xmlNode* root() const { return mRoot; }
    // The line of the node under the cursor; 0 when there is none.
    int line() const;
    static int lineOf(const xmlNode* node);

    // Elements that a step down landed past: the reader steps over the first child of each
    // element it enters, expecting the blank text before the first child element, so an element
    // written right after its parent's opening tag is never read.
    const std::vector<xmlNode*>& steppedOver() const { return mSteppedOver; }

private:
    xmlNode* mRoot = nullptr;
    xmlNode* mNode = nullptr;
    std::vector<xmlNode*> mStack;
    std::vector<xmlNode*> mSteppedOver;
};

}  // namespace korva::tool
