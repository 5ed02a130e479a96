#include "tools/render/HelpFormatter.h"

#include <algorithm>

#include "tools/render/TextTable.h"

namespace korva::tool {

std::string HelpFormatter::wrapped(const std::string& text, size_t width) const {
    std::string out;
    for (const std::string& line : TextTable::wrap(text, width)) {
        out += (out.empty() ? "" : "\n") + line;
    }
    return out;
}

std::string HelpFormatter::make_description(const CLI::App* app) const {
    const std::string description = app->get_description();
    return description.empty() ? "" : wrapped(description, kWidth) + "\n";
}

std::string HelpFormatter::make_subcommand(const CLI::App* sub) const {
    // The name padded so that every description starts at the options' description column.
    std::string name = sub->get_name();
    name.resize(std::max(name.size(), column_width_ - 4), ' ');
    TextTable row({"", ""});
    row.addRow({name, sub->get_description()});
    return row.render("  ", kWidth);
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    // Positionals are described by their usage words; options show their value's form only.
    if (option->get_positional()) {
        return "";
    }
    const std::string type = option->get_type_name();
    return type.empty() || option->get_expected_max() == 0 ? "" : " " + type;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    return wrapped(option->get_description(), kWidth - column_width_);
}

std::string HelpFormatter::make_option_usage(const CLI::Option* option) const {
    const auto found = mUsage.find(option->get_name());
    if (found != mUsage.end()) {
        return found->second;
    }
    std::string usage = option->get_name();
    if (option->get_expected_max() > 1) {
        usage += "...";
    }
    return option->get_required() ? usage : "[" + usage + "]";
}

}  // namespace korva::tool
