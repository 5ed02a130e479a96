#include "tools/lsp/TagText.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

namespace korva::tool {

namespace {

bool isSpace(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

// Where a name ends: at blank, '/', '>', '<' or '='.
bool endsName(char c) {
    return isSpace(c) || c == '/' || c == '>' || c == '<' || c == '=';
}

// Markup that is no element's tag, by how it opens and closes; the longer openings first.
constexpr std::pair<const char*, const char*> kOtherMarkup[] = {
    {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ">"}};

}  // namespace

const Tag::Attribute* Tag::attribute(const std::string& attributeName) const {
    for (const Attribute& written : attributes) {
        if (written.name == attributeName) {
            return &written;
        }
    }
    return nullptr;
}

TagText::TagText(const std::string& text) : mText(text), mLines(text) {}

long TagText::lineOf(size_t at) const {
    return mLines.position(at)["line"].get<long>() + 1;
}

Tag TagText::parse(size_t begin) const {
    Tag tag;
    for (const auto& [open, close] : kOtherMarkup) {
        if (mText.compare(begin, strlen(open), open) == 0) {
            const size_t end = mText.find(close, begin + strlen(open));
            tag.kind = Tag::Kind::kOther;
            tag.closed = end != std::string::npos;
            tag.tag = {begin, tag.closed ? end + strlen(close) : mText.size()};
            return tag;
        }
    }
    tag.kind = mText.compare(begin, 2, "</") == 0 ? Tag::Kind::kEnd : Tag::Kind::kStart;
    size_t p = begin + (tag.kind == Tag::Kind::kEnd ? 2 : 1);
    const size_t nameBegin = p;
    while (p < mText.size() && !endsName(mText[p])) {
        p++;
    }
    tag.name = mText.substr(nameBegin, p - nameBegin);
    tag.span = {nameBegin, p};
    tag.tag = {begin, mText.size()};
    while (p < mText.size()) {
        const char c = mText[p];
        if (c == '>' || c == '<' || (c == '/' && p + 1 < mText.size() && mText[p + 1] == '>')) {
            tag.closed = c != '<';
            tag.selfClosing = c == '/';
            tag.tag.end = c == '<' ? p : p + (c == '/' ? 2 : 1);
            break;
        }
        if (endsName(c)) {
            p++;
            continue;
        }
        Tag::Attribute attribute{"", {p, p}, {}};
        while (p < mText.size() && !endsName(mText[p])) {
            p++;
        }
        attribute.name = mText.substr(attribute.span.begin, p - attribute.span.begin);
        const auto skipBlanks = [this, &p] {
            while (p < mText.size() && isSpace(mText[p])) {
                p++;
            }
        };
        skipBlanks();
        if (p < mText.size() && mText[p] == '=') {
            p++;
            skipBlanks();
            if (p < mText.size() && (mText[p] == '"' || mText[p] == '\'')) {
                const size_t close = std::min(mText.find(mText[p], p + 1), mText.size());
                attribute.value = {p + 1, close};
                p = std::min(close + 1, mText.size());
            } else {
                while (p < mText.size() && !isSpace(mText[p]) && mText[p] != '>') {
                    p++;
                }
            }
        }
        attribute.span.end = p;
        tag.attributes.push_back(std::move(attribute));
    }
    return tag;
}

bool TagText::at(size_t offset, std::vector<std::string>* open, Tag* tag) const {
    std::vector<std::string> unused;
    open = open != nullptr ? open : &unused;
    for (size_t p = mText.find('<'); p < offset; p = mText.find('<', p)) {
        *tag = parse(p);
        if (offset < tag->tag.end || (!tag->closed && offset == tag->tag.end)) {
            return true;
        }
        if (tag->opens()) {
            open->push_back(tag->name);
        } else if (tag->kind == Tag::Kind::kEnd) {
            const auto match = std::find(open->rbegin(), open->rend(), tag->name);
            if (match != open->rend()) {
                open->erase(std::prev(match.base()), open->end());
            }
        }
        p = tag->tag.end;
    }
    return false;
}

bool TagText::reported(long line, const std::string& open, bool asName, Tag* tag) const {
    if (line < 1 || static_cast<size_t>(line) > mLines.lineCount()) {
        return false;
    }
    const std::string_view bytes = mLines.line(line - 1);
    for (size_t from = static_cast<size_t>(bytes.data() - mText.data()) + bytes.size(); from > 0;) {
        const size_t begin = mText.rfind(open, from - 1);
        if (begin == std::string::npos) {
            return false;
        }
        from = begin;
        const size_t after = begin + open.size();
        if (asName && after < mText.size() && !endsName(mText[after])) {
            continue;
        }
        *tag = parse(begin);
        // The nearest such markup may end before the line.
        return lineOf(tag->tag.end - 1) >= line;
    }
    return false;
}

bool TagText::element(long line, const std::string& name, Tag* tag, TagSpan* extent) const {
    if (!reported(line, "<" + name, true, tag)) {
        return false;
    }
    *extent = tag->tag;
    // Down to the end tag that closes it, past comments, declarations and character data.
    for (int depth = tag->opens() ? 1 : 0; depth > 0;) {
        const size_t p = mText.find('<', extent->end);
        if (p == std::string::npos) {
            extent->end = mText.size();
            break;
        }
        const Tag inner = parse(p);
        depth += inner.opens() ? 1 : inner.kind == Tag::Kind::kEnd ? -1 : 0;
        extent->end = inner.tag.end;
    }
    return true;
}

bool TagText::comment(long line, TagSpan* extent) const {
    Tag tag;
    if (!reported(line, "<!--", false, &tag)) {
        return false;
    }
    *extent = tag.tag;
    return true;
}

}  // namespace korva::tool
