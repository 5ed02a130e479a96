// A forward-only cursor over a parsed XML file: steps to siblings and down into children, keeps
// a stack of saved positions, and reads element names and attribute values. It knows nothing of
// tuning files; the tuning-file reader decides what to visit.
#pragma once

#include <libxml/tree.h>

#include <deque>
#include <string>
#include <vector>

#include "reader/XmlPtr.h"

namespace korva {

// The value of one attribute of the element as the readers below give it; a value libxml2 cannot
// give reads as empty.
std::string attributeValue(const xmlNode* node, const xmlAttr* attribute);

class TagIterator {
public:
    TagIterator();
    // Frees the document; the last live iterator also releases libxml2's global state.
    virtual ~TagIterator();

    TagIterator(const TagIterator&) = delete;
    TagIterator& operator=(const TagIterator&) = delete;

    // Parses the file and puts the cursor on the root's first child node. Returns 0, -22 for an
    // empty path or a file that cannot be read or parsed, -19 for a document without a root.
    // Meant to be called once per iterator.
    virtual int init(std::string& path);

    // Moves to the next sibling of any kind (text, comment or element); null after the last.
    virtual void next();
    // Moves to the second child of the current node. Blank text is kept, so in an indented file
    // the first child is the whitespace before the first child element.
    virtual void childrenNext();
    virtual bool isChildrenValid();
    virtual bool isNextValid();
    virtual bool isCurValid();
    virtual bool isElementNode();
    // Saves the current node, null included.
    virtual void pushNode();
    // Returns to the last saved node; an empty stack is logged and leaves the cursor alone.
    virtual void popNode();
    virtual std::string getNodeName();
    virtual std::vector<std::string> getAttrsName();
    // Appends every attribute value of the current element, read as a decimal int.
    virtual void parseNodeIntVector(std::vector<int>& out);
    // Appends every attribute value of the current element, in document order.
    virtual void parseNodeAll(std::vector<std::string>& out);
    // With names: out gets one slot per name, filled from the attribute of that name when there
    // is one. Without names: as parseNodeAll.
    virtual void parseNodeWithName(const std::vector<std::string>& names,
                                   std::vector<std::string>& out);

    // Frees the document and forgets every node of it. The node stack is left alone.
    void clearAll();

    // For the reader's own value readers: the text that parseNodeWithName({name}) would give,
    // pointing into the document when it holds the text whole and into scratch otherwise, and
    // reported as it would report it. Null, with the same log line, when the cursor is on no
    // node; null on a node that is not an element.
    const char* attributeText(const char* name, std::string& scratch);
    // As attributeText for the first attribute, whatever its name: the first value that
    // parseNodeAll would give. Null as above, and on an element without attributes.
    const char* firstAttributeText(std::string& scratch);

    static int instanceCount() { return mInstanceCount; }

    // The node under the cursor, for the reader's report of where a value came from.
    const xmlNode* currentNode() const { return mCurrent; }

protected:
    // Takes ownership of an already parsed document and moves to its root's first child.
    int adoptDocument(xmlDoc* document);

private:
    // Whether the readers may look at the attributes of the current node; logs a null cursor.
    bool isReadableElement();

    // Live iterators; libxml2's global state is released when it drops back to 0.
    static int mInstanceCount;

    XmlDocPtr mDocument;
    xmlNode* mRoot = nullptr;
    xmlNode* mCurrent = nullptr;
    std::deque<xmlNode*> mNodeStack;
};

}  // namespace korva
