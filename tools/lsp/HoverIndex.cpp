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

// Values an element feeds: a run of an entry's words (none: the whole entry), what they were
// made of with the rules on the way, and the blobs and devices of the entries that hold them.
struct Feed {
    size_t entry;  // in the index's entries
    long first;
    size_t count;
    std::string from;
    std::vector<std::pair<std::string, std::string>> holders;

    // "profile 1 "movie": speaker, a2dp; tuning device "usb_dac": usb"
    std::string in() const {
        std::string text;
        for (size_t i = 0; i < holders.size(); i++) {
            const bool sameBlob = i > 0 && holders[i - 1].first == holders[i].first;
            text += sameBlob ? ", " + holders[i].second
                             : (i > 0 ? "; " : "") + holders[i].first + ": " + holders[i].second;
        }
        return text;
    }
};

void addFeed(std::vector<Feed>* feeds, Feed feed,
             const std::pair<std::string, std::string>& holder) {
    auto found = std::find_if(feeds->begin(), feeds->end(), [&feed](const Feed& f) {
        return f.entry == feed.entry && f.first == feed.first && f.count == feed.count &&
               f.from == feed.from;
    });
    if (found == feeds->end()) {
        found = feeds->insert(feeds->end(), std::move(feed));
    }
    if (std::find(found->holders.begin(), found->holders.end(), holder) == found->holders.end()) {
        found->holders.push_back(holder);
    }
}

// What many items share, kept once at the head of the index: texts, and entries' words.
template <typename Key>
struct Shared {
    Json list = Json::array();
    std::map<Key, size_t> at;

    size_t of(const Key& key) {
        const auto [found, added] = at.emplace(key, list.size());
        if (added) {
            list.push_back(key);
        }
        return found->second;
    }
};

// A number of an array that the index was read back as, or -1 when it is not one.
long numberAt(const Json& array, size_t i) {
    return array.is_array() && i < array.size() && array[i].is_number_integer()
               ? array[i].get<long>()
               : -1;
}

std::string stringAt(const Json& array, long i) {
    return array.is_array() && i >= 0 && static_cast<size_t>(i) < array.size() &&
                   array[i].is_string()
               ? array[i].get<std::string>()
               : std::string();
}

}  // namespace

// The index: the shared texts, the entries' words (code first), then one item per element (and
// attribute) of a line: [line, element, attribute ("" for the element), [[entry, first word,
// word count, what made them, the blobs and devices holding them], ...], [what check says of
// it, ...]], names and texts by their number in the shared texts.
Json HoverIndex::build(const StoreSession& session) {
    const LoadReport& report = session.report();
    const LoadedFile file = LoadedFile::of(session);
    Shared<std::string> texts;
    Shared<std::vector<int>> entries;
    std::map<std::tuple<long, std::string, std::string>, std::vector<Feed>> feeds;
    for (const LoadedBlob& blob : file.blobs) {
        for (const LoadedEntry& entry : blob.entries) {
            const EntryView view = EntryView::decode(entry.code, entry.values);
            std::vector<int> words = {entry.code};
            words.insert(words.end(), entry.values.begin(), entry.values.end());
            const size_t shared = entries.of(words);
            const auto holder = std::pair(blob.title(), BlobDecoder::deviceName(entry.deviceId));
            for (const SourceParameter& parameter : entry.parameters) {
                for (size_t s = 0; s < parameter.steps.size(); s++) {
                    const ValueStep& step = parameter.steps[s];
                    const std::string from =
                        parameter.name + " of " + parameter.recordName + rulesOf(parameter, s);
                    size_t taken = 0;  // of the step's values, by the rows before
                    // A rule's write lists its record's element and everything read below it;
                    // which of those the rule looked at is not said, so only the record's
                    // element is said to feed what the rule wrote.
                    const size_t elements = step.rule.empty()
                                                ? step.elements.size()
                                                : std::min<size_t>(step.elements.size(), 1);
                    for (size_t e = 0; e < elements; e++) {
                        const ReadElement& element = step.elements[e];
                        // A row the reader took no list from is a band: one value of each column.
                        const size_t end = std::min(
                            taken + (element.row ? std::max<size_t>(element.numbers, 1) : 0),
                            step.values.size());
                        const long first = entryIndex(entry, view, parameter.parameter, taken);
                        const long last =
                            end > taken ? entryIndex(entry, view, parameter.parameter, end - 1) : -1;
                        const bool placed = end > taken && first >= 0 && last >= first;
                        const std::string attribute = attributeWritten(
                            element, {step.values.begin() + taken, step.values.begin() + end});
                        taken = end;
                        // Past the lines libxml2 counts, the line names no tag of the text.
                        if (element.atLeast) {
                            continue;
                        }
                        addFeed(&feeds[{element.line, element.name, attribute}],
                                {shared,
                                 placed ? first : 0,
                                 placed ? static_cast<size_t>(last - first + 1) : 0,
                                 from,
                                 {}},
                                holder);
                    }
                }
            }
        }
    }
    Json index = Json::array({Json(), Json()});
    std::set<ElementKey> fed;
    for (const auto& [key, values] : feeds) {
        const auto& [line, element, attribute] = key;
        fed.insert({line, element});
        Json list = Json::array();
        for (const Feed& feed : values) {
            list.push_back(
                {feed.entry, feed.first, feed.count, texts.of(feed.from), texts.of(feed.in())});
        }
        index.push_back({line, texts.of(element), texts.of(attribute), list, Json::array()});
    }
    // Elements the reader passed over that feed nothing, in the words of check's findings.
    std::map<int, Json> said;  // by the cause's node
    for (const Finding& finding : LintRules::run(report)) {
        said[finding.node].push_back(finding.message);
    }
    for (const LoadReport::NodeEvent& skip : report.skips) {
        const ReportedNode& node = report.node(skip.node);
        const auto passed = said.find(skip.node);
        if (node.isElement && !node.atLeast && passed != said.end() &&
            fed.insert({node.line, node.name}).second) {
            index.push_back(
                {node.line, texts.of(node.name), texts.of(""), Json::array(), passed->second});
        }
    }
    index[0] = std::move(texts.list);
    index[1] = std::move(entries.list);
    return index;
}

