#include "tools/commands/ReportCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <regex>

#include "tools/VersionInfo.h"
#include "tools/commands/CheckCommand.h"
#include "tools/commands/DiffCommand.h"
#include "tools/lint/Effects.h"
#include "tools/lint/LintRules.h"
#include "tools/load/ChildLoads.h"
#include "tools/load/StoreSession.h"
#include "tools/render/BlobDecoder.h"
#include "tools/render/EntryView.h"
#include "tools/render/HtmlWriter.h"
#include "tools/render/NumberText.h"
#include "tools/render/Printer.h"
#include "tools/render/SvgPlot.h"

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
section div div { margin-left: 1.5em; } p.title { margin: 0.3em 0; }
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

// One file of the page: its text, check's findings, and what the load made of it.
struct ReportFile {
    std::string path;
    std::string text;
    size_t findings;
    std::string findingsHtml;  // as check prints them, without effects
    std::string summaryHtml;   // check's summary without the records, which the blobs show
    bool readable = false;
    LoadedFile loaded;
};

std::string fileTag(size_t file) {
    return "f" + std::to_string(file);
}

std::string lineAnchor(size_t file, long line) {
    return fileTag(file) + "-L" + std::to_string(line);
}

// "A: " and "B: " before what belongs to one of two files.
std::string side(const std::vector<ReportFile>& files, size_t file) {
    return files.size() == 1 ? "" : file == 0 ? "A: " : "B: ";
}

// What a printer writes about file f, as HTML whose line numbers link to the file's lines.
std::string printed(size_t f, const std::function<void(Printer&)>& write) {
    const std::unique_ptr<Printer> out =
        Printer::make(Printer::Format::kHtml, [f](long line) { return lineAnchor(f, line); });
    write(*out);
    return out->render();
}

void findingsSection(Html& html, const std::vector<ReportFile>& files) {
    html.open("section", {{"id", "findings"}});
    html.element("h2", "Findings");
    for (size_t f = 0; f < files.size(); f++) {
        const size_t findings = files[f].findings;
        html.element("h3",
                     side(files, f) + files[f].path + ": " +
                         (findings == 0 ? "no findings" : std::to_string(findings) + " findings"));
        html.raw(files[f].findingsHtml);
    }
    html.close("section");
}

void portsSection(Html& html, const std::vector<ReportFile>& files) {
    html.open("section", {{"id", "ports"}});
    html.element("h2", "Ports and tuning devices");
    for (size_t f = 0; f < files.size(); f++) {
        if (!files[f].readable) {
            html.element("p",
                         side(files, f) + files[f].path + ": the store could not read the file");
            continue;
        }
        html.element("h3", side(files, f) + files[f].path);
        html.raw(files[f].summaryHtml);
    }
    html.close("section");
}

// The blobs of each file by identity, in the order of the first file's, then the others'.
struct BlobIndex {
    std::vector<std::string> order;
    std::map<std::string, std::vector<const LoadedBlob*>> byKey;  // one slot per file

    explicit BlobIndex(const std::vector<ReportFile>& files) {
        for (size_t f = 0; f < files.size(); f++) {
            for (const LoadedBlob& blob : files[f].loaded.blobs) {
                auto& slots = byKey[blob.key()];
                if (slots.empty()) {
                    order.push_back(blob.key());
                    slots.resize(files.size(), nullptr);
                }
                slots[f] = &blob;
            }
        }
    }
    const LoadedBlob& first(const std::string& key) const {
        const auto& slots = byKey.at(key);
        return slots[0] != nullptr ? *slots[0] : *slots.back();
    }
};

// A band list's level columns as curves over its frequency column.
void addCurves(SvgPlot& plot, const EntryView& view, bool dashed, const std::string& suffix) {
    size_t colour = 0;
    for (const BandColumnView& column : view.columns) {
        if (column.unit != ListUnit::kSixteenthDb || view.columns[0].unit != ListUnit::kHz) {
            continue;
        }
        PlotSeries series{column.name + suffix, {}, SvgPlot::color(colour++), dashed};
        for (size_t i = 0; i < column.raw.size() && i < view.columns[0].raw.size(); i++) {
            series.points.emplace_back(view.columns[0].raw[i], EntryView::decibels(column.raw[i]));
        }
        plot.add(std::move(series));
    }
}

