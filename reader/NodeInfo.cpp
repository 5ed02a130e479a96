#include "reader/NodeInfo.h"

#include <vector>

namespace korva {
namespace NodeInfo {

Line lineOf(const xmlNode* node) {
    if (node == nullptr) {
        return {0, false};
    }
    // The field saturates at 65535 without the big-lines option, which the reader does not use.
    const long line = static_cast<long>(node->line);
    return {line, line > kLastExactLine};
}

std::string nameOf(const xmlNode* node) {
    return node != nullptr && node->name != nullptr
               ? std::string(reinterpret_cast<const char*>(node->name))
               : std::string();
}

bool isElement(const xmlNode* node) {
    return node != nullptr && node->type == XML_ELEMENT_NODE;
}

bool isComment(const xmlNode* node) {
    return node != nullptr && node->type == XML_COMMENT_NODE;
}

bool isTextWithContent(const xmlNode* node) {
    if (node == nullptr || (node->type != XML_TEXT_NODE && node->type != XML_CDATA_SECTION_NODE) ||
        node->content == nullptr) {
        return false;
    }
    for (const xmlChar* c = node->content; *c != '\0'; c++) {
        if (*c != ' ' && *c != '\t' && *c != '\n' && *c != '\r') {
            return true;
        }
    }
    return false;
}

const xmlNode* parentOf(const xmlNode* node) {
    return node != nullptr && node->parent != nullptr && node->parent->type == XML_ELEMENT_NODE
               ? node->parent
               : nullptr;
}

std::string contentOf(const xmlNode* node) {
    return node != nullptr && node->content != nullptr
               ? std::string(reinterpret_cast<const char*>(node->content))
               : std::string();
}

#ifdef KORVA_LOAD_REPORT
xmlDoc* copyDocument(const xmlNode* node,
                     std::unordered_map<const xmlNode*, xmlNode*>* counterparts) {
    if (node == nullptr || node->doc == nullptr) {
        return nullptr;
    }
    xmlDoc* copy = xmlCopyDoc(node->doc, 1);
    if (copy == nullptr) {
        return nullptr;
    }
    // The copy keeps the order of every child list, so the two trees are walked side by side.
    std::vector<std::pair<const xmlNode*, xmlNode*>> pending{{node->doc->children, copy->children}};
    while (!pending.empty()) {
        auto [original, counterpart] = pending.back();
        pending.pop_back();
        for (; original != nullptr && counterpart != nullptr;
             original = original->next, counterpart = counterpart->next) {
            (*counterparts)[original] = counterpart;
            if (original->type == XML_ELEMENT_NODE) {
                pending.emplace_back(original->children, counterpart->children);
            }
        }
    }
    return copy;
}
#endif  // KORVA_LOAD_REPORT

}  // namespace NodeInfo
}  // namespace korva
