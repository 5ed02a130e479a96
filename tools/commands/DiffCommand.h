// spatializer-paramtool diff: what two tuning files change in the blobs that reach the effect,
// per profile and tuning device (entries added, removed and changed, with old and new values),
// and in what the store serves besides them. Exit status 0 when nothing differs, 1 when
// something does, 2 when a file cannot be loaded.
//
// A process holds one parameter store, so each file is loaded in a child process of its own.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/load/LoadedFile.h"
#include "tools/render/Printer.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

// What differs between the loads of two files, a and b: made once by comparing their models,
// printed by print as text, JSON or HTML.
struct Differences {
    // A value of an entry of one length on both sides (its words are the sides' at index); lines
    // of a band's own row, 0 when none.
    struct Value {
        size_t index;
        std::string where;
        std::string oldText;
        std::string newText;
        long lineA;
        long lineB;
    };
    // One side of an entry: where it came from and its words.
    struct Side {
        std::string from;
        std::vector<int> values;
    };
    // Removed (only a), added (only b) or changed (both; values when of one length).
    struct Entry {
        int32_t deviceId;
        int32_t code;
        std::optional<Side> a;
        std::optional<Side> b;
        std::optional<std::vector<Value>> values;
    };
    // A blob removed or added (count its entries) or changed (entries).
    struct Blob {
        std::string title;
        std::string change;
        size_t count;
        std::vector<Entry> entries;
    };
    // A store state that differs; a mix matrix's names its tuning device and, for a value, the
    // row element it was read from.
    struct StoreChange {
        std::string what;
        std::string a;
        std::string b;
        std::optional<std::string> device;
        struct Row {
            std::string element;
            long lineA;
            long lineB;
        };
        std::optional<Row> row;
    };

    std::vector<Blob> blobs;
    std::vector<StoreChange> store;

    bool empty() const { return blobs.empty() && store.empty(); }
    // The differences, then the store changes, a and b named as given.
    void print(Printer& out, const std::string& a, const std::string& b) const;
    // The first difference in one line, from b's side to a's ("speaker IEQ preset 0 → 2",
    // "profile 1 \"movie\" dea band 3 2.0 dB → 4.0 dB"), and how many more there are: what
    // going back from b to a does, as a quick fix's title says it.
    std::string headline() const;
};

class DiffCommand {
public:
    struct Options {
        CommonOptions common;
        std::string fileA;
        std::string fileB;
    };

    static int run(const Options& options);

    // The differences between the blobs and store states of two loaded files; a blob of a that
    // is known only by its identity (LoadedBlob::same) is alike in b.
    static Differences compare(const LoadedFile& a, const LoadedFile& b);
};

}  // namespace korva::tool