void curvesSection(Html& html, const std::vector<ReportFile>& files, const BlobIndex& index) {
    html.open("section", {{"id", "curves"}});
    html.element("h2", "EQ curves");
    if (files.size() == 2) {
        html.element("p", "Solid: A (" + files[0].path + "); dashed: B (" + files[1].path + ").");
    }
    for (const std::string& key : index.order) {
        const LoadedBlob& first = index.first(key);
        const std::vector<std::string> keys = first.entryKeys();
        std::string figures;
        for (size_t i = 0; i < keys.size(); i++) {
            const LoadedEntry& entry = first.entries[i];
            if (EntryView::decode(entry.code, entry.values).kind != EntryView::Kind::kBands) {
                continue;
            }
            const std::string names = entry.parameterNames();
            SvgPlot plot(BlobDecoder::deviceName(entry.deviceId) + " " +
                             BlobDecoder::codeText(entry.code) + (names.empty() ? "" : ": " + names),
                         "dB");
            const auto& slots = index.byKey.at(key);
            for (size_t f = 0; f < slots.size(); f++) {
                const std::vector<std::string> theirs =
                    slots[f] != nullptr ? slots[f]->entryKeys() : std::vector<std::string>();
                const auto at = std::find(theirs.begin(), theirs.end(), keys[i]);
                if (at != theirs.end()) {
                    const LoadedEntry& their = slots[f]->entries[at - theirs.begin()];
                    addCurves(plot, EntryView::decode(their.code, their.values), f == 1,
                              slots.size() == 2 ? (f == 0 ? " A" : " B") : "");
                }
            }
            if (!plot.empty()) {
                figures += "<figure>" + plot.render() + "</figure>";
            }
        }
        if (!figures.empty()) {
            html.element("h3", first.title());
            html.raw("<div class=\"figures\">" + figures + "</div>\n");
        }
    }
    html.close("section");
}

// Heat maps of an output mode's matrices, each row named by rowName(index of its first word).
template <typename RowName>
std::string heatMaps(const std::string& title, const EntryView& view, RowName rowName) {
    std::string figures;
    size_t at = kOutputModeLeadWords;
    for (size_t m = 0; m < view.matrices.size(); m++) {
        const MixMatrixView& matrix = view.matrices[m];
        std::vector<std::vector<double>> cells;
        std::vector<std::string> labels;
        at += kMixMatrixHeadWords;
        for (const std::vector<int>& row : matrix.rows) {
            cells.emplace_back();
            for (int word : row) {
                cells.back().push_back(EntryView::q14(word));
            }
            labels.push_back(rowName(at, cells.size()));
            at += row.size();
        }
        figures += "<figure>" +
                   SvgPlot::heatMap(title + " matrix " + std::to_string(m + 1) + " (layout " +
                                        std::to_string(matrix.layout) + ")",
                                    cells, labels, {"left", "right"}) +
                   "</figure>";
    }
    return figures;
}

// The tuning device matrix whose matrices an output mode entry carries, or null.
const MixMatrix* carriedMatrix(const LoadedFile& file, const LoadedEntry& entry) {
    for (const auto& [device, matrix] : file.store.mixMatrices) {
        // Past the lead words: the entry's enable, endpoint and orientation, the matrix's last two.
        if (matrix.words.size() > 2 && matrix.words.size() + 1 == entry.values.size() &&
            std::equal(matrix.words.begin() + 2, matrix.words.end(), entry.values.begin() + 3)) {
            return &matrix;
        }
    }
    return nullptr;
}

