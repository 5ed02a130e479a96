#include "tools/lint/LintRules.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <tuple>

#include "reader/SetterCollection.h"
#include "reader/TuningFileLayout.h"
#include "reader/ValueSetter.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/NumberText.h"
#include "translator/GeqLayout.h"
#include "translator/VexParameter.h"

namespace korva::tool {

namespace {

using Report = LoadReport;
using Action = Undo::Action;

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

std::string tag(const std::string& name) {
    return "<" + name + ">";
}

// The parts, numbers as decimals, as one text.
template <typename... Parts>
std::string cat(const Parts&... parts) {
    std::ostringstream out;
    (out << ... << parts);
    return out.str();
}

// The candidate close enough to a written name to be a slip of the keyboard, or "": at most a
// quarter of its letters (one to three) wrong, missing or extra, two neighbours swapped counting as
// one ("vaule"). Case does not count when ignoreCase.
std::string closest(const std::string& a, const std::set<std::string>& candidates,
                    bool ignoreCase = false) {
    const auto same = [ignoreCase](unsigned char x, unsigned char y) {
        return x == y || (ignoreCase && std::tolower(x) == std::tolower(y));
    };
    size_t bestDistance = std::clamp<size_t>(a.size() / 4, 1, 3) + 1;
    std::string best;
    for (const std::string& b : candidates) {
        // The distance is at least the difference in length.
        if (b == a || std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= bestDistance) {
            continue;
        }
        std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
        for (size_t i = 0; i <= a.size(); i++) {
            for (size_t j = 0; j <= b.size(); j++) {
                const bool swapped =
                    i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1]);
                d[i][j] = i == 0 || j == 0 ? i + j
                                           : std::min({d[i - 1][j] + 1, d[i][j - 1] + 1,
                                                       d[i - 1][j - 1] + !same(a[i - 1], b[j - 1]),
                                                       swapped ? d[i - 2][j - 2] + 1 : i + j});
            }
        }
        if (d[a.size()][b.size()] < bestDistance) {
            best = b;
            bestDistance = d[a.size()][b.size()];
        }
    }
    return best;
}

std::string didYouMean(const std::string& best, bool asTag) {
    return best.empty() ? "" : " (did you mean " + (asTag ? tag(best) : inQuotes(best)) + "?)";
}

std::string readAs(const Report::NumberEvent& number) {
    return number.isList ? NumberText::bracketed(number.values) : std::to_string(number.values[0]);
}

// The rules over one load's report, with what they share: where a node is and how it is named.
// A finding names its cause; what the cause changes downstream is its measured effect.
class Linter {
public:
    Linter(const Report& report, std::vector<Finding>* out) : mReport(report), mOut(*out) {}

    // The rule whose findings add() makes next.
    void setRule(const char* id) { mRule = id; }

    void passedOver();
    void textRead();
    void valuesChanged();
    void loaded();
    void unusedRecords();
    void presetBands();

private:
    FileLine at(int node) const { return {mReport.node(node).line, mReport.node(node).atLeast}; }

    // The new finding; the reference holds until the next one is added.
    Finding& add(FileLine where, std::string message, Severity severity = Severity::kWarning) {
        mOut.emplace_back(where, severity, std::move(message)).rule = mRule;
        return mOut.back();
    }
    Finding& add(int node, std::string message, Severity severity = Severity::kWarning) {
        Finding& finding = add(at(node), std::move(message), severity);
        finding.node = node;
        return finding;
    }

    // A finding undone by renaming to a close name (edit.to) if one was found, else told why not.
    void addWithUndo(int node, std::string message, const Undo& edit, const char* why) {
        Finding& f = add(node, std::move(message));
        f.undo = edit.to.empty() ? std::nullopt : std::optional<Undo>(edit);
        f.unmeasured = edit.to.empty() ? why : "";
    }

