// The reader's side of the load observer: the events that need the reader's own knowledge of the
// walk (which nodes a walk landed on, which first children it stepped over, what no walk reached)
// and the conversions of attribute text, reported with the element they came from. Every function
// returns at once when nobody listens on this thread.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "model/LoadObserver.h"
#include "model/Parameter.h"

namespace korva {

class ParameterValues;
class ValueSetter;

namespace ReadTrace {

// A parse starts and ends: the nodes seen so far are forgotten.
void beginDocument();
// Reports every element that no walk of the document reached, the topmost of each subtree; the
// root children after cutAt (when not null) as cut off, the others as not walked.
void endDocument(const xmlNode* root, const xmlNode* cutAt);

// The cursor moved onto the node in a walk: a comment or a text with content there is passed over.
// An element counts as reached only through the events that say what became of it.
void landed(const xmlNode* node);
// The cursor stepped into parent, over its first child.
void steppedOver(const xmlNode* parent);
void structure(const xmlNode* node, Structure what);
void skipped(const xmlNode* node, Skip why);
void lookup(const xmlNode* lookedAt, Structure expected, bool found);
void keyword(const xmlNode* element, const char* attribute, const std::string& text, int value,
             bool recognised);
void record(const xmlNode* element, const ParameterValues& record, RecordKind kind);
void setter(const xmlNode* element, ValueSetter& setter, const ParameterValues& record);
// A value written into a record, and by whom.
void value(const xmlNode* element, const ParameterValues& record, Parameter parameter,
           const std::vector<int>& values, ValueSource source);
// Sets the values and reports who wrote them.
void write(const xmlNode* element, ParameterValues& record, Parameter parameter,
           std::vector<int> values, ValueSource source);

// "true" or "false" read as 1 or 0.
void word(const xmlNode* element, const char* attribute, const std::string& text, int value);
// The name of the element's first attribute, or null.
const char* firstAttributeName(const xmlNode* element);
// The attributes after the element's first, which only the first-attribute readers pass over.
void ignoredAfterFirst(const xmlNode* element);
// Reports how the attribute's text reads as an int; value is what the caller made of it.
void number(const xmlNode* element, const char* attribute, const std::string& text, int value);
// string2Int of the text, reported.
int readInt(const xmlNode* element, const char* attribute, const std::string& text);
// string2IntVector of the text into out, reported.
void readIntList(const xmlNode* element, const char* attribute, const std::string& text,
                 std::vector<int>& out);

}  // namespace ReadTrace
}  // namespace korva
