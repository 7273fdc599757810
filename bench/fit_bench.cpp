// Times fits and leaves the data for the peers: fit_bench FOLDER writes FOLDER/<problem>.data (x, then y, as doubles) and
// prints a line of JSON a problem.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "curvebank/fit/fit.h"

using namespace curvebank::fit;

namespace {

struct Problem {
    std::string name, model;
    int terms;
    std::vector<double> truth, start;
    double low, high, noise;
    size_t points;
    int threads;
};

double seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The fastest of several runs, as the peers are timed.
void time_fit(const Problem &problem, const std::string &folder)
{
    const Model model = Model::catalogue(problem.model, problem.terms);
    std::mt19937 generator(7);
    std::normal_distribution<> noise(0, problem.noise);
    std::vector<double> x(problem.points), y(problem.points);
    for (size_t i = 0; i < x.size(); ++i)
        x[i] = problem.low + (problem.high - problem.low) * static_cast<double>(i) / static_cast<double>(x.size() - 1);
    const double *const from = x.data();
    double *const to = y.data();
    model.values(problem.truth, {&from, 1}, x.size(), {&to, 1});
    for (double &value : y) value += noise(generator);
    std::ofstream file(folder + "/" + problem.name + ".data", std::ios::binary);
    for (const auto *column : {&x, &y})
        file.write(reinterpret_cast<const char *>(column->data()),
                   static_cast<std::streamsize>(column->size() * sizeof(double)));

    Data data;
    data.x = {x};
    data.y = {y};
    Options options;
    options.threads = problem.threads;
    for (size_t i = 0; i < problem.start.size(); ++i)
        options.start.emplace_back(model.parameters()[i].name, problem.start[i]);
    double fastest = 1e9;
    Result result;
    const double end = seconds() + 2;
    for (int run = 0; run < 5 || (seconds() < end && run < 2000); ++run) {
        const double begin = seconds();
        result = fit(model, data, options);
        fastest = std::min(fastest, seconds() - begin);
    }
    std::printf("{\"name\": \"%s\", \"points\": %zu, \"threads\": %d, \"seconds\": %.9f, \"offset\": %.3g, "
                "\"verdict\": \"%s\", \"parameters\": [",
                problem.name.c_str(), problem.points, problem.threads, fastest, result.relative_offset,
                std::string(word(result.verdict)).c_str());
    for (size_t i = 0; i < result.parameters.size(); ++i)
        std::printf("%s%.17g", i ? ", " : "", result.parameters[i].value);
    std::printf("], \"start\": [");
    for (size_t i = 0; i < problem.start.size(); ++i) std::printf("%s%.17g", i ? ", " : "", problem.start[i]);
    std::printf("]}\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char **argv)
{
    const std::string folder = argc > 1 ? argv[1] : ".";
    const std::vector<double> peaks = {1, 2, 0.8, 3, 4, 1.2, 5}, near = {0.8, 2.2, 1, 2.5, 3.8, 1, 4};
    for (const size_t points : {size_t{100}, size_t{1000}, size_t{100000}})
        time_fit({"two_gaussians_" + std::to_string(points), "Gauss", 2, peaks, near, 0, 6, 0.05, points, 1},
                 folder);
    time_fit({"two_gaussians_1000000", "Gauss", 2, peaks, near, 0, 6, 0.05, 1000000, 2}, folder);
    time_fit({"boxlucas_100", "BoxLucas1", 1, {240, 0.0055}, {200, 0.01}, 0, 500, 1, 100, 1}, folder);
    time_fit({"logistic_100", "Logistic", 1, {0, 10, 5, 3}, {1, 8, 4, 2}, 0.1, 20, 0.1, 100, 1}, folder);
}