    // An element as <name>, a comment or a text by its words.
    std::string describe(int index) const {
        const ReportedNode& node = mReport.node(index);
        if (node.isElement) {
            return tag(node.name);
        }
        std::string content = node.content;
        content.erase(0, content.find_first_not_of(" \t\r\n"));
        content.erase(content.find_last_not_of(" \t\r\n") + 1);
        if (!node.isComment && content.empty()) {
            return "blank text";
        }
        return (node.isComment ? "the comment " : "the text ") +
               inQuotes(content.size() > 30 ? content.substr(0, 27) + "..." : content);
    }

    std::string parentTag(int index) const {
        const ReportedNode& parent = mReport.node(mReport.node(index).parent);
        return parent.isElement ? tag(parent.name) : std::string("the document");
    }

    // The entries that a translation added to a blob the store kept, or to any blob it did not
    // drop: what reaches the effect, or may.
    std::vector<BlobEntry> entriesOf(const Report::TranslatedEvent& event, bool stored) const {
        const bool known = event.blob >= 0 &&
                           static_cast<size_t>(event.blob) < mReport.blobs.size() &&
                           mReport.blobs[event.blob].fate != BlobFate::kDropped &&
                           (!stored || mReport.blobs[event.blob].fate == BlobFate::kStored);
        const std::vector<BlobEntry> all =
            known ? BlobDecoder::decode(mReport.blobs[event.blob].words).entries
                  : std::vector<BlobEntry>();
        const int end = std::clamp(event.endEntry, 0, static_cast<int>(all.size()));
        const int first = std::clamp(event.firstEntry, 0, end);
        return {all.begin() + first, all.begin() + end};
    }

    const Report& mReport;
    std::vector<Finding>& mOut;
    const char* mRule = "";
};

