#include "tools/lsp/Completion.h"

#include <vector>

#include "model/Parameter.h"
#include "reader/TuningFileLayout.h"
#include "tools/lsp/TagText.h"
#include "tools/schema/TuningGrammar.h"

namespace korva::tool {

namespace {

// LSP CompletionItemKind.
constexpr int kElementKind = 7;     // Class
constexpr int kAttributeKind = 10;  // Property
constexpr int kKeywordKind = 20;    // EnumMember

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
    const TagText tags(text);
    const size_t at = tags.lines().offset(line, character);
    std::vector<std::string> open;
    Tag tag;
    // Only a start tag gets anything: not text, end tags, comments or declarations.
    if (at == std::string::npos || !tags.at(at, &open, &tag) || tag.kind != Tag::Kind::kStart) {
        return items;
    }
    const TuningGrammar& grammar = TuningGrammar::get();
    if (at <= tag.span.end) {
        if (open.empty()) {
            items.push_back(item(grammar.root().name, kElementKind, grammar.root().doc));
        } else if (const GrammarElement* parent = grammar.find(open)) {
            for (const GrammarElement* child : grammar.childrenOf(*parent)) {
                items.push_back(item(child->name, kElementKind, child->doc));
            }
        }
        return items;
    }
    open.push_back(tag.name);
    const GrammarElement* element = grammar.find(open);
    if (element == nullptr) {
        return items;
    }
    const auto holds = [at](TagSpan span) { return span.begin <= at && at <= span.end; };
    const Tag::Attribute* valueAt = nullptr;
    for (const Tag::Attribute& written : tag.attributes) {
        valueAt = written.value.end > 0 && holds(written.value) ? &written : valueAt;
    }
    for (const GrammarAttribute& attribute : element->attributes) {
        // Not offered again when written, but for the name being typed.
        const Tag::Attribute* written = tag.attribute(attribute.name);
        if (valueAt == nullptr &&
            (written == nullptr ||
             holds({written->span.begin, written->span.begin + written->name.size()}))) {
            items.push_back(item(attribute.name, kAttributeKind, attribute.doc));
        } else if (valueAt != nullptr && attribute.name == valueAt->name) {
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
