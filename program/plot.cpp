#include "program/plot.h"

#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "platform/error.h"
#include "platform/process.h"

namespace curvebank::program {
namespace {

/// A string as gnuplot reads it between single quotes.
std::string quoted(const std::string &text)
{
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? std::string("''") : std::string(1, c);
    return result + "'";
}

/// The series as the data blocks $name1, $name2, ...
std::string datablocks(const std::string &name, const std::vector<Series> &all)
{
    std::string text;
    for (size_t k = 0; k < all.size(); ++k) {
        text += fmt::format("${}{} << EOD\n", name, k + 1);
        for (size_t i = 0; i < all[k].x.size(); ++i)
            text += std::isnan(all[k].y[i]) ? "\n" : fmt::format("{} {}\n", all[k].x[i], all[k].y[i]);
        text += "EOD\n";
    }
    return text;
}

/// The grid as the data block $grid and the data as $data.
std::string datablocks(const SurfacePlot &plot)
{
    std::string text = "$grid << EOD\n";
    for (size_t j = 0; j < plot.y.size(); ++j, text += '\n')
        for (size_t i = 0; i < plot.x.size(); ++i)
            text += fmt::format("{} {} {}\n", plot.x[i], plot.y[j], plot.z[j * plot.x.size() + i]);
    text += "EOD\n$data << EOD\n";
    for (size_t i = 0; i < plot.data_x.size(); ++i)
        text += fmt::format("{} {} {}\n", plot.data_x[i], plot.data_y[i],
                            i < plot.data_z.size() ? plot.data_z[i] : 0.0);
    return text + "EOD\n";
}

std::string terminal(const std::string &file)
{
    const std::string extension = std::filesystem::path(file).extension().string();
    if (extension == ".png") return "pngcairo size 900,700 font ',11'";
    if (extension == ".svg") return "svg size 900,700 background '#ffffff' font ',11'";
    throw Error("a plot is a .png or a .svg file, not " + file);
}

/// What every script begins with.
std::string opening(const std::string &file, const std::string &title, const std::string &x_name,
                    const std::string &y_name)
{
    return fmt::format(
        "set terminal {}\nset output {}\nset grid lt 1 lw 0.5 lc rgb '#dddddd'\nset key noenhanced\n"
        "set title {} noenhanced\nset xlabel {} noenhanced\nset ylabel {} noenhanced\n",
        terminal(file), quoted(file), quoted(title), quoted(x_name), quoted(y_name));
}

void run_gnuplot(const std::string &script, const std::string &file)
{
    switch (platform::run_program("gnuplot", script)) {
        case platform::ProgramEnd::success:
            return;
        case platform::ProgramEnd::not_found:
            throw Error("a plot needs gnuplot, which is not installed");
        case platform::ProgramEnd::failure:
            throw Error("gnuplot could not draw " + file);
    }
}

const std::string data_style = "with points pt 7 ps 0.6 lc rgb '#444444'";

}  // namespace

void draw(const CurvePlot &plot, const std::string &file)
{
    const bool with_residuals = !plot.residuals.empty();
    std::string script = opening(file, plot.title, plot.x_name, plot.y_name);
    script += datablocks("data", plot.data) + datablocks("curve", plot.curves) +
              datablocks("residuals", plot.residuals) + datablocks("term", plot.terms);
    const auto line = [&script](const std::string &text) { script += text + '\n'; };
    line("set key above right horizontal maxrows 1\nset lmargin 12\nset rmargin 3");
    if (with_residuals)
        line("set multiplot\nset size 1,0.69\nset origin 0,0.31\nset bmargin 1\nset format x ''\nunset xlabel");

    std::string parts;
    for (size_t k = 0; k < plot.terms.size(); ++k)
        parts += fmt::format("$term{} with filledcurves y=0 fs transparent solid 0.35 noborder title {}, ", k + 1,
                             quoted(plot.terms[k].title));
    for (size_t k = 0; k < plot.data.size(); ++k)
        parts += fmt::format("$data{} {} title {}, ", k + 1, data_style, quoted(plot.data[k].title));
    for (size_t k = 0; k < plot.curves.size(); ++k)
        parts += fmt::format("$curve{} with lines lw 2 lc rgb '{}' title {}, ", k + 1,
                             k == 0 ? "#c03030" : "#3060c0", quoted(plot.curves[k].title));
    line("plot " + parts);
    if (with_residuals) {
        line("set xrange [GPVAL_X_MIN:GPVAL_X_MAX]\nunset title");
        line(
            "set size 1,0.31\nset origin 0,0\nset tmargin 0.6\nset bmargin 3.5\nset format x\nset xzeroaxis lt 1 "
            "lc rgb '#888888'");
        line(fmt::format("set xlabel {} noenhanced\nset ylabel 'residual'", quoted(plot.x_name)));
        parts.clear();
        for (size_t k = 1; k <= plot.residuals.size(); ++k)
            parts += fmt::format("$residuals{} with impulses lc rgb '#888888' notitle, $residuals{} {} notitle, ",
                                 k, k, data_style);
        line("plot " + parts + "\nunset multiplot");
    }
    run_gnuplot(script, file);
}

void draw_surface(const SurfacePlot &plot, const std::string &file)
{
    std::string script = opening(file, plot.title, plot.x_name, plot.y_name) + datablocks(plot);
    script += fmt::format("set zlabel {} noenhanced\nset xyplane 0.05\nset view 55,35\nset ticslevel 0\n",
                          quoted(plot.z_name));
    script +=
        "set palette defined (0 '#30508f', 1 '#4aa0a8', 2 '#e8dca0', 3 '#c03030')\nset pm3d depthorder border lc "
        "rgb '#808080' lw 0.2\n";
    script += "splot $grid with pm3d notitle";
    if (!plot.data_x.empty()) script += ", $data " + data_style + " title 'data'";
    run_gnuplot(script + '\n', file);
}

void draw_zero_curve(const SurfacePlot &plot, const std::string &file)
{
    std::string script = opening(file, plot.title, plot.x_name, plot.y_name) + datablocks(plot);
    script +=
        "set contour base\nset cntrparam levels discrete 0\nunset surface\nset table $zero\nsplot $grid\nunset "
        "table\n";
    script +=
        "set size ratio -1\nset offsets graph 0.05, graph 0.05, graph 0.05, graph 0.05\nplot $zero with lines lw 2 "
        "lc rgb '#c03030' title 'fit'";
    if (!plot.data_x.empty()) script += ", $data using 1:2 " + data_style + " title 'data'";
    run_gnuplot(script + '\n', file);
}

}  // namespace curvebank::program
