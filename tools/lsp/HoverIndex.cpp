#include "tools/lsp/HoverIndex.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/lint/LintRules.h"
#include "tools/load/LoadedFile.h"
#include "tools/load/StoreSession.h"
#include "tools/lsp/TagText.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/NumberText.h"
#include "translator/ListLayout.h"

namespace korva::tool {

namespace {

// Plain entries longer than this are summed up by their count.
constexpr size_t kShownValues = 8;

using ElementKey = std::pair<long, std::string>;  // line, element name

// The one attribute of an element whose text is these values as the file writes them, or "": a
// band's "target" rather than its "frequency", a matrix row's "value".
std::string attributeWritten(const ReadElement& element, const std::vector<int>& values) {
    std::string attribute;
    for (const auto& [name, text] : element.attributes) {
        if (!values.empty() && text == NumberText::join(values, ",") && name != attribute) {
            if (!attribute.empty()) {
                return "";
            }
            attribute = name;
        }
    }
    return attribute;
}

// Where a parameter's value at index stands in the entry made of it, by the list layouts; -1
// when the entry's layout does not place the parameter's values one by one.
long entryIndex(const LoadedEntry& entry, const EntryView& view, Parameter parameter, size_t index) {
    long at = -1;
    if (const BandListLayout* layout = bandListLayout(entry.code)) {
        for (int c = 0; c < layout->numColumns && index < static_cast<size_t>(view.bands); c++) {
            if (layout->columns[c].source == parameter) {
                at = (layout->perChannel ? 2 : 1) + c * view.bands + static_cast<long>(index);
            }
        }
    } else if (entry.code == vexParameterCode(DOM)) {
        at = parameter == OUTPUT_MIX_MATRIX ? kOutputModeLeadWords + static_cast<long>(index) : -1;
    } else if (entry.parameters.size() == 1) {
        at = static_cast<long>(index);
    }
    return at < static_cast<long>(entry.values.size()) ? at : -1;
}

// The whole entry in a few words, for an element that does not feed a place of its own.
std::string entrySummary(const EntryView& view) {
    if (view.kind == EntryView::Kind::kBands) {
        return std::to_string(view.bands) + " bands";
    }
    if (view.kind == EntryView::Kind::kOutputMode) {
        return view.lines().front();
    }
    return view.raw.size() <= kShownValues ? NumberText::join(view.raw)
                                           : std::to_string(view.raw.size()) + " values";
}

// The rules that supplied or changed a parameter's values, and the elements that wrote them
// again after the step at mine.
std::string rulesOf(const SourceParameter& parameter, size_t mine) {
    std::vector<std::string> rules;
    for (size_t s = 0; s < parameter.steps.size(); s++) {
        const ValueStep& step = parameter.steps[s];
        const std::string rule =
            !step.rule.empty() ? step.rule
            : s > mine && !step.elements.empty()
                ? "written again from line " + std::to_string(step.elements.front().line)
                : "";
        if (!rule.empty() && std::find(rules.begin(), rules.end(), rule) == rules.end()) {
            rules.push_back(rule);
        }
    }
    std::string text;
    for (const std::string& rule : rules) {
        text += (text.empty() ? "; " : ", ") + rule;
    }
    return text;
}

// A value an element feeds and where it went: the parameter with its rules, and the blobs and
// devices of the entries that hold it, in the order met.
struct Feed {
    std::string value;
    std::string from;
    std::vector<std::pair<std::string, std::string>> holders;

    // "from — in profile 1 "movie": speaker, a2dp; tuning device "usb_dac": usb"
    std::string where() const {
        std::string in;
        for (size_t i = 0; i < holders.size(); i++) {
            const bool sameBlob = i > 0 && holders[i - 1].first == holders[i].first;
            in += sameBlob ? ", " + holders[i].second
                           : (i > 0 ? "; " : "") + holders[i].first + ": " + holders[i].second;
        }
        return from + " — in " + in;
    }
};

void addFeed(std::vector<Feed>* feeds, const std::string& value, const std::string& from,
             const std::pair<std::string, std::string>& holder) {
    auto found = std::find_if(feeds->begin(), feeds->end(), [&](const Feed& feed) {
        return feed.value == value && feed.from == from;
    });
    if (found == feeds->end()) {
        found = feeds->insert(feeds->end(), {value, from, {}});
    }
    if (std::find(found->holders.begin(), found->holders.end(), holder) == found->holders.end()) {
        found->holders.push_back(holder);
    }
}

// Texts that many elements share, kept once at the head of the index.
struct SharedTexts {
    Json texts = Json::array();
    std::map<std::string, size_t> at;