void Linter::passedOver() {
    std::set<std::string> setterNames;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        setterNames.insert(setter->getNodeName());
    }
    std::set<std::string> structural;
    std::set<int> read;
    std::set<int> besideRows;
    for (const Report::NodeEvent& structure : mReport.structures) {
        structural.insert(mReport.node(structure.node).name);
        read.insert(structure.node);
        if (structure.what == static_cast<int>(Structure::kSetterRow)) {
            besideRows.insert(structure.node);
        }
    }
    // The nodes a finding names as its cause, and those that no walk reached below them.
    std::set<int> found;
    // Where the reader looked for an include and found none (it looks for nothing else): the node
    // it looked at, by the element it looked in, and every element above such a node. A comment
    // or text there is read in the include's place.
    std::map<int, int> missedIn;
    std::set<int> missedUnder;
    for (const Report::NodeEvent& lookup : mReport.lookups) {
        if (lookup.found) {
            continue;
        }
        missedIn.emplace(mReport.node(lookup.node).parent, lookup.node);
        for (int at = lookup.node; at >= 0; at = mReport.node(at).parent) {
            missedUnder.insert(at);
        }
        const std::string what = describe(lookup.node);
        if (!mReport.node(lookup.node).isElement && what != "blank text" &&
            found.insert(lookup.node).second) {
            add(lookup.node, cat(what, " is where the reader looks for ", parentTag(lookup.node),
                                 "'s <include>: it finds none"))
                .undo = Undo{Action::kRemove, lookup.node};
        }
    }
    // A setter reads its rows below its element: its own element read as a row means the walk
    // found nothing below it and went on through the elements after it, which their own setters
    // read as well: the first of them is the cause.
    for (const Report::SetterEvent& setter : mReport.setters) {
        const ReportedNode& element = mReport.node(setter.node);
        bool first = besideRows.count(setter.node) > 0;
        for (auto row = besideRows.begin(); first && row != besideRows.end(); ++row) {
            first = mReport.node(*row).parent != element.parent ||
                    mReport.node(*row).line >= element.line;
        }
        if (first && found.insert(setter.node).second) {
            add(setter.node, describe(setter.node) +
                                 " has no rows of its own: its reading takes "
                                 "the elements after it as its rows")
                .undo = Undo{Action::kRemove, setter.node};
        }
    }
    const bool cut = std::any_of(mReport.records.begin(), mReport.records.end(),
                                 [](const RecordSnapshot& r) { return r.dropped; });
    std::set<std::pair<int, int>> seen;
    for (const Report::NodeEvent& skip : mReport.skips) {
        const Skip why = static_cast<Skip>(skip.what);
        const ReportedNode& node = mReport.node(skip.node);
        // A walk that passes over what another step of the reader read takes nothing away, and
        // what no walk reaches below a cause is that cause's.
        if (!seen.insert({skip.node, skip.what}).second ||
            (why != Skip::kNotWalked && found.count(skip.node) > 0) ||
            (why != Skip::kVersionRule && why != Skip::kSteppedOver && read.count(skip.node) > 0) ||
            (why == Skip::kAfterCut && cut)) {
            continue;
        }
        found.insert(skip.node);
        if (why == Skip::kNotWalked && found.count(node.parent) > 0) {
            continue;
        }
        const std::string what = describe(skip.node);
        const std::string in = what + " in " + parentTag(skip.node) + " is not read";
        const auto lookedAt = missedIn.find(node.parent);
        const std::string stepped = what + " is the first child of " + parentTag(skip.node) +
                                    ", which the reader steps over: it is not read";
        if (why == Skip::kNotElement || (why == Skip::kSteppedOver && !node.isElement)) {
            Finding& f = add(skip.node, why == Skip::kNotElement ? in : stepped);
            f.undo = Undo{Action::kRemove, skip.node};
            // A comment is there to be passed over, and one stepped over in blank text's place
            // costs nothing unless an include was missed below: a finding only by its effect.
            f.onlyIfEffect =
                why == Skip::kNotElement ? node.isComment : missedUnder.count(node.parent) == 0;
        } else if (why == Skip::kSteppedOver) {
            add(skip.node, stepped).unmeasured =
                "no rule undoes an element that the reader steps over";
        } else if ((why == Skip::kNoSetter || why == Skip::kUnknown) &&
                   node.name == TuningFileLayout::kInclude && lookedAt != missedIn.end()) {
            add(skip.node, in + ": the reader looks for it at " + describe(lookedAt->second)).undo =
                Undo{Action::kMoveBefore, skip.node, "", "", lookedAt->second};
        } else if (why == Skip::kNoSetter || why == Skip::kUnknown) {
            const bool setter = why == Skip::kNoSetter;
            const std::string best = closest(node.name, setter ? setterNames : structural);
            addWithUndo(
                skip.node,
                in + (setter ? ": no parameter has this name" : ": the reader does not know it") +
                    didYouMean(best, true),
                {Action::kRename, skip.node, "", best}, "no name the reader knows is close to it");
        } else if (why == Skip::kVersionRule) {
            add(skip.node, what + " is passed over in a file of format version " +
                               inQuotes(mReport.formatVersion) + ": its settings do not apply")
                .unmeasured = "the file's format version decides it, not an edit here";
        } else {
            add(skip.node, why == Skip::kNotWalked ? in + ": no walk of the reader reaches it"
                           : why == Skip::kAfterCut
                               ? what + " is not read: the reading stopped before it"
                               : what + " ends the list of bands in " + parentTag(skip.node) +
                                     ": the bands after it are not read");
        }
    }
}

