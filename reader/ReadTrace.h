// The reader's side of the load observer: the events that need the reader's own knowledge of the
// walk (which nodes a walk landed on, which first children it stepped over, what no walk reached)
// and the conversions of attribute text, reported with the element they came from. Each entry
// point tests for a listener inline and does nothing else when nobody listens on this thread;
// the reporting itself is out of line, and built only with the load report.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <utility>
#include <vector>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "observer/LoadObserver.h"
#include "reader/String2Int.h"

namespace korva {

class ValueSetter;

namespace ReadTrace {

// The reporting behind the entry points below, called only with a listener.
namespace observed {
void beginDocument();
void endDocument(LoadObserver& observer, const xmlNode* root, const xmlNode* cutAt);
void landed(LoadObserver& observer, const xmlNode* node);
void steppedOver(LoadObserver& observer, const xmlNode* parent);
void structure(LoadObserver& observer, const xmlNode* node, Structure what);
void skipped(LoadObserver& observer, const xmlNode* node, Skip why);
void setter(LoadObserver& observer, const xmlNode* element, ValueSetter& setter,
            const ParameterValues& record);
void record(LoadObserver& observer, const xmlNode* element, const ParameterValues& record,
            RecordKind kind);
void attributes(LoadObserver& observer, const xmlNode* element,
                const std::vector<std::string>& names);
void ignoredAfterFirst(LoadObserver& observer, const xmlNode* element);
void number(LoadObserver& observer, const xmlNode* element, const char* attribute,
            const std::string& text, int value);
void readIntList(LoadObserver& observer, const xmlNode* element, const char* attribute,
                 const std::string& text, std::vector<int>& out);
}  // namespace observed

// A parse starts and ends: the nodes seen so far are forgotten.
inline void beginDocument() {
    if (LoadObserver::current() != nullptr) {
        observed::beginDocument();
    }
}
// Reports every element that no walk of the document reached, the topmost of each subtree; the
// root children after cutAt (when not null) as cut off, the others as not walked.
inline void endDocument(const xmlNode* root, const xmlNode* cutAt) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::endDocument(*observer, root, cutAt);
        }
    }
}

// The cursor moved onto the node in a walk: a comment or a text with content there is passed over.
// An element counts as reached only through the events that say what became of it.
inline void landed(const xmlNode* node) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::landed(*observer, node);
        }
    }
}
// The cursor stepped into parent, over its first child.
inline void steppedOver(const xmlNode* parent) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::steppedOver(*observer, parent);
        }
    }
}
inline void structure(const xmlNode* node, Structure what) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::structure(*observer, node, what);
        }
    }
}
inline void skipped(const xmlNode* node, Skip why) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::skipped(*observer, node, why);
        }
    }
}
inline void lookup(const xmlNode* lookedAt, Structure expected, bool found) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onLookup(lookedAt, expected, found);
        }
    }
}
inline void keyword(const xmlNode* element, const char* attribute, const std::string& text,
                    int value, bool recognised) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onKeyword(element, attribute, text, value, recognised);
        }
    }
}
inline void record(const xmlNode* element, const ParameterValues& record, RecordKind kind) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::record(*observer, element, record, kind);
        }
    }
}
inline void setter(const xmlNode* element, ValueSetter& setter, const ParameterValues& record) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::setter(*observer, element, setter, record);
        }
    }
}
// Sets the values and reports who wrote them.
inline void write(const xmlNode* element, ParameterValues& record, Parameter parameter,
                  std::vector<int>&& values, ValueSource source) {
    record.set(parameter, std::move(values));
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onValue(element, record, parameter, record.values[parameter], source);
        }
    }
}

// The attributes of the element that a reading asked for by name (every attribute when names is
// empty) were read: each one is reported as read or ignored, then each name asked for in vain as
// missing.
inline void attributes(const xmlNode* element, const std::vector<std::string>& names) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::attributes(*observer, element, names);
        }
    }
}
// The same for one name; the list is made only for a listener.
inline void attribute(const xmlNode* element, const char* name) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::attributes(*observer, element, {name});
        }
    }
}

// "true" or "false" read as 1 or 0.
inline void word(const xmlNode* element, const char* attribute, const char* text, int value) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observer->onNumber(element, attribute, text, value, NumberRead::kWord);
        }
    }
}
// The name of the element's first attribute, or null.
inline const char* firstAttributeName(const xmlNode* element) {
    return element != nullptr && element->type == XML_ELEMENT_NODE && element->properties != nullptr
               ? reinterpret_cast<const char*>(element->properties->name)
               : nullptr;
}
// The attributes after the element's first, which only the first-attribute readers pass over.
inline void ignoredAfterFirst(const xmlNode* element) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::ignoredAfterFirst(*observer, element);
        }
    }
}
// Reports how the attribute's text reads as an int; value is what the caller made of it.
inline void number(const xmlNode* element, const char* attribute, const std::string& text,
                   int value) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::number(*observer, element, attribute, text, value);
        }
    }
}
// string2Int of the text, reported.
inline int readInt(const xmlNode* element, const char* attribute, const std::string& text) {
    const int value = string2Int(text);
    number(element, attribute, text, value);
    return value;
}
// The same for text where the document holds it: a string is made only for a listener.
inline int readInt(const xmlNode* element, const char* attribute, const char* text) {
    const int value = string2Int(text);
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::number(*observer, element, attribute, text, value);
        }
    }
    return value;
}
// string2IntVector of the text into out, reported.
inline void readIntList(const xmlNode* element, const char* attribute, const char* text,
                        std::vector<int>& out) {
    if constexpr (kLoadReport) {
        if (LoadObserver* observer = LoadObserver::current()) {
            observed::readIntList(*observer, element, attribute, text, out);
            return;
        }
    }
    string2IntVector(text, out);
}

}  // namespace ReadTrace
}  // namespace korva
