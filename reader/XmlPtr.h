// Owning handles for the memory that libxml2 hands out.
#pragma once

#include <libxml/tree.h>
#include <libxml/xmlmemory.h>

#include <memory>
#include <string>

namespace korva {

struct XmlDocDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

struct XmlCharDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};

using XmlDocPtr = std::unique_ptr<xmlDoc, XmlDocDeleter>;
using XmlCharPtr = std::unique_ptr<xmlChar, XmlCharDeleter>;

// Copies a libxml2 string; null reads as the empty string.
inline std::string toString(const xmlChar* text) {
    return text != nullptr ? std::string(reinterpret_cast<const char*>(text)) : std::string();
}

}  // namespace korva
