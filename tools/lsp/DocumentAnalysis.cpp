#include "tools/lsp/DocumentAnalysis.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <vector>

#include "tools/commands/CheckCommand.h"
#include "tools/lint/UndoEdit.h"
#include "tools/load/TemporaryPaths.h"
#include "tools/lsp/DocumentSymbols.h"
#include "tools/lsp/HoverIndex.h"
#include "tools/lsp/LspText.h"

namespace korva::tool {

namespace {

constexpr int kSeverityError = 1;
constexpr int kSeverityWarning = 2;

bool isNameByte(char c) {
    return isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' || c == ':';
}

// Where name stands on its own in line, from from; npos when it does not.
size_t findName(std::string_view line, const std::string& name, size_t from = 0) {
    for (size_t at = line.find(name, from); at != std::string::npos; at = line.find(name, at + 1)) {
        const size_t end = at + name.size();
        if ((at == 0 || !isNameByte(line[at - 1])) &&
            (end == line.size() || !isNameByte(line[end]))) {
            return at;
        }
    }
    return std::string::npos;
}

// The bytes of a finding's cause in its line: the attribute with its value, the element's
// name in its tag, or the comment; [npos, npos) when the line does not show it.
std::pair<size_t, size_t> causeSpan(std::string_view line, const ReportedNode& node,
                                    const std::string& attribute) {
    constexpr auto kNone = std::make_pair(std::string::npos, std::string::npos);
    if (!attribute.empty()) {
        for (size_t at = findName(line, attribute); at != std::string::npos;
             at = findName(line, attribute, at + 1)) {
            const size_t equals = line.find_first_not_of(" \t", at + attribute.size());
            const size_t quote = equals < line.size() && line[equals] == '='
                                     ? line.find_first_not_of(" \t", equals + 1)
                                     : std::string::npos;
            if (quote < line.size() && (line[quote] == '"' || line[quote] == '\'')) {
                const size_t close = line.find(line[quote], quote + 1);
                return {at, close == std::string::npos ? line.size() : close + 1};
            }
        }
        return kNone;
    }
    if (node.isElement) {
        const size_t at = findName(line, node.name);
        return at != std::string::npos && at > 0 && line[at - 1] == '<'
                   ? std::make_pair(at - 1, at + node.name.size())
                   : kNone;
    }
    const size_t open = node.isComment ? line.find("<!--") : std::string::npos;
    const size_t close = open != std::string::npos ? line.find("-->", open) : std::string::npos;
    return open == std::string::npos
               ? kNone
               : std::make_pair(open, close == std::string::npos ? line.size() : close + 3);
}

Json causeRange(const LspText& lines, const std::string& text, const LoadReport& report,
                const Finding& finding) {
    const size_t index = finding.at.line > 0 ? static_cast<size_t>(finding.at.line - 1) : 0;
    const bool undone = finding.undo && (finding.node < 0 || finding.undo->node == finding.node);
    const int node = undone ? finding.undo->node : finding.node;
    const std::string_view line = lines.line(index);
    const auto [begin, end] =
        node >= 0 && report.node(node).line == finding.at.line
            ? causeSpan(line, report.node(node), undone ? finding.undo->attribute : "")
            : std::make_pair(std::string::npos, std::string::npos);
    if (begin == std::string::npos) {
        return lines.trimmedLine(index);
    }
    const size_t start = static_cast<size_t>(line.data() - text.data());
    return lines.range(start + begin, start + end);
}

Json related(const std::string& uri, const Json& range, const std::string& message) {
    return {{"location", {{"uri", uri}, {"range", range}}}, {"message", message}};
}

// The finding's notes at their lines, then its measured effect in diff's lines at the cause.
Json relatedInformation(const std::string& uri, const LspText& lines, const Finding& finding,
                        const Json& causeAt) {
    Json out = Json::array();
    for (const Note& note : finding.notes) {
        out.push_back(related(uri, lines.trimmedLine(note.at.line > 0 ? note.at.line - 1 : 0),
                              "note: " + note.message));
    }
    if (finding.effect && !finding.effect->empty()) {
        const std::unique_ptr<Printer> printer = Printer::make(false);
        finding.effect->print(*printer, "undone", "as written");
        std::istringstream rendered(printer->render());
        std::string line;
        out.push_back(related(uri, causeAt, "effect, undone (a) against as written (b):"));
        while (std::getline(rendered, line)) {
            if (line.find_first_not_of(' ') != std::string::npos) {
                out.push_back(related(uri, causeAt, line));
            }
        }
    } else if (!finding.effect && !finding.unmeasured.empty()) {
        out.push_back(related(uri, causeAt, "effect not measured: " + finding.unmeasured));
    }
    return out;
}

// "Move <include> on line 385 before line 380: speaker IEQ preset 0 → 2".
std::string actionTitle(const LoadReport& report, const Finding& finding) {
    std::string title = UndoEdit::toJson(report, *finding.undo)["description"].get<std::string>();
    title[0] = static_cast<char>(toupper(static_cast<unsigned char>(title[0])));
    return finding.effect && !finding.effect->empty() ? title + ": " + finding.effect->headline()
                                                      : title;
}

}  // namespace

Json DocumentAnalysis::empty() {
    return {{"diagnostics", Json::array()},
            {"actions", Json::array()},
            {"hover", Json::array()},
            {"symbols", Json::array()}};
}

Json DocumentAnalysis::smallestEdit(const std::string& text, const std::string& edited) {
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    const size_t shorter = std::min(text.size(), edited.size());
    size_t prefix =
        std::mismatch(text.begin(), text.begin() + shorter, edited.begin()).first - text.begin();
    while (prefix > 0 && prefix < text.size() && continues(text[prefix])) {
        prefix--;
    }
    size_t suffix =
        std::mismatch(text.rbegin(), text.rbegin() + (shorter - prefix), edited.rbegin()).first -
        text.rbegin();
    while (suffix > 0 && continues(text[text.size() - suffix])) {
        suffix--;
    }
    return {{"range", LspText(text).range(prefix, text.size() - suffix)},
            {"newText", edited.substr(prefix, edited.size() - suffix - prefix)}};
}

void DocumentAnalysis::run(const std::string& uri, const std::string& text,
                           const std::function<void(const Json& part)>& done) {
    TemporaryPaths made;
    std::string path;
    const int fd = made.makeFile("paramtool-lsp", &path);
    const bool written =
        fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(fd);
    std::vector<Finding> findings;
    const std::unique_ptr<StoreSession> session =
        written ? CheckCommand::load(path, true, false, &findings, nullptr) : nullptr;
    Json out = {{"diagnostics", Json::array()}, {"actions", Json::array()}};
    if (session == nullptr) {
        return done(out);
    }
    const LoadReport& report = session->report();
    const LspText lines(text);
    for (const Finding& finding : findings) {
        const Json range = causeRange(lines, text, report, finding);
        out["diagnostics"].push_back(
            {{"range", range},
             {"severity", finding.severity == Severity::kError ? kSeverityError : kSeverityWarning},
             {"source", "spatializer-paramtool"},
             {"code", finding.rule},
             {"message", finding.message},
             {"relatedInformation", relatedInformation(uri, lines, finding, range)}});
        std::string edited;
        std::string why;
        if (finding.undo && UndoEdit::apply(report, {*finding.undo}, &edited, &why)) {
            out["actions"].push_back({{"diagnostic", out["diagnostics"].size() - 1},
                                      {"title", actionTitle(report, finding)},
                                      {"edit", smallestEdit(text, edited)}});
        }
    }
    done(out);
    done({{"hover", HoverIndex::build(*session)},
          {"symbols", DocumentSymbols::build(*session, text)}});
}

}  // namespace korva::tool
