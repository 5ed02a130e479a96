// spatializer-paramtool: shows tuning engineers and integrators what a tuning file turns into
// before it reaches a device, with the library's own classes doing all the reading, translating
// and serving.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/BlobsCommand.h"
#include "tools/commands/CheckCommand.h"
#include "tools/DiffCommand.h"
#include "tools/DumpCommand.h"
#include "tools/ExampleFile.h"
#include "tools/ExplainCommand.h"
#include "tools/HelpFormatter.h"
#include "tools/LibraryLog.h"
#include "tools/ReportCommand.h"
#include "tools/SimulateCommand.h"
#include "tools/ToolOutput.h"
#include "tools/VersionInfo.h"

using namespace korva::tool;

namespace {

void addCommonOptions(CLI::App* command, CommonOptions* options) {
    command->add_flag("--json", options->json, "print one JSON document instead of tables");
    command->add_flag("--verbose", options->verbose, "show the library's own log lines on stderr");
}

CLI::App* addFileCommand(CLI::App& app, const char* name, const char* description,
                         CommonOptions* options) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("FILE", options->file, "tuning file (default: the bundled example)");
    addCommonOptions(command, options);
    return command;
}

std::string propertyHelp() {
    std::string help = "set a system property before the store starts (repeatable); short names:";
    for (const auto& [alias, name] : SimulateCommand::kPropertyNames) {
        help += " " + alias + "=" + name;
    }
    return help;
}

// CLI11 takes an unknown first word for a stray argument; name it as the subcommand it was meant
// to be. False after the one-line error.
bool knownSubcommand(const CLI::App& app, int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') {
        return true;
    }
    std::string names;
    for (const CLI::App* sub : app.get_subcommands({})) {
        if (sub->get_name() == argv[1]) {
            return true;
        }
        names += (names.empty() ? "" : ", ") + sub->get_name();
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

    CheckCommand::Options check;
    CLI::App* checkCommand =
        addFileCommand(app, "check",
                       "report what the library accepts silently but changes what reaches "
                       "the effect, then summarize",
                       &check.common);
    checkCommand->add_flag("--strict", check.strict, "exit 1 when there are warnings");
    checkCommand->add_flag("--no-effects", check.noEffects,
                           "do not measure what undoing each cause changes");
    checkCommand
        ->add_flag("--sarif", check.sarif,
                   "print the findings as a SARIF 2.1.0 log (for code scanning) instead")
        ->excludes("--json");

    CommonOptions dump;
    addFileCommand(app, "dump", "every record as the library holds it after parsing", &dump);

    BlobsCommand::Options blobs;
    CLI::App* blobsCommand = addFileCommand(
        app, "blobs", "each profile and tuning-device blob, decoded entry by entry", &blobs.common);
    blobsCommand->add_option("--profile", blobs.profile, "only this profile (name or id)")
        ->type_name("NAME|ID");
    CLI::Option* deviceOption =
        blobsCommand->add_option("--device", blobs.device, "only this tuning device")
            ->type_name("NAME");
    blobsCommand->add_flag("--builtin", blobs.builtin, "the built-in tables instead of the file's");
    blobsCommand->add_flag("--raw", blobs.raw, "list entries as words, not bands and rows");

    SimulateCommand::Options simulate;
    std::vector<std::string> simulateWords;
    CLI::App* simulateCommand = app.add_subcommand(
        "simulate", "run effect calls through the parameter cache and print every call");
    // One KEY=VALUE per --prop, so that the steps after it stay steps.
    simulateCommand->add_option("--prop", simulate.properties, propertyHelp())
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    simulateCommand->add_option("STEP", simulateWords,
                                std::string("tuning file (default: the bundled example), then "
                                            "the steps: ") +
                                    SimulateCommand::kStepForms);
    simulateCommand->add_flag("--raw", simulate.raw, "list values as words, not bands and rows");
    addCommonOptions(simulateCommand, &simulate.common);

    DiffCommand::Options diff;
    CLI::App* diffCommand =
        app.add_subcommand("diff", "blob-level differences between two tuning files");
    diffCommand->add_option("A", diff.fileA, "the tuning file before")->required();
    diffCommand->add_option("B", diff.fileB, "the tuning file after")->required();
    addCommonOptions(diffCommand, &diff.common);

    ReportCommand::Options report;
    CLI::App* reportCommand = app.add_subcommand(
        "report",
        "write one self-contained HTML page: findings, ports, EQ curves, mix matrices, "
        "blobs with their sources; with two files, both overlaid and their differences");
    reportCommand
        ->add_option("FILES", report.files, "one or two tuning files (default: the example)")
        ->expected(0, 2);
    reportCommand
        ->add_option("-o,--output", report.output, "the page to write (default: report.html)")
        ->type_name("PATH");
    reportCommand->add_flag("--verbose", report.common.verbose,
                            "show the library's own log lines on stderr");

    ExplainCommand::Options explain;
    CLI::App* explainCommand = app.add_subcommand(
        "explain", "trace the entries of one effect code back to the file's lines and rules");
    explainCommand->add_option("FILE", explain.common.file, "tuning file")->required();
    explainCommand->add_option("CODE", explain.code, "effect code, as blobs prints it")->required();
    explainCommand->add_option("--profile", explain.profile, "only this profile (name or id)")
        ->type_name("NAME|ID");
    CLI::Option* explainDevice =
        explainCommand->add_option("--device", explain.device, "only this tuning device")
            ->type_name("NAME");
    explainCommand->add_flag("--raw", explain.raw, "list entries as words, not bands and rows");
    addCommonOptions(explainCommand, &explain.common);

    if (!knownSubcommand(app, argc, argv)) {
        return kExitError;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        return status == 0 ? kExitOk : kExitError;
    }

    const std::string example = ExampleFile::path();
    const auto fileOrExample = [&example](std::string& file) {
        if (file.empty()) {
            file = example;
        }
    };

    if (app.got_subcommand(checkCommand)) {
        LibraryLog::install(check.common.verbose);
        fileOrExample(check.common.file);
        return CheckCommand::run(check);
    }
    if (app.got_subcommand("dump")) {
        LibraryLog::install(dump.verbose);
        fileOrExample(dump.file);
        return DumpCommand::run(dump);
    }
    if (app.got_subcommand(blobsCommand)) {
        LibraryLog::install(blobs.common.verbose);
        fileOrExample(blobs.common.file);
        blobs.hasDevice = deviceOption->count() > 0;
        return BlobsCommand::run(blobs);
    }
    if (app.got_subcommand(simulateCommand)) {
        LibraryLog::install(simulate.common.verbose);
        if (!SimulateCommand::takeWords(simulateWords, &simulate)) {
            return kExitError;
        }
        fileOrExample(simulate.common.file);
        return SimulateCommand::run(simulate);
    }
    if (app.got_subcommand(reportCommand)) {
        LibraryLog::install(report.common.verbose);
        if (report.files.empty()) {
            report.files.push_back(example);
        }
        return ReportCommand::run(report);
    }
    if (app.got_subcommand(explainCommand)) {
        LibraryLog::install(explain.common.verbose);
        explain.hasDevice = explainDevice->count() > 0;
        return ExplainCommand::run(explain);
    }
    if (app.got_subcommand(diffCommand)) {
        LibraryLog::install(diff.common.verbose);
        diff.common.file = diff.fileA;
        return DiffCommand::run(diff);
    }
    return kExitError;
}
