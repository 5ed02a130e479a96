// spatializer-paramtool: shows tuning engineers and integrators what a tuning file turns into
// before it reaches a device, with the library's own classes doing all the reading, translating
// and serving.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/VersionInfo.h"
#include "tools/commands/BlobsCommand.h"
#include "tools/commands/CheckCommand.h"
#include "tools/commands/DiffCommand.h"
#include "tools/commands/DumpCommand.h"
#include "tools/commands/ExplainCommand.h"
#include "tools/commands/ReportCommand.h"
#include "tools/commands/SimulateCommand.h"
#include "tools/load/ExampleFile.h"
#include "tools/load/LibraryLog.h"
#include "tools/lsp/LspServer.h"
#include "tools/render/HelpFormatter.h"
#include "tools/render/ToolOutput.h"
#include "tools/schema/SchemaCommand.h"

using namespace korva::tool;

namespace {

// What the command line fills in, one member per command.
struct Options {
    CheckCommand::Options check;
    CommonOptions dump;
    BlobsCommand::Options blobs;
    SimulateCommand::Options simulate;
    DiffCommand::Options diff;
    ReportCommand::Options report;
    ExplainCommand::Options explain;
};

// A subcommand: its name and help, the options it adds, and what runs it.
struct Command {
    const char* name;
    const char* help;
    void (*options)(CLI::App& command, Options& options);
    int (*run)(Options& options);
};

void common(CLI::App& command, CommonOptions& options, bool json = true) {
    if (json) {
        command.add_flag("--json", options.json, "print one JSON document instead of tables");
    }
    command.add_flag("--verbose", options.verbose, "show the library's own log lines on stderr");
}

// The FILE positional, the bundled example when it is left out, and the common options.
void fileAndCommon(CLI::App& command, CommonOptions& options) {
    command.add_option("FILE", options.file, "tuning file (default: the bundled example)");
    common(command, options);
}

// A profile and a tuning device to select by, with --raw.
void selection(CLI::App& command, BlobSelection& options) {
    command.add_option("--profile", options.profile, "only this profile (name or id)")
        ->type_name("NAME|ID");
    // The empty name is a device too, so that it was given is kept apart from what it was.
    command
        .add_option_function<std::string>(
            "--device",
            [&options](const std::string& device) {
                options.device = device;
                options.hasDevice = true;
            },
            "only this tuning device")
        ->type_name("NAME");
    command.add_flag("--raw", options.raw, "list entries as words, not bands and rows");
}

// Installs the library's log, and names the bundled example when no file was given.
CommonOptions& start(CommonOptions& options) {
    LibraryLog::install(options.verbose);
    if (options.file.empty()) {
        options.file = ExampleFile::path();
    }
    return options;
}
template <typename CommandOptions>
CommandOptions& start(CommandOptions& options) {
    start(options.common);
    return options;
}

const Command kCommands[] = {
    {"check",
     "report what the library accepts silently but changes what reaches the effect, then "
     "summarize",
     [](CLI::App& command, Options& o) {
         fileAndCommon(command, o.check.common);
         command.add_flag("--strict", o.check.strict, "exit 1 when there are warnings");
         command.add_flag("--no-effects", o.check.noEffects,
                          "do not measure what undoing each cause changes");
         command
             .add_flag("--sarif", o.check.sarif,
                       "print the findings as a SARIF 2.1.0 log (for code scanning) instead")
             ->excludes("--json");
     },
     [](Options& o) { return CheckCommand::run(start(o.check)); }},
    {"dump", "every record as the library holds it after parsing",
     [](CLI::App& command, Options& o) { fileAndCommon(command, o.dump); },
     [](Options& o) { return DumpCommand::run(start(o.dump)); }},
    {"blobs", "each profile and tuning-device blob, decoded entry by entry",
     [](CLI::App& command, Options& o) {
         fileAndCommon(command, o.blobs.common);
         selection(command, o.blobs);
         command.add_flag("--builtin", o.blobs.builtin, "the built-in tables instead of the file's");
     },
     [](Options& o) { return BlobsCommand::run(start(o.blobs)); }},
    {"simulate", "run effect calls through the parameter cache and print every call",
     [](CLI::App& command, Options& o) {
         SimulateCommand::addOptions(&command, &o.simulate);
         common(command, o.simulate.common);
     },
     [](Options& o) { return SimulateCommand::run(start(o.simulate)); }},
    {"diff", "blob-level differences between two tuning files",
     [](CLI::App& command, Options& o) {
         command.add_option("A", o.diff.fileA, "the tuning file before")->required();
         command.add_option("B", o.diff.fileB, "the tuning file after")->required();
         common(command, o.diff.common);
     },
     [](Options& o) {
         o.diff.common.file = o.diff.fileA;
         return DiffCommand::run(start(o.diff));
     }},
    {"report",
     "write one self-contained HTML page: findings, ports, EQ curves, mix matrices, blobs with "
     "their sources; with two files, both overlaid and their differences",
     [](CLI::App& command, Options& o) {
         command
             .add_option("FILES", o.report.files, "one or two tuning files (default: the example)")
             ->expected(0, 2);
         command
             .add_option("-o,--output", o.report.output, "the page to write (default: report.html)")
             ->type_name("PATH");
         common(command, o.report.common, false);
     },
     [](Options& o) {
         const std::string example = start(o.report.common).file;
         if (o.report.files.empty()) {
             o.report.files.push_back(example);
         }
         return ReportCommand::run(o.report);
     }},
    {"explain", "trace the entries of one effect code back to the file's lines and rules",
     [](CLI::App& command, Options& o) {
         command.add_option("FILE", o.explain.common.file, "tuning file")->required();
         command.add_option("CODE", o.explain.code, "effect code, as blobs prints it")->required();
         selection(command, o.explain);
         common(command, o.explain.common);
     },
     [](Options& o) { return ExplainCommand::run(start(o.explain)); }},
    {"lsp", "serve tuning files to editors: the Language Server Protocol on stdin/stdout",
     [](CLI::App& command, Options&) {
         // Editors' clients name the transport; standard input and output is the only one.
         command.add_flag("--stdio", "talk through standard input and output (the default)");
     },
     [](Options&) { return LspServer(STDIN_FILENO, STDOUT_FILENO).run(); }},
    {"schema", "print an XML Schema of the tuning files a tuning tool writes, for editors",
     [](CLI::App&, Options&) {}, [](Options&) { return SchemaCommand::run(); }},
};

// CLI11 takes an unknown first word for a stray argument; name it as the subcommand it was meant
// to be. False after the one-line error.
bool knownSubcommand(int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') {
        return true;
    }
    std::string names;
    for (const Command& command : kCommands) {
        if (argv[1] == std::string(command.name)) {
            return true;
        }
        names += (names.empty() ? "" : ", ") + std::string(command.name);
    }
    fprintf(stderr, "spatializer-paramtool: unknown subcommand '%s' (one of %s)\n", argv[1],
            names.c_str());
    return false;
}

