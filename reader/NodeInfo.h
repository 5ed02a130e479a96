// What a listener of the load may ask of a node the reader reports: where it is and what it is.
// The reader's walks belong to the reader; these only describe one node.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <unordered_map>

namespace korva {
namespace NodeInfo {

// libxml2 keeps line numbers in 16 bits: from this line on, a node only knows that it is there
// or later.
constexpr long kLastExactLine = 65534;

struct Line {
    long line;     // 0 when unknown
    bool atLeast;  // the node is on this line or a later one
};

Line lineOf(const xmlNode* node);
// The element's tag name; "" for a node without a name.
std::string nameOf(const xmlNode* node);
bool isElement(const xmlNode* node);
bool isComment(const xmlNode* node);
// Text that is not only blanks.
bool isTextWithContent(const xmlNode* node);
// The element that holds the node, or null for the root.
const xmlNode* parentOf(const xmlNode* node);
// The text of a comment or text node, without the markup.
std::string contentOf(const xmlNode* node);

#ifdef KORVA_LOAD_REPORT
// A copy of the node's whole document that a listener may edit, with each node of the document
// paired with its counterpart in the copy; null when libxml2 cannot copy it.
xmlDoc* copyDocument(const xmlNode* node,
                     std::unordered_map<const xmlNode*, xmlNode*>* counterparts);
#endif

}  // namespace NodeInfo
}  // namespace korva