void Linter::textRead() {
    // Attribute names each element name was asked for, for the names to suggest; the attributes
    // asked for and absent, by node and name, with what the load made of their empty text.
    std::map<std::string, std::set<std::string>> asked;
    std::map<std::pair<int, std::string>, std::string> absent;
    for (const Report::AttributeEvent& attribute : mReport.attributes) {
        if (attribute.how != AttributeRead::kIgnored) {
            asked[mReport.node(attribute.node).name].insert(attribute.name);
        }
        if (attribute.how == AttributeRead::kMissing) {
            absent[{attribute.node, attribute.name}];
        }
    }
    // The words this load read as numbers ("true"), by attribute name; the words the reader knew,
    // by element and attribute name, and those it did not know.
    std::map<std::string, std::set<std::string>> words;
    for (const Report::NumberEvent& number : mReport.numbers) {
        if (const auto found = absent.find({number.node, number.attribute}); found != absent.end()) {
            found->second = readAs(number);
        }
        if (number.how == NumberRead::kWord) {
            words[number.attribute].insert(number.text);
        }
    }
    std::map<std::pair<std::string, std::string>, std::set<std::string>> known;
    std::set<std::pair<int, std::string>> unknown;
    for (const Report::KeywordEvent& keyword : mReport.keywords) {
        const auto key = std::make_pair(keyword.node, keyword.attribute);
        if (keyword.recognised) {
            known[{mReport.node(keyword.node).name, keyword.attribute}].insert(keyword.text);
        } else if (unknown.insert(key).second && absent.count(key) > 0) {
            absent[key] = std::to_string(keyword.value);
        }
    }
    // The nodes of attribute findings (their unknown words are theirs); the pairs findings cover.
    std::set<int> causes;
    std::set<std::pair<int, std::string>> covered;
    for (const Report::AttributeEvent& attribute : mReport.attributes) {
        if (attribute.how != AttributeRead::kIgnored) {
            continue;
        }
        const std::string element = describe(attribute.node);
        const std::string best = closest(attribute.name, asked[mReport.node(attribute.node).name]);
        addWithUndo(attribute.node,
                    "attribute " + inQuotes(attribute.name) + " of " + element + " is not read" +
                        didYouMean(best, false),
                    {Action::kRename, attribute.node, attribute.name, best},
                    "no attribute name the reader asks for is close to it");
        for (auto missing = absent.lower_bound({attribute.node, ""});
             missing != absent.end() && missing->first.first == attribute.node; ++missing) {
            covered.insert(missing->first);
            mOut.back().notes.push_back(
                Note{at(attribute.node), element + " has no " + inQuotes(missing->first.second)});
        }
        causes.insert(attribute.node);
    }
    // An absent attribute matters where its empty text became a number or a word.
    for (const Report::AttributeEvent& attribute : mReport.attributes) {
        const auto key = std::make_pair(attribute.node, attribute.name);
        if (attribute.how == AttributeRead::kMissing && !absent[key].empty() &&
            (causes.count(attribute.node) == 0 || unknown.count(key) == 0) &&
            covered.insert(key).second) {
            add(attribute.node, describe(attribute.node) + " has no " + attribute.name +
                                    " attribute: read as " + absent[key])
                .unmeasured = "nothing in the file to undo: the attribute is absent";
            causes.insert(attribute.node);
        }
    }
    // A number or word read otherwise than written, undone by the closest word read there.
    const auto misread = [&](int node, const std::string& attribute, const std::string& text,
                             const std::string& how, const std::set<std::string>* candidates,
                             const char* why) {
        if (covered.insert({node, attribute}).second) {
            const std::string best = candidates != nullptr ? closest(text, *candidates, true) : "";
            addWithUndo(node, describe(node) + " " + attribute + " " + inQuotes(text) + how,
                        {Action::kReplace, node, attribute, best}, why);
        }
    };
    for (const Report::NumberEvent& number : mReport.numbers) {
        if (number.how != NumberRead::kWhole && number.how != NumberRead::kWord) {
            misread(number.node, number.attribute, number.text,
                    (number.isList                        ? " is not a list of whole numbers"
                     : number.how == NumberRead::kClamped ? " is out of the int range"
                     : number.how == NumberRead::kNone    ? " has no digits"
                                                          : " is not a whole number") +
                        std::string(": read as ") + readAs(number),
                    number.how == NumberRead::kNone ? &words[number.attribute] : nullptr,
                    "no rule undoes a number that is read otherwise than written");
        }
    }
    for (const Report::KeywordEvent& keyword : mReport.keywords) {
        if (keyword.recognised || causes.count(keyword.node) > 0) {
            continue;
        }
        // The words known there, and the library's endpoint and port names that these words name.
        std::set<std::string> candidates =
            known[{mReport.node(keyword.node).name, keyword.attribute}];
        candidates.insert(kEndpointNames, kEndpointNames + kNumEndpoints);
        candidates.insert(kAndroidDeviceNames, kAndroidDeviceNames + kNumAndroidDevices);
        misread(keyword.node, keyword.attribute, keyword.text,
                cat(" is not a word the reader knows: read as ", keyword.value), &candidates,
                "no word this load read there is close to it");
    }
}

