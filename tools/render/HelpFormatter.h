// The tool's --help: descriptions wrapped to 80 columns under their column, positionals shown
// by their own usage words ("[FILE] STEP...") instead of CLI11's counts ("[files(0x)]").
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

namespace korva::tool {

class HelpFormatter : public CLI::Formatter {
public:
    static constexpr size_t kWidth = 80;

    HelpFormatter() { column_width(26); }

    // How a positional shows in the usage line; otherwise its name, "..." when it repeats.
    void setUsage(const std::string& positional, const std::string& usage) {
        mUsage[positional] = usage;
    }

    std::string make_description(const CLI::App* app) const override;
    std::string make_subcommand(const CLI::App* sub) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_option_usage(const CLI::Option* option) const override;

private:
    // Lines joined by newlines, which CLI11 indents to the description column.
    std::string wrapped(const std::string& text, size_t width) const;

    std::map<std::string, std::string> mUsage;
};

}  // namespace korva::tool
