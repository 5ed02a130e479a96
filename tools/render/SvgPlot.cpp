#include "tools/render/SvgPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/render/HtmlWriter.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

constexpr int kLeft = 52;
constexpr int kRight = 12;
constexpr int kTop = 26;
constexpr int kBottom = 30;
constexpr int kTitleLine = 14;
// The widest a character of the 11-pixel bold title runs, so that a wrapped line fits.
constexpr double kTitleCharWidth = 7;
constexpr int kLegendWidth = 120;
constexpr int kLegendLine = 14;

std::string number(double value, int decimals = 1) {
    char text[32];
    snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

std::string hzText(double hz) {
    return hz >= 1000 ? number(hz / 1000, hz >= 10000 || std::fmod(hz, 1000) == 0 ? 0 : 1) + "k"
                      : number(hz, 0);
}

}  // namespace

void SvgPlot::add(PlotSeries series) {
    series.points.erase(std::remove_if(series.points.begin(), series.points.end(),
                                       [](const auto& p) { return !(p.first > 0); }),
                        series.points.end());
    mSeries.push_back(std::move(series));
}

bool SvgPlot::empty() const {
    return std::all_of(mSeries.begin(), mSeries.end(),
                       [](const PlotSeries& s) { return s.points.empty(); });
}

double SvgPlot::logPosition(double hz, double lo, double hi, double length) {
    return (std::log10(hz) - std::log10(lo)) / (std::log10(hi) - std::log10(lo)) * length;
}

std::vector<double> SvgPlot::niceTicks(double lo, double hi, int most) {
    if (!(hi > lo)) {
        lo -= 1;
        hi += 1;
    }
    const double rough = (hi - lo) / std::max(most - 1, 1);
    const double power = std::pow(10, std::floor(std::log10(rough)));
    double step = power;
    for (double factor : {1.0, 2.0, 5.0, 10.0}) {
        step = factor * power;
        if (step >= rough) {
            break;
        }
    }
    // Ticks as multiples of the step, so that sums of inexact steps cannot add a tick.
    const long first = std::lround(std::floor(lo / step + 1e-9));
    const long last = std::lround(std::ceil(hi / step - 1e-9));
    std::vector<double> ticks;
    for (long i = first; i <= last; i++) {
        ticks.push_back(i * step);
    }
    return ticks;
}

const char* SvgPlot::color(size_t index) {
    static const char* const kColors[] = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd",
                                          "#ff7f0e", "#17becf", "#8c564b", "#e377c2"};
    return kColors[index % 8];
}

std::string SvgPlot::render(int width, int height) const {
    double loHz = 20;
    double hiHz = 20000;
    double lo = 0;
    double hi = 0;
    bool first = true;
    size_t drawn = 0;
    for (const PlotSeries& series : mSeries) {
        drawn += series.points.empty() ? 0 : 1;
        for (const auto& [hz, value] : series.points) {
            loHz = std::min(loHz, hz);
            hiHz = std::max(hiHz, hz);
            lo = first ? value : std::min(lo, value);
            hi = first ? value : std::max(hi, value);
            first = false;
        }
    }
    const std::vector<double> ticks = niceTicks(lo, hi);
    lo = ticks.front();
    hi = ticks.back();
    // The title wraps within the width above the plot, and the legend sits in rows below the
    // frequency axis, so that neither is cut off nor drawn over a curve.
    const std::vector<std::string> title =
        TextTable::wrap(mTitle, static_cast<size_t>((width - 8) / kTitleCharWidth));
    const int top = kTitleLine * static_cast<int>(title.size()) + 14;
    const size_t perRow = std::max(1, (width - kLeft) / kLegendWidth);
    const int legendRows = static_cast<int>((drawn + perRow - 1) / perRow);
    const int plotBottom = height - kBottom;
    height += kTitleLine * (static_cast<int>(title.size()) - 1) + kLegendLine * legendRows;
    const double plotWidth = width - kLeft - kRight;
    const double plotHeight = plotBottom - kTop;
    const auto x = [&](double hz) { return kLeft + logPosition(hz, loHz, hiHz, plotWidth); };
    const auto y = [&](double value) { return top + (hi - value) / (hi - lo) * plotHeight; };
    const double axisY = top + plotHeight;

    std::string svg = "<svg class=\"plot\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                      std::to_string(width) + "\" height=\"" + std::to_string(height) +
                      "\" viewBox=\"0 0 " + std::to_string(width) + " " + std::to_string(height) +
                      "\" role=\"img\"><title>" + HtmlWriter::escape(mTitle) + "</title>";
    for (size_t i = 0; i < title.size(); i++) {
        svg += "<text class=\"title\" x=\"4\" y=\"" + std::to_string(kTitleLine * (i + 1)) + "\">" +
               HtmlWriter::escape(title[i]) + "</text>";
    }
    // Grid: a line per 1-2-5 frequency and per value tick.
    for (double decade = 1; decade <= 100000; decade *= 10) {
        for (double factor : {1.0, 2.0, 5.0}) {
            const double hz = decade * factor;
            if (hz < loHz || hz > hiHz) {
                continue;
            }
            const std::string at = number(x(hz));
            svg += "<line class=\"grid\" x1=\"" + at + "\" x2=\"" + at + "\" y1=\"" +
                   std::to_string(top) + "\" y2=\"" + number(axisY) + "\"/>";
            svg += "<text class=\"tick\" x=\"" + at + "\" y=\"" + number(axisY + 16) +
                   "\" text-anchor=\"middle\">" + hzText(hz) + "</text>";
        }
    }
    for (double tick : ticks) {
        const std::string at = number(y(tick));
        svg += std::string("<line class=\"") + (tick == 0 ? "zero" : "grid") + "\" x1=\"" +
               std::to_string(kLeft) + "\" x2=\"" + number(kLeft + plotWidth) + "\" y1=\"" + at +
               "\" y2=\"" + at + "\"/>";
        svg += "<text class=\"tick\" x=\"" + std::to_string(kLeft - 4) + "\" y=\"" +
               number(y(tick) + 4) + "\" text-anchor=\"end\">" +
               number(tick, tick == std::floor(tick) ? 0 : 1) + "</text>";
    }
    svg += "<text class=\"unit\" x=\"4\" y=\"" + number(top - 4) + "\">" +
           HtmlWriter::escape(mUnit) + "</text><text class=\"unit\" x=\"" +
           std::to_string(kLeft - 14) + "\" y=\"" + number(axisY + 16) +
           "\" text-anchor=\"end\">Hz</text>";
    size_t legend = 0;
    for (const PlotSeries& series : mSeries) {
        if (series.points.empty()) {
            continue;
        }
        std::string path;
        for (const auto& [hz, value] : series.points) {
            path += (path.empty() ? "M" : " L") + number(x(hz)) + " " + number(y(value));
        }
        const std::string style =
            "stroke=\"" + series.color + "\"" + (series.dashed ? " stroke-dasharray=\"6 3\"" : "");
        svg += "<path class=\"series\" data-series=\"" + HtmlWriter::escape(series.name) +
               "\" d=\"" + path + "\" fill=\"none\" " + style + "/>";
        for (const auto& [hz, value] : series.points) {
            svg += "<circle cx=\"" + number(x(hz)) + "\" cy=\"" + number(y(value)) +
                   "\" r=\"2\" fill=\"" + series.color + "\"><title>" +
                   HtmlWriter::escape(series.name) + ": " + hzText(hz) + " Hz, " +
                   number(value, 2) + " " + HtmlWriter::escape(mUnit) + "</title></circle>";
        }
        const double legendX = kLeft + kLegendWidth * static_cast<double>(legend % perRow);
        const double legendY = axisY + 22 + kLegendLine * static_cast<double>(legend++ / perRow + 1);
        svg += "<line x1=\"" + number(legendX) + "\" x2=\"" + number(legendX + 18) + "\" y1=\"" +
               number(legendY - 4) + "\" y2=\"" + number(legendY - 4) + "\" " + style +
               " stroke-width=\"2\"/><text class=\"legend\" x=\"" + number(legendX + 22) +
               "\" y=\"" + number(legendY) + "\">" + HtmlWriter::escape(series.name) + "</text>";
    }
    return svg + "</svg>";
}

