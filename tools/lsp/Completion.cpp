#include "tools/lsp/Completion.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "model/Parameter.h"
#include "reader/TuningFileLayout.h"
#include "tools/schema/TuningGrammar.h"

namespace korva::tool {

namespace {

// LSP CompletionItemKind.
constexpr int kElementKind = 7;     // Class
constexpr int kAttributeKind = 10;  // Property
constexpr int kKeywordKind = 20;    // EnumMember

// The byte offset of a 0-based line and UTF-16 character; the line's end when it is shorter.
size_t offsetOf(const std::string& text, int line, int character) {
    size_t at = 0;
    for (int l = 0; l < line; l++) {
        at = text.find('\n', at);
        if (at == std::string::npos) return text.size();
        at++;
    }
    for (int units = 0; units < character && at < text.size() && text[at] != '\n';) {
        const unsigned char lead = text[at];
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        units += length == 4 ? 2 : 1;
        at = std::min(text.size(), at + length);
    }
    return at;
}

bool isNameChar(char c) {
    return isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' || c == ':';
}

// Where the cursor stands, found by a lexical scan for tags: nothing here reads the file's
// meaning, only which elements are open.
struct Cursor {
    enum class Place { kNone, kElementName, kAttributeName, kAttributeValue };

    Place place = Place::kNone;
    std::vector<std::string> open;     // the enclosing open elements, the root's first
    std::string tag;                   // the element whose tag the cursor is in
    std::string attribute;             // whose value the cursor is in
    std::vector<std::string> written;  // the tag's attributes, but the one being typed

    static Cursor at(const std::string& text, size_t offset);
};

Cursor Cursor::at(const std::string& text, size_t offset) {
    Cursor cursor;
    size_t i = 0;
    while (i < offset) {
        const size_t lt = text.find('<', i);
        if (lt == std::string::npos || lt >= offset) break;
        // Markup that is not a tag: skipped whole; the cursor inside it gets nothing.
        for (const auto& [open, close] : {std::pair{"<!--", "-->"}, std::pair{"<![CDATA[", "]]>"},
                                          std::pair{"<?", "?>"}, std::pair{"<!", ">"}}) {
            if (text.compare(lt, strlen(open), open) == 0) {
                const size_t end = text.find(close, lt + strlen(open));
                if (end == std::string::npos || end + strlen(close) > offset) {
                    return {};
                }
                i = end + strlen(close);
                break;
            }
        }
        if (i > lt) continue;
        // A tag: its name, then attributes with quoted values, up to '>'.
        const bool closing = lt + 1 < text.size() && text[lt + 1] == '/';
        size_t p = lt + (closing ? 2 : 1);
        const size_t nameStart = p;
        while (p < text.size() && isNameChar(text[p])) p++;
        const std::string name = text.substr(nameStart, p - nameStart);
        if (p >= offset) {
            cursor.place = closing ? Place::kNone : Place::kElementName;
            return cursor;
        }
        // The tag's attribute names with their spans, to its end: '>' outside quotes, or the
        // next '<' or the end of the text in a tag still being typed.
        struct Name {
            std::string text;
            size_t begin, end;
        };
        std::vector<Name> names;
        char quote = 0;
        bool quotedAtCursor = false;
        std::string attributeAtCursor;
        for (; p < text.size(); p++) {
            if (p == offset) {
                quotedAtCursor = quote != 0;
                attributeAtCursor = names.empty() ? "" : names.back().text;
            }
            const char c = text[p];
            if (quote != 0) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>' || c == '<') {
                break;
            } else if (isNameChar(c) && !isNameChar(text[p - 1])) {
                size_t end = p;
                while (end < text.size() && isNameChar(text[end])) end++;
                names.push_back({text.substr(p, end - p), p, end});
            }
        }
        if (p == offset) {
            quotedAtCursor = quote != 0;
            attributeAtCursor = names.empty() ? "" : names.back().text;
        }
        if (offset <= p) {
            if (closing) return {};
            cursor.tag = name;
            cursor.place = quotedAtCursor ? Place::kAttributeValue : Place::kAttributeName;
            cursor.attribute = attributeAtCursor;
            for (const Name& n : names) {
                if (offset < n.begin || offset > n.end) cursor.written.push_back(n.text);
            }
            return cursor;
        }
        // A tag cut short by the next one opens nothing: it is still being typed.
        const bool ended = p < text.size() && text[p] == '>';
        const bool selfClosing = text[p - 1] == '/';
        if (closing) {
            const auto match = std::find(cursor.open.rbegin(), cursor.open.rend(), name);
            if (match != cursor.open.rend()) {
                cursor.open.erase(std::prev(match.base()), cursor.open.end());
            }
        } else if (ended && !selfClosing) {
            cursor.open.push_back(name);
        }
        i = ended ? p + 1 : p;
    }
    return cursor;
}

Json item(const std::string& label, int kind, const std::string& doc) {
    Json entry = {{"label", label}, {"kind", kind}};
    if (!doc.empty()) {
        entry["documentation"] = doc;
    }
    return entry;
}

}  // namespace

Json Completion::items(const std::string& text, int line, int character) {
    Json items = Json::array();
    const Cursor cursor = Cursor::at(text, offsetOf(text, line, character));
    const TuningGrammar& grammar = TuningGrammar::get();
    if (cursor.place == Cursor::Place::kElementName) {
        if (cursor.open.empty()) {
            items.push_back(item(grammar.root().name, kElementKind, grammar.root().doc));
        } else if (const GrammarElement* parent = grammar.find(cursor.open)) {
            for (const GrammarElement* child : grammar.childrenOf(*parent)) {
                items.push_back(item(child->name, kElementKind, child->doc));
            }
        }
        return items;
    }
    std::vector<std::string> path = cursor.open;
    path.push_back(cursor.tag);
    const GrammarElement* element =
        cursor.place == Cursor::Place::kNone ? nullptr : grammar.find(path);
    if (element == nullptr) {
        return items;
    }
    for (const GrammarAttribute& attribute : element->attributes) {
        if (cursor.place == Cursor::Place::kAttributeName &&
            std::find(cursor.written.begin(), cursor.written.end(), attribute.name) ==
                cursor.written.end()) {
            items.push_back(item(attribute.name, kAttributeKind, attribute.doc));
        } else if (cursor.place == Cursor::Place::kAttributeValue &&
                   attribute.name == cursor.attribute) {
            std::vector<std::string> keywords = attribute.keywords;
            if (attribute.type == GrammarAttribute::Type::kScalar) {
                keywords = {TuningFileLayout::kTrue, TuningFileLayout::kFalse};
            }
            for (const std::string& keyword : keywords) {
                items.push_back(item(keyword, kKeywordKind, attribute.doc));
            }
        }
    }
    return items;
}

}  // namespace korva::tool
