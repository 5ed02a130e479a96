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
#include "tools/lsp/TagText.h"

namespace korva::tool {

namespace {

constexpr int kSeverityError = 1;
constexpr int kSeverityWarning = 2;

// The bytes of a finding's cause, its tag spread over lines or not: the attribute with its
// value, the element's '<' and name, or the comment; the line's text when they are not found.
Json causeRange(const TagText& tags, const LoadReport& report, const Finding& finding) {
    const bool undone = finding.undo && (finding.node < 0 || finding.undo->node == finding.node);
    const int node = undone ? finding.undo->node : finding.node;
    const long line = finding.at.line;
    Tag tag;
    TagSpan span;
    if (node >= 0 && report.node(node).line == line) {
        const ReportedNode& cause = report.node(node);
        const std::string attribute = undone ? finding.undo->attribute : "";
        if (cause.isElement && tags.element(line, cause.name, &tag, &span)) {
            const Tag::Attribute* written = tag.attribute(attribute);
            if (attribute.empty() || written != nullptr) {
                return tags.range(written != nullptr ? written->span
                                                     : TagSpan{tag.tag.begin, tag.span.end});
            }
        } else if (cause.isComment && attribute.empty() && tags.comment(line, &span)) {
            return tags.range(span);
        }
    }
    return tags.lines().trimmedLine(line > 0 ? static_cast<size_t>(line - 1) : 0);
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
    const TagText tags(text);
    for (const Finding& finding : findings) {
        const Json range = causeRange(tags, report, finding);
        out["diagnostics"].push_back(
            {{"range", range},
             {"severity", finding.severity == Severity::kError ? kSeverityError : kSeverityWarning},
             {"source", "spatializer-paramtool"},
             {"code", finding.rule},
             {"message", finding.message},
             {"relatedInformation", relatedInformation(uri, tags.lines(), finding, range)}});
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