void matricesSection(Html& html, const std::vector<ReportFile>& files, const BlobIndex& index) {
    html.open("section", {{"id", "matrices"}});
    html.element("h2", "Mix matrices");
    html.element("p",
                 "Each input channel's share of the left and right outputs (Q14 words as "
                 "decimals; red above 0, blue below), its row named by the file's element.");
    // Rows named by the elements of the matrix the values were read as, or numbered.
    const auto rowNames = [](const MixMatrix* matrix) {
        return [matrix](size_t at, size_t row) {
            const MatrixRow* element = matrix != nullptr ? matrix->rowOf(at - 1) : nullptr;
            return element != nullptr ? "<" + element->element + ">" : "in " + std::to_string(row);
        };
    };
    for (const std::string& key : index.order) {
        std::string figures;
        const auto& slots = index.byKey.at(key);
        for (size_t f = 0; f < slots.size(); f++) {
            const LoadedFile& file = files[f].loaded;
            for (const LoadedEntry& entry :
                 slots[f] != nullptr ? slots[f]->entries : std::vector<LoadedEntry>()) {
                const EntryView view = EntryView::decode(entry.code, entry.values);
                if (view.kind == EntryView::Kind::kOutputMode) {
                    figures +=
                        heatMaps(side(files, f) + BlobDecoder::deviceName(entry.deviceId) + " dom",
                                 view, rowNames(carriedMatrix(file, entry)));
                }
            }
            const auto matrix =
                slots[f] == nullptr || slots[f]->kind != LoadedBlob::Kind::kTuningDevice
                    ? file.store.mixMatrices.end()
                    : file.store.mixMatrices.find(slots[f]->name);
            if (matrix != file.store.mixMatrices.end()) {
                figures += heatMaps(side(files, f) + "mix matrix", matrix->second.view(),
                                    rowNames(&matrix->second));
            }
        }
        if (!figures.empty()) {
            html.element("h3", index.first(key).title());
            html.raw("<div class=\"figures\">" + figures + "</div>\n");
        }
    }
    html.close("section");
}

void diffSection(Html& html, const std::vector<ReportFile>& files) {
    html.open("section", {{"id", "diff"}});
    html.element("h2", "Differences, A to B");
    const LoadedFile& a = files[0].loaded;
    const LoadedFile& b = files[1].loaded;
    html.raw(printed(1, [&](Printer& out) { DiffCommand::compare(a, b).print(out, "A", "B"); }));
    html.close("section");
}

// A band list as one row per band, in the units of each column.
std::string bandTable(const EntryView& view) {
    std::string out =
        "<details><summary>" + std::to_string(view.bands) + " bands</summary><table><tr>";
    size_t rows = 0;
    for (const BandColumnView& column : view.columns) {
        out += "<th>" + Html::escape(column.name) + "</th>";
        rows = std::max(rows, column.raw.size());
    }
    out += "</tr>";
    for (size_t r = 0; r < rows; r++) {
        out += "<tr>";
        for (const BandColumnView& column : view.columns) {
            out += "<td class=\"num\">" +
                   (r < column.raw.size() ? EntryView::valueText(column.unit, column.raw[r]) : "") +
                   "</td>";
        }
        out += "</tr>";
    }
    return out + "</table></details>";
}

// The line numbers of a provenance summary ("line 12", "lines 304, 311") as links to the lines.
std::string linkedLines(const std::string& summary, size_t file) {
    static const std::regex kLines("lines? \\d+(, \\d+)*");
    static const std::regex kNumber("\\d+");
    std::string out;
    auto at = summary.cbegin();
    for (std::sregex_iterator lines(summary.begin(), summary.end(), kLines), end; lines != end;
         ++lines) {
        for (std::sregex_iterator number((*lines)[0].first, (*lines)[0].second, kNumber);
             number != end; ++number) {
            out += std::string(at, (*number)[0].first) +
                   Html::link(lineAnchor(file, std::stol(number->str())), number->str());
            at = (*number)[0].second;
        }
    }
    return out + std::string(at, summary.cend());
}