std::string SvgPlot::heatMap(const std::string& title, const std::vector<std::vector<double>>& cells,
                             const std::vector<std::string>& rowLabels,
                             const std::vector<std::string>& columnLabels) {
    constexpr int kCell = 44;
    constexpr int kLabel = 56;
    size_t columns = columnLabels.size();
    for (const auto& row : cells) {
        columns = std::max(columns, row.size());
    }
    const int width = kLabel + kCell * static_cast<int>(columns) + 8;
    const int height = 40 + kCell * static_cast<int>(cells.size()) + 4;
    std::string svg =
        "<svg class=\"heatmap\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
        std::to_string(std::max(width, static_cast<int>(title.size() * kTitleCharWidth) + 4)) +
        "\" height=\"" + std::to_string(height) + "\" role=\"img\"><title>" +
        HtmlWriter::escape(title) + "</title>";
    svg += "<text class=\"title\" x=\"2\" y=\"14\">" + HtmlWriter::escape(title) + "</text>";
    for (size_t c = 0; c < columnLabels.size(); c++) {
        svg += "<text class=\"tick\" x=\"" + std::to_string(kLabel + kCell * c + kCell / 2) +
               "\" y=\"34\" text-anchor=\"middle\">" + HtmlWriter::escape(columnLabels[c]) +
               "</text>";
    }
    for (size_t r = 0; r < cells.size(); r++) {
        const int top = 40 + kCell * static_cast<int>(r);
        svg += "<text class=\"tick\" x=\"2\" y=\"" + std::to_string(top + kCell / 2 + 4) + "\">" +
               HtmlWriter::escape(r < rowLabels.size() ? rowLabels[r] : "") + "</text>";
        for (size_t c = 0; c < cells[r].size(); c++) {
            const double value = cells[r][c];
            const double share = std::min(std::abs(value), 1.0);
            const int fade = static_cast<int>(std::lround(255 * (1 - share)));
            char fill[8];
            snprintf(fill, sizeof(fill), "#%02x%02x%02x", value < 0 ? fade : 255, fade,
                     value < 0 ? 255 : fade);
            svg += "<rect class=\"cell\" x=\"" + std::to_string(kLabel + kCell * c) + "\" y=\"" +
                   std::to_string(top) + "\" width=\"" + std::to_string(kCell - 2) +
                   "\" height=\"" + std::to_string(kCell - 2) + "\" fill=\"" + fill + "\"><title>" +
                   number(value, 4) + "</title></rect>";
            svg += "<text class=\"value\" x=\"" +
                   std::to_string(kLabel + kCell * c + kCell / 2 - 1) + "\" y=\"" +
                   std::to_string(top + kCell / 2 + 3) + "\" text-anchor=\"middle\">" +
                   number(value, 3) + "</text>";
        }
    }
    return svg + "</svg>";
}

}  // namespace korva::tool
