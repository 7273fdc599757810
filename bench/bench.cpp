// What a call of a model costs.
//
//     model/NAME/value|derivatives|both    every model, point by point through its function pointer, as a host does
//     bare/NAME/value|derivatives          the same points in a bare loop; derivatives with the value
//     threads/NAME                         derivative calls by one and by two threads at a time
//     peaks/NAME/N                         derivative calls for N peaks
//
// One iteration evaluates all points; items are calls. scripts/bench runs this program and makes the tables.

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bare_loops.h"
#include "program/known_model.h"

using namespace curvebank;

namespace {

constexpr size_t points = 64;
constexpr int most_peaks = 100;

/// The sample points of a model, and room for what it writes at each of them.
struct Points {
    size_t stride;  // from point to point in x, y and dy
    std::vector<double> p, x, y, dy;

    Points(const reference::ModelReference &about, size_t step, int peaks = 1)
        : stride(step), p(stride, 1.0), x(points * stride), y(points * stride), dy(points * stride)
    {
        // After the sample's parameters its last peak stands again as often as needed.
        const auto sample = about.sample_parameters;
        std::copy(sample.begin(), sample.end(), p.begin() + 1);
        const size_t peak = about.repeated.size(),
                     all = about.parameters.size() + peak * static_cast<size_t>(peaks);
        for (size_t i = sample.size() + 1; i <= all; ++i) p[i] = p[i - peak];

        for (size_t i = 0; i < points; ++i)
            for (size_t k = 0; k < about.sample_ranges.size(); ++k) {
                const auto [low, high] = about.sample_ranges[k];
                // The second variable runs through its range in another order than the first.
                const size_t place = k == 0 ? i : (i * 37) % points;
                x[i * stride + k + 1] = low + (high - low) * (static_cast<double>(place) + 0.5) / points;
            }
    }

    void call(ModelFunc model, int flags, int nParams)
    {
        for (size_t at = 0; at < x.size(); at += stride) {
            errno = 0;
            model(static_cast<int16_t>(flags), nullptr, static_cast<int16_t>(nParams), nullptr, 0, p.data(),
                  nullptr, &x[at], &y[at], &dy[at]);
        }
    }
};

/// The parameters of a call; models of repeated terms are called with that many of them.
int count(const program::KnownModel &known, int terms = 1)
{
    const auto once = static_cast<int>(known.about->parameters.size());
    const auto repeated = static_cast<int>(known.about->repeated.size());
    return repeated == 0 ? known.nParams : once + repeated * terms;
}

/// The distance from point to point: at least that of the bare loops.
size_t room(int nParams)
{
    return std::max(bench::stride, static_cast<size_t>(CURVEBANK_ROOM(nParams)));
}

void count_calls(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(points));
}

void time_model(benchmark::State &state, const program::KnownModel &known, int flags)
{
    Points data(*known.about,
                room(std::max(count(known), static_cast<int>(known.about->sample_parameters.size()))));
    for (auto _ : state) {
        data.call(known.function, flags, count(known));
        benchmark::ClobberMemory();
    }
    count_calls(state);
}

void time_peaks(benchmark::State &state, const program::KnownModel &known)
{
    const int peaks = static_cast<int>(state.range(0));
    const auto &about = *known.about;
    const int nParams = count(known, peaks);
    Points data(about, room(count(known, most_peaks)), peaks);
    for (auto _ : state) {
        data.call(known.function, EVAL_DERIVS, nParams);
        benchmark::ClobberMemory();
    }
    count_calls(state);
}

void time_bare_loop(benchmark::State &state, const reference::ModelReference &about, bench::BareLoop::Function loop)
{
    Points data(about, bench::stride);
    for (auto _ : state) {
        loop(data.p.data(), data.x.data(), data.y.data(), data.dy.data(), points);
        benchmark::ClobberMemory();
    }
    count_calls(state);
}

/// Throws unless a bare loop computes what its model computes.
void compare(const program::KnownModel &known, const bench::BareLoop &bare)
{
    const auto agree = [&](int flags, bench::BareLoop::Function loop) {
        Points ours(*known.about, bench::stride), theirs = ours;
        ours.call(known.function, flags, count(known));
        loop(theirs.p.data(), theirs.x.data(), theirs.y.data(), theirs.dy.data(), points);
        const auto close = [](double a, double b) { return std::fabs(a - b) <= 1e-12 * (1 + std::fabs(a)); };
        // A model of peaks also writes each peak's share.
        for (size_t at = 0; at < ours.y.size(); at += ours.stride) {
            const int outputs = known.nDep;
            if (!std::equal(&ours.y[at + 1], &ours.y[at + 1] + outputs, &theirs.y[at + 1], close) ||
                !std::equal(&ours.dy[at], &ours.dy[at] + ours.stride, &theirs.dy[at], close))
                throw std::logic_error(std::string("the bare loop of ") + bare.name + " computes something else");
        }
    };
    agree(EVAL_VALUE, bare.value);
    if (bare.derivatives) agree(EVAL_DERIVS, bare.derivatives);
}

void add_all()
{
    const auto add = [](const std::string &name, auto function) {
        return benchmark::RegisterBenchmark(name.c_str(), function);
    };
    for (const bench::BareLoop &bare : bench::bare_loops()) {
        const program::KnownModel known = program::find_model(bare.name);
        compare(known, bare);
        const auto time = [&](const char *what, bench::BareLoop::Function loop) {
            add(std::string("bare/") + bare.name + what,
                [&about = *known.about, loop](benchmark::State &state) { time_bare_loop(state, about, loop); });
        };
        time("/value", bare.value);
        if (bare.derivatives) time("/derivatives", bare.derivatives);
    }
    for (const reference::ModelReference &about : reference::models) {
        const program::KnownModel known = program::find_model(about.name);
        const auto time = [&](const char *what, int flags) {
            add("model/" + std::string(about.name) + what,
                [known, flags](benchmark::State &state) { time_model(state, known, flags); });
        };
        time("/value", EVAL_VALUE);
        time("/derivatives", EVAL_DERIVS);
        time("/both", EVAL_VALUE | EVAL_DERIVS);
    }
    for (const char *name : {"ExpDec2", "Logistic", "Gauss", "LangmuirEXT1", "Gauss2D"}) {
        const program::KnownModel known = program::find_model(name);
        add(std::string("threads/") + name,
            [known](benchmark::State &state) { time_model(state, known, EVAL_DERIVS); })
            ->Threads(1)
            ->Threads(2)
            ->UseRealTime();
    }
    for (const char *name : {"Gauss", "Lorentz", "LogNormal", "Extreme", "Gauss2D"}) {
        const program::KnownModel known = program::find_model(name);
        auto *peaks =
            add(std::string("peaks/") + name, [known](benchmark::State &state) { time_peaks(state, known); });
        for (const int n : {1, 2, 5, 10, 20, 50, most_peaks}) peaks->Arg(n);
    }
}

}  // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    try {
        add_all();
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