void blobsSection(Html& html, const std::vector<ReportFile>& files) {
    html.open("section", {{"id", "blobs"}});
    html.element("h2", "Blobs, entry by entry");
    for (size_t f = 0; f < files.size(); f++) {
        size_t blobNumber = 0;
        for (const LoadedBlob& blob : files[f].loaded.blobs) {
            const std::string anchor = fileTag(f) + "-b" + std::to_string(blobNumber++);
            html.element("h3",
                         side(files, f) + blob.title() + ": " + std::to_string(blob.entries.size()) +
                             " entries, " + std::to_string(blob.words) + " words",
                         {{"id", anchor}});
            html.open("table", {{"class", "blob"}});
            html.raw(
                "<tr><th>#</th><th>device</th><th>code</th><th>values</th><th>from</th></tr>\n");
            size_t number = 0;
            for (const LoadedEntry& entry : blob.entries) {
                const EntryView view = EntryView::decode(entry.code, entry.values);
                html.open("tr", {{"id", anchor + "-e" + std::to_string(++number)}});
                html.raw("<td class=\"num\">" + std::to_string(number) + "</td><td>" +
                         Html::escape(BlobDecoder::deviceName(entry.deviceId)) + "</td><td>" +
                         Html::escape(BlobDecoder::codeText(entry.code)) +
                         "</td><td class=\"values\">" + NumberText::join(entry.values) +
                         (view.kind == EntryView::Kind::kBands ? bandTable(view) : "") +
                         "</td><td>" + linkedLines(Html::escape(entry.from), f) + "</td>");
                html.close("tr");
            }
            html.close("table");
        }
    }
    html.close("section");
}

void sourceSection(Html& html, const std::vector<ReportFile>& files) {
    html.open("section", {{"id", "source"}});
    html.element("h2", "Tuning file");
    for (size_t f = 0; f < files.size(); f++) {
        html.element("h3", side(files, f) + files[f].path);
        html.open("pre", {{"class", "source"}, {"id", fileTag(f) + "-source"}});
        const std::string& text = files[f].text;
        long line = 0;
        for (size_t start = 0; start < text.size();) {
            size_t end = std::min(text.find('\n', start), text.size());
            const std::string anchor = lineAnchor(f, ++line);
            html.raw("<span id=\"" + anchor + "\">" + Html::link(anchor, std::to_string(line)) +
                     Html::escape(text.substr(start, end - start)) + "</span>");
            start = end + 1;
        }
        html.close("pre");
    }
    html.close("section");
}

std::string page(const std::vector<ReportFile>& files) {
    Html html;
    html.raw("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">");
    html.element("title", "Tuning report: " + files[0].path +
                              (files.size() == 2 ? " and " + files[1].path : ""));
    html.raw(std::string("<style>") + kStyle + "</style><script>" + kScript +
             "</script></head>\n<body>\n");
    html.element("h1", files.size() == 2 ? "Tuning report: A and B" : "Tuning report");
    for (size_t f = 0; f < files.size(); f++) {
        html.element("p", side(files, f) + files[f].path, {{"class", "file"}});
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
    const BlobIndex index(files);
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

}  // namespace

int ReportCommand::collect(const std::string& path, size_t file, Json* document) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path, {}, true);
    if (session == nullptr) {
        return kExitError;
    }
    const LoadReport& report = session->report();
    // The findings without their effects: the report shows what the load said.
    std::vector<Finding> findings = LintRules::run(report);
    Effects::skip(&findings);
    *document = {{"file", path},
                 {"text", session->text()},
                 {"findings", findings.size()},
                 {"findings_html", printed(file, [&](Printer& out) {
                      CheckCommand::printFindings(out, path, findings, report, false, true);
                  })}};
    if (!report.readFailed) {
        (*document)["summary_html"] = printed(
            file, [&](Printer& out) { CheckCommand::printSummary(out, *session, false, ""); });
        (*document)["loaded"] = LoadedFile::of(*session).toJson(true);
    }
    return kExitOk;
}

int ReportCommand::run(const Options& options) {
    std::vector<ReportFile> files;
    for (const std::string& path : options.files) {
        const size_t file = files.size();
        const Json document =
            ChildLoads::one(path, [&](Json* made) { return collect(path, file, made); });
        if (document.is_null()) {
            return kExitError;
        }
        // A file the store could not read has no loaded model.
        const bool loaded = document.contains("loaded");
        files.push_back({path, document["text"], document["findings"], document["findings_html"],
                         document.value("summary_html", ""), loaded,
                         loaded ? LoadedFile::fromJson(document["loaded"]) : LoadedFile()});
    }
    std::ofstream out(options.output, std::ios::binary | std::ios::trunc);
    out << page(files);
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
