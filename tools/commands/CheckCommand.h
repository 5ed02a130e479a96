// spatializer-paramtool check: the linter's findings on a tuning file, then what the store made
// of it. Exit status 0 when clean, 1 for warnings only with --strict, 2 for errors or a file that
// cannot be read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/lint/Finding.h"
#include "tools/load/StoreSession.h"
#include "tools/render/Printer.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class CheckCommand {
public:
    struct Options {
        CommonOptions common;
        bool strict = false;
        // The findings as a SARIF log on stdout, for code-scanning in CI.
        bool sarif = false;
        // Findings without their measured effects.
        bool noEffects = false;
    };

    static int run(const Options& options);

    // The file loaded once and its findings, measured when effects (progress is told how many
    // causes are done, and may be null): what check and the language server both show. Null
    // after one line on stderr when the file cannot be put where the store looks. A process
    // loads one file, once.
    static std::unique_ptr<StoreSession> load(const std::string& path, bool effects, bool verbose,
                                              std::vector<Finding>* findings,
                                              void (*progress)(size_t, size_t));

    // The findings, each under its cause's place in path with its notes and, when effects, its
    // undo and measured effect; the findings its undo clears are listed when listClears, else
    // counted.
    static void printFindings(Printer& out, const std::string& path,
                              const std::vector<Finding>& findings, const LoadReport& report,
                              bool effects, bool listClears);
    // What the store made of a file it could read: its versions, with records its record counts
    // and profile blobs, its ports and their tuning devices; findings, when not empty, says how
    // many of each severity there are.
    static void printSummary(Printer& out, const StoreSession& session, bool records,
                             const std::string& findings);
};

}  // namespace korva::tool
