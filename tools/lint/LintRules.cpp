#include "tools/lint/LintRules.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "reader/SetterCollection.h"
#include "reader/TuningFileParser.h"
#include "reader/ValueSetter.h"
#include "tools/BlobDecoder.h"
#include "tools/NumberText.h"

namespace korva::tool {

namespace {

using Report = LoadReport;

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

std::string tag(const std::string& name) {
    return "<" + name + ">";
}

FileLine lineOf(const Report& report, int node) {
    const ReportedNode& reported = report.node(node);
    return {reported.line, reported.atLeast};
}

// The root's line, for findings about the file as a whole.
FileLine rootLine(const Report& report) {
    for (const ReportedNode& node : report.nodes) {
        if (node.parent < 0 && node.isElement) {
            return {node.line, node.atLeast};
        }
    }
    return {1, false};
}

// An element as <name>, a comment or a text by its words.
std::string describe(const Report& report, int index) {
    const ReportedNode& node = report.node(index);
    if (node.isElement) {
        return tag(node.name);
    }
    if (!node.isComment && node.content.find_first_not_of(" \t\r\n") == std::string::npos) {
        return "blank text";
    }
    std::string content = node.content;
    content.erase(0, content.find_first_not_of(" \t\r\n"));
    content.erase(content.find_last_not_of(" \t\r\n") + 1);
    if (content.size() > 30) {
        content = content.substr(0, 27) + "...";
    }
    return (node.isComment ? "the comment " : "the text ") + inQuotes(content);
}

std::string parentTag(const Report& report, int index) {
    const ReportedNode& parent = report.node(report.node(index).parent);
    return parent.isElement ? tag(parent.name) : std::string("the document");
}

const char* kindName(RecordKind kind) {
    switch (kind) {
        case RecordKind::kProfile:
            return "profile";
        case RecordKind::kProfileEndpoint:
            return "profile endpoint";
        case RecordKind::kTuning:
            return "tuning";
        case RecordKind::kIeqPreset:
            return "IEQ preset";
        case RecordKind::kGeqPreset:
            return "GEQ preset";
    }
    return "record";
}

Finding finding(const Report& report, int node, Severity severity, std::string message) {
    return Finding(lineOf(report, node), severity, std::move(message));
}

Note note(const Report& report, int node, std::string message) {
    return {lineOf(report, node), std::move(message)};
}

Note recordNote(const Report& report, int record, const std::string& message) {
    const RecordSnapshot& snapshot = report.records[record];
    return note(report, snapshot.node, snapshot.title() + " " + message);
}

// Edits of one character, two neighbours swapped counting as one ("vaule").
size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); i++) {
        for (size_t j = 0; j <= b.size(); j++) {
            if (i == 0 || j == 0) {
                d[i][j] = i + j;
                continue;
            }
            d[i][j] = std::min(
                {d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
            }
        }
    }
    return d[a.size()][b.size()];
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// The candidate close enough to name to be a slip of the keyboard, or "". Case does not count
// towards the distance when ignoreCase.
std::string closest(const std::string& name, const std::set<std::string>& candidates,
                    bool ignoreCase = false) {
    const size_t limit = std::max<size_t>(1, std::min<size_t>(3, name.size() / 4));
    const std::string compared = ignoreCase ? lowered(name) : name;
    std::string best;
    size_t bestDistance = limit + 1;
    for (const std::string& candidate : candidates) {
        // The distance is at least the difference in length: such a candidate cannot be close.
        const size_t longer = std::max(name.size(), candidate.size());
        if (longer - std::min(name.size(), candidate.size()) > limit) {
            continue;
        }
        const size_t distance =
            ignoreCase ? editDistance(compared, lowered(candidate)) : editDistance(name, candidate);
        if (distance < bestDistance && candidate != name) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

// " (did you mean X?)" when a candidate is close enough to be a slip of the keyboard.
std::string didYouMean(const std::string& best, bool asTag) {
    return best.empty() ? "" : " (did you mean " + (asTag ? tag(best) : inQuotes(best)) + "?)";
}

Undo undoOf(Undo::Action action, int node, std::string attribute = "", std::string to = "",
            int before = -1) {
    return {action, node, std::move(attribute), std::move(to), before};
}

void setUndo(Finding* finding, const Undo& undo) {
    finding->hasUndo = true;
    finding->undo = undo;
}

// The attributes of node that the load reported reading (as text, a number or a word), those
// whose text is the given one when it is not empty.
std::set<std::string> readAttributes(const Report& report, int node, const std::string& text) {
    std::set<std::string> names;
    for (const Report::AttributeEvent& attribute : report.attributes) {
        if (attribute.node == node && attribute.how == AttributeRead::kRead &&
            (text.empty() || attribute.text == text)) {
            names.insert(attribute.name);
        }
    }
    for (const Report::NumberEvent& number : report.numbers) {
        if (number.node == node && (text.empty() || number.text == text)) {
            names.insert(number.attribute);
        }
    }
    for (const Report::KeywordEvent& keyword : report.keywords) {
        if (keyword.node == node && (text.empty() || keyword.text == text)) {
            names.insert(keyword.attribute);
        }
    }
    return names;
}

// The node the reader looked at in parent for an include and did not find one, or -1.
int missedInclude(const Report& report, int parent) {
    for (const Report::NodeEvent& lookup : report.lookups) {
        if (!lookup.found && report.node(lookup.node).parent == parent &&
            lookup.what == static_cast<int>(Structure::kInclude)) {
            return lookup.node;
        }
    }
    return -1;
}

std::set<std::string> parameterElementNames() {
    std::set<std::string> names;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        names.insert(setter->getNodeName());
    }
    return names;
}

bool isAncestor(const Report& report, int ancestor, int node) {
    for (int at = report.node(node).parent; at >= 0; at = report.node(at).parent) {
        if (at == ancestor) {
            return true;
        }
    }
    return false;
}

// What the nodes under an element that the reader passed over cost: includes not found there,
// and the records made from it.
std::vector<Note> consequencesUnder(const Report& report, int element) {
    std::vector<Note> notes;
    for (const Report::NodeEvent& lookup : report.lookups) {
        if (!lookup.found && (lookup.node == element || isAncestor(report, element, lookup.node))) {
            notes.push_back(note(report, lookup.node,
                                 "so the reader looks for " + parentTag(report, lookup.node) +
                                     "'s <include> at " + describe(report, lookup.node) +
                                     " and does not find it"));
        }
    }
    return notes;
}

// The elements a dropped tuning cut from the reading, as notes.
std::vector<Note> cutElements(const Report& report) {
    std::vector<Note> notes;
    for (const Report::NodeEvent& skip : report.skips) {
        if (skip.what == static_cast<int>(Skip::kAfterCut)) {
            notes.push_back(note(report, skip.node, describe(report, skip.node) + " is not read"));
        }
    }
    return notes;
}

// The entries of a blob that a translation added.
std::vector<BlobEntry> entriesOf(const Report& report, const Report::TranslatedEvent& event) {
    std::vector<BlobEntry> out;
    if (event.blob < 0 || static_cast<size_t>(event.blob) >= report.blobs.size()) {
        return out;
    }
    const DecodedBlob decoded = BlobDecoder::decode(report.blobs[event.blob].words);
    for (int i = event.firstEntry; i < event.endEntry; i++) {
        if (i >= 0 && static_cast<size_t>(i) < decoded.entries.size()) {
            out.push_back(decoded.entries[i]);
        }
    }
    return out;
}

std::string blobTitle(const Report::Blob& blob) {
    return blob.isTuning ? "tuning device " + inQuotes(blob.device) + "'s blob"
                         : "profile " + std::to_string(blob.profileId) + "'s blob";
}

// Records that went into no blob at all: a preset that no profile or endpoint takes (or that an
// earlier one of the same id shadows), a tuning that no device is bound to.
void unusedRecords(const LoadReport& report, std::vector<Finding>* out) {
    std::set<int> used;
    for (const Report::TranslatedEvent& event : report.translated) {
        used.insert(event.record);
    }
    for (const Report::PartnerEvent& partner : report.partnersMissing) {
        if (partner.what == MissingPartner::kEndpointOther) {
            used.insert(partner.record);
        }
    }
    for (size_t i = 0; i < report.records.size(); i++) {
        const RecordSnapshot& record = report.records[i];
        if (!record.dropped && used.count(static_cast<int>(i)) == 0) {
            out->push_back(
                finding(report, record.node, Severity::kWarning,
                        record.title() + " goes into no blob: nothing of it reaches the effect"));
        }
    }
}

}  // namespace

const std::vector<LintRules::Rule> LintRules::kRules = {
    {"unreadable", "the file is not a readable XML document"},
    {"passed-over", "elements, records and blobs the library passed over, cut short or dropped"},
    {"text-read", "attributes, numbers and words read otherwise than written"},
    {"values-changed",
     "values written twice, not used by their record, replaced by a rule or sent empty"},
    {"loaded", "records whose partner is missing, loader defaults and blobs filed twice"},
    {"unused-records", "records that go into no blob"},
    {"preset-bands", "presets whose band lists disagree"},
};

std::vector<Finding> LintRules::run(const LoadReport& report) {
    std::vector<Finding> findings;
    if (report.readFailed) {
        findings.emplace_back(FileLine{report.readErrorLine, false}, Severity::kError,
                              "not a readable XML document" +
                                  (report.readError.empty() ? "" : ": " + report.readError));
        findings.back().rule = kRules[0].id;
        return findings;
    }
    using RuleFunction = void (*)(const LoadReport&, std::vector<Finding>*);
    const RuleFunction functions[] = {passedOver, textRead,      valuesChanged,
                                      loaded,     unusedRecords, presetBands};
    for (size_t i = 0; i < std::size(functions); i++) {
        const size_t first = findings.size();
        functions[i](report, &findings);
        for (size_t f = first; f < findings.size(); f++) {
            findings[f].rule = kRules[i + 1].id;
        }
    }
    for (Finding& finding : findings) {
        if (!finding.hasUndo && finding.unmeasured.empty()) {
            finding.unmeasured = "no rule of the tool undoes this cause";
        }
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.at.line < b.at.line; });
    return findings;
}

