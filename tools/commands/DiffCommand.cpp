#include "tools/commands/DiffCommand.h"

#include <map>
#include <unordered_map>
#include <unordered_set>

#include "tools/load/ChildLoads.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"

namespace korva::tool {

namespace {

// The values that differ between two lists of one length, by band or row where the entry's
// layout says, each with its old and new value in its unit and the lines of a band's own row.
std::vector<Differences::Value> changedValues(const LoadedEntry& a, const LoadedEntry& b) {
    const EntryView oldView = EntryView::decode(a.code, a.values);
    const EntryView newView = EntryView::decode(b.code, b.values);
    std::vector<Differences::Value> changes;
    for (size_t i = 0; i < a.values.size(); i++) {
        if (a.values[i] != b.values[i]) {
            const EntryView::Place was = oldView.place(i);
            changes.push_back({i, was.where, was.value, newView.place(i).value, a.rowLine(was.band),
                               b.rowLine(was.band)});
        }
    }
    return changes;
}

// The entry changes between two versions of one blob, in the order of the first, then the
// entries only the second has.
std::vector<Differences::Entry> compareEntries(const LoadedBlob& before, const LoadedBlob& after) {
    const std::vector<std::string> newKeys = after.entryKeys();
    std::map<std::string, const LoadedEntry*> unmatched;  // those of after before has not had
    for (size_t i = 0; i < newKeys.size(); i++) {
        unmatched[newKeys[i]] = &after.entries[i];
    }
    std::vector<Differences::Entry> changes;
    const std::vector<std::string> oldKeys = before.entryKeys();
    for (size_t i = 0; i < oldKeys.size(); i++) {
        const LoadedEntry& a = before.entries[i];
        const auto found = unmatched.find(oldKeys[i]);
        const LoadedEntry* b = found != unmatched.end() ? found->second : nullptr;
        if (b != nullptr) {
            unmatched.erase(found);
        }
        if (b == nullptr || a.values != b->values) {
            changes.push_back({a.deviceId, a.code, {{a.from, a.values}}, {}, {}});
        }
        if (b != nullptr && a.values != b->values) {
            changes.back().b = {b->from, b->values};
            if (a.values.size() == b->values.size()) {
                changes.back().values = changedValues(a, *b);
            }
        }
    }
    for (size_t i = 0; i < newKeys.size(); i++) {
        const LoadedEntry& b = after.entries[i];
        if (unmatched.count(newKeys[i]) != 0) {
            changes.push_back({b.deviceId, b.code, {}, {{b.from, b.values}}, {}});
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
                     std::vector<Differences::StoreChange>* changes) {
    const std::string what = "mix matrix of \"" + device + "\"";
    if (a.words.size() != b.words.size()) {
        changes->push_back(
            {what, NumberText::join(a.words), NumberText::join(b.words), device, std::nullopt});
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
        Differences::StoreChange& change = changes->emplace_back(Differences::StoreChange{
            what + " " + viewB.place(i + 1).where, viewA.place(i + 1).value,
            viewB.place(i + 1).value, device, std::nullopt});
        if (row != nullptr) {
            change.what += " <" + row->element + "> line " + std::to_string(row->line);
            change.row = {row->element, rowA != nullptr ? rowA->line : 0,
                          rowB != nullptr ? rowB->line : 0};
        }
    }
}

void compareStore(const StoreState& a, const StoreState& b,
                  std::vector<Differences::StoreChange>* changes) {
    const auto differ = [changes](const std::string& what, const std::string& x,
                                  const std::string& y) {
        if (x != y) {
            changes->push_back({what, x, y, std::nullopt, std::nullopt});
        }
    };
    differ("tunings usable", a.tuningsUsable ? "true" : "false", b.tuningsUsable ? "true" : "false");
    for (const auto& [what, member] : {std::pair("tuning devices of ", &PortState::devices),
                                       std::pair("default selection of ", &PortState::selected)}) {
        for (const char* port : kAndroidDeviceNames) {
            differ(what + std::string(port), portOf(a, port).*member, portOf(b, port).*member);
        }
    }
    // A device only one file has shows in its port's list and in its blob.
    for (const auto& [device, matrix] : a.mixMatrices) {
        const auto other = b.mixMatrices.find(device);
        if (other != b.mixMatrices.end()) {
            compareMatrices(device, matrix, other->second, changes);
        }
    }
}

// The store's state where it differs, a and b as the headers: file names would crowd the table.
void printStore(Printer& out, const std::vector<Differences::StoreChange>& changes) {
    Printer::Table table{{{"", "store"}, {"", "a", false, "old"}, {"", "b", false, "new"}}, {}};
    const auto shown = [](const std::string& side) { return side.empty() ? "(none)" : side; };
    for (const Differences::StoreChange& change : changes) {
        Json object = {{"what", change.what}};
        if (change.device) {
            object["tuning_device"] = *change.device;
        }
        object.update({{"a", change.a}, {"b", change.b}});
        if (change.row) {
            object.update({{"element", change.row->element},
                           {"line_a", change.row->lineA},
                           {"line_b", change.row->lineB}});
        }
        table.addRow({change.what, shown(change.a), shown(change.b)}, std::move(object));
    }
    if (changes.empty()) {
        return out.json("store", Json::array());
    }
    out.table("store", table);
}

// What changed in an entry of one length on both sides, by band or row, with the band's own
// lines: one when both files have it in the same place.
void printValues(Printer& out, const Differences::Entry& entry) {
    Printer::Table table{{{"", "where"},
                          {"", "line", false, "line"},
                          {"", "old", false, "old"},
                          {"", "new", false, "new"}},
                         {}};
    for (const Differences::Value& value : *entry.values) {
        Json object = {{"index", value.index},
                       {"where", value.where},
                       {"old", entry.a->values[value.index]},
                       {"new", entry.b->values[value.index]},
                       {"old_text", value.oldText},
                       {"new_text", value.newText}};
        Json line(Json::value_t::discarded);
        if (value.lineA > 0 || value.lineB > 0) {
            object.update({{"line_a", value.lineA}, {"line_b", value.lineB}});
            line = value.lineB == value.lineA
                       ? Json(value.lineA)
                       : Json(std::to_string(value.lineA) + "/" + std::to_string(value.lineB));
        }
        table.addRow({value.where, line, value.oldText, value.newText}, std::move(object));
    }
    out.table("values", table);
}

void printEntry(Printer& out, const Differences::Entry& entry) {
    const char* change = !entry.b ? "removed" : !entry.a ? "added" : "changed";
    const Printer::Scope scope =
        out.object("", std::string(change) + " " + EntryView::identity(entry.deviceId, entry.code));
    out.json("change", change);
    EntryView::printIdentity(out, entry.deviceId, entry.code);
    const bool same = entry.a && entry.b && entry.a->from == entry.b->from;
    if (same) {
        out.json("source_a", entry.a->from);
    } else if (entry.a) {
        out.field("source_a", "a: from", entry.a->from);
    }
    if (entry.b) {
        out.field("source_b", same ? "from" : "b: from", entry.b->from);
    }
    for (const auto& [key, side] : {std::pair("old", &entry.a), std::pair("new", &entry.b)}) {
        if (*side && entry.values) {
            out.json(key, (*side)->values);
        } else if (*side) {
            out.field(key, key, (*side)->values, NumberText::join((*side)->values));
        }
    }
    if (entry.values) {
        printValues(out, entry);
    }
}

}  // namespace

Differences DiffCommand::compare(const LoadedFile& a, const LoadedFile& b) {
    // Each key made once and hashed: check compares files of thousands of blobs once per cause.
    std::vector<std::string> keysB;
    std::unordered_map<std::string, const LoadedBlob*> inB;
    for (const LoadedBlob& blob : b.blobs) {
        inB[keysB.emplace_back(blob.key())] = &blob;
    }
    std::unordered_set<std::string> seen;
    Differences differences;
    for (const LoadedBlob& blob : a.blobs) {
        const auto other = inB.find(*seen.insert(blob.key()).first);
        if (blob.same) {
            continue;
        }
        if (other == inB.end()) {
            differences.blobs.push_back({blob.title(), "removed", blob.entries.size(), {}});
            continue;
        }
        std::vector<Differences::Entry> changes = compareEntries(blob, *other->second);
        if (!changes.empty()) {
            differences.blobs.push_back(
                {blob.title(), "changed", changes.size(), std::move(changes)});
        }
    }
    for (size_t i = 0; i < b.blobs.size(); i++) {
        if (seen.count(keysB[i]) == 0) {
            differences.blobs.push_back(
                {b.blobs[i].title(), "added", b.blobs[i].entries.size(), {}});
        }
    }
    compareStore(a.store, b.store, &differences.store);
    return differences;
}

void Differences::print(Printer& out, const std::string& a, const std::string& b) const {
    if (empty()) {
        out.text("no differences in the blobs of " + a + " and " + b);
    }
    {
        const Printer::Scope list = out.list("differences");
        for (const Blob& blob : blobs) {
            const bool changed = blob.change == "changed";
            const std::string count = std::to_string(blob.count);
            const Printer::Scope item =
                out.object("", blob.title + ": " +
                                   (!changed ? "only in " + (blob.change == "removed" ? a : b) +
                                                   " (" + count + " entries)"
                                    : blob.count == 1 ? "1 entry differs"
                                                      : count + " entries differ"));
            out.json("blob", blob.title);
            out.json("change", blob.change);
            if (!changed) {
                out.json("entries", blob.count);
                continue;
            }
            const Printer::Scope listed = out.list("entries");
            for (const Entry& entry : blob.entries) {
                printEntry(out, entry);
            }
        }
    }
    printStore(out, store);
}

std::string Differences::headline() const {
    const auto shown = [](const std::string& side) { return side.empty() ? "(none)" : side; };
    std::string first;
    size_t count = store.size();
    for (const StoreChange& change : store) {
        first =
            first.empty() ? change.what + " " + shown(change.b) + " → " + shown(change.a) : first;
    }
    for (const Blob& blob : blobs) {
        for (const Entry& entry : blob.entries) {
            const std::string entryTitle =
                blob.title + " " + EntryView::identity(entry.deviceId, entry.code);
            const Value* value =
                entry.values && !entry.values->empty() ? &entry.values->front() : nullptr;
            count += value != nullptr ? entry.values->size() : 1;
            first = !first.empty()     ? first
                    : value != nullptr ? entryTitle + " " + value->where + " " + value->newText +
                                             " → " + value->oldText
                    : !entry.a ? entryTitle + " removed"
                    : !entry.b ? entryTitle + " added"
                               : entryTitle + " changed";
        }
        count += blob.entries.empty() ? 1 : 0;
        first = !first.empty() || !blob.entries.empty()
                    ? first
                    : blob.title + (blob.change == "added" ? " removed" : " added");
    }
    return count <= 1 ? first : first + " and " + std::to_string(count - 1) + " more";
}

int DiffCommand::run(const Options& options) {
    std::vector<LoadedFile> files;
    if (ChildLoads::loadApart({options.fileA, options.fileB}, &files) != kExitOk) {
        return kExitError;
    }
    const Differences differences = compare(files[0], files[1]);
    const std::unique_ptr<Printer> out = Printer::make(options.common.json);
    out->json("a", options.fileA);
    out->json("b", options.fileB);
    out->json("identical", differences.empty());
    // JSON has the store changes before the differences.
    out->json("store", nullptr);
    differences.print(*out, options.fileA, options.fileB);
    out->flush();
    return differences.empty() ? kExitOk : kExitFindings;
}

}  // namespace korva::tool
