#include "tools/commands/DiffCommand.h"

#include <map>
#include <set>
#include <vector>

#include "tools/load/ChildLoads.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

Json entryChange(const char* change, const LoadedEntry& entry) {
    return {{"change", change},
            {"device", entry.deviceId},
            {"device_name", BlobDecoder::deviceName(entry.deviceId)},
            {"code", BlobDecoder::codeText(entry.code)}};
}

// The values that differ between two lists of one length, by band or row where the entry's
// layout says, each with its old and new value in its unit and the lines of a band's own row.
Json changedValues(const LoadedEntry& a, const LoadedEntry& b) {
    const EntryView oldView = EntryView::decode(a.code, a.values);
    const EntryView newView = EntryView::decode(b.code, b.values);
    Json changes = Json::array();
    for (size_t i = 0; i < a.values.size(); i++) {
        if (a.values[i] == b.values[i]) {
            continue;
        }
        const EntryView::Place was = oldView.place(i);
        Json change = {
            {"index", i},         {"where", was.where},    {"old", a.values[i]},
            {"new", b.values[i]}, {"old_text", was.value}, {"new_text", newView.place(i).value}};
        const long lineA = a.rowLine(was.band);
        const long lineB = b.rowLine(was.band);
        if (lineA > 0 || lineB > 0) {
            change.update({{"line_a", lineA}, {"line_b", lineB}});
        }
        changes.push_back(std::move(change));
    }
    return changes;
}

// The entry changes between two versions of one blob, in the order of the first, then the
// entries only the second has.
Json compareEntries(const LoadedBlob& before, const LoadedBlob& after) {
    const std::vector<std::string> oldKeys = before.entryKeys();
    const std::vector<std::string> newKeys = after.entryKeys();
    std::map<std::string, size_t> newIndex;
    for (size_t i = 0; i < newKeys.size(); i++) {
        newIndex[newKeys[i]] = i;
    }
    Json changes = Json::array();
    std::vector<bool> matched(newKeys.size(), false);
    for (size_t i = 0; i < oldKeys.size(); i++) {
        const LoadedEntry& a = before.entries[i];
        auto found = newIndex.find(oldKeys[i]);
        if (found == newIndex.end()) {
            Json change = entryChange("removed", a);
            change.update({{"source_a", a.from}, {"old", a.values}});
            changes.push_back(change);
            continue;
        }
        matched[found->second] = true;
        const LoadedEntry& b = after.entries[found->second];
        if (a.values != b.values) {
            Json change = entryChange("changed", a);
            change.update(
                {{"source_a", a.from}, {"source_b", b.from}, {"old", a.values}, {"new", b.values}});
            if (a.values.size() == b.values.size()) {
                change["values"] = changedValues(a, b);
            }
            changes.push_back(change);
        }
    }
    for (size_t i = 0; i < newKeys.size(); i++) {
        if (!matched[i]) {
            Json change = entryChange("added", after.entries[i]);
            change.update({{"source_b", after.entries[i].from}, {"new", after.entries[i].values}});
            changes.push_back(change);
        }
    }
    return changes;
}

const PortState& portOf(const StoreState& state, const char* port) {
    static const PortState kNone;
    for (const PortState& item : state.ports) {
        if (item.port == port) {
            return item;
        }
    }
    return kNone;
}

// A mix matrix's changes: each changed value by matrix, row and column, named by the row element
// of the file it was read from; the whole matrices when their lengths differ.
void compareMatrices(const std::string& device, const MixMatrix& a, const MixMatrix& b,
                     Json* changes) {
    const std::string what = "mix matrix of \"" + device + "\"";
    if (a.words.size() != b.words.size()) {
        changes->push_back({{"what", what},
                            {"tuning_device", device},
                            {"a", NumberText::join(a.words)},
                            {"b", NumberText::join(b.words)}});
        return;
    }
    const EntryView viewA = a.view();
    const EntryView viewB = b.view();
    for (size_t i = 0; i < a.words.size(); i++) {
        if (a.words[i] == b.words[i]) {
            continue;
        }
        const MatrixRow* rowA = a.rowOf(i);
        const MatrixRow* rowB = b.rowOf(i);
        const MatrixRow* row = rowB != nullptr ? rowB : rowA;
        Json change = {{"what", what + " " + viewB.place(i + 1).where +
                                    (row != nullptr ? " <" + row->element + "> line " +
                                                          std::to_string(row->line)
                                                    : "")},
                       {"tuning_device", device},
                       {"a", viewA.place(i + 1).value},
                       {"b", viewB.place(i + 1).value}};
        if (row != nullptr) {
            change.update({{"element", row->element},
                           {"line_a", rowA != nullptr ? rowA->line : 0},
                           {"line_b", rowB != nullptr ? rowB->line : 0}});
        }
        changes->push_back(std::move(change));
    }
}

}  // namespace

Json DiffCommand::compare(const LoadedFile& a, const LoadedFile& b) {
    std::map<std::string, const LoadedBlob*> inB;
    for (const LoadedBlob& blob : b.blobs) {
        inB[blob.key()] = &blob;
    }
    std::set<std::string> seen;
    Json differences = Json::array();
    for (const LoadedBlob& blob : a.blobs) {
        seen.insert(blob.key());
        auto other = inB.find(blob.key());
        if (other == inB.end()) {
            differences.push_back(
                {{"blob", blob.title()}, {"change", "removed"}, {"entries", blob.entries.size()}});
            continue;
        }
        Json changes = compareEntries(blob, *other->second);
        if (!changes.empty()) {
            differences.push_back(
                {{"blob", blob.title()}, {"change", "changed"}, {"entries", std::move(changes)}});
        }
    }
    for (const LoadedBlob& blob : b.blobs) {
        if (seen.count(blob.key()) == 0) {
            differences.push_back(
                {{"blob", blob.title()}, {"change", "added"}, {"entries", blob.entries.size()}});
        }
    }
    return differences;
}