void LintRules::passedOver(const LoadReport& report, std::vector<Finding>* out) {
    static const std::set<std::string> kSetterNames = parameterElementNames();
    std::set<std::string> structural;
    std::set<int> read;
    for (const Report::NodeEvent& structure : report.structures) {
        structural.insert(report.node(structure.node).name);
        read.insert(structure.node);
    }
    std::set<std::pair<int, int>> seen;
    // Index in out of the finding each skipped node got, for what passing over it cost.
    std::map<int, size_t> findingOf;
    const std::set<std::string> includes = {TuningFileParser::kIncludeElement};
    // A comment or text where the reader looked for an include: it is read in the include's
    // place, so taking it away is the undo.
    for (const Report::NodeEvent& lookup : report.lookups) {
        const ReportedNode& at = report.node(lookup.node);
        if (lookup.found || at.isElement || describe(report, lookup.node) == "blank text" ||
            findingOf.count(lookup.node) > 0) {
            continue;
        }
        Finding f = finding(report, lookup.node, Severity::kWarning,
                            describe(report, lookup.node) + " is where the reader looks for " +
                                parentTag(report, lookup.node) + "'s <include>: it finds none");
        setUndo(&f, undoOf(Undo::Action::kRemove, lookup.node));
        findingOf[lookup.node] = out->size();
        out->push_back(std::move(f));
    }
    // A setter reads its rows below its element: its own element read as a row means the walk
    // found nothing below it and went on through the elements after it, which their own setters
    // read as well: the first of them is the cause.
    std::set<int> besideRows;
    for (const Report::NodeEvent& structure : report.structures) {
        if (structure.what == static_cast<int>(Structure::kSetterRow)) {
            besideRows.insert(structure.node);
        }
    }
    for (const Report::SetterEvent& setter : report.setters) {
        // Most setters read rows below them: only those read as rows themselves are looked into.
        if (besideRows.count(setter.node) == 0 || findingOf.count(setter.node) > 0) {
            continue;
        }
        const ReportedNode& element = report.node(setter.node);
        const bool first = std::none_of(besideRows.begin(), besideRows.end(), [&](int row) {
            return report.node(row).parent == element.parent && report.node(row).line < element.line;
        });
        if (!first) {
            continue;
        }
        const size_t rows = std::count_if(besideRows.begin(), besideRows.end(), [&](int row) {
            return report.node(row).parent == element.parent &&
                   report.node(row).line >= element.line;
        });
        Finding f =
            finding(report, setter.node, Severity::kWarning,
                    describe(report, setter.node) + " has no rows of its own: its reading takes " +
                        std::to_string(rows) + " elements at and after it as its rows");
        setUndo(&f, undoOf(Undo::Action::kRemove, setter.node));
        findingOf[setter.node] = out->size();
        out->push_back(std::move(f));
    }
    for (const Report::NodeEvent& skip : report.skips) {
        const Skip why = static_cast<Skip>(skip.what);
        // A walk that passes over what another step of the reader read takes nothing away.
        if (!seen.insert({skip.node, skip.what}).second ||
            (why != Skip::kNotWalked && findingOf.count(skip.node) > 0) ||
            (why != Skip::kVersionRule && why != Skip::kSteppedOver && read.count(skip.node) > 0)) {
            continue;
        }
        if (why == Skip::kNotWalked && findingOf.count(report.node(skip.node).parent) > 0) {
            Finding& held = (*out)[findingOf[report.node(skip.node).parent]];
            held.notes.push_back(
                note(report, skip.node, "so " + describe(report, skip.node) + " is not read"));
            findingOf[skip.node] = findingOf[report.node(skip.node).parent];
            continue;
        }
        const size_t before = out->size();
        const std::string what = describe(report, skip.node);
        const std::string where = parentTag(report, skip.node);
        const bool isElement = report.node(skip.node).isElement;
        switch (static_cast<Skip>(skip.what)) {
            case Skip::kSteppedOver: {
                std::vector<Note> notes = consequencesUnder(report, report.node(skip.node).parent);
                Finding f = finding(report, skip.node, Severity::kWarning,
                                    what + " is the first child of " + where +
                                        ", which the reader steps over: it is not read");
                if (isElement) {
                    f.unmeasured = "no rule undoes an element that the reader steps over";
                } else {
                    setUndo(&f, undoOf(Undo::Action::kRemove, skip.node));
                    // In blank text's place, a comment costs nothing unless measured otherwise.
                    f.onlyIfEffect = notes.empty();
                }
                f.notes = std::move(notes);
                out->push_back(std::move(f));
                break;
            }
            case Skip::kNotElement: {
                Finding f = finding(report, skip.node, Severity::kWarning,
                                    what + " in " + where + " is not read");
                setUndo(&f, undoOf(Undo::Action::kRemove, skip.node));
                // Comments are there to be passed over: one is a finding only by its effect.
                f.onlyIfEffect = report.node(skip.node).isComment;
                out->push_back(std::move(f));
                break;
            }
            case Skip::kNoSetter:
            case Skip::kUnknown: {
                const std::string& name = report.node(skip.node).name;
                const int lookedAt = missedInclude(report, report.node(skip.node).parent);
                const bool misplaced = includes.count(name) > 0 && lookedAt >= 0;
                const std::string best =
                    misplaced ? ""
                              : closest(name, why == Skip::kNoSetter ? kSetterNames : structural);
                Finding f = finding(
                    report, skip.node, Severity::kWarning,
                    what + " in " + where + " is not read: " +
                        (misplaced ? "the reader looks for it at " + describe(report, lookedAt)
                         : why == Skip::kNoSetter ? "no parameter has this name"
                                                  : "the reader does not know it") +
                        didYouMean(best, true));
                if (misplaced) {
                    setUndo(&f, undoOf(Undo::Action::kMoveBefore, skip.node, "", "", lookedAt));
                } else if (!best.empty()) {
                    setUndo(&f, undoOf(Undo::Action::kRename, skip.node, "", best));
                } else {
                    f.unmeasured = "no name the reader knows is close to it";
                }
                out->push_back(std::move(f));
                break;
            }
            case Skip::kNotWalked:
                out->push_back(finding(
                    report, skip.node, Severity::kWarning,
                    what + " in " + where + " is not read: no walk of the reader reaches it"));
                break;
            case Skip::kAfterCut:
                // Reported as notes of the tuning that cut the reading.
                if (std::none_of(report.records.begin(), report.records.end(),
                                 [](const RecordSnapshot& r) { return r.dropped; })) {
                    out->push_back(finding(report, skip.node, Severity::kWarning,
                                           what + " is not read: the reading stopped before it"));
                }
                break;
            case Skip::kEndsList:
                out->push_back(finding(report, skip.node, Severity::kWarning,
                                       what + " ends the list of bands in " + where +
                                           ": the bands after it are not read"));
                break;
            case Skip::kVersionRule: {
                Finding f =
                    finding(report, skip.node, Severity::kWarning,
                            what + " is passed over in a file of format version " +
                                inQuotes(report.formatVersion) + ": its settings do not apply");
                f.unmeasured = "the file's format version decides it, not an edit here";
                out->push_back(std::move(f));
                break;
            }
        }
        if (out->size() > before) {
            findingOf[skip.node] = before;
        }
    }
}