void Linter::valuesChanged() {
    // The last value each record's parameter got from an element, by value event, and the
    // parameters each translation read as empty lists: they are reported just before it.
    std::map<std::pair<int, Parameter>, size_t> fromFile;
    std::map<size_t, std::string> empty;
    for (size_t i = 0; i < mReport.values.size(); i++) {
        const Report::ValueEvent& value = mReport.values[i];
        const std::string name = kParameterNames[value.parameter];
        const auto earlier = fromFile.find({value.record, value.parameter});
        const Report::ValueEvent* written =
            earlier != fromFile.end() ? &mReport.values[earlier->second] : nullptr;
        if (value.source == ValueSource::kFile) {
            const RecordSnapshot& record = mReport.records[value.record];
            if (record.validParams.count(value.parameter) == 0) {
                add(value.node, describe(value.node) + " sets " + name + ", which " +
                                    record.title() + " does not use: it is ignored here");
            } else if (written != nullptr && written->node != value.node) {
                add(value.node, describe(value.node) + " sets " + name +
                                    " again: the value at line " + lineText(at(written->node)) +
                                    " is replaced");
            }
            fromFile[{value.record, value.parameter}] = i;
        } else if ((value.source == ValueSource::kVersion32 ||
                    value.source == ValueSource::kVersion322 ||
                    value.source == ValueSource::kBefore34) &&
                   written != nullptr && written->values != value.values) {
            add(written->node,
                name + " " + NumberText::bracketed(written->values) +
                    " written here is replaced by " + NumberText::bracketed(value.values) +
                    (mReport.formatVersion.empty()
                         ? std::string(" (the file has no format version)")
                         : " by the rules of format version " + mReport.formatVersion));
        } else if (value.source == ValueSource::kTranslatorEmpty) {
            std::string& names = empty[value.nextTranslated];
            names += (names.empty() ? "" : ", ") + name;
        }
    }
    // Entries sent with no values because their record lacks a parameter: one per record and code.
    std::set<std::pair<int, std::string>> made;
    for (const auto& [index, names] : empty) {
        if (index >= mReport.translated.size()) {
            continue;
        }
        const Report::TranslatedEvent& event = mReport.translated[index];
        const RecordSnapshot& record = mReport.records[event.record];
        for (const BlobEntry& entry : entriesOf(event, false)) {
            const std::string code = BlobDecoder::codeText(entry.code);
            if (entry.values.empty() && made.insert({event.record, code}).second) {
                add(record.node, record.title() + " has no " + names + ": the effect gets " +
                                     inQuotes(code) + " with no values");
            }
        }
    }
}

