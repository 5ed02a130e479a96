#include "tools/lint/UndoEdit.h"

#include <libxml/tree.h>

#include <functional>
#include <memory>

namespace korva::tool {

namespace {

xmlNode* copyOf(const LoadReport& report, int node) {
    return node >= 0 && static_cast<size_t>(node) < report.copies.size() ? report.copies[node]
                                                                         : nullptr;
}

const xmlChar* xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

// The node as the document writes it.
std::string nodeText(xmlNode* node) {
    std::unique_ptr<xmlBuffer, void (*)(xmlBuffer*)> buffer(xmlBufferCreate(), xmlBufferFree);
    if (node == nullptr || buffer == nullptr) {
        return "";
    }
    xmlNodeDump(buffer.get(), node->doc, node, 0, 0);
    return std::string(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                       static_cast<size_t>(xmlBufferLength(buffer.get())));
}

// Makes the edit where the node is and hands back what takes it back, so that the document is
// left as it was; empty when the edit cannot be made.
std::function<void()> edit(xmlNode* node, xmlNode* before, const Undo& undo) {
    using Action = Undo::Action;
    if (undo.action == Action::kRemove || undo.action == Action::kMoveBefore) {
        // An empty text keeps the node's place and writes nothing.
        xmlNode* holder = xmlNewDocText(node->doc, xml(""));
        if (holder == nullptr || (undo.action == Action::kMoveBefore && before == nullptr)) {
            xmlFreeNode(holder);
            return {};
        }
        xmlReplaceNode(node, holder);
        if (undo.action == Action::kMoveBefore) {
            xmlAddPrevSibling(before, node);
        }
        return [node, holder]() {
            xmlUnlinkNode(node);
            xmlReplaceNode(holder, node);
            xmlFreeNode(holder);
        };
    }
    // Edits inside the element: its name and attributes are put back as they were.
    const std::string name = reinterpret_cast<const char*>(node->name);
    xmlAttr* saved = xmlCopyPropList(node, node->properties);
    const auto restore = [node, name, saved]() {
        xmlFreePropList(node->properties);
        node->properties = saved;
        xmlNodeSetName(node, xml(name));
    };
    bool made = true;
    if (undo.action == Action::kRename && undo.attribute.empty()) {
        xmlNodeSetName(node, xml(undo.to));
    } else if (undo.action == Action::kRename) {
        xmlAttr* attribute = xmlHasProp(node, xml(undo.attribute));
        made = attribute != nullptr;
        if (made) {
            xmlNodeSetName(reinterpret_cast<xmlNode*>(attribute), xml(undo.to));
        }
    } else if (undo.action == Action::kReplace) {
        made = xmlSetProp(node, xml(undo.attribute), xml(undo.to)) != nullptr;
    } else {
        made = xmlUnsetProp(node, xml(undo.attribute)) == 0;
    }
    if (!made) {
        restore();
        return {};
    }
    return restore;
}

}  // namespace

bool UndoEdit::apply(const LoadReport& report, const std::vector<Undo>& edits, std::string* text,
                     std::string* why) {
    if (report.document == nullptr) {
        *why = "the load kept no copy of the document";
        return false;
    }
    std::vector<std::function<void()>> restores;
    for (const Undo& undo : edits) {
        xmlNode* node = copyOf(report, undo.node);
        xmlNode* before = copyOf(report, undo.before);
        if (node == nullptr || (undo.action == Undo::Action::kMoveBefore && before == nullptr)) {
            *why = "the load handed out no copy of the node";
            break;
        }
        restores.push_back(edit(node, before, undo));
        if (!restores.back()) {
            restores.pop_back();
            *why = "the edit could not be made on the copy";
            break;
        }
    }
    xmlChar* bytes = nullptr;
    int size = 0;
    if (restores.size() == edits.size()) {
        xmlDocDumpMemory(report.document.get(), &bytes, &size);
        *why = bytes == nullptr ? "the edited copy could not be written" : "";
    }
    for (auto restore = restores.rbegin(); restore != restores.rend(); ++restore) {
        (*restore)();
    }
    if (bytes == nullptr) {
        return false;
    }
    text->assign(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
    xmlFree(bytes);
    return true;
}

Json UndoEdit::toJson(const LoadReport& report, const Undo& undo) {
    using Action = Undo::Action;
    static const char* const kActions[] = {"remove", "rename", "replace", "move", "remove"};
    const ReportedNode& reported = report.node(undo.node);
    const std::string on = (reported.isElement   ? "<" + reported.name + ">"
                            : reported.isComment ? std::string("the comment")
                                                 : std::string("the text")) +
                           " on line " + std::to_string(reported.line);
    // The element, or its attribute when the edit names one.
    const std::string edited =
        undo.attribute.empty() ? on : "attribute \"" + undo.attribute + "\" of " + on;
    const std::string to = undo.attribute.empty() ? "<" + undo.to + ">" : "\"" + undo.to + "\"";
    xmlNode* node = copyOf(report, undo.node);
    Json json = {{"line", reported.line}, {"action", kActions[static_cast<int>(undo.action)]}};
    if (undo.action == Action::kRemove || undo.action == Action::kRemoveAttribute) {
        json["removes"] = undo.attribute.empty() ? nodeText(node) : undo.attribute;
        json["description"] = "remove " + edited;
    } else if (undo.action == Action::kRename) {
        json["renames"] = undo.attribute.empty() ? reported.name : undo.attribute;
        json["to"] = undo.to;
        json["description"] = "rename " + edited + " to " + to;
    } else if (undo.action == Action::kReplace) {
        json["attribute"] = undo.attribute;
        json["to"] = undo.to;
        json["description"] = "set " + undo.attribute + " of " + on + " to " + to;
    } else {
        json["moves"] = nodeText(node);
        json["before_line"] = report.node(undo.before).line;
        json["description"] = "move " + on + " before line " + json["before_line"].dump();
    }
    // The element's start tag as an edit inside it leaves it (its children stay as they are).
    const bool inside =
        undo.action != Undo::Action::kRemove && undo.action != Undo::Action::kMoveBefore;
    xmlNode* alone = inside && node != nullptr ? xmlDocCopyNode(node, node->doc, 2) : nullptr;
    const std::function<void()> restore = alone != nullptr ? edit(alone, nullptr, undo) : nullptr;
    if (restore) {
        std::string tag = nodeText(alone);
        if (xmlGetLastChild(node) != nullptr && tag.size() >= 2 &&
            tag.compare(tag.size() - 2, 2, "/>") == 0) {
            tag.replace(tag.size() - 2, 2, ">");
        }
        json["becomes"] = tag;
        restore();
    }
    xmlFreeNode(alone);
    return json;
}

}  // namespace korva::tool