Json DiffCommand::compareStore(const StoreState& a, const StoreState& b) {
    Json changes = Json::array();
    const auto differ = [&changes](const std::string& what, const std::string& x,
                                   const std::string& y) {
        if (x != y) {
            changes.push_back({{"what", what}, {"a", x}, {"b", y}});
        }
    };
    differ("tunings usable", a.tuningsUsable ? "true" : "false", b.tuningsUsable ? "true" : "false");
    for (const char* port : kAndroidDeviceNames) {
        differ(std::string("tuning devices of ") + port, portOf(a, port).devices,
               portOf(b, port).devices);
    }
    for (const char* port : kAndroidDeviceNames) {
        differ(std::string("default selection of ") + port, portOf(a, port).selected,
               portOf(b, port).selected);
    }
    // A device only one file has shows in its port's list and in its blob.
    for (const auto& [device, matrix] : a.mixMatrices) {
        const auto other = b.mixMatrices.find(device);
        if (other != b.mixMatrices.end()) {
            compareMatrices(device, matrix, other->second, &changes);
        }
    }
    return changes;
}

Json DiffCommand::compare(const Json& a, const Json& b) {
    return compare(LoadedFile::fromJson(a), LoadedFile::fromJson(b));
}

Json DiffCommand::compareStore(const Json& a, const Json& b) {
    return compareStore(LoadedFile::fromJson({{"store", a}}).store,
                        LoadedFile::fromJson({{"store", b}}).store);
}

namespace {

std::string stateText(const Json& changes, const std::string& a, const std::string& b,
                      size_t width) {
    if (changes.empty()) {
        return "";
    }
    TextTable table({"store", a, b});
    const auto cell = [](const std::string& text) { return text.empty() ? "(none)" : text; };
    for (const Json& change : changes) {
        table.addRow({change["what"], cell(change["a"]), cell(change["b"])});
    }
    return table.render("", width);
}

// One changed entry: its sources on both sides, then what changed, by band or row.
std::string changedText(const Json& entry, size_t width) {
    std::string text = "  " + entry["change"].get<std::string>() + " " +
                       entry["device_name"].get<std::string>() + " " +
                       entry["code"].get<std::string>() + "\n";
    const std::string a = entry.value("source_a", std::string());
    const std::string b = entry.value("source_b", std::string());
    if (!a.empty() && a == b) {
        text += "    from " + a + "\n";
    } else {
        text += a.empty() ? "" : "    a: from " + a + "\n";
        text += b.empty() ? "" : "    b: from " + b + "\n";
    }
    if (entry.contains("values")) {
        TextTable table({"where", "line", "old", "new"});
        for (const Json& value : entry["values"]) {
            // A band's own row: one line when both files have it in the same place.
            std::string line;
            if (value.contains("line_a")) {
                const long a = value["line_a"].get<long>();
                const long b = value["line_b"].get<long>();
                line = a == b ? std::to_string(a) : std::to_string(a) + "/" + std::to_string(b);
            }
            table.addRow({value["where"].get<std::string>(), line,
                          value["old_text"].get<std::string>(),
                          value["new_text"].get<std::string>()});
        }
        return text + table.render("    ", width);
    }
    for (const char* side : {"old", "new"}) {
        if (!entry.contains(side)) {
            continue;
        }
        const std::vector<std::string> lines = TextTable::wrap(
            NumberText::join(entry[side].get<std::vector<int>>()), width > 20 ? width - 9 : 11);
        for (size_t i = 0; i < lines.size(); i++) {
            text += (i == 0 ? "    " + std::string(side) + ": " : std::string(9, ' ')) + lines[i] +
                    "\n";
        }
    }
    return text;
}

}  // namespace

std::string DiffCommand::text(const Json& differences, const Json& state, const std::string& a,
                              const std::string& b, size_t width) {
    if (differences.empty() && state.empty()) {
        return "no differences in the blobs of " + a + " and " + b + "\n";
    }
    std::string text = stateText(state, a, b, width);
    for (const Json& difference : differences) {
        const std::string change = difference["change"];
        const std::string title = difference["blob"];
        if (change != "changed") {
            text += title + ": only in " + (change == "removed" ? a : b) + " (" +
                    std::to_string(difference["entries"].get<size_t>()) + " entries)\n";
            continue;
        }
        const size_t count = difference["entries"].size();
        text += title + ": " + std::to_string(count) +
                (count == 1 ? " entry differs\n" : " entries differ\n");
        for (const Json& entry : difference["entries"]) {
            text += changedText(entry, width);
        }
    }
    return text;
}

int DiffCommand::run(const Options& options) {
    std::vector<LoadedFile> files;
    if (ChildLoads::loadApart({options.fileA, options.fileB}, &files) != kExitOk) {
        return kExitError;
    }
    const LoadedFile& a = files[0];
    const LoadedFile& b = files[1];
    const Json differences = compare(a, b);
    const Json state = compareStore(a.store, b.store);
    const bool identical = differences.empty() && state.empty();
    if (options.common.json) {
        ToolOutput::printJson({{"a", options.fileA},
                               {"b", options.fileB},
                               {"identical", identical},
                               {"store", state},
                               {"differences", differences}});
    } else {
        ToolOutput::print(text(differences, state, options.fileA, options.fileB));
    }
    return identical ? kExitOk : kExitFindings;
}

}  // namespace korva::tool