void LintRules::textRead(const LoadReport& report, std::vector<Finding>* out) {
    // Attribute names each element name was asked for, for the names to suggest.
    std::map<std::string, std::set<std::string>> asked;
    for (const Report::AttributeEvent& attribute : report.attributes) {
        if (attribute.how != AttributeRead::kIgnored) {
            asked[report.node(attribute.node).name].insert(attribute.name);
        }
    }
    // (node, attribute) pairs a finding already covers.
    std::set<std::pair<int, std::string>> covered;
    const auto keywordNotes = [&report, &covered](int node, std::vector<Note>* notes) {
        for (const Report::KeywordEvent& keyword : report.keywords) {
            if (keyword.node == node && !keyword.recognised) {
                covered.insert({node, keyword.attribute});
                notes->push_back(note(report, node,
                                      "its " + keyword.attribute + " " + inQuotes(keyword.text) +
                                          " is read as " + std::to_string(keyword.value)));
            }
        }
    };
    for (const Report::AttributeEvent& attribute : report.attributes) {
        const std::string element = describe(report, attribute.node);
        if (attribute.how == AttributeRead::kIgnored) {
            const std::string best =
                closest(attribute.name, asked[report.node(attribute.node).name]);
            Finding f = finding(report, attribute.node, Severity::kWarning,
                                "attribute " + inQuotes(attribute.name) + " of " + element +
                                    " is not read" + didYouMean(best, false));
            if (!best.empty()) {
                setUndo(&f, undoOf(Undo::Action::kRename, attribute.node, attribute.name, best));
            } else {
                f.unmeasured = "no attribute name the reader asks for is close to it";
            }
            for (const Report::AttributeEvent& missing : report.attributes) {
                if (missing.node == attribute.node && missing.how == AttributeRead::kMissing) {
                    covered.insert({missing.node, missing.name});
                    f.notes.push_back(note(
                        report, missing.node,
                        element + " has no " + inQuotes(missing.name) + ": it is read as empty"));
                }
            }
            keywordNotes(attribute.node, &f.notes);
            out->push_back(std::move(f));
        }
    }
    // An absent attribute matters where its empty text became a number or a word.
    for (const Report::AttributeEvent& attribute : report.attributes) {
        if (attribute.how != AttributeRead::kMissing ||
            covered.count({attribute.node, attribute.name}) > 0) {
            continue;
        }
        std::string readAs;
        for (const Report::NumberEvent& number : report.numbers) {
            if (number.node == attribute.node && number.attribute == attribute.name) {
                readAs = number.isList ? NumberText::bracketed(number.values)
                                       : std::to_string(number.values[0]);
            }
        }
        for (const Report::KeywordEvent& keyword : report.keywords) {
            if (keyword.node == attribute.node && keyword.attribute == attribute.name &&
                !keyword.recognised) {
                readAs = std::to_string(keyword.value);
            }
        }
        if (!readAs.empty()) {
            covered.insert({attribute.node, attribute.name});
            Finding f = finding(report, attribute.node, Severity::kWarning,
                                describe(report, attribute.node) + " has no " + attribute.name +
                                    " attribute: read as " + readAs);
            f.unmeasured = "nothing in the file to undo: the attribute is absent";
            keywordNotes(attribute.node, &f.notes);
            out->push_back(std::move(f));
        }
    }
    // The words this load read as numbers ("true"), by attribute name.
    std::map<std::string, std::set<std::string>> words;
    for (const Report::NumberEvent& number : report.numbers) {
        if (number.how == NumberRead::kWord) {
            words[number.attribute].insert(number.text);
        }
    }
    for (const Report::NumberEvent& number : report.numbers) {
        if (number.how == NumberRead::kWhole || number.how == NumberRead::kWord ||
            !covered.insert({number.node, number.attribute}).second) {
            continue;
        }
        const std::string what =
            describe(report, number.node) + " " + number.attribute + " " + inQuotes(number.text);
        const std::string readAs =
            number.isList ? NumberText::bracketed(number.values) : std::to_string(number.values[0]);
        const char* how = number.isList                        ? " is not a list of whole numbers"
                          : number.how == NumberRead::kClamped ? " is out of the int range"
                          : number.how == NumberRead::kNone    ? " has no digits"
                                                               : " is not a whole number";
        Finding f =
            finding(report, number.node, Severity::kWarning, what + how + ": read as " + readAs);
        const std::string best = number.how == NumberRead::kNone
                                     ? closest(number.text, words[number.attribute], true)
                                     : "";
        if (!best.empty()) {
            setUndo(&f, undoOf(Undo::Action::kReplace, number.node, number.attribute, best));
        } else {
            f.unmeasured = "no rule undoes a number that is read otherwise than written";
        }
        out->push_back(std::move(f));
    }
    // The words the reader knew in this load, by element and attribute name, and the library's
    // names of endpoints and ports, which these words name.
    std::set<std::string> libraryWords(kEndpointNames, kEndpointNames + kNumEndpoints);
    libraryWords.insert(kAndroidDeviceNames, kAndroidDeviceNames + kNumAndroidDevices);
    std::map<std::pair<std::string, std::string>, std::set<std::string>> known;
    for (const Report::KeywordEvent& keyword : report.keywords) {
        if (keyword.recognised) {
            known[{report.node(keyword.node).name, keyword.attribute}].insert(keyword.text);
        }
    }
    for (const Report::KeywordEvent& keyword : report.keywords) {
        if (!keyword.recognised && covered.insert({keyword.node, keyword.attribute}).second) {
            std::vector<Note> notes;
            const int record = report.recordOfNode(keyword.node);
            if (record >= 0) {
                notes.push_back(recordNote(report, record, "is made of it"));
            }
            Finding f =
                finding(report, keyword.node, Severity::kWarning,
                        describe(report, keyword.node) + " " + keyword.attribute + " " +
                            inQuotes(keyword.text) + " is not a word the reader knows: read as " +
                            std::to_string(keyword.value));
            f.notes = std::move(notes);
            std::set<std::string> words = known[{report.node(keyword.node).name, keyword.attribute}];
            words.insert(libraryWords.begin(), libraryWords.end());
            const std::string best = closest(keyword.text, words, true);
            if (!best.empty()) {
                setUndo(&f, undoOf(Undo::Action::kReplace, keyword.node, keyword.attribute, best));
            } else {
                f.unmeasured = "no word this load read there is close to it";
            }
            out->push_back(std::move(f));
        }
    }
}

