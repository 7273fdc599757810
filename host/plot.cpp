#include "host/plot.h"

#include <cmath>
#include <cstdio>
#include <filesystem>

#include <sys/wait.h>

#include <fmt/format.h>

#include "host/error.h"

namespace curvebank::host {
namespace {

/// A string as gnuplot reads it between single quotes.
std::string quoted(const std::string &text)
{
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? std::string("''") : std::string(1, c);
    return result + "'";
}

std::string datablock(const std::string &name, const Series &series)
{
    std::string text = fmt::format("${} << EOD\n", name);
    for (size_t i = 0; i < series.x.size(); ++i)
        text += std::isnan(series.y[i]) ? "\n" : fmt::format("{} {}\n", series.x[i], series.y[i]);
    return text + "EOD\n";
}

std::string terminal(const std::string &file)
{
    const std::string extension = std::filesystem::path(file).extension().string();
    if (extension == ".png") return "pngcairo size 900,700 font ',11'";
    if (extension == ".svg") return "svg size 900,700 background '#ffffff' font ',11'";
    throw Error("a plot is a .png or a .svg file, not " + file);
}

}  // namespace

void draw(const FitPlot &plot, const std::string &file)
{
    std::string script = fmt::format("set terminal {}\nset output {}\n", terminal(file), quoted(file));
    script +=
        datablock("data", plot.data) + datablock("curve", plot.curve) + datablock("residuals", plot.residuals);
    for (size_t k = 0; k < plot.terms.size(); ++k) script += datablock(fmt::format("term{}", k + 1), plot.terms[k]);

    const auto line = [&script](const std::string &text) { script += text + '\n'; };
    line("set multiplot\nset lmargin 12\nset rmargin 3\nset grid lt 1 lw 0.5 lc rgb '#dddddd'");
    line("set key noenhanced above right horizontal maxrows 1");
    line(fmt::format("set title {} noenhanced\nset ylabel {} noenhanced", quoted(plot.title), quoted(plot.y_name)));
    line("set size 1,0.69\nset origin 0,0.31\nset bmargin 1\nset format x ''");
    std::string curves = "plot ";
    for (size_t k = 0; k < plot.terms.size(); ++k)
        curves += fmt::format("$term{} with filledcurves y=0 fs transparent solid 0.35 noborder title {}, ", k + 1,
                              quoted(plot.terms[k].title));
    line(curves + fmt::format("$data with points pt 7 ps 0.6 lc rgb '#444444' title {}, "
                              "$curve with lines lw 2 lc rgb '#c03030' title {}",
                              quoted(plot.data.title), quoted(plot.curve.title)));
    line("set xrange [GPVAL_X_MIN:GPVAL_X_MAX]\nunset title");
    line(
        "set size 1,0.31\nset origin 0,0\nset tmargin 0.6\nset bmargin 3.5\nset format x\nset xzeroaxis lt 1 lc "
        "rgb '#888888'");
    line(fmt::format("set xlabel {} noenhanced\nset ylabel {} noenhanced", quoted(plot.x_name),
                     quoted(plot.residuals.title)));
    line(
        "plot $residuals with impulses lc rgb '#888888' notitle, "
        "$residuals with points pt 7 ps 0.5 lc rgb '#444444' notitle");
    line("unset multiplot");

    constexpr int not_found = 127;
    FILE *gnuplot = popen("command -v gnuplot >/dev/null || exit 127; exec gnuplot", "w");
    if (!gnuplot) throw Error("cannot start gnuplot");
    std::fwrite(script.data(), 1, script.size(), gnuplot);
    const int status = pclose(gnuplot);
    if (WIFEXITED(status) && WEXITSTATUS(status) == not_found)
        throw Error("a plot needs gnuplot, which is not installed");
    if (status != 0) throw Error("gnuplot could not draw " + file);
}

}  // namespace curvebank::host