Json HoverIndex::at(const Json& index, const std::string& text, int line, int character) {
    const TagText tags(text);
    const size_t at = tags.lines().offset(line, character);
    Tag tag;
    if (!index.is_array() || index.size() < 2 || at == std::string::npos ||
        !tags.at(at, nullptr, &tag) || tag.kind != Tag::Kind::kStart || at >= tag.tag.end) {
        return nullptr;
    }
    const Tag::Attribute* on = nullptr;
    for (const Tag::Attribute& attribute : tag.attributes) {
        on = at >= attribute.span.begin && at < attribute.span.end ? &attribute : on;
    }
    // The library numbers an element by a line of its start tag.
    const long first = tags.lineOf(tag.tag.begin);
    const long last = tags.lineOf(tag.tag.end - 1);
    const Json& texts = index[0];
    static const Json kNone = Json::array();
    const Json& entries = index[1].is_array() ? index[1] : kNone;
    std::string feeds, passed;
    for (size_t i = 2; i < index.size(); i++) {
        const Json& item = index[i];
        const std::string attribute = stringAt(texts, numberAt(item, 2));
        if (numberAt(item, 0) < first || numberAt(item, 0) > last || item.size() != 5 ||
            stringAt(texts, numberAt(item, 1)) != tag.name ||
            (on != nullptr && !attribute.empty() && attribute != on->name)) {
            continue;
        }
        for (const Json& feed : item[3].is_array() ? item[3] : kNone) {
            const long entry = numberAt(feed, 0);
            const Json& words =
                entry >= 0 && static_cast<size_t>(entry) < entries.size() ? entries[entry] : kNone;
            if (!words.is_array() || words.empty() || numberAt(feed, 1) < 0 ||
                numberAt(feed, 2) < 0 || !words[0].is_number_integer()) {
                continue;
            }
            std::vector<int> values;
            for (size_t w = 1; w < words.size(); w++) {
                values.push_back(words[w].is_number_integer() ? words[w].get<int>() : 0);
            }
            const EntryView view = EntryView::decode(words[0].get<int>(), values);
            std::string places;
            const long end = std::min<long>(numberAt(feed, 1) + numberAt(feed, 2), values.size());
            for (long w = numberAt(feed, 1); w < end; w++) {
                const EntryView::Place place = view.place(w);
                places += (places.empty() ? "" : "; ") + place.where + ": " + place.value;
            }
            feeds += "- `" + BlobDecoder::codeText(view.code) + "` " +
                     (places.empty() ? entrySummary(view) : places) + " · " +
                     stringAt(texts, numberAt(feed, 3)) + " — in " +
                     stringAt(texts, numberAt(feed, 4)) + "\n";
        }
        for (size_t m = 0; item[4].is_array() && m < item[4].size(); m++) {
            const std::string said = stringAt(item[4], m);
            passed += said.empty() ? "" : "- " + said + "\n";
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
