// Inline SVG pictures for the report: curves over a logarithmic frequency axis (EQ targets and
// gains, per-channel gains, thresholds) and heat maps of coefficient matrices. No script, no
// external resources: the markup stands alone inside an HTML page.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korva::tool {

struct PlotSeries {
    std::string name;
    std::vector<std::pair<double, double>> points;  // (Hz, value)
    std::string color;
    bool dashed = false;
};

class SvgPlot {
public:
    SvgPlot(std::string title, std::string unit)
        : mTitle(std::move(title)), mUnit(std::move(unit)) {}

    // Points at or below 0 Hz have no place on the axis and are left out.
    void add(PlotSeries series);
    bool empty() const;
    std::string render(int width = 500, int height = 230) const;

    // A value's place between lo and hi on a logarithmic axis of the given length.
    static double logPosition(double hz, double lo, double hi, double length);
    // Tick values for a linear axis covering lo..hi with steps of 1, 2 or 5 times a power of ten.
    static std::vector<double> niceTicks(double lo, double hi, int most = 6);

    // Cells coloured by value (blue below 0, red above, white at 0, full colour at +-1 and beyond),
    // each with its value written in it.
    static std::string heatMap(const std::string& title,
                               const std::vector<std::vector<double>>& cells,
                               const std::vector<std::string>& rowLabels,
                               const std::vector<std::string>& columnLabels);

    // Colours that stay apart for up to eight series.
    static const char* color(size_t index);

private:
    std::string mTitle;
    std::string mUnit;
    std::vector<PlotSeries> mSeries;
};

}  // namespace korva::tool
