// Where the tags of an editor's text stand: positions as the editor counts them (0-based lines,
// UTF-16 characters) turned into byte offsets and back, the start tag under a cursor with its
// attributes, and the extent of an element the library reported at a line. Lexical only: what a
// tag means is the load's to say.
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

struct StartTag {
    std::string name;
    TagSpan tag;   // '<' to one past '>' (or to the text's end when it is not closed)
    TagSpan span;  // the name
    bool selfClosing = false;
    struct Attribute {
        std::string name;
        TagSpan span;  // the name to one past the value's closing quote
    };
    std::vector<Attribute> attributes;
};

class TagText {
public:
    explicit TagText(const std::string& text);

    // The byte offset of a 0-based line and UTF-16 character; false past the line or the text.
    bool offset(int line, int character, size_t* at) const;
    // The LSP Range of a span.
    Json range(TagSpan span) const { return mLines.range(span.begin, span.end); }
    // The 1-based line of a byte offset, as the library numbers lines.
    long lineOf(size_t at) const;

    // The start tag that holds the offset; false on text, comments, end tags and declarations.
    bool startTagAt(size_t at, StartTag* tag) const;
    // The start tag of an element named name that the library reported at a 1-based line (that
    // of its '<' or a later line of the same tag), and the element's extent to its end tag.
    bool element(long line, const std::string& name, StartTag* tag, TagSpan* extent) const;

private:
    bool parseStartTag(size_t begin, StartTag* tag) const;

    const std::string& mText;
    const LspText mLines;
};

}  // namespace korva::tool
