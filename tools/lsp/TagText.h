// Where the tags of an editor's text stand, found by one lexical scan: the tag or other markup
// that holds an offset with the elements open around it, and the tag and extent of an element
// or comment the library reported at a line. Lexical only: what a tag means is the load's to say.
#pragma once

#include <string>
#include <vector>

#include "tools/lsp/LspText.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

struct TagSpan {
    size_t begin = 0;
    size_t end = 0;  // one past the last byte
};

struct Tag {
    // kOther: a comment, CDATA section, declaration or processing instruction.
    enum class Kind { kStart, kEnd, kOther };
    Kind kind = Kind::kStart;
    std::string name;
    TagSpan tag;   // '<' to one past its end, or to the next '<' or the text's end when cut short
    TagSpan span;  // the name
    bool closed = false;  // by its '>' (or its markup's end)
    bool selfClosing = false;
    struct Attribute {
        std::string name;  // from span.begin
        TagSpan span;      // the name to one past the value's closing quote
        TagSpan value;     // after the opening quote to the closing one; {0, 0} unquoted
    };
    std::vector<Attribute> attributes;

    // A start tag that a later end tag closes.
    bool opens() const { return kind == Kind::kStart && closed && !selfClosing; }
    const Attribute* attribute(const std::string& attributeName) const;
};

class TagText {
public:
    explicit TagText(const std::string& text);

    const LspText& lines() const { return mLines; }
    // The LSP Range of a span.
    Json range(TagSpan span) const { return mLines.range(span.begin, span.end); }
    // The 1-based line of a byte offset, as the library numbers lines.
    long lineOf(size_t at) const;

    // The tag or markup that holds an offset (from after its '<' to its end, the end included
    // when it is cut short), with the elements open before it, the root's first; false in text.
    bool at(size_t offset, std::vector<std::string>* open, Tag* tag) const;
    // The start tag of an element named name that the library reported at a 1-based line (that
    // of its '<' or a later line of the same tag), and the element's extent to its end tag.
    bool element(long line, const std::string& name, Tag* tag, TagSpan* extent) const;
    // The comment that the library reported at a 1-based line (one of its lines).
    bool comment(long line, TagSpan* extent) const;

private:
    // The markup that starts with the '<' at begin.
    Tag parse(size_t begin) const;
    // The last markup that starts with open (an element's name ended there when asName) and
    // spans the 1-based line.
    bool reported(long line, const std::string& open, bool asName, Tag* tag) const;

    const std::string& mText;
    const LspText mLines;
};

}  // namespace korva::tool
