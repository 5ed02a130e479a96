#include "tools/commands/DiffCommand.h"

#include <map>
#include <set>
#include <vector>

#include "tools/load/ChildLoads.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"

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

namespace {

// The store's state where it differs, a and b as the headers: file names would crowd the table.
void printStore(Printer& out, const Json& changes) {
    if (changes.empty()) {
        return out.json("store", changes);
    }
    Printer::Table table{{{"", "store"}, {"", "a", false, "old"}, {"", "b", false, "new"}}, {}};
    const auto shown = [](const Json& side) { return side == "" ? Json("(none)") : side; };
    for (const Json& change : changes) {
        table.addRow({change["what"], shown(change["a"]), shown(change["b"])}, change);
    }
    out.table("store", table);
}

// What changed in an entry of one length on both sides, by band or row, with the band's own
// lines: one when both files have it in the same place.
void printValues(Printer& out, const Json& values) {
    Printer::Table table{{{"", "where"},
                          {"", "line", false, "line"},
                          {"", "old", false, "old"},
                          {"", "new", false, "new"}},
                         {}};
    for (const Json& value : values) {
        Json line = value.value("line_a", Json(Json::value_t::discarded));
        if (value.contains("line_b") && value["line_b"] != line) {
            line = line.dump() + "/" + value["line_b"].dump();
        }
        table.addRow({value["where"], line, value["old_text"], value["new_text"]}, value);
    }
    out.table("values", table);
}

void printEntry(Printer& out, const Json& entry) {
    const Printer::Scope scope = out.object("", entry["change"].get<std::string>() + " " +
                                                    entry["device_name"].get<std::string>() + " " +
                                                    entry["code"].get<std::string>());
    for (const char* key : {"change", "device", "device_name", "code"}) {
        out.json(key, entry[key]);
    }
    const bool same =
        entry.contains("source_a") && entry.value("source_b", "") == entry["source_a"];
    if (same) {
        out.json("source_a", entry["source_a"]);
    } else if (entry.contains("source_a")) {
        out.field("source_a", "a: from", entry["source_a"]);
    }
    if (entry.contains("source_b")) {
        out.field("source_b", same ? "from" : "b: from", entry["source_b"]);
    }
    for (const char* side : {"old", "new"}) {
        if (entry.contains(side) && entry.contains("values")) {
            out.json(side, entry[side]);
        } else if (entry.contains(side)) {
            out.field(side, side, entry[side],
                      NumberText::join(entry[side].get<std::vector<int>>()));
        }
    }
    if (entry.contains("values")) {
        printValues(out, entry["values"]);
    }
}

}  // namespace

void DiffCommand::print(Printer& out, const Json& differences, const Json& store,
                        const std::string& a, const std::string& b) {
    if (differences.empty() && store.empty()) {
        out.text("no differences in the blobs of " + a + " and " + b);
    }
    {
        const Printer::Scope list = out.list("differences");
        for (const Json& difference : differences) {
            const std::string change = difference["change"];
            const Json& entries = difference["entries"];
            const size_t count = entries.is_array() ? entries.size() : entries.get<size_t>();
            const std::string title =
                difference["blob"].get<std::string>() + ": " +
                (change == "changed"
                     ? std::to_string(count) + (count == 1 ? " entry differs" : " entries differ")
                     : "only in " + (change == "removed" ? a : b) + " (" + std::to_string(count) +
                           " entries)");
            const Printer::Scope item = out.object("", title);
            out.json("blob", difference["blob"]);
            out.json("change", change);
            if (!entries.is_array()) {
                out.json("entries", entries);
                continue;
            }
            const Printer::Scope listed = out.list("entries");
            for (const Json& entry : entries) {
                printEntry(out, entry);
            }
        }
    }
    printStore(out, store);
}

std::string DiffCommand::text(const Json& differences, const Json& store, const std::string& a,
                              const std::string& b) {
    const std::unique_ptr<Printer> out = Printer::make(Printer::Format::kText);
    print(*out, differences, store, a, b);
    return out->render();
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