void LintRules::valuesChanged(const LoadReport& report, std::vector<Finding>* out) {
    // The last value each record's parameter got from an element, by value event.
    std::map<std::pair<int, Parameter>, size_t> fromFile;
    for (size_t i = 0; i < report.values.size(); i++) {
        const Report::ValueEvent& value = report.values[i];
        const RecordSnapshot& record = report.records[value.record];
        const std::string name = kParameterNames[value.parameter];
        const std::string element = describe(report, value.node);
        const auto key = std::make_pair(value.record, value.parameter);
        auto earlier = fromFile.find(key);
        if (value.source == ValueSource::kFile) {
            if (record.validParams.count(value.parameter) == 0) {
                out->push_back(finding(report, value.node, Severity::kWarning,
                                       element + " sets " + name + ", which a " +
                                           kindName(record.kind) +
                                           " does not use: it is ignored here"));
            } else if (earlier != fromFile.end() &&
                       report.values[earlier->second].node != value.node) {
                out->push_back(
                    finding(report, value.node, Severity::kWarning,
                            element + " sets " + name + " again: the value at line " +
                                lineText(lineOf(report, report.values[earlier->second].node)) +
                                " is replaced"));
            }
            fromFile[key] = i;
            continue;
        }
        const bool versionRule = value.source == ValueSource::kVersion32 ||
                                 value.source == ValueSource::kVersion322 ||
                                 value.source == ValueSource::kBefore34;
        if (versionRule && earlier != fromFile.end() &&
            report.values[earlier->second].values != value.values) {
            const Report::ValueEvent& written = report.values[earlier->second];
            out->push_back(
                finding(report, written.node, Severity::kWarning,
                        name + " " + NumberText::bracketed(written.values) +
                            " written here is replaced by " + NumberText::bracketed(value.values) +
                            (report.formatVersion.empty()
                                 ? std::string(" (the file has no format version)")
                                 : " by the rules of format version " + report.formatVersion)));
        }
    }
    emptyEntries(report, out);
}

