#include "tools/commands/ReportCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>

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
td.values { font-family: monospace; max-width: 46em; word-wrap: break-word;
  white-space: pre-wrap; }
.error { color: #b00020; font-weight: 600; } .warning { color: #a15c00; font-weight: 600; }
.note { color: #555; font-weight: 600; }
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

// The page's files, and their blobs by identity in the order of the first file's, then the
// others', one slot per file.
struct Page {
    std::vector<ReportFile> files;
    std::vector<std::string> order;
    std::map<std::string, std::vector<const LoadedBlob*>> byKey;

    explicit Page(std::vector<ReportFile> read) : files(std::move(read)) {
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
    // "A: " and "B: " before what belongs to one of two files.
    std::string side(size_t file) const {
        return files.size() == 1 ? "" : file == 0 ? "A: " : "B: ";
    }
};

std::string fileTag(size_t file) {
    return "f" + std::to_string(file);
}

std::string lineAnchor(size_t file, long line) {
    return fileTag(file) + "-L" + std::to_string(line);
}

// What a printer writes about file f, as HTML whose line numbers link to the file's lines.
std::string printed(size_t f, const std::function<void(Printer&)>& write) {
    const std::unique_ptr<Printer> out =
        Printer::make(Printer::Format::kHtml, [f](long line) { return lineAnchor(f, line); });
    write(*out);
    return out->render();
}

void findingsSection(Html& html, const Page& page) {
    for (size_t f = 0; f < page.files.size(); f++) {
        const ReportFile& file = page.files[f];
        html.element("h3", page.side(f) + file.path + ": " +
                               (file.findings == 0 ? "no findings"
                                                   : std::to_string(file.findings) + " findings"));
        html.raw(file.findingsHtml);
    }
}

void portsSection(Html& html, const Page& page) {
    for (size_t f = 0; f < page.files.size(); f++) {
        const ReportFile& file = page.files[f];
        if (!file.readable) {
            html.element("p", page.side(f) + file.path + ": the store could not read the file");
            continue;
        }
        html.element("h3", page.side(f) + file.path);
        html.raw(file.summaryHtml);
    }
}

// Per blob, under its title, the figures that figures makes of its slots; nothing without any.
void figuresByBlob(Html& html, const Page& page,
                   const std::function<std::string(const std::vector<const LoadedBlob*>&)>& figures) {
    for (const std::string& key : page.order) {
        const std::vector<const LoadedBlob*>& slots = page.byKey.at(key);
        const std::string made = figures(slots);
        if (!made.empty()) {
            html.element("h3", (slots[0] != nullptr ? slots[0] : slots.back())->title());
            html.raw("<div class=\"figures\">" + made + "</div>\n");
        }
    }
}

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

// A plot of each band list of a blob, the entries of one identity in every file drawn together.
std::string curveFigures(const std::vector<const LoadedBlob*>& slots) {
    std::vector<std::vector<std::string>> keys;
    for (const LoadedBlob* blob : slots) {
        keys.push_back(blob != nullptr ? blob->entryKeys() : std::vector<std::string>());
    }
    const size_t first = slots[0] != nullptr ? 0 : slots.size() - 1;
    std::string figures;
    for (size_t i = 0; i < keys[first].size(); i++) {
        const LoadedEntry& entry = slots[first]->entries[i];
        if (EntryView::decode(entry.code, entry.values).kind != EntryView::Kind::kBands) {
            continue;
        }
        const std::string names = entry.parameterNames();
        SvgPlot plot(BlobDecoder::deviceName(entry.deviceId) + " " +
                         BlobDecoder::codeText(entry.code) + (names.empty() ? "" : ": " + names),
                     "dB");
        for (size_t f = 0; f < slots.size(); f++) {
            const auto at = std::find(keys[f].begin(), keys[f].end(), keys[first][i]);
            if (at != keys[f].end()) {
                const LoadedEntry& their = slots[f]->entries[at - keys[f].begin()];
                addCurves(plot, EntryView::decode(their.code, their.values), f == 1,
                          slots.size() == 2 ? (f == 0 ? " A" : " B") : "");
            }
        }
        if (!plot.empty()) {
            figures += "<figure>" + plot.render() + "</figure>";
        }
    }
    return figures;
}

void curvesSection(Html& html, const Page& page) {
    if (page.files.size() == 2) {
        html.element(
            "p", "Solid: A (" + page.files[0].path + "); dashed: B (" + page.files[1].path + ").");
    }
    figuresByBlob(html, page, curveFigures);
}

// Heat maps of an output mode's matrices, each row named by the element of the tuning device's
// matrix that its words were read from, or numbered when there is none.
std::string heatMaps(const std::string& title, const EntryView& view, const MixMatrix* source) {
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
            // The view's word at is the matrix's word at - 1, behind the entry's enable word.
            const MatrixRow* element = source != nullptr ? source->rowOf(at - 1) : nullptr;
            labels.push_back(element != nullptr ? "<" + element->element + ">"
                                                : "in " + std::to_string(cells.size()));
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

void matricesSection(Html& html, const Page& page) {
    html.element("p",
                 "Each input channel's share of the left and right outputs (Q14 words as "
                 "decimals; red above 0, blue below), its row named by the file's element.");
    figuresByBlob(html, page, [&page](const std::vector<const LoadedBlob*>& slots) {
        std::string figures;
        for (size_t f = 0; f < slots.size(); f++) {
            if (slots[f] == nullptr) {
                continue;
            }
            const LoadedFile& file = page.files[f].loaded;
            for (const LoadedEntry& entry : slots[f]->entries) {
                const EntryView view = EntryView::decode(entry.code, entry.values);
                if (view.kind == EntryView::Kind::kOutputMode) {
                    figures +=
                        heatMaps(page.side(f) + BlobDecoder::deviceName(entry.deviceId) + " dom",
                                 view, carriedMatrix(file, entry));
                }
            }
            const auto matrix = slots[f]->kind == LoadedBlob::Kind::kTuningDevice
                                    ? file.store.mixMatrices.find(slots[f]->name)
                                    : file.store.mixMatrices.end();
            if (matrix != file.store.mixMatrices.end()) {
                figures +=
                    heatMaps(page.side(f) + "mix matrix", matrix->second.view(), &matrix->second);
            }
        }
        return figures;
    });
}

void diffSection(Html& html, const Page& page) {
    const LoadedFile& a = page.files[0].loaded;
    const LoadedFile& b = page.files[1].loaded;
    html.raw(printed(1, [&](Printer& out) { DiffCommand::compare(a, b).print(out, "A", "B"); }));
}

// Each blob as a table of its entries, read as blobs reads them, each with the lines it came from.
void blobsSection(Html& html, const Page& page) {
    for (size_t f = 0; f < page.files.size(); f++) {
        size_t number = 0;
        for (const LoadedBlob& blob : page.files[f].loaded.blobs) {
            html.element("h3",
                         page.side(f) + blob.title() + ": " + std::to_string(blob.entries.size()) +
                             " entries, " + std::to_string(blob.words) + " words",
                         {{"id", fileTag(f) + "-b" + std::to_string(number++)}});
            Printer::Table table{{{"", "#", true},
                                  {"", "device"},
                                  {"", "code"},
                                  {"", "values", false, "values"},
                                  {"", "from", false, "line"}},
                                 {}};
            for (const LoadedEntry& entry : blob.entries) {
                std::string values;
                for (const std::string& line : EntryView::decode(entry.code, entry.values).lines()) {
                    values += (values.empty() ? "" : "\n") + line;
                }
                table.addRow({table.rows.size() + 1, BlobDecoder::deviceName(entry.deviceId),
                              BlobDecoder::codeText(entry.code), values, entry.from});
            }
            html.raw(printed(f, [&](Printer& out) { out.table("blob", table); }));
        }
    }
}

void sourceSection(Html& html, const Page& page) {
    for (size_t f = 0; f < page.files.size(); f++) {
        html.element("h3", page.side(f) + page.files[f].path);
        html.open("pre", {{"class", "source"}, {"id", fileTag(f) + "-source"}});
        const std::string& text = page.files[f].text;
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
}

// The page's sections in order: the anchor, the name in the navigation, the heading, the writer.
// The differences are there only for two files.
struct Section {
    const char* id;
    const char* link;
    const char* heading;
    void (*write)(Html&, const Page&);
};
constexpr Section kSections[] = {{"findings", "Findings", "Findings", findingsSection},
                                 {"ports", "Ports", "Ports and tuning devices", portsSection},
                                 {"curves", "EQ curves", "EQ curves", curvesSection},
                                 {"matrices", "Mix matrices", "Mix matrices", matricesSection},
                                 {"diff", "Differences", "Differences, A to B", diffSection},
                                 {"blobs", "Blobs", "Blobs, entry by entry", blobsSection},
                                 {"source", "Tuning file", "Tuning file", sourceSection}};

std::string render(const Page& page) {
    const std::vector<ReportFile>& files = page.files;
    Html html;
    html.raw("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">");
    html.element("title", "Tuning report: " + files[0].path +
                              (files.size() == 2 ? " and " + files[1].path : ""));
    html.raw(std::string("<style>") + kStyle + "</style><script>" + kScript +
             "</script></head>\n<body>\n");
    html.element("h1", files.size() == 2 ? "Tuning report: A and B" : "Tuning report");
    for (size_t f = 0; f < files.size(); f++) {
        html.element("p", page.side(f) + files[f].path, {{"class", "file"}});
    }
    html.element("p", "spatializer-paramtool " + VersionInfo::tool() +
                          "; line links lead to the file's own lines at the end of the page.");
    html.raw("<pre id=\"page-errors\"></pre>\n<nav>");
    const auto shown = [&files](const Section& section) {
        return files.size() == 2 || std::string(section.id) != "diff";
    };
    for (const Section& section : kSections) {
        html.raw(shown(section) ? Html::link(section.id, section.link) + " " : "");
    }
    html.raw("</nav>\n");
    for (const Section& section : kSections) {
        if (shown(section)) {
            html.open("section", {{"id", section.id}});
            html.element("h2", section.heading);
            section.write(html, page);
            html.close("section");
        }
    }
    html.raw("</body></html>\n");
    return html.str();
}

// What the report shows of one file, loaded in this process: its text, check's findings without
// their effects and, when the store could read it, check's summary and its brief LoadedFile; what
// check says is printed for the page's file number file.
int collect(const std::string& path, size_t file, Json* document) {
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

}  // namespace

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
    out << render(Page(std::move(files)));
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