    size_t of(const std::string& text) {
        const auto [found, added] = at.emplace(text, texts.size());
        if (added) {
            texts.push_back(text);
        }
        return found->second;
    }
};

}  // namespace

// The index: the shared texts first, then one item per element (and attribute) of a line:
// [line, element, attribute or "", [[value, shared text], ...], [what check says of it, ...]].
Json HoverIndex::build(const StoreSession& session) {
    const LoadReport& report = session.report();
    const LoadedFile file = LoadedFile::of(session);
    std::map<std::tuple<long, std::string, std::string>, std::vector<Feed>> feeds;
    for (const LoadedBlob& blob : file.blobs) {
        for (const LoadedEntry& entry : blob.entries) {
            const EntryView view = EntryView::decode(entry.code, entry.values);
            const std::string code = "`" + BlobDecoder::codeText(entry.code) + "` ";
            const auto holder = std::pair(blob.title(), BlobDecoder::deviceName(entry.deviceId));
            for (const SourceParameter& parameter : entry.parameters) {
                for (size_t s = 0; s < parameter.steps.size(); s++) {
                    const ValueStep& step = parameter.steps[s];
                    const std::string from =
                        parameter.name + " of " + parameter.recordName + rulesOf(parameter, s);
                    size_t taken = 0;  // of the step's values, by the rows before
                    for (const ReadElement& element : step.elements) {
                        // A row the reader took no list from is a band: one value of each column.
                        const size_t end = std::min(
                            taken + (element.row ? std::max<size_t>(element.numbers, 1) : 0),
                            step.values.size());
                        std::string places;
                        for (size_t i = taken; i < end; i++) {
                            const long at = entryIndex(entry, view, parameter.parameter, i);
                            const EntryView::Place place = view.place(at);
                            places += at < 0 ? ""
                                             : (places.empty() ? "" : "; ") + place.where + ": " +
                                                   place.value;
                        }
                        const std::string attribute = attributeWritten(
                            element, {step.values.begin() + taken, step.values.begin() + end});
                        taken = end;
                        addFeed(&feeds[{element.line, element.name, attribute}],
                                code + (places.empty() ? entrySummary(view) : places), from, holder);
                    }
                }
            }
        }
    }
    SharedTexts shared;
    Json index = Json::array({Json::array()});
    std::set<ElementKey> fed;
    for (const auto& [key, values] : feeds) {
        const auto& [line, element, attribute] = key;
        fed.insert({line, element});
        Json list = Json::array();
        for (const Feed& feed : values) {
            list.push_back({feed.value, shared.of(feed.where())});
        }
        index.push_back({line, element, attribute, list, Json::array()});
    }
    // Elements the reader passed over that feed nothing, in the words of check's findings.
    const std::vector<Finding> findings = LintRules::run(report);
    for (const LoadReport::NodeEvent& skip : report.skips) {
        const ReportedNode& node = report.node(skip.node);
        Json passed = Json::array();
        for (const Finding& finding : findings) {
            if (finding.at.line == node.line) {
                passed.push_back(finding.message);
            }
        }
        if (node.isElement && !passed.empty() && fed.insert({node.line, node.name}).second) {
            index.push_back({node.line, node.name, "", Json::array(), passed});
        }
    }
    index[0] = std::move(shared.texts);
    return index;
}

Json HoverIndex::at(const Json& index, const std::string& text, int line, int character) {
    const TagText tags(text);
    size_t at = 0;
    StartTag tag;
    if (!index.is_array() || !tags.offset(line, character, &at) || !tags.startTagAt(at, &tag)) {
        return nullptr;
    }
    const StartTag::Attribute* on = nullptr;
    for (const StartTag::Attribute& attribute : tag.attributes) {
        on = at >= attribute.span.begin && at < attribute.span.end ? &attribute : on;
    }
    // The library numbers an element by a line of its start tag.
    const long first = tags.lineOf(tag.tag.begin);
    const long last = tags.lineOf(tag.tag.end - 1);
    const Json& shared = index.empty() ? index : index[0];
    // Whatever the item's shape, a string where one is expected or nothing.
    const auto string = [](const Json& array, size_t i) {
        return array.is_array() && i < array.size() && array[i].is_string()
                   ? array[i].get<std::string>()
                   : std::string();
    };
    std::string feeds, passed;
    for (size_t i = 1; i < index.size(); i++) {
        const Json& item = index[i];
        const std::string attribute = string(item, 2);
        if (!item.is_array() || item.size() < 5 || !item[0].is_number_integer() ||
            string(item, 1) != tag.name || item[0].get<long>() < first ||
            item[0].get<long>() > last ||
            (on != nullptr && !attribute.empty() && attribute != on->name)) {
            continue;
        }
        for (const Json& feed : item[3]) {
            const bool known = feed.is_array() && feed.size() == 2 && feed[1].is_number_unsigned();
            if (known && feed[0].is_string()) {
                feeds += "- " + feed[0].get<std::string>() + " · " +
                         string(shared, feed[1].get<size_t>()) + "\n";
            }
        }
        for (size_t m = 0; m < item[4].size(); m++) {
            passed += "- " + string(item[4], m) + "\n";
        }
    }
    if (feeds.empty() && passed.empty()) {
        return nullptr;
    }
    std::string value = "**`<" + tag.name + ">`**" + (on != nullptr ? " `" + on->name + "`" : "");
    value += feeds.empty() ? "" : " feeds:\n\n" + feeds;
    value += passed.empty() ? "" : "\n\nPassed over by the reader:\n\n" + passed;
    return {{"contents", {{"kind", "markdown"}, {"value", value}}},
            {"range", tags.range(on != nullptr ? on->span : tag.span)}};
}

}  // namespace korva::tool