void LintRules::emptyEntries(const LoadReport& report, std::vector<Finding>* out) {
    // The parameters each translation read as empty lists: they are reported just before it.
    std::map<size_t, std::vector<Parameter>> absent;
    for (const Report::ValueEvent& value : report.values) {
        if (value.source == ValueSource::kTranslatorEmpty) {
            absent[value.nextTranslated].push_back(value.parameter);
        }
    }
    // One finding per record and empty entry code, with a note for each blob it is in.
    std::map<std::pair<int, std::string>, size_t> made;
    for (const auto& [index, parameters] : absent) {
        if (index >= report.translated.size()) {
            continue;
        }
        const Report::TranslatedEvent& event = report.translated[index];
        if (event.blob < 0 || report.blobs[event.blob].fate == BlobFate::kDropped) {
            continue;
        }
        const RecordSnapshot& record = report.records[event.record];
        std::string names;
        for (Parameter parameter : parameters) {
            names += (names.empty() ? "" : ", ") + std::string(kParameterNames[parameter]);
        }
        for (const BlobEntry& entry : entriesOf(report, event)) {
            if (!entry.values.empty()) {
                continue;
            }
            const std::string code = BlobDecoder::codeText(entry.code);
            auto [at, isNew] = made.emplace(std::make_pair(event.record, code), out->size());
            if (isNew) {
                out->push_back(finding(report, record.node, Severity::kWarning,
                                       record.title() + " has no " + names + ": the effect gets " +
                                           inQuotes(code) + " with no values"));
            }
            (*out)[at->second].notes.push_back(
                note(report, record.node,
                     "for " + BlobDecoder::deviceName(entry.deviceId) + " in " +
                         blobTitle(report.blobs[event.blob])));
        }
    }
}

