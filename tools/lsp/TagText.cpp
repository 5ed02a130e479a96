#include "tools/lsp/TagText.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace korva::tool {

namespace {

bool isSpace(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

// Where a name ends: at blank, '/', '>', '<' or '='.
bool endsName(char c) {
    return isSpace(c) || c == '/' || c == '>' || c == '<' || c == '=';
}

// The UTF-16 units a byte of UTF-8 starts, as LspText counts them: none for a continuation
// byte, two for a 4-byte lead.
int utf16Units(unsigned char byte) {
    return (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
}

}  // namespace

TagText::TagText(const std::string& text) : mText(text), mLines(text) {}

bool TagText::offset(int line, int character, size_t* at) const {
    if (line < 0 || static_cast<size_t>(line) >= mLines.lineCount() || character < 0) {
        return false;
    }
    const std::string_view bytes = mLines.line(line);
    size_t i = 0;
    for (int units = 0; units < character; i++) {
        if (i >= bytes.size()) {
            return false;
        }
        units += utf16Units(bytes[i]);
    }
    // A position inside a character's bytes (or a surrogate pair) moves past them.
    while (i < bytes.size() && utf16Units(bytes[i]) == 0) {
        i++;
    }
    *at = static_cast<size_t>(bytes.data() - mText.data()) + i;
    return true;
}

long TagText::lineOf(size_t at) const {
    return mLines.position(at)["line"].get<long>() + 1;
}

bool TagText::parseStartTag(size_t begin, StartTag* tag) const {
    size_t p = begin + 1;
    while (p < mText.size() && !endsName(mText[p])) {
        p++;
    }
    if (p == begin + 1 || strchr("/!?", mText[begin + 1]) != nullptr) {
        return false;
    }
    *tag = StartTag();
    tag->name = mText.substr(begin + 1, p - begin - 1);
    tag->tag = {begin, mText.size()};
    tag->span = {begin + 1, p};
    while (p < mText.size()) {
        const char c = mText[p];
        if (c == '>' || c == '<' || (c == '/' && p + 1 < mText.size() && mText[p + 1] == '>')) {
            tag->selfClosing = c == '/';
            tag->tag.end = c == '<' ? p : p + (c == '/' ? 2 : 1);
            break;
        }
        if (isSpace(c) || endsName(c)) {
            p++;
            continue;
        }
        StartTag::Attribute attribute{"", {p, p}};
        while (p < mText.size() && !endsName(mText[p])) {
            p++;
        }
        attribute.name = mText.substr(attribute.span.begin, p - attribute.span.begin);
        while (p < mText.size() && isSpace(mText[p])) {
            p++;
        }
        if (p < mText.size() && mText[p] == '=') {
            p++;
            while (p < mText.size() && isSpace(mText[p])) {
                p++;
            }
            if (p < mText.size() && (mText[p] == '"' || mText[p] == '\'')) {
                const size_t close = mText.find(mText[p], p + 1);
                p = close == std::string::npos ? mText.size() : close + 1;
            } else {
                while (p < mText.size() && !isSpace(mText[p]) && mText[p] != '>') {
                    p++;
                }
            }
        }
        attribute.span.end = p;
        tag->attributes.push_back(std::move(attribute));
    }
    return true;
}

bool TagText::startTagAt(size_t at, StartTag* tag) const {
    if (at >= mText.size()) {
        return false;
    }
    // The nearest '<' starts the tag, unless the tag it starts ends before the offset.
    const size_t begin = mText.rfind('<', at);
    return begin != std::string::npos && parseStartTag(begin, tag) && at < tag->tag.end;
}

bool TagText::element(long line, const std::string& name, StartTag* tag, TagSpan* extent) const {
    if (line < 1 || static_cast<size_t>(line) > mLines.lineCount()) {
        return false;
    }
    *tag = StartTag();
    const std::string open = "<" + name;
    const std::string_view bytes = mLines.line(line - 1);
    const size_t lineEnd = static_cast<size_t>(bytes.data() - mText.data()) + bytes.size();
    for (size_t from = lineEnd; from > 0;) {
        const size_t begin = mText.rfind(open, from - 1);
        if (begin == std::string::npos) {
            return false;
        }
        from = begin;
        const size_t after = begin + open.size();
        if (after < mText.size() && !endsName(mText[after])) {
            continue;
        }
        if (!parseStartTag(begin, tag) || lineOf(tag->tag.end - 1) < line) {
            return false;  // the nearest such tag ends before the line
        }
        break;
    }
    if (tag->name != name || lineOf(tag->tag.begin) > line) {
        return false;
    }
    *extent = tag->tag;
    // Down to the end tag that closes it, past comments, declarations and character data.
    int depth = tag->selfClosing ? 0 : 1;
    size_t p = tag->tag.end;
    while (depth > 0) {
        p = mText.find('<', p);
        if (p == std::string::npos) {
            extent->end = mText.size();
            return true;
        }
        const auto skipTo = [this, &p](const char* close) {
            const size_t found = mText.find(close, p);
            p = found == std::string::npos ? mText.size() : found + strlen(close);
        };
        StartTag inner;
        if (mText.compare(p, 4, "<!--") == 0) {
            skipTo("-->");
        } else if (mText.compare(p, 9, "<![CDATA[") == 0) {
            skipTo("]]>");
        } else if (mText.compare(p, 2, "</") == 0 || mText.compare(p, 2, "<!") == 0 ||
                   mText.compare(p, 2, "<?") == 0) {
            depth -= mText[p + 1] == '/' ? 1 : 0;
            skipTo(">");
        } else if (parseStartTag(p, &inner)) {
            depth += inner.selfClosing ? 0 : 1;
            p = std::max(inner.tag.end, p + 1);
        } else {
            p++;
        }
    }
    extent->end = p;
    return true;
}

}  // namespace korva::tool
