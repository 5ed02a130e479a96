#include "tools/DiffCommand.h"

#include <map>
#include <vector>

#include "tools/BlobsCommand.h"
#include "tools/ChildLoad.h"
#include "tools/render/EntryView.h"
#include "tools/render/NumberText.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

// Loads one file in a child process and reads back its blobs document.
int loadInChild(const std::string& path, Json* document) {
    const int status = ChildLoad::run(path, BlobsCommand::collectJson, document);
    if (status == kExitOk && !document->contains("blobs")) {
        ToolOutput::error(path, "could not read the blobs back from the loading process");
        return kExitError;
    }
    return status;
}

}  // namespace

// A blob's identity across the two files.
std::string DiffCommand::blobKey(const Json& blob) {
    const std::string kind = blob.value("kind", "");
    if (kind == "tuning_device") {
        return kind + ":" + blob.value("name", "");
    }
    return kind + ":" + std::to_string(blob.value("id", 0));
}

std::string DiffCommand::blobTitle(const Json& blob) {
    if (blob.value("kind", "") == "tuning_device") {
        return "tuning device \"" + blob.value("name", "") + "\"";
    }
    return "profile " + std::to_string(blob.value("id", 0)) + " \"" + blob.value("name", "") + "\"";
}

// An entry's identity within a blob: device, code, and which occurrence of that pair it is.
std::vector<std::string> DiffCommand::entryKeys(const Json& entries) {
    std::vector<std::string> keys;
    std::map<std::string, int> seen;
    for (const Json& entry : entries) {
        const std::string pair =
            std::to_string(entry.value("device", 0)) + "/" + entry.value("code", std::string());
        keys.push_back(pair + "#" + std::to_string(seen[pair]++));
    }
    return keys;
}

namespace {

std::vector<int> valuesOf(const Json& entry) {
    std::vector<int> values;
    if (entry.contains("values") && entry["values"].is_array()) {
        for (const Json& value : entry["values"]) {
            values.push_back(value.is_number_integer() ? value.get<int>() : 0);
        }
    }
    return values;
}

Json entryChange(const char* change, const Json& entry) {
    return {{"change", change},
            {"device", entry.value("device", 0)},
            {"device_name", entry.value("device_name", std::string())},
            {"code", entry.value("code", std::string())}};
}

// The entry's parameters and lines, or its rule, as the file's load reported them.
std::string sourceOf(const Json& entry) {
    if (!entry.contains("source")) {
        return "";
    }
    const Json& source = entry["source"];
    if (source.contains("builtin_table")) {
        return "built-in table \"" + source["builtin_table"].get<std::string>() + "\"";
    }
    return source.value("summary", std::string());
}

// The line of a band's own row in the file, as the entry's source reports the rows its
// parameters were read from; 0 when none is reported.
long bandLine(const Json& entry, int band) {
    if (band < 0 || !entry.contains("source") || !entry["source"].contains("parameters")) {
        return 0;
    }
    for (const Json& parameter : entry["source"]["parameters"]) {
        for (const Json& step : parameter["steps"]) {
            int row = 0;
            for (const Json& element : step["elements"]) {
                if (element.value("row", false) && row++ == band) {
                    return element["line"].get<long>();
                }
            }
        }
    }
    return 0;
}

// The values that differ between two lists of one length, by band or row where the entry's
// layout says, each with its old and new value in its unit.
Json changedValues(const Json& entry, const Json& newEntry, const std::vector<int>& before,
                   const std::vector<int>& after) {
    const int32_t code = vexParameterCode(entry.value("code", std::string()).c_str());
    const EntryView oldView = EntryView::decode(code, before);
    const EntryView newView = EntryView::decode(code, after);
    Json changes = Json::array();
    for (size_t i = 0; i < before.size(); i++) {
        if (before[i] != after[i]) {
            const EntryView::Place was = oldView.place(i);
            Json change = {
                {"index", i},      {"where", was.where},    {"old", before[i]},
                {"new", after[i]}, {"old_text", was.value}, {"new_text", newView.place(i).value}};
            const long lineA = bandLine(entry, was.band);
            const long lineB = bandLine(newEntry, was.band);
            if (lineA > 0 || lineB > 0) {
                change["line_a"] = lineA;
                change["line_b"] = lineB;
            }
            changes.push_back(change);
        }
    }
    return changes;
}

// The entry changes between two versions of one blob, in the order of the first, then the
// entries only the second has.
Json compareEntries(const Json& before, const Json& after) {
    const Json& oldEntries = before["entries"];
    const Json& newEntries = after["entries"];
    const std::vector<std::string> oldKeys = DiffCommand::entryKeys(oldEntries);
    const std::vector<std::string> newKeys = DiffCommand::entryKeys(newEntries);
    std::map<std::string, size_t> newIndex;
    for (size_t i = 0; i < newKeys.size(); i++) {
        newIndex[newKeys[i]] = i;
    }
    Json changes = Json::array();
    std::vector<bool> matched(newKeys.size(), false);
    for (size_t i = 0; i < oldKeys.size(); i++) {
        auto found = newIndex.find(oldKeys[i]);
        if (found == newIndex.end()) {
            Json change = entryChange("removed", oldEntries[i]);
            change["source_a"] = sourceOf(oldEntries[i]);
            change["old"] = valuesOf(oldEntries[i]);
            changes.push_back(change);
            continue;
        }
        matched[found->second] = true;
        const std::vector<int> oldValues = valuesOf(oldEntries[i]);
        const std::vector<int> newValues = valuesOf(newEntries[found->second]);
        if (oldValues != newValues) {
            Json change = entryChange("changed", oldEntries[i]);
            change["source_a"] = sourceOf(oldEntries[i]);
            change["source_b"] = sourceOf(newEntries[found->second]);
            change["old"] = oldValues;
            change["new"] = newValues;
            if (oldValues.size() == newValues.size()) {
                change["values"] =
                    changedValues(oldEntries[i], newEntries[found->second], oldValues, newValues);
            }
            changes.push_back(change);
        }
    }
    for (size_t i = 0; i < newKeys.size(); i++) {
        if (!matched[i]) {
            Json change = entryChange("added", newEntries[i]);
            change["source_b"] = sourceOf(newEntries[i]);
            change["new"] = valuesOf(newEntries[i]);
            changes.push_back(change);
        }
    }
    return changes;
}

}  // namespace

