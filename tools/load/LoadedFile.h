// What one load of a tuning file came to, typed: the blobs the store kept, each entry resolved to
// the records and lines it came from, and what the store serves besides them. Made once from a
// session (or from the built-in tables), carried through a child process's pipe as JSON, and read
// by every command that shows or compares blobs.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/load/EntryProvenance.h"
#include "tools/render/EntryView.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class StoreSession;
struct LoadReport;

struct LoadedBlob {
    enum class Kind { kBuiltin, kProfile, kTuningDevice };

    Kind kind = Kind::kProfile;
    int id = 0;  // profile id; -1 for the common table
    std::string name;
    std::string port;    // tuning devices
    std::string tuning;  // tuning devices
    size_t words = 0;
    // Whether the store's blob reader accepts the blob; the entries read before a fault are kept.
    bool valid = false;
    int32_t header = 0;
    std::vector<LoadedEntry> entries;
    // Known to the reader already (LoadedFile::of's known): only its identity is kept.
    bool same = false;

    // "builtin", "profile", "tuning_device": the kind as JSON names it.
    static const char* kindName(Kind kind);
    // The blob's identity across two files ("profile:1", "tuning_device:usb_dac").
    std::string key() const;
    // "profile 1 \"movie\"", "built-in profile 1 \"movie\"", "tuning device \"usb_dac\"".
    std::string title() const;
    // Each entry's identity within the blob: device, code, and which occurrence of the pair.
    std::vector<std::string> entryKeys() const;
};

// A row element of a mix matrix and the number of values the reader took from it.
struct MatrixRow {
    std::string element;
    long line = 0;
    size_t count = 0;
};

// A tuning device's mix matrix as the store serves it (endpoint, orientation, then the matrices),
// with the row elements of the file its values were read from, in order.
struct MixMatrix {
    std::vector<int> words;
    std::vector<MatrixRow> rows;
    // Where the tuning's orientation and matrix came from; made by of(), not carried in JSON.
    LoadedEntry source;

    // The row element that holds the value at index of words; null for the lead words.
    const MatrixRow* rowOf(size_t index) const;
    // The words read as the output mode entry they make behind its enable word (0): the value at
    // index of words is at index + 1 of the view.
    EntryView view() const;
};

struct PortState {
    std::string port;
    std::string devices;  // as the store lists them
    std::string selected;
};

struct StoreState {
    bool tuningsUsable = false;
    std::vector<PortState> ports;                  // every port, in port order
    std::map<std::string, MixMatrix> mixMatrices;  // by tuning device
};

struct LoadedFile {
    std::string path;  // empty for the built-in tables
    std::string formatVersion;
    std::string toolVersion;
    std::vector<LoadedBlob> blobs;
    StoreState store;

    // Whether the reader of a loaded file has a blob already, by its key and its words.
    using Known = std::function<bool(const std::string& key, const std::vector<int>& words)>;

    // From a session that could read its file: profile blobs by id, then tuning device blobs.
    // Of the blobs that known has, only the identity is kept (same).
    static LoadedFile of(const StoreSession& session, const Known& known = nullptr);
    // The file loaded by this process's store, its path kept; false after one line on stderr
    // when the store could not read it.
    static bool open(const std::string& path, LoadedFile* file);
    // The built-in tables, made once.
    static const LoadedFile& builtin();
    // The blob of a kind with a profile id or a tuning device's name, or null.
    const LoadedBlob* find(LoadedBlob::Kind kind, int id, const std::string& device = "") const;
    // The profile id a selector names: a number, one of a file's profile names (with their ids),
    // or a built-in table's name, in that order; false when it names none.
    using ProfileNames = std::vector<std::pair<std::string, int>>;
    static bool profileId(const std::string& selector, const ProfileNames& names, int* id);
    // The profile names of a file's report, or of the blobs, for profileId.
    static ProfileNames profileNames(const LoadReport& report);
    ProfileNames profileNames() const;

    // brief writes the entries' sources brief (LoadedEntry::print) and leaves out their views.
    Json toJson(bool brief = false) const;
    static LoadedFile fromJson(const Json& json);
};

}  // namespace korva::tool