void LintRules::loaded(const LoadReport& report, std::vector<Finding>* out) {
    const FileLine root = rootLine(report);
    if (std::none_of(report.structures.begin(), report.structures.end(),
                     [](const Report::NodeEvent& s) {
                         return s.what == static_cast<int>(Structure::kFormatVersion);
                     })) {
        out->emplace_back(root, Severity::kWarning,
                          "no <format_version>: the file is read by the rules of formats before "
                          "3.4, whose defaults replace values it writes");
    }
    for (const RecordSnapshot& record : report.records) {
        if (record.dropped) {
            Finding f =
                finding(report, record.node, Severity::kError,
                        record.title() + " has no data element: the reader drops it and stops");
            f.notes = cutElements(report);
            out->push_back(std::move(f));
        }
    }
    std::set<std::pair<MissingPartner, std::pair<int, int>>> partners;
    for (const Report::PartnerEvent& partner : report.partnersMissing) {
        // The loader meets a record once per blob it goes into.
        if (!partners.insert({partner.what, {partner.record, partner.binding.node}}).second) {
            continue;
        }
        const RecordSnapshot* record =
            partner.record >= 0 ? &report.records[partner.record] : nullptr;
        const int node = record != nullptr ? record->node : partner.binding.node;
        const std::string title = record != nullptr ? record->title() : "";
        const std::string device = "tuning device " + inQuotes(partner.binding.device);
        switch (partner.what) {
            case MissingPartner::kGeqPreset:
                out->push_back(finding(report, node, Severity::kWarning,
                                       title + " has no GEQ preset: its blob carries no graphic "
                                               "EQ and the persisted user gains are not restored "
                                               "for it"));
                break;
            case MissingPartner::kIeqPreset: {
                Finding f =
                    finding(report, node, Severity::kWarning,
                            title + " selects IEQ preset " +
                                std::to_string(record != nullptr ? record->selectedIeqPreset : 0) +
                                ", which the file does not define");
                // The reference is the attribute its include was read from.
                for (const Report::NodeEvent& include : report.structures) {
                    if (include.what != static_cast<int>(Structure::kInclude) ||
                        report.node(include.node).parent != node) {
                        continue;
                    }
                    for (const std::string& name : readAttributes(report, include.node, "")) {
                        setUndo(&f, undoOf(Undo::Action::kRemoveAttribute, include.node, name));
                        f.at = lineOf(report, include.node);
                    }
                }
                if (!f.hasUndo) {
                    f.unmeasured = "the load reported no attribute that makes the reference";
                }
                out->push_back(std::move(f));
                break;
            }
            case MissingPartner::kEndpointOther:
                out->push_back(finding(report, node, Severity::kWarning,
                                       title + ": nothing of this endpoint reaches the effect"));
                break;
            case MissingPartner::kTuning: {
                Finding f = finding(report, node, Severity::kError,
                                    device + " names tuning " + inQuotes(partner.binding.tuning) +
                                        ", which is not kept: the device gets no blob");
                for (const std::string& name :
                     readAttributes(report, node, partner.binding.tuning)) {
                    setUndo(&f, undoOf(Undo::Action::kRemoveAttribute, node, name));
                }
                out->push_back(std::move(f));
                break;
            }
            case MissingPartner::kPortDevice:
                out->push_back(finding(report, node, Severity::kError,
                                       "endpoint_port " + inQuotes(partner.binding.port) + " of " +
                                           device +
                                           " has no output device: its entries are "
                                           "filed for device 0, which no output matches"));
                break;
        }
    }
    const int speaker = report.speakerTuning;
    for (LoaderDefault what : report.loaderDefaults) {
        const int node = speaker >= 0 ? report.records[speaker].node : -1;
        const std::string title =
            speaker >= 0 ? report.records[speaker].title() : std::string("the speaker's tuning");
        Finding f = finding(report, node, Severity::kWarning,
                            what == LoaderDefault::kMixMatrix
                                ? title +
                                      " has no mix matrix (<output-mode>): every speaker "
                                      "endpoint of every profile gets the default one"
                                : title +
                                      " has no <virtual-bass-mode>: every profile endpoint "
                                      "gets the default vb mode");
        if (node < 0) {
            f.at = root;
        }
        out->push_back(std::move(f));
    }
    for (const auto& [port, device] : report.defaultSelectionsMissing) {
        const bool isSpeaker = port == DEVICE_INTERNAL_SPEAKER;
        out->emplace_back(root, Severity::kError,
                          "default tuning device " + inQuotes(device) + " for port " +
                              (port >= 0 && port < kNumAndroidDevices ? kAndroidDeviceNames[port]
                                                                      : std::to_string(port)) +
                              " is missing" +
                              (isSpeaker ? " (bind the speaker's tuning with <device_id id=\"\" "
                                           "endpoint_port=\"internal_speaker\"/>)"
                                         : "") +
                              ": the store disables every tuning");
    }
    // A blob dropped or replaced: say which records went into the one that is kept.
    for (size_t b = 0; b < report.blobs.size(); b++) {
        const Report::Blob& blob = report.blobs[b];
        if (blob.fate == BlobFate::kStored) {
            continue;
        }
        int record = -1;
        for (const Report::TranslatedEvent& event : report.translated) {
            if (event.blob == static_cast<int>(b) && record < 0 &&
                report.records[event.record].kind ==
                    (blob.isTuning ? RecordKind::kTuning : RecordKind::kProfile)) {
                record = event.record;
            }
        }
        if (record < 0) {
            continue;
        }
        const RecordSnapshot& snapshot = report.records[record];
        Finding f = finding(
            report, snapshot.node, Severity::kWarning,
            blob.fate == BlobFate::kDropped
                ? "profile id " + std::to_string(blob.profileId) +
                      " is used again: the blob built for " + snapshot.title() +
                      " is dropped; the blob of the first profile of the id is kept, and the "
                      "endpoints of both go into it"
                : snapshot.title() + " replaces the blob of " + inQuotes(blob.device) +
                      " that an earlier tuning made");
        for (size_t k = 0; k < report.blobs.size(); k++) {
            const Report::Blob& kept = report.blobs[k];
            if (kept.fate != BlobFate::kStored || kept.isTuning != blob.isTuning ||
                kept.profileId != blob.profileId || kept.device != blob.device) {
                continue;
            }
            const DecodedBlob decoded = BlobDecoder::decode(kept.words);
            std::map<std::pair<int, int>, int> sent;
            // Each profile or endpoint record's entries in the kept blob, first to last.
            std::vector<std::pair<int, std::pair<int, int>>> ranges;
            for (const Report::TranslatedEvent& event : report.translated) {
                const RecordKind kind = report.records[event.record].kind;
                if (event.blob != static_cast<int>(k) || event.endEntry <= event.firstEntry ||
                    (kind != RecordKind::kProfileEndpoint && kind != RecordKind::kProfile)) {
                    continue;
                }
                if (!ranges.empty() && ranges.back().first == event.record) {
                    ranges.back().second.second = event.endEntry;
                } else {
                    ranges.push_back({event.record, {event.firstEntry, event.endEntry}});
                }
            }
            for (const auto& [record, range] : ranges) {
                f.notes.push_back(recordNote(report, record,
                                             "goes into the kept " + blobTitle(kept) +
                                                 " as entries " + std::to_string(range.first + 1) +
                                                 "-" + std::to_string(range.second)));
            }
            std::string twice;
            for (const BlobEntry& entry : decoded.entries) {
                if (++sent[{entry.deviceId, entry.code}] == 2) {
                    twice += (twice.empty() ? "" : ", ") + BlobDecoder::deviceName(entry.deviceId) +
                             " " + inQuotes(BlobDecoder::codeText(entry.code));
                }
            }
            if (!twice.empty()) {
                f.notes.push_back(note(report, snapshot.node,
                                       "the kept blob sends these more than once: " + twice));
            }
            f.notes.push_back(note(report, snapshot.node,
                                   "the kept " + blobTitle(kept) + " has " +
                                       std::to_string(decoded.entries.size()) + " entries"));
        }
        out->push_back(std::move(f));
    }
}

