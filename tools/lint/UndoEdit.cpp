#include "tools/lint/UndoEdit.h"

#include <libxml/tree.h>

#include <memory>

namespace korva::tool {

namespace {

xmlNode* keptCopy(const LoadReport& report, int node) {
    return node >= 0 && static_cast<size_t>(node) < report.copies.size() ? report.copies[node]
                                                                         : nullptr;
}

// A node's place in its document: the index among its siblings at each level, root first.
std::vector<int> placeOf(const xmlNode* node) {
    std::vector<int> place;
    for (; node != nullptr && node->type != XML_DOCUMENT_NODE; node = node->parent) {
        int index = 0;
        for (const xmlNode* sibling = node->prev; sibling != nullptr; sibling = sibling->prev) {
            index++;
        }
        place.insert(place.begin(), index);
    }
    return place;
}

xmlNode* nodeAt(xmlDoc* document, const std::vector<int>& place) {
    xmlNode* node = nullptr;
    xmlNode* children = document->children;
    for (int index : place) {
        node = children;
        for (int i = 0; i < index && node != nullptr; i++) {
            node = node->next;
        }
        if (node == nullptr) {
            return nullptr;
        }
        children = node->children;
    }
    return node;
}

// The node as the document writes it.
std::string nodeText(xmlNode* node) {
    std::unique_ptr<xmlBuffer, void (*)(xmlBuffer*)> buffer(xmlBufferCreate(), xmlBufferFree);
    if (node == nullptr || buffer == nullptr) {
        return "";
    }
    xmlNodeDump(buffer.get(), node->doc, node, 0, 0);
    std::string text(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                     static_cast<size_t>(xmlBufferLength(buffer.get())));
    return text;
}

const xmlChar* xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

bool edit(xmlNode* node, xmlNode* before, const Undo& undo) {
    switch (undo.action) {
        case Undo::Action::kRemove:
            xmlUnlinkNode(node);
            xmlFreeNode(node);
            return true;
        case Undo::Action::kRename:
            if (undo.attribute.empty()) {
                xmlNodeSetName(node, xml(undo.to));
                return true;
            }
            for (xmlAttr* attribute = node->properties; attribute != nullptr;
                 attribute = attribute->next) {
                if (undo.attribute == reinterpret_cast<const char*>(attribute->name)) {
                    xmlNodeSetName(reinterpret_cast<xmlNode*>(attribute), xml(undo.to));
                    return true;
                }
            }
            return false;
        case Undo::Action::kReplace:
            return xmlSetProp(node, xml(undo.attribute), xml(undo.to)) != nullptr;
        case Undo::Action::kMoveBefore:
            if (before == nullptr) {
                return false;
            }
            xmlUnlinkNode(node);
            return xmlAddPrevSibling(before, node) != nullptr;
        case Undo::Action::kRemoveAttribute:
            return xmlUnsetProp(node, xml(undo.attribute)) == 0;
    }
    return false;
}

std::string what(const LoadReport& report, int index) {
    const ReportedNode& node = report.node(index);
    return node.isElement ? "<" + node.name + ">" : node.isComment ? "the comment" : "the text";
}

}  // namespace

bool UndoEdit::apply(const LoadReport& report, const std::vector<Undo>& edits, std::string* text,
                     std::string* why) {
    if (report.document == nullptr) {
        *why = "the load kept no copy of the document";
        return false;
    }
    // Every node is found before the first edit moves anything.
    std::vector<std::vector<int>> places;
    for (const Undo& undo : edits) {
        xmlNode* node = keptCopy(report, undo.node);
        xmlNode* before = keptCopy(report, undo.before);
        if (node == nullptr || (undo.action == Undo::Action::kMoveBefore && before == nullptr)) {
            *why = "the load handed out no copy of the node";
            return false;
        }
        places.push_back(placeOf(node));
        places.push_back(before != nullptr ? placeOf(before) : std::vector<int>());
    }
    std::unique_ptr<xmlDoc, LoadReport::DocumentFree> copy(xmlCopyDoc(report.document.get(), 1));
    if (copy == nullptr) {
        *why = "the document could not be copied";
        return false;
    }
    std::vector<std::pair<xmlNode*, xmlNode*>> nodes;
    for (size_t i = 0; i < edits.size(); i++) {
        nodes.emplace_back(
            nodeAt(copy.get(), places[2 * i]),
            places[2 * i + 1].empty() ? nullptr : nodeAt(copy.get(), places[2 * i + 1]));
    }
    for (size_t i = 0; i < edits.size(); i++) {
        if (nodes[i].first == nullptr || !edit(nodes[i].first, nodes[i].second, edits[i])) {
            *why = "the edit could not be made on the copy";
            return false;
        }
    }
    xmlChar* bytes = nullptr;
    int size = 0;
    xmlDocDumpMemory(copy.get(), &bytes, &size);
    if (bytes == nullptr) {
        *why = "the edited copy could not be written";
        return false;
    }
    text->assign(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
    xmlFree(bytes);
    return true;
}

Json UndoEdit::toJson(const LoadReport& report, const Undo& undo) {
    Json json = {{"line", report.node(undo.node).line}};
    xmlNode* node = keptCopy(report, undo.node);
    const std::string text = nodeText(node);
    // The element's tag as the edit leaves it, for the edits made inside one element: an
    // element with children keeps them, so only its start tag changes.
    const auto becomes = [&json, node, &undo]() {
        xmlNode* alone = node != nullptr ? xmlDocCopyNode(node, node->doc, 2) : nullptr;
        if (alone != nullptr && edit(alone, nullptr, undo)) {
            std::string tag = nodeText(alone);
            if (node->children != nullptr && tag.size() >= 2 &&
                tag.compare(tag.size() - 2, 2, "/>") == 0) {
                tag.replace(tag.size() - 2, 2, ">");
            }
            json["becomes"] = tag;
        }
        xmlFreeNode(alone);
    };
    switch (undo.action) {
        case Undo::Action::kRemove:
            json["action"] = "remove";
            json["removes"] = text;
            break;
        case Undo::Action::kRename:
            json["action"] = "rename";
            json["renames"] = undo.attribute.empty() ? report.node(undo.node).name : undo.attribute;
            json["to"] = undo.to;
            becomes();
            break;
        case Undo::Action::kReplace:
            json["action"] = "replace";
            json["attribute"] = undo.attribute;
            json["to"] = undo.to;
            becomes();
            break;
        case Undo::Action::kMoveBefore:
            json["action"] = "move";
            json["moves"] = text;
            json["before_line"] = report.node(undo.before).line;
            break;
        case Undo::Action::kRemoveAttribute:
            json["action"] = "remove";
            json["removes"] = undo.attribute;
            becomes();
            break;
    }
    return json;
}

std::string UndoEdit::describe(const LoadReport& report, const Undo& undo) {
    const std::string line = " on line " + std::to_string(report.node(undo.node).line);
    const std::string element = what(report, undo.node);
    switch (undo.action) {
        case Undo::Action::kRemove:
            return "remove " + element + line;
        case Undo::Action::kRename:
            return undo.attribute.empty() ? "rename " + element + line + " to <" + undo.to + ">"
                                          : "rename attribute \"" + undo.attribute + "\" of " +
                                                element + line + " to \"" + undo.to + "\"";
        case Undo::Action::kReplace:
            return "set " + undo.attribute + " of " + element + line + " to \"" + undo.to + "\"";
        case Undo::Action::kMoveBefore:
            return "move " + element + line + " before line " +
                   std::to_string(report.node(undo.before).line);
        case Undo::Action::kRemoveAttribute:
            return "remove attribute \"" + undo.attribute + "\" of " + element + line;
    }
    return "";
}

}  // namespace korva::tool