Json DiffCommand::compare(const Json& a, const Json& b) {
    std::map<std::string, const Json*> inB;
    for (const Json& blob : b["blobs"]) {
        inB[blobKey(blob)] = &blob;
    }
    std::map<std::string, bool> seen;
    Json differences = Json::array();
    for (const Json& blob : a["blobs"]) {
        const std::string key = blobKey(blob);
        seen[key] = true;
        Json difference = {{"blob", blobTitle(blob)}};
        auto other = inB.find(key);
        if (other == inB.end()) {
            difference["change"] = "removed";
            difference["entries"] = blob["entries"].size();
            differences.push_back(difference);
            continue;
        }
        Json changes = compareEntries(blob, *other->second);
        if (!changes.empty()) {
            difference["change"] = "changed";
            difference["entries"] = changes;
            differences.push_back(difference);
        }
    }
    for (const Json& blob : b["blobs"]) {
        if (!seen[blobKey(blob)]) {
            differences.push_back({{"blob", blobTitle(blob)},
                                   {"change", "added"},
                                   {"entries", blob["entries"].size()}});
        }
    }
    return differences;
}

namespace {}  // namespace

// What the store serves besides its blobs, where the two files differ: each item with its
// value in either file.
Json DiffCommand::compareStore(const Json& a, const Json& b) {
    Json changes = Json::array();
    const Json none = Json::object();
    const auto text = [](const Json& value) {
        return value.is_string() ? value.get<std::string>() : value.is_null() ? "" : value.dump();
    };
    const auto compare = [&](const std::string& what, const Json& before, const Json& after) {
        if (before != after) {
            changes.push_back({{"what", what}, {"a", text(before)}, {"b", text(after)}});
        }
    };
    compare("tunings usable", a.value("tunings_usable", Json()), b.value("tunings_usable", Json()));
    for (const char* group : {"tuning_devices", "selections"}) {
        const Json& before = a.contains(group) ? a[group] : none;
        const Json& after = b.contains(group) ? b[group] : none;
        std::map<std::string, bool> ports;
        for (const Json* side : {&before, &after}) {
            for (const auto& item : side->items()) {
                ports[item.key()] = true;
            }
        }
        const std::string label =
            std::string(group) == "selections" ? "default selection of " : "tuning devices of ";
        for (const auto& [port, unused] : ports) {
            compare(label + port, before.value(port, Json()), after.value(port, Json()));
        }
    }
    return changes;
}

namespace {

std::string stateText(const Json& changes, const std::string& a, const std::string& b,
                      size_t width) {
    if (changes.empty()) {
        return "";
    }
    TextTable table({"store", a, b});
    for (const Json& change : changes) {
        const auto cell = [](const Json& value) {
            const std::string text = value.get<std::string>();
            return text.empty() ? std::string("(none)") : text;
        };
        table.addRow({change["what"].get<std::string>(), cell(change["a"]), cell(change["b"])});
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
        if (change == "removed") {
            text += title + ": only in " + a + " (" +
                    std::to_string(difference["entries"].get<size_t>()) + " entries)\n";
            continue;
        }
        if (change == "added") {
            text += title + ": only in " + b + " (" +
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
    Json a;
    Json b;
    if (loadInChild(options.fileA, &a) != kExitOk || loadInChild(options.fileB, &b) != kExitOk) {
        return kExitError;
    }
    const Json differences = compare(a, b);
    const Json state =
        compareStore(a.value("store", Json::object()), b.value("store", Json::object()));
    const bool identical = differences.empty() && state.empty();
    const int status = identical ? kExitOk : kExitFindings;
    if (options.common.json) {
        ToolOutput::printJson({{"a", options.fileA},
                               {"b", options.fileB},
                               {"identical", identical},
                               {"store", state},
                               {"differences", differences}});
    } else {
        ToolOutput::print(text(differences, state, options.fileA, options.fileB));
    }
    return status;
}

}  // namespace korva::tool
