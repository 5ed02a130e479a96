#include "tools/load/EntryProvenance.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "tools/render/BlobDecoder.h"
#include "tools/render/NumberText.h"
#include "translator/ListLayout.h"

namespace korva::tool {

namespace {

// The parameters of the translation that the entry's layout names; the translation's others
// when the entry has no layout, less those a sibling entry's layout claims.
std::vector<Parameter> entryParameters(const LoadReport::TranslatedEvent& translation,
                                       const std::vector<BlobEntry>& entries, size_t entry) {
    const auto layoutOf = [&entries](size_t index) {
        return index < entries.size() ? bandListLayout(entries[index].code) : nullptr;
    };
    const auto offered = [&translation](Parameter parameter) {
        return std::find(translation.sources.begin(), translation.sources.end(), parameter) !=
               translation.sources.end();
    };
    std::vector<Parameter> parameters;
    if (const BandListLayout* layout = layoutOf(entry)) {
        int columns = layout->numColumns;
        const std::vector<int32_t>& values = entries[entry].values;
        if (layout->perChannel && values.size() > 1 && values[1] >= 0) {
            columns = std::min(columns, values[1] + 1);
        }
        for (int c = 0; c < columns; c++) {
            if (offered(layout->columns[c].source)) {
                parameters.push_back(layout->columns[c].source);
            }
        }
        return parameters;
    }
    std::set<Parameter> claimed;
    for (int other = translation.firstEntry; other < translation.endEntry; other++) {
        if (const BandListLayout* layout = layoutOf(static_cast<size_t>(other))) {
            for (int c = 0; c < layout->numColumns; c++) {
                claimed.insert(layout->columns[c].source);
            }
        }
    }
    for (Parameter parameter : translation.sources) {
        if (claimed.count(parameter) == 0) {
            parameters.push_back(parameter);
        }
    }
    return parameters;
}

// One line in text: "line 12 <name> a="1" (no b)"; an object in JSON.
void printElement(Printer& out, const ReadElement& element) {
    std::string text = "line " + std::to_string(element.line) + (element.atLeast ? "+" : "") +
                       " <" + element.name + ">";
    Json attributes = Json::object();
    for (const auto& [name, value] : element.attributes) {
        text += " " + name + "=\"" + value + "\"";
        attributes[name] = value;
    }
    for (const std::string& name : element.absent) {
        text += " (no " + name + ")";
    }
    out.text(text);
    out.json("", {{"element", element.name},
                  {"line", element.line},
                  {"at_least", element.atLeast},
                  {"row", element.row},
                  {"attributes", attributes},
                  {"absent", element.absent}});
}

}  // namespace

EntryProvenance::EntryProvenance(const LoadReport& report) : mReport(report) {
    // An attribute the element does not have is said to be absent, never shown with the empty
    // text it was read as; one the reader passed over is shown as the file has it.
    std::set<std::pair<int, std::string>> seen;
    for (const LoadReport::AttributeEvent& event : report.attributes) {
        if (event.how == AttributeRead::kMissing && seen.insert({event.node, event.name}).second) {
            mRead[event.node].absent.push_back(event.name);
        }
    }
    const auto read = [this, &seen](int node, const std::string& name, const std::string& text) {
        if (node >= 0 && seen.insert({node, name}).second) {
            mRead[node].attributes.emplace_back(name, text);
        }
    };
    for (const LoadReport::AttributeEvent& event : report.attributes) {
        if (event.how != AttributeRead::kMissing) {
            read(event.node, event.name, event.text);
        }
    }
    for (const LoadReport::NumberEvent& event : report.numbers) {
        read(event.node, event.attribute, event.text);
        mRead[event.node].numbers = event.values.size();
    }
    for (const LoadReport::KeywordEvent& event : report.keywords) {
        read(event.node, event.attribute, event.text);
    }
    for (size_t i = 0; i < report.values.size(); i++) {
        mValues[{report.values[i].record, report.values[i].parameter}].push_back(i);
    }
    for (size_t i = 0; i < report.translated.size(); i++) {
        mTranslations[report.translated[i].blob].push_back(i);
    }
    for (const LoadReport::NodeEvent& event : report.structures) {
        if (event.what == static_cast<int>(Structure::kSetterRow)) {
            mRows.insert(event.node);
        } else if (event.what == static_cast<int>(Structure::kGlobalSetting)) {
            mGlobalSettings.push_back(event.node);
        }
    }
}

std::string EntryProvenance::ruleText(ValueSource source, Parameter parameter) const {
    // By ValueSource, in its order.
    static const char* const kRules[] = {
        "",
        "attribute of the record's element",
        "version default (3.2 files)",
        "version default (3.2.2 files)",
        "version default (files before 3.4)",
        "global setting",
        "the profile's IEQ switch, given to its endpoints",
        "dialog steering, extended by the dialog enhancer's switch",
        "loader rule: the endpoint's fixed orientation",
        "loader rule: the %s mix matrix",
        "loader rule: the %s vb mode",
        "changed by the translator",
        "translator: absent, sent as an empty list",
    };
    const size_t index = static_cast<size_t>(source);
    if (index >= std::size(kRules)) {
        return std::string("rule for ") + kParameterNames[parameter];
    }
    std::string text = kRules[index];
    const size_t slot = text.find("%s");
    if (slot != std::string::npos) {
        // Whose values the loader took: the speaker tuning's, or its defaults when it had none.
        const LoaderDefault what = source == ValueSource::kLoaderMixMatrix
                                       ? LoaderDefault::kMixMatrix
                                       : LoaderDefault::kVbMode;
        const auto& defaults = mReport.loaderDefaults;
        const bool byDefault = std::find(defaults.begin(), defaults.end(), what) != defaults.end();
        text.replace(slot, 2, byDefault ? "default" : "speaker tuning's");
    }
    return text;
}

void EntryProvenance::addRead(int node, bool caused, std::vector<ReadElement>* elements) const {
    const auto read = mRead.find(node);
    if (caused || read != mRead.end()) {
        const ReportedNode& reported = mReport.node(node);
        elements->push_back(read != mRead.end() ? read->second : ReadElement());
        elements->back().name = reported.name;
        elements->back().line = reported.line;
        elements->back().atLeast = reported.atLeast;
        elements->back().row = mRows.count(node) > 0;
    }
    // Depth first, in document order.
    for (int child : mReport.node(node).children) {
        addRead(child, false, elements);
    }
}

void EntryProvenance::addSteps(Parameter parameter, int record, size_t translation,
                               bool otherRecord, std::vector<ValueStep>* steps) const {
    auto events = mValues.find({record, parameter});
    if (events == mValues.end()) {
        return;
    }
    for (size_t index : events->second) {
        const LoadReport::ValueEvent& event = mReport.values[index];
        // Writes made after the translation did not reach this entry.
        if (event.nextTranslated > translation) {
            break;
        }
        ValueStep step;
        step.source = event.source;
        step.rule = ruleText(event.source, parameter);
        step.record = otherRecord ? mReport.records[record].title() : "";
        // A global setting's value comes from the <global_setting> elements, not the element
        // the rule wrote it for.
        for (int node : event.source == ValueSource::kGlobalSetting ? mGlobalSettings
                                                                    : std::vector<int>{event.node}) {
            if (node >= 0) {
                addRead(node, true, &step.elements);
            }
        }
        step.values = event.values;
        steps->push_back(std::move(step));
        const bool fromSpeaker = event.source == ValueSource::kLoaderMixMatrix ||
                                 event.source == ValueSource::kLoaderVbMode;
        if (fromSpeaker && !otherRecord && mReport.speakerTuning >= 0 &&
            mReport.speakerTuning != record) {
            // The loader took them before it translated anything.
            addSteps(parameter, mReport.speakerTuning, 0, true, steps);
        }
    }
}

SourceParameter EntryProvenance::sourceParameter(Parameter parameter, int record,
                                                 size_t translation) const {
    // Records are the report's own indices, of records it snapshotted.
    const RecordSnapshot& of = mReport.records.at(record);
    SourceParameter source{parameter,  kParameterNames[parameter], record,
                           of.title(), mReport.node(of.node).line, {}};
    addSteps(parameter, record, translation, false, &source.steps);
    return source;
}

int EntryProvenance::blobRecord(size_t blob) const {
    // A blob's list of translations is made with its first.
    const auto translations = mTranslations.find(static_cast<int>(blob));
    return translations != mTranslations.end()
               ? mReport.translated[translations->second.front()].record
               : -1;
}

LoadedEntry EntryProvenance::ofRecord(int record, const std::vector<Parameter>& parameters) const {
    LoadedEntry source;
    for (Parameter parameter : parameters) {
        // Every write the load made, the last translation's included.
        source.parameters.push_back(sourceParameter(parameter, record, mReport.translated.size()));
    }
    return source;
}

std::vector<LoadedEntry> EntryProvenance::ofBlob(size_t blob) const {
    if (blob >= mReport.blobs.size()) {
        return {};
    }
    const std::vector<BlobEntry> decoded = BlobDecoder::decode(mReport.blobs[blob].words).entries;
    std::vector<LoadedEntry> entries(decoded.size());
    auto translations = mTranslations.find(static_cast<int>(blob));
    for (size_t t :
         translations != mTranslations.end() ? translations->second : std::vector<size_t>()) {
        const LoadReport::TranslatedEvent& translation = mReport.translated[t];
        for (int i = std::max(translation.firstEntry, 0);
             i < translation.endEntry && i < static_cast<int>(entries.size()); i++) {
            for (Parameter parameter : entryParameters(translation, decoded, i)) {
                entries[i].parameters.push_back(sourceParameter(parameter, translation.record, t));
            }
        }
    }
    return entries;
}

std::string LoadedEntry::summary() const {
    if (!builtinTable.empty()) {
        return "built-in table \"" + builtinTable + "\"";
    }
    if (parameters.empty()) {
        return "no source reported";
    }
    // Parameters read from the same lines are named together.
    std::vector<std::pair<std::string, std::set<long>>> groups;
    std::vector<std::string> rules;
    for (const SourceParameter& parameter : parameters) {
        std::set<long> lines;  // of the file element each write was read from
        for (const ValueStep& step : parameter.steps) {
            if (!step.elements.empty()) {
                lines.insert(step.elements.front().line);
            }
            if (!step.rule.empty() && step.source != ValueSource::kTranslator &&
                std::find(rules.begin(), rules.end(), step.rule) == rules.end()) {
                rules.push_back(step.rule);
            }
        }
        // A value nobody reported writing is the record's own: its element is the place.
        if (parameter.steps.empty() && parameter.recordLine > 0) {
            lines.insert(parameter.recordLine);
        }
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&lines](const auto& g) { return g.second == lines; });
        if (group != groups.end()) {
            group->first += ", " + parameter.name;
        } else {
            groups.emplace_back(parameter.name, lines);
        }
    }
    std::string text;
    for (const auto& [names, lines] : groups) {
        std::string numbers;
        for (long line : lines) {
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(line);
        }
        text += (text.empty() ? "" : "; ") + names +
                (lines.empty() ? "" : (lines.size() == 1 ? " line " : " lines ") + numbers);
    }
    for (const std::string& rule : rules) {
        text += "; " + rule;
    }
    return text;
}

