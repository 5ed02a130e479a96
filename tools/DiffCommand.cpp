#include "tools/DiffCommand.h"

#include <map>
#include <vector>

#include "tools/BlobsCommand.h"
#include "tools/ChildLoad.h"
#include "tools/NumberText.h"
#include "tools/TextTable.h"

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
            change["old"] = valuesOf(oldEntries[i]);
            changes.push_back(change);
            continue;
        }
        matched[found->second] = true;
        const std::vector<int> oldValues = valuesOf(oldEntries[i]);
        const std::vector<int> newValues = valuesOf(newEntries[found->second]);
        if (oldValues != newValues) {
            Json change = entryChange("changed", oldEntries[i]);
            change["old"] = oldValues;
            change["new"] = newValues;
            changes.push_back(change);
        }
    }
    for (size_t i = 0; i < newKeys.size(); i++) {
        if (!matched[i]) {
            Json change = entryChange("added", newEntries[i]);
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

namespace {

std::string differencesText(const Json& differences, const std::string& a, const std::string& b) {
    if (differences.empty()) {
        return "no differences in the blobs of " + a + " and " + b + "\n";
    }
    std::string text;
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
        TextTable table({"change", "device", "code", "values"});
        for (const Json& entry : difference["entries"]) {
            const std::string kind = entry["change"];
            const std::string device = entry["device_name"];
            const std::string code = entry["code"];
            if (entry.contains("old")) {
                table.addRow({kind, device, code,
                              "old: " + NumberText::join(entry["old"].get<std::vector<int>>())});
            }
            if (entry.contains("new")) {
                const bool alone = !entry.contains("old");
                table.addRow({alone ? kind : "", alone ? device : "", alone ? code : "",
                              "new: " + NumberText::join(entry["new"].get<std::vector<int>>())});
            }
        }
        text += table.render("  ");
    }
    return text;
}

}  // namespace

int DiffCommand::run(const Options& options) {
    Json a;
    Json b;
    if (loadInChild(options.fileA, &a) != kExitOk || loadInChild(options.fileB, &b) != kExitOk) {
        return kExitError;
    }
    const Json differences = compare(a, b);
    const int status = differences.empty() ? kExitOk : kExitFindings;
    if (options.common.json) {
        ToolOutput::printJson({{"a", options.fileA},
                               {"b", options.fileB},
                               {"identical", differences.empty()},
                               {"differences", differences}});
    } else {
        ToolOutput::print(differencesText(differences, options.fileA, options.fileB));
    }
    return status;
}

}  // namespace korva::tool
