#include "tools/ReportCommand.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include "tools/BlobsCommand.h"
#include "tools/commands/CheckCommand.h"
#include "tools/ChildLoad.h"
#include "tools/DiffCommand.h"
#include "tools/HtmlWriter.h"
#include "tools/lint/LintRules.h"
#include "tools/StoreSession.h"
#include "tools/SvgPlot.h"
#include "tools/VersionInfo.h"
#include "tools/lint/Effects.h"

namespace korva::tool {

namespace {

using Html = HtmlWriter;

constexpr const char* kStyle = R"css(
body { font: 14px/1.4 system-ui, sans-serif; margin: 0 2em 4em; color: #222; max-width: 1400px; }
h1 { margin-bottom: 0.2em; } h2 { border-bottom: 1px solid #ccc; margin-top: 2em; }
nav a { margin-right: 1em; }
table { border-collapse: collapse; margin: 0.5em 0 1em; }
th, td { border: 1px solid #ddd; padding: 2px 6px; vertical-align: top; text-align: left; }
th { background: #f3f3f3; } td.num { text-align: right; }
td.values { font-family: monospace; max-width: 46em; word-wrap: break-word; }
.error { color: #b00020; font-weight: 600; } .warning { color: #a15c00; font-weight: 600; }
.figures { display: flex; flex-wrap: wrap; gap: 12px; }
figure { margin: 0; border: 1px solid #e3e3e3; padding: 4px; background: #fff; }
svg text { font: 11px sans-serif; fill: #333; } svg text.title { font-weight: 600; }
svg text.value { font-size: 10px; } svg line.grid { stroke: #e6e6e6; }
svg line.zero { stroke: #999; } svg path.series { stroke-width: 2; }
pre.source { background: #fafafa; border: 1px solid #ddd; padding: 4px 0; overflow-x: auto; }
pre.source span { display: block; padding-right: 1em; }
pre.source span:target { background: #fff3b0; }
pre.source a { display: inline-block; width: 4.5em; padding-right: 1em; text-align: right;
  color: #999; text-decoration: none; user-select: none; }
tr:target { background: #fff3b0; }
.file-b { color: #555; } .old { color: #b00020; } .new { color: #1b7a1b; }
#page-errors { color: #b00020; }
)css";

// Records script errors into the page, where a headless browser's DOM dump shows them, and
// marks the page as rendered once it is.
constexpr const char* kScript = R"js(
window.addEventListener('error', function (e) {
  document.documentElement.setAttribute('data-errors', 'yes');
  var out = document.getElementById('page-errors');
  if (out) { out.textContent += (e.message || 'error') + '\n'; }
});
document.addEventListener('DOMContentLoaded', function () {
  document.documentElement.setAttribute('data-plots',
      String(document.querySelectorAll('svg.plot path.series').length));
});
)js";

std::string fileTag(size_t file) {
    return "f" + std::to_string(file);
}

std::string lineAnchor(size_t file, long line) {
    return fileTag(file) + "-L" + std::to_string(line);
}

std::string lineLink(size_t file, long line) {
    return Html::link(lineAnchor(file, line), "line " + std::to_string(line));
}

std::string fileLabel(const std::vector<Json>& files, size_t file) {
    const std::string path = files[file].value("file", "");
    return files.size() == 1 ? path : std::string(file == 0 ? "A: " : "B: ") + path;
}

std::string joined(const Json& values) {
    std::string text;
    for (const Json& value : values) {
        text += (text.empty() ? "" : " ") + value.dump();
    }
    return text;
}

void findingsSection(Html& html, const std::vector<Json>& files) {
    html.open("section", {{"id", "findings"}});
    html.element("h2", "Findings");
    for (size_t f = 0; f < files.size(); f++) {
        const Json& findings = files[f]["findings"];
        html.element("h3", fileLabel(files, f) + ": " +
                               (findings.empty() ? "no findings"
                                                 : std::to_string(findings.size()) + " findings"));
        std::vector<std::vector<std::string>> rows;
        for (const Json& finding : findings) {
            const std::string level = finding.value("severity", "");
            std::string message = Html::escape(finding.value("message", ""));
            if (!finding["notes"].empty()) {
                message += "<ul>";
                for (const Json& note : finding["notes"]) {
                    message += "<li>" + lineLink(f, note.value("line", 0L)) + ": " +
                               Html::escape(note.value("message", "")) + "</li>";
                }
                message += "</ul>";
            }
            rows.push_back({"<span class=\"" + level + "\">" + level + "</span>",
                            lineLink(f, finding.value("line", 0L)), message});
        }
        if (!rows.empty()) {
            html.table({"level", "at", "finding"}, rows, {{"class", "findings"}});
        }
    }
    html.close("section");
}

void portsSection(Html& html, const std::vector<Json>& files) {
    html.open("section", {{"id", "ports"}});
    html.element("h2", "Ports and tuning devices");
    for (size_t f = 0; f < files.size(); f++) {
        if (!files[f].contains("summary")) {
            html.element("p", fileLabel(files, f) + ": the store could not read the file");
            continue;
        }
        const Json& summary = files[f]["summary"];
        html.element("h3", fileLabel(files, f));
        html.element(
            "p", "format version " + summary.value("format_version", "") + ", tool version " +
                     summary.value("tool_version", "") +
                     ", tunings usable: " + (summary.value("tunings_usable", false) ? "yes" : "no"));
        std::vector<std::vector<std::string>> rows;
        for (const Json& port : summary["ports"]) {
            std::string devices;
            for (const Json& device : port["tuning_devices"]) {
                const std::string name = device.get<std::string>();
                devices += (devices.empty() ? "" : " ") + (name.empty() ? "\"\"" : name);
            }
            const std::string selected =
                port["selected"].is_null() ? "-" : port["selected"].get<std::string>();
            rows.push_back({Html::escape(port.value("port", "")),
                            Html::escape(selected.empty() ? "\"\"" : selected),
                            Html::escape(devices.empty() ? "none" : devices)});
        }
        html.table({"port", "selected", "tuning devices"}, rows, {{"class", "ports"}});
    }
    html.close("section");
}

// The blobs of each file by identity, and their order: the first file's, then the others'.
struct BlobIndex {
    std::vector<std::string> order;
    std::map<std::string, std::vector<const Json*>> byKey;  // one slot per file
};

BlobIndex indexBlobs(const std::vector<Json>& files) {
    BlobIndex index;
    for (size_t f = 0; f < files.size(); f++) {
        if (!files[f].contains("blobs")) {
            continue;
        }
        for (const Json& blob : files[f]["blobs"]) {
            const std::string key = DiffCommand::blobKey(blob);
            auto& slots = index.byKey[key];
            if (slots.empty()) {
                index.order.push_back(key);
                slots.resize(files.size(), nullptr);
            }
            slots[f] = &blob;
        }
    }
    return index;
}

// The entries of a blob by their identity within it.
std::map<std::string, const Json*> entriesByKey(const Json* blob) {
    std::map<std::string, const Json*> out;
    if (blob == nullptr) {
        return out;
    }
    const std::vector<std::string> keys = DiffCommand::entryKeys((*blob)["entries"]);
    for (size_t i = 0; i < keys.size(); i++) {
        out[keys[i]] = &(*blob)["entries"][i];
    }
    return out;
}

const Json& viewOf(const Json& entry) {
    static const Json kNone = Json::object();
    return entry.contains("view") ? entry["view"] : kNone;
}

std::string parameterNames(const Json& entry) {
    std::string names;
    if (entry.contains("source") && entry["source"].contains("parameters")) {
        for (const Json& parameter : entry["source"]["parameters"]) {
            names += (names.empty() ? "" : ", ") + parameter.value("name", "");
        }
    }
    return names;
}

// A band list's level columns as curves over its frequency column.
void addCurves(SvgPlot& plot, const Json& view, bool second, const std::string& suffix) {
    const Json* frequencies = nullptr;
    for (const Json& column : view["columns"]) {
        if (column.value("unit", "") == "Hz") {
            frequencies = &column;
            break;
        }
    }
    if (frequencies == nullptr) {
        return;
    }
    size_t colour = 0;
    for (const Json& column : view["columns"]) {
        if (column.value("unit", "") != "dB") {
            continue;
        }
        PlotSeries series{column.value("name", "") + suffix, {}, SvgPlot::color(colour++), second};
        const Json& values = column["values"];
        for (size_t i = 0; i < values.size() && i < (*frequencies)["raw"].size(); i++) {
            series.points.emplace_back((*frequencies)["raw"][i].get<double>(),
                                       values[i].get<double>());
        }
        plot.add(std::move(series));
    }
}

void curvesSection(Html& html, const std::vector<Json>& files, const BlobIndex& index) {
    html.open("section", {{"id", "curves"}});
    html.element("h2", "EQ curves");
    if (files.size() == 2) {
        html.element("p", "Solid: A (" + files[0].value("file", "") + "); dashed: B (" +
                              files[1].value("file", "") + ").");
    }
    for (const std::string& key : index.order) {
        const auto& slots = index.byKey.at(key);
        const Json* first = slots[0] != nullptr ? slots[0] : slots.back();
        std::vector<std::map<std::string, const Json*>> entries;
        for (const Json* blob : slots) {
            entries.push_back(entriesByKey(blob));
        }
        std::string figures;
        const std::vector<std::string> keys = DiffCommand::entryKeys((*first)["entries"]);
        for (size_t i = 0; i < keys.size(); i++) {
            const Json& entry = (*first)["entries"][i];
            if (viewOf(entry).value("layout", "") != "bands") {
                continue;
            }
            const std::string names = parameterNames(entry);
            SvgPlot plot(entry.value("device_name", "") + " " + entry.value("code", "") +
                             (names.empty() ? "" : ": " + names),
                         "dB");
            for (size_t f = 0; f < entries.size(); f++) {
                auto found = entries[f].find(keys[i]);
                if (found != entries[f].end() && viewOf(*found->second).contains("columns")) {
                    addCurves(plot, viewOf(*found->second), f == 1,
                              entries.size() == 2 ? (f == 0 ? " A" : " B") : "");
                }
            }
            if (!plot.empty()) {
                figures += "<figure>" + plot.render() + "</figure>";
            }
        }
        if (!figures.empty()) {
            html.element("h3", DiffCommand::blobTitle(*first));
            html.raw("<div class=\"figures\">" + figures + "</div>\n");
        }
    }
    html.close("section");
}

void matricesSection(Html& html, const std::vector<Json>& files, const BlobIndex& index) {
    html.open("section", {{"id", "matrices"}});
    html.element("h2", "Mix matrices");
    html.element("p",
                 "Each input channel's share of the left and right outputs (Q14 words as "
                 "decimals; red above 0, blue below).");
    for (const std::string& key : index.order) {
        const auto& slots = index.byKey.at(key);
        std::string figures;
        for (size_t f = 0; f < slots.size(); f++) {
            if (slots[f] == nullptr) {
                continue;
            }
            for (const Json& entry : (*slots[f])["entries"]) {
                const Json& view = viewOf(entry);
                if (view.value("layout", "") != "output_mode") {
                    continue;
                }
                size_t number = 0;
                for (const Json& matrix : view["matrices"]) {
                    std::vector<std::vector<double>> cells;
                    std::vector<std::string> rowLabels;
                    for (const Json& row : matrix["rows"]) {
                        cells.push_back(row["values"].get<std::vector<double>>());
                        rowLabels.push_back("in " + std::to_string(cells.size()));
                    }
                    const std::string title =
                        (files.size() == 2 ? std::string(f == 0 ? "A: " : "B: ") : "") +
                        entry.value("device_name", "") + " dom matrix " + std::to_string(++number) +
                        " (layout " + std::to_string(matrix.value("layout", 0)) + ")";
                    figures += "<figure>" +
                               SvgPlot::heatMap(title, cells, rowLabels, {"left", "right"}) +
                               "</figure>";
                }
            }
        }
        if (!figures.empty()) {
            const Json* blob = slots[0] != nullptr ? slots[0] : slots.back();
            html.element("h3", DiffCommand::blobTitle(*blob));
            html.raw("<div class=\"figures\">" + figures + "</div>\n");
        }
    }
    html.close("section");
}

void diffSection(Html& html, const std::vector<Json>& files) {
    html.open("section", {{"id", "diff"}});
    html.element("h2", "Differences in the blobs, A to B");
    const Json differences = DiffCommand::compare(files[0], files[1]);
    if (differences.empty()) {
        html.element("p", "The two files give the same blobs.");
    }
    std::vector<std::vector<std::string>> rows;
    for (const Json& difference : differences) {
        const std::string blob = Html::escape(difference.value("blob", ""));
        const std::string change = difference.value("change", "");
        if (!difference["entries"].is_array()) {
            rows.push_back({blob, Html::escape(change), "", "", "", ""});
            continue;
        }
        for (const Json& entry : difference["entries"]) {
            rows.push_back(
                {blob, Html::escape(entry.value("change", "")),
                 Html::escape(entry.value("device_name", "")), Html::escape(entry.value("code", "")),
                 "<span class=\"old\">" +
                     Html::escape(entry.contains("old") ? joined(entry["old"]) : "") + "</span>",
                 "<span class=\"new\">" +
                     Html::escape(entry.contains("new") ? joined(entry["new"]) : "") + "</span>"});
        }
    }
    if (!rows.empty()) {
        html.table({"blob", "change", "device", "code", "A", "B"}, rows, {{"class", "diff"}});
    }
    html.close("section");
}

// A band list as one row per band, in the units of each column.
std::string bandTable(const Json& view) {
    const Json& columns = view["columns"];
    std::string out = "<details><summary>" + std::to_string(view.value("bands", 0)) +
                      " bands</summary><table><tr>";
    size_t rows = 0;
    for (const Json& column : columns) {
        out += "<th>" +
               Html::escape(column.value("name", "") + " (" + column.value("unit", "") + ")") +
               "</th>";
        rows = std::max(rows, column["values"].size());
    }
    out += "</tr>";
    for (size_t r = 0; r < rows; r++) {
        out += "<tr>";
        for (const Json& column : columns) {
            out += "<td class=\"num\">" +
                   (r < column["values"].size() ? column["values"][r].dump() : "") + "</td>";
        }
        out += "</tr>";
    }
    return out + "</table></details>";
}

// The line numbers of a provenance summary ("line 12", "lines 304, 311") as links to the lines.
std::string linkedLines(const std::string& summary, size_t file) {
    std::string out;
    size_t at = 0;
    while (at < summary.size()) {
        size_t word = summary.find("line", at);
        if (word == std::string::npos) {
            break;
        }
        size_t next = word + 4 + (summary.compare(word + 4, 1, "s") == 0 ? 1 : 0);
        out += summary.substr(at, next - at);
        at = next;
        // A number, then ", number" as long as numbers follow.
        while (at + 1 < summary.size() && summary[at] == ' ' && isdigit(summary[at + 1])) {
            size_t end = at + 1;
            while (end < summary.size() && isdigit(summary[end])) {
                end++;
            }
            const std::string number = summary.substr(at + 1, end - at - 1);
            out += " " + Html::link(lineAnchor(file, std::stol(number)), number);
            at = end;
            if (summary.compare(at, 2, ", ") == 0 && at + 2 < summary.size() &&
                isdigit(summary[at + 2])) {
                out += ",";
                at++;
            }
        }
    }
    return out + summary.substr(std::min(at, summary.size()));
}

void blobsSection(Html& html, const std::vector<Json>& files) {
    html.open("section", {{"id", "blobs"}});
    html.element("h2", "Blobs, entry by entry");
    for (size_t f = 0; f < files.size(); f++) {
        if (!files[f].contains("blobs")) {
            continue;
        }
        size_t blobNumber = 0;
        for (const Json& blob : files[f]["blobs"]) {
            const std::string anchor = fileTag(f) + "-b" + std::to_string(blobNumber++);
            html.element("h3",
                         (files.size() == 2 ? std::string(f == 0 ? "A: " : "B: ") : "") +
                             DiffCommand::blobTitle(blob) + ": " +
                             std::to_string(blob["entries"].size()) + " entries, " +
                             std::to_string(blob.value("words", 0)) + " words",
                         {{"id", anchor}});
            html.open("table", {{"class", "blob"}});
            html.raw(
                "<tr><th>#</th><th>device</th><th>code</th><th>values</th>"
                "<th>from</th></tr>\n");
            size_t number = 0;
            for (const Json& entry : blob["entries"]) {
                const std::string row = anchor + "-e" + std::to_string(++number);
                std::string values = Html::escape(joined(entry["values"]));
                if (viewOf(entry).value("layout", "") == "bands") {
                    values += bandTable(viewOf(entry));
                }
                const std::string from =
                    entry.contains("source")
                        ? linkedLines(Html::escape(entry["source"].value("summary", "")), f)
                        : "";
                html.open("tr", {{"id", row}});
                html.raw("<td class=\"num\">" + std::to_string(number) + "</td><td>" +
                         Html::escape(entry.value("device_name", "")) + "</td><td>" +
                         Html::escape(entry.value("code", "")) + "</td><td class=\"values\">" +
                         values + "</td><td>" + from + "</td>");
                html.close("tr");
            }
            html.close("table");
        }
    }
    html.close("section");
}

void sourceSection(Html& html, const std::vector<Json>& files) {
    html.open("section", {{"id", "source"}});
    html.element("h2", "Tuning file");
    for (size_t f = 0; f < files.size(); f++) {
        html.element("h3", fileLabel(files, f));
        html.open("pre", {{"class", "source"}, {"id", fileTag(f) + "-source"}});
        const std::string text = files[f].value("source", "");
        long line = 0;
        size_t start = 0;
        while (start < text.size()) {
            size_t end = text.find('\n', start);
            end = end == std::string::npos ? text.size() : end;
            const std::string anchor = lineAnchor(f, ++line);
            html.raw("<span id=\"" + anchor + "\">" + Html::link(anchor, std::to_string(line)) +
                     Html::escape(text.substr(start, end - start)) + "</span>");
            start = end + 1;
        }
        html.close("pre");
    }
    html.close("section");
}

// The findings without their effects: the report shows what the load said.
std::vector<Finding> unmeasured(const LoadReport& report) {
    std::vector<Finding> findings = LintRules::run(report);
    Effects::skip(&findings);
    return findings;
}

}  // namespace

int ReportCommand::collect(const std::string& path, Json* document) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path, {}, true);
    if (session == nullptr) {
        return kExitError;
    }
    const LoadReport& report = session->report();
    *document = {{"file", path},
                 {"source", session->text()},
                 {"findings", CheckCommand::findingsJson(unmeasured(report), report)}};
    if (report.readFailed) {
        return kExitOk;
    }
    (*document)["summary"] = CheckCommand::summaryJson(*session);
    (*document)["blobs"] = BlobsCommand::blobsJson(*session);
    return kExitOk;
}

std::string ReportCommand::page(const std::vector<Json>& files) {
    Html html;
    html.raw("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">");
    std::string title = "Tuning report: " + files[0].value("file", "");
    if (files.size() == 2) {
        title += " and " + files[1].value("file", "");
    }
    html.element("title", title);
    html.raw(std::string("<style>") + kStyle + "</style><script>" + kScript +
             "</script></head>\n<body>\n");
    html.element("h1", files.size() == 2 ? "Tuning report: A and B" : "Tuning report");
    for (size_t f = 0; f < files.size(); f++) {
        html.element("p", fileLabel(files, f), {{"class", "file"}});
    }
    html.element("p", "spatializer-paramtool " + VersionInfo::tool() +
                          "; line links lead to the file's own lines at the end of the page.");
    html.raw("<pre id=\"page-errors\"></pre>\n<nav>");
    const std::vector<std::pair<std::string, std::string>> sections = {
        {"findings", "Findings"},     {"ports", "Ports"},      {"curves", "EQ curves"},
        {"matrices", "Mix matrices"}, {"diff", "Differences"}, {"blobs", "Blobs"},
        {"source", "Tuning file"}};
    for (const auto& [anchor, name] : sections) {
        if (anchor != "diff" || files.size() == 2) {
            html.raw(Html::link(anchor, name) + " ");
        }
    }
    html.raw("</nav>\n");
    const BlobIndex index = indexBlobs(files);
    findingsSection(html, files);
    portsSection(html, files);
    curvesSection(html, files, index);
    matricesSection(html, files, index);
    if (files.size() == 2) {
        diffSection(html, files);
    }
    blobsSection(html, files);
    sourceSection(html, files);
    html.raw("</body></html>\n");
    return html.str();
}

int ReportCommand::run(const Options& options) {
    std::vector<Json> files;
    for (const std::string& path : options.files) {
        Json document;
        if (ChildLoad::run(path, collect, &document) != kExitOk) {
            return kExitError;
        }
        files.push_back(std::move(document));
    }
    const std::string html = page(files);
    std::ofstream out(options.output, std::ios::binary | std::ios::trunc);
    out << html;
    out.close();
    if (!out) {
        ToolOutput::error(options.output,
                          std::string("cannot write the report: ") + strerror(errno));
        return kExitError;
    }
    ToolOutput::print("report written to " + options.output + "\n");
    return kExitOk;
}

}  // namespace korva::tool