// Records whose partner is missing, loader defaults and blobs one id or name files twice.
void Linter::loaded() {
    // The root's line, for findings about the file as a whole.
    const auto top = std::find_if(mReport.nodes.begin(), mReport.nodes.end(),
                                  [](const ReportedNode& n) { return n.parent < 0 && n.isElement; });
    const FileLine root =
        top != mReport.nodes.end() ? FileLine{top->line, top->atLeast} : FileLine{1, false};
    if (mReport.formatVersion.empty()) {
        add(root,
            "no <format_version>: the file is read by the rules of formats before 3.4, "
            "whose defaults replace values it writes");
    }
    for (const RecordSnapshot& record : mReport.records) {
        if (record.dropped) {
            add(record.node, record.title() + " has no data element: the reader drops it and stops",
                Severity::kError);
        }
    }
    std::set<std::pair<MissingPartner, std::pair<int, int>>> partners;
    for (const Report::PartnerEvent& partner : mReport.partnersMissing) {
        // The loader meets a record once per blob it goes into.
        if (!partners.insert({partner.what, {partner.record, partner.binding.node}}).second) {
            continue;
        }
        const RecordSnapshot* record =
            partner.record >= 0 ? &mReport.records[partner.record] : nullptr;
        const int node = record != nullptr ? record->node : partner.binding.node;
        const std::string title = record != nullptr ? record->title() : "";
        const std::string device = "tuning device " + inQuotes(partner.binding.device);
        if (partner.what == MissingPartner::kIeqPreset) {
            Finding& f = add(node, cat(title, " selects IEQ preset ",
                                       record != nullptr ? record->selectedIeqPreset : 0,
                                       ", which the file does not define"));
            // The reference is the attribute its include was read from.
            for (const Report::AttributeEvent& a : mReport.attributes) {
                const ReportedNode& include = mReport.node(a.node);
                if (a.how == AttributeRead::kRead && include.parent == node &&
                    include.name == TuningFileLayout::kInclude) {
                    f.undo = Undo{Action::kRemoveAttribute, a.node, a.name};
                    f.at = at(a.node);
                }
            }
            f.unmeasured = f.undo ? "" : "the load reported no attribute that makes the reference";
        } else if (partner.what == MissingPartner::kTuning) {
            add(node,
                device + " names tuning " + inQuotes(partner.binding.tuning) +
                    ", which is not kept: the device gets no blob",
                Severity::kError);
        } else if (partner.what == MissingPartner::kPortDevice) {
            add(node,
                "endpoint_port " + inQuotes(partner.binding.port) + " of " + device +
                    " has no output device: its entries are filed for device 0, which no "
                    "output matches",
                Severity::kError);
        } else {
            add(node, title + (partner.what == MissingPartner::kGeqPreset
                                   ? " has no GEQ preset: its blob carries no graphic EQ and the "
                                     "persisted user gains are not restored for it"
                                   : ": nothing of this endpoint reaches the effect"));
        }
    }
    const int speaker = mReport.speakerTuning;
    for (LoaderDefault what : mReport.loaderDefaults) {
        add(speaker >= 0 ? at(mReport.records[speaker].node) : root,
            (speaker >= 0 ? mReport.records[speaker].title() : "the speaker's tuning") +
                (what == LoaderDefault::kMixMatrix
                     ? " has no mix matrix (<output-mode>): every speaker endpoint of every "
                       "profile gets the default one"
                     : " has no <virtual-bass-mode>: every profile endpoint gets the default vb "
                       "mode"));
    }
    for (const auto& [port, device] : mReport.defaultSelectionsMissing) {
        add(root,
            cat("default tuning device ", inQuotes(device), " for port ", androidDeviceName(port),
                " is missing",
                port == DEVICE_INTERNAL_SPEAKER ? " (bind the speaker's tuning with <device_id "
                                                  "id=\"\" endpoint_port=\"internal_speaker\"/>)"
                                                : "",
                ": the store disables every tuning"),
            Severity::kError);
    }
    // A blob dropped or replaced, at the profile or tuning that built it (the first record
    // translated into it of the blob's kind), with where the first stored blob of its key was.
    std::set<int> built;
    std::map<std::tuple<bool, int, std::string>, const RecordSnapshot*> stored;
    for (const Report::TranslatedEvent& event : mReport.translated) {
        const RecordSnapshot& made = mReport.records[event.record];
        const Report::Blob* blob = event.blob >= 0 ? &mReport.blobs[event.blob] : nullptr;
        if (blob == nullptr ||
            made.kind != (blob->isTuning ? RecordKind::kTuning : RecordKind::kProfile) ||
            !built.insert(event.blob).second) {
            continue;
        }
        const auto key = std::make_tuple(blob->isTuning, blob->profileId, blob->device);
        if (blob->fate == BlobFate::kStored) {
            stored.emplace(key, &made);
            continue;
        }
        Finding& f =
            add(made.node, blob->fate == BlobFate::kDropped
                               ? cat("profile id ", blob->profileId,
                                     " is used again: the blob built for ", made.title(),
                                     " is dropped; the blob of the first profile of the "
                                     "id is kept, and the endpoints of both go into it")
                               : made.title() + " replaces the blob of " + inQuotes(blob->device) +
                                     " that an earlier tuning made");
        if (const auto first = stored.find(key); first != stored.end()) {
            f.notes.push_back(Note{at(first->second->node), first->second->title() + " is here"});
        }
    }
}