// One line per command-line error, naming the subcommand.
std::string failureMessage(const CLI::App* app, const CLI::Error& error) {
    std::string where = "spatializer-paramtool";
    for (const CLI::App* sub : app->get_subcommands()) {
        where += " " + sub->get_name();
    }
    return "spatializer-paramtool: " + (where.size() > 21 ? where.substr(22) + ": " : "") +
           error.what() + " (see " + where + " --help)\n";
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "Shows what a spatializer tuning file turns into: findings, records, parameter "
        "blobs, effect calls, differences and a visual report.",
        "spatializer-paramtool"};
    auto formatter = std::make_shared<HelpFormatter>();
    formatter->setUsage("STEP", "[FILE] STEP...");
    formatter->setUsage("FILES", "[FILE [FILE_B]]");
    app.formatter(formatter);
    app.failure_message(failureMessage);
    app.set_version_flag(
        "--version", [] { return VersionInfo::text(); },
        "print the tool's and the library's versions");
    app.require_subcommand(1);

    Options options;
    for (const Command& command : kCommands) {
        command.options(*app.add_subcommand(command.name, command.help), options);
    }
    if (!knownSubcommand(argc, argv)) {
        return kExitError;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kExitOk : kExitError;
    }
    for (const Command& command : kCommands) {
        if (app.got_subcommand(command.name)) {
            return command.run(options);
        }
    }
    return kExitError;
}
