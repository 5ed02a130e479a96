// spatializer-paramtool blobs: each parameter blob the store holds for a tuning file (or its
// built-in tables), decoded entry by entry.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/load/EntryProvenance.h"
#include "tools/load/StoreSession.h"
#include "tools/render/ToolOutput.h"

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

    // LoadedFile::toJson of a file. Reports and returns kExitError when it cannot be loaded.
    static int collectJson(const std::string& path, Json* document);
    // LoadedFile::toJson of a session that could read its file.
    static Json sessionJson(const StoreSession& session, bool brief = false);
};

}  // namespace korva::tool
