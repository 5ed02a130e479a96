// An editor's text seen the way the Language Server Protocol counts in it: 0-based lines and
// UTF-16 code units within a line, against the byte offsets the tool works with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class LspText {
public:
    explicit LspText(const std::string& text);

    size_t lineCount() const { return mStarts.size(); }
    // A 0-based line without its line break; empty past the end.
    std::string_view line(size_t index) const;
    // The LSP Position of a byte offset.
    Json position(size_t offset) const;
    // The byte offset of a Position: npos outside the text's lines; a character past the line's
    // end stands at its end, one inside a character's bytes (or a surrogate pair) past them.
    size_t offset(long line, long character) const;
    // The LSP Range of the bytes [begin, end).
    Json range(size_t begin, size_t end) const {
        return {{"start", position(begin)}, {"end", position(end)}};
    }
    // The range of a 0-based line without its leading and trailing blanks.
    Json trimmedLine(size_t index) const;
    // Whether a position is in the text (the end of a line included).
    bool contains(long line, long character) const;

private:
    const std::string& mText;
    std::vector<size_t> mStarts;  // each line's first byte
};

}  // namespace korva::tool
