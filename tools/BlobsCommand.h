// spatializer-paramtool blobs: each parameter blob the store holds for a tuning file (or its
// built-in tables), decoded entry by entry.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/EntryProvenance.h"
#include "tools/StoreSession.h"
#include "tools/ToolOutput.h"

namespace korva::tool {

class BlobsCommand {
public:
    struct Options {
        CommonOptions common;
        // A profile by name or id; empty for every profile.
        std::string profile;
        // A tuning device by name (the empty name included) when hasDevice.
        std::string device;
        bool hasDevice = false;
        bool builtin = false;
        // The words of list entries instead of their bands and rows.
        bool raw = false;
    };

    static int run(const Options& options);

    // The lines that show an entry's values: its bands or matrix rows, or its words when raw
    // or when its code has no layout.
    static std::vector<std::string> valueLines(int32_t code, const std::vector<int32_t>& values,
                                               bool raw);

    // The entries of the built-in table the store keeps for a profile id, and the table's name;
    // none for an id without a table.
    static std::vector<EntrySource> builtinSources(int profileId, std::string* name);

    // Every blob of a file as blobs --json prints it. Reports and returns kExitError when the
    // file cannot be loaded.
    static int collectJson(const std::string& path, Json* document);
    // The "blobs" list of that document, from a session that could read its file.
    static Json blobsJson(const StoreSession& session);
    // Whether the reader of sessionJson has a blob already, by its identity ({"kind", "id" or
    // "name"...}) and its words.
    using Known = std::function<bool(const Json& identity, const std::vector<int>& words)>;
    // What collectJson makes of a file, from its loaded session; brief keeps of the entries'
    // sources only what DiffCommand::compare reads, and of a blob that known has only its
    // identity and "same": true.
    static Json sessionJson(const StoreSession& session, bool brief = false,
                            const Known& known = nullptr);
};

}  // namespace korva::tool
