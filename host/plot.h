// Pictures of fits, drawn by gnuplot.

#pragma once

#include <string>
#include <vector>

namespace curvebank::host {

struct Series {
    std::string title;
    std::vector<double> x, y;  ///< a NaN y interrupts a curve
};

struct FitPlot {
    std::string title, x_name, y_name;
    Series data, curve, residuals;
    std::vector<Series> terms;  ///< each term's share, drawn where there are several
};

/// Draws data and curve above the residuals into a .png or .svg file. Throws Error.
void draw(const FitPlot &plot, const std::string &file);

}  // namespace curvebank::host