void LoadedEntry::print(Printer& out) const {
    out.json("entry", entry);
    if (!builtinTable.empty()) {
        out.json("builtin_table", builtinTable);
        return out.text("from the built-in table \"" + builtinTable + "\"");
    }
    out.json("summary", from.empty() ? summary() : from);
    if (parameters.empty()) {
        out.text("the load reported no source for it");
    }
    const auto list = out.list("parameters");
    for (const SourceParameter& parameter : parameters) {
        const auto item = out.object("", parameter.name + " of " + parameter.recordName +
                                             " (line " + std::to_string(parameter.recordLine) + ")");
        out.json("name", parameter.name);
        out.json("record", parameter.recordName);
        out.json("record_line", parameter.recordLine);
        if (parameter.steps.empty()) {
            out.text("no write reported: the record's own value");
        }
        const auto steps = out.list("steps");
        for (const ValueStep& step : parameter.steps) {
            const std::string record = step.record.empty() ? "" : " (" + step.record + ")";
            const auto write =
                out.object("", (step.rule.empty() ? "read from the file" : step.rule) + record +
                                   ": values " + NumberText::join(step.values));
            out.json("rule", step.rule.empty() ? Json(nullptr) : Json(step.rule));
            if (!step.record.empty()) {
                out.json("record", step.record);
            }
            {
                const auto elements = out.list("elements");
                for (const ReadElement& element : step.elements) {
                    printElement(out, element);
                }
            }
            out.json("values", step.values);
        }
    }
}

Json LoadedEntry::sourceJson() const {
    return Printer::document([this](Printer& out) { print(out); });
}
}  // namespace korva::tool
