#include "tools/lsp/DocumentSymbols.h"

#include <algorithm>
#include <map>
#include <vector>

#include "tools/load/StoreSession.h"
#include "tools/lsp/TagText.h"

namespace korva::tool {

namespace {

// The protocol's SymbolKind numbers that the outline uses.
enum SymbolKind { kModule = 2, kClass = 5, kEnum = 10, kInterface = 11, kStruct = 23 };

int kindOf(RecordKind kind) {
    switch (kind) {
        case RecordKind::kProfile:
            return kModule;
        case RecordKind::kProfileEndpoint:
            return kInterface;
        case RecordKind::kTuning:
            return kClass;
        case RecordKind::kIeqPreset:
        case RecordKind::kGeqPreset:
            return kEnum;
    }
    return kStruct;
}

struct Symbol {
    int node;
    size_t begin;  // of the element in the text
    Json json;
};

}  // namespace

Json DocumentSymbols::build(const StoreSession& session, const std::string& text) {
    const LoadReport& report = session.report();
    const TagText tags(text);
    std::vector<Symbol> symbols;
    // Kept only where the text has the element the library reported: ranges stay inside the text.
    const auto add = [&](int node, const std::string& name, const std::string& detail, int kind) {
        const ReportedNode& element = report.node(node);
        Tag tag;
        TagSpan extent;
        // Past the lines libxml2 counts, the line names no tag of the text.
        if (node < 0 || element.atLeast ||
            !tags.element(element.line, element.name, &tag, &extent)) {
            return;
        }
        Json symbol = {{"name", name},
                       {"kind", kind},
                       {"range", tags.range(extent)},
                       {"selectionRange", tags.range(tag.span)},
                       {"children", Json::array()}};
        if (!detail.empty()) {
            symbol["detail"] = detail;
        }
        symbols.push_back({node, extent.begin, std::move(symbol)});
    };
    for (const RecordSnapshot& record : report.records) {
        const bool named = record.kind == RecordKind::kIeqPreset && !record.name.empty();
        if (!record.dropped) {
            add(record.node, record.title(), named ? "\"" + record.name + "\"" : "",
                kindOf(record.kind));
        }
    }
    for (const BindingSnapshot& binding : report.bindings) {
        add(binding.node, "tuning device \"" + binding.device + "\"", "port " + binding.port,
            kStruct);
    }
    // Each symbol goes into the nearest element around it that is a symbol, in document order.
    std::map<int, size_t> symbolOf;  // by node
    for (size_t i = 0; i < symbols.size(); i++) {
        symbolOf.emplace(symbols[i].node, i);
    }
    std::map<int, std::vector<size_t>> children;  // by the holding symbol's node; -1 for the root
    for (size_t i = 0; i < symbols.size(); i++) {
        int holder = report.node(symbols[i].node).parent;
        while (holder >= 0 && symbolOf.count(holder) == 0) {
            holder = report.node(holder).parent;
        }
        children[holder].push_back(i);
    }
    // Made bottom up: a node is numbered after the element that holds it.
    for (auto it = children.rbegin(); it != children.rend(); ++it) {
        std::vector<size_t>& held = it->second;
        std::sort(held.begin(), held.end(),
                  [&symbols](size_t a, size_t b) { return symbols[a].begin < symbols[b].begin; });
        if (it->first < 0) {
            break;
        }
        Json& list = symbols[symbolOf[it->first]].json["children"];
        for (size_t i : held) {
            list.push_back(std::move(symbols[i].json));
        }
    }
    Json outline = Json::array();
    for (size_t i : children[-1]) {
        outline.push_back(std::move(symbols[i].json));
    }
    return outline;
}

}  // namespace korva::tool