void LintRules::presetBands(const LoadReport& report, std::vector<Finding>* out) {
    const auto count = [](const RecordSnapshot& record, Parameter parameter) {
        auto found = record.values.find(parameter);
        return found != record.values.end() ? found->second.size() : 0;
    };
    const RecordSnapshot* first = nullptr;
    for (const RecordSnapshot* preset : report.ofKind(RecordKind::kIeqPreset)) {
        const size_t frequencies = count(*preset, IEQ_FREQUENCY);
        const size_t targets = count(*preset, IEQ_TARGET);
        const std::string title = preset->title();
        if (frequencies != targets) {
            out->push_back(finding(report, preset->node, Severity::kWarning,
                                   title + " has " + std::to_string(frequencies) +
                                       " band frequencies but " + std::to_string(targets) +
                                       " targets: the effect reads the curve out of step"));
        }
        // Every preset describes the same bands: one of another length is likely cut short.
        if (first == nullptr) {
            first = preset;
        } else if (frequencies != count(*first, IEQ_FREQUENCY)) {
            Finding f = finding(report, preset->node, Severity::kWarning,
                                title + " has " + std::to_string(frequencies) + " bands, but " +
                                    first->title() + " has " +
                                    std::to_string(count(*first, IEQ_FREQUENCY)));
            f.notes.push_back(note(report, first->node, first->title() + " is here"));
            out->push_back(std::move(f));
        }
    }
    // The cache sends the graphic EQ only as one "gebs" of band count, 20 frequencies and 20
    // gains.
    constexpr size_t kGebsValues = 41;
    for (const Report::TranslatedEvent& event : report.translated) {
        const RecordSnapshot& record = report.records[event.record];
        if (record.kind != RecordKind::kGeqPreset || event.blob < 0 ||
            report.blobs[event.blob].fate != BlobFate::kStored) {
            continue;
        }
        for (const BlobEntry& entry : entriesOf(report, event)) {
            if (BlobDecoder::codeText(entry.code) == "gebs" && entry.values.size() != kGebsValues) {
                out->push_back(finding(report, record.node, Severity::kWarning,
                                       record.title() + " makes a \"gebs\" of " +
                                           std::to_string(entry.values.size()) +
                                           " values: the effect gets \"gebs\" only with 41 (20 "
                                           "bands), so this graphic EQ never reaches it"));
            }
        }
    }
}

}  // namespace korva::tool
