// The cost of one call of every model at its reference sample: value, derivatives, and both in one call.
//
//     build/linux-release/curvebank_bench --benchmark_filter=Gauss/
//
// The models are called through the function pointer that the built library hands out, as a host calls them.

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "host/known_model.h"

using namespace curvebank::host;

namespace {

/// Calls a model at 16 points of its sample range in turn.
void call_model(benchmark::State &state, const KnownModel &known, int flags)
{
    const ModelReference &about = *known.about;
    const auto count = static_cast<int>(about.sample_parameters.size());
    const auto nParams = static_cast<int16_t>(about.repeated.empty() ? known.model.nParams : count);
    const size_t room = 2 * static_cast<size_t>(count) + 16;
    std::vector<double> p(room), y(room), dy(room);
    std::copy(about.sample_parameters.begin(), about.sample_parameters.end(), p.begin() + 1);

    constexpr size_t points = 16;
    std::vector<std::vector<double>> x(points, std::vector<double>(4));
    for (size_t i = 0; i < points; ++i)
        for (size_t k = 0; k < about.sample_ranges.size(); ++k) {
            const auto [low, high] = about.sample_ranges[k];
            x[i][k + 1] = low + (high - low) * (static_cast<double>(i) + 0.5) / points;
        }
    size_t point = 0;
    for (auto _ : state) {
        errno = 0;
        benchmark::DoNotOptimize(known.model.function(static_cast<int16_t>(flags), nullptr, nParams, nullptr, 0,
                                                      p.data(), nullptr, x[point].data(), y.data(), dy.data()));
        point = (point + 1) % points;
    }
}

}  // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    const Library library = Library::standard();
    for (const ModelReference &about : reference()) {
        const KnownModel known = find_model(library, about.name);
        const auto add = [&](const char *what, int flags) {
            benchmark::RegisterBenchmark(
                (about.name + "/" + what).c_str(),
                [known, flags](benchmark::State &state) { call_model(state, known, flags); });
        };
        add("value", EVAL_VALUE);
        add("derivatives", EVAL_DERIVS);
        add("both", EVAL_VALUE | EVAL_DERIVS);
    }
    benchmark::RunSpecifiedBenchmarks();
}