// Records that went into no blob at all: a preset that no profile or endpoint takes (or that an
// earlier one of the same id shadows), a tuning that no device is bound to.
void Linter::unusedRecords() {
    std::set<int> used;
    for (const Report::TranslatedEvent& event : mReport.translated) {
        used.insert(event.record);
    }
    for (const Report::PartnerEvent& partner : mReport.partnersMissing) {
        if (partner.what == MissingPartner::kEndpointOther) {
            used.insert(partner.record);
        }
    }
    for (size_t i = 0; i < mReport.records.size(); i++) {
        const RecordSnapshot& record = mReport.records[i];
        if (!record.dropped && used.count(static_cast<int>(i)) == 0) {
            add(record.node,
                record.title() + " goes into no blob: nothing of it reaches the effect");
        }
    }
}

// Presets whose band lists disagree.
void Linter::presetBands() {
    const auto count = [](const RecordSnapshot* record, Parameter parameter) {
        return record->values.count(parameter) > 0 ? record->values.at(parameter).size() : 0;
    };
    const std::vector<const RecordSnapshot*> presets = mReport.ofKind(RecordKind::kIeqPreset);
    for (const RecordSnapshot* preset : presets) {
        const size_t frequencies = count(preset, IEQ_FREQUENCY);
        if (frequencies != count(preset, IEQ_TARGET)) {
            add(preset->node,
                cat(preset->title(), " has ", frequencies, " band frequencies but ",
                    count(preset, IEQ_TARGET), " targets: the effect reads the curve out of step"));
        }
        // Every preset describes the same bands: one of another length is likely cut short.
        const RecordSnapshot* first = presets.front();
        if (frequencies != count(first, IEQ_FREQUENCY)) {
            add(preset->node, cat(preset->title(), " has ", frequencies, " bands, but ",
                                  first->title(), " has ", count(first, IEQ_FREQUENCY)))
                .notes.push_back(Note{at(first->node), first->title() + " is here"});
        }
    }
    for (const Report::TranslatedEvent& event : mReport.translated) {
        const RecordSnapshot& record = mReport.records[event.record];
        if (record.kind != RecordKind::kGeqPreset) {
            continue;
        }
        for (const BlobEntry& entry : entriesOf(event, true)) {
            if (entry.code == vexParameterCode(GEBS) &&
                entry.values.size() != static_cast<size_t>(kGeqWords)) {
                add(record.node, cat(record.title(), " makes a \"gebs\" of ", entry.values.size(),
                                     " values: the effect takes only ", kGeqWords, " (", kGeqBands,
                                     " bands), so this graphic EQ never reaches it"));
            }
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
        findings
            .emplace_back(FileLine{report.readErrorLine, false}, Severity::kError,
                          "not a readable XML document" +
                              (report.readError.empty() ? "" : ": " + report.readError))
            .rule = kRules[0].id;
        return findings;
    }
    Linter linter(report, &findings);
    // In the order of kRules after "unreadable".
    void (Linter::*const rules[])() = {&Linter::passedOver,    &Linter::textRead,
                                       &Linter::valuesChanged, &Linter::loaded,
                                       &Linter::unusedRecords, &Linter::presetBands};
    for (size_t i = 0; i < std::size(rules); i++) {
        linter.setRule(kRules[i + 1].id);
        (linter.*rules[i])();
    }
    for (Finding& finding : findings) {
        if (!finding.undo && finding.unmeasured.empty()) {
            finding.unmeasured = "no rule of the tool undoes this cause";
        }
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.at.line < b.at.line; });
    return findings;
}

}  // namespace korva::tool
