// What every subcommand shares: its common options, one-line errors on stderr, and JSON on stdout.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace korva::tool {

using Json = nlohmann::ordered_json;

struct CommonOptions {
    // The tuning file; the bundled example when none is given.
    std::string file;
    bool json = false;
    bool verbose = false;
};

// Exit statuses shared by the subcommands.
constexpr int kExitOk = 0;
// check --strict with warnings only; diff with differences.
constexpr int kExitFindings = 1;
// Errors in the file, an unreadable file, or a wrong command line.
constexpr int kExitError = 2;

class ToolOutput {
public:
    // "spatializer-paramtool: PATH: message" on stderr; a command's name for a wrong command line.
    static void error(const std::string& where, const std::string& message);
    // One JSON document on stdout. Text that is not UTF-8 is replaced, never refused.
    static void printJson(const Json& document) { print(jsonText(document)); }
    static std::string jsonText(const Json& document);
    static void print(const std::string& text);
};

}  // namespace korva::tool
