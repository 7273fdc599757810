// Pictures of models and fits, drawn by gnuplot into .png or .svg files. All throw Error.

#pragma once

#include <string>
#include <vector>

namespace curvebank::program {

struct Series {
    std::string title;
    std::vector<double> x, y;  ///< a NaN y interrupts a curve
};

/// Curves of one variable, one an output, with data and residuals where there are any.
struct CurvePlot {
    std::string title, x_name, y_name;
    std::vector<Series> curves, data, residuals;
    std::vector<Series> terms;  ///< each term's share, drawn as an area
};

/// A function of two variables on a grid, with data where there are any.
struct SurfacePlot {
    std::string title, x_name, y_name, z_name;
    std::vector<double> x, y;  ///< the grid lines
    std::vector<double> z;     ///< x.size() values for each y; a NaN leaves a hole
    std::vector<double> data_x, data_y, data_z;
};

void draw(const CurvePlot &plot, const std::string &file);
void draw_surface(const SurfacePlot &plot, const std::string &file);

/// The curve on which the function is 0, with the data (whose z is not looked at).
void draw_zero_curve(const SurfacePlot &plot, const std::string &file);

}  // namespace curvebank::program
