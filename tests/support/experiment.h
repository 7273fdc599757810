// A model with data of its own, ready to be fitted.

#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "curvebank/fit/fit.h"

namespace curvebank::fit {

/// Numbers that are the same on every system.
class Random {
public:
    explicit Random(unsigned seed) : generator_(seed) {}

    double uniform(double low, double high)
    {
        return low + (high - low) * static_cast<double>(generator_() >> 11) * 0x1p-53;
    }
    size_t below(size_t count) { return static_cast<size_t>(generator_() % count); }
    bool chance(double share) { return uniform(0, 1) < share; }

    /// Of mean 0 and variance 1, and normal enough for noise.
    double noise()
    {
        double sum = -6;
        for (int i = 0; i < 12; ++i) sum += uniform(0, 1);
        return sum;
    }

private:
    std::mt19937_64 generator_;
};

struct Experiment {
    explicit Experiment(Model fitted) : model(std::move(fitted)), x(model.variables().size()) {}

    /// Points of one variable.
    void points(size_t count, double low, double high)
    {
        for (size_t i = 0; i < count; ++i)
            x[0].push_back(low + (high - low) * static_cast<double>(i) / static_cast<double>(count - 1));
    }

    /// Makes y the curve of those parameters, with noise.
    void follow(const std::vector<double> &p, double noise)
    {
        Random random(7);
        y.assign(model.outputs(), std::vector<double>(x[0].size()));
        std::vector<const double *> from;
        std::vector<double *> to;
        for (const auto &column : x) from.push_back(column.data());
        for (auto &column : y) to.push_back(column.data());
        model.values(p, from, x[0].size(), to);
        for (auto &column : y)
            for (double &value : column) value += noise * random.noise();
    }

    void start(const std::vector<double> &p)
    {
        options.start.clear();
        for (size_t i = 0; i < p.size(); ++i) options.start.emplace_back(model.parameters()[i].name, p[i]);
    }

    Result run() const
    {
        data.x.assign(x.begin(), x.end());
        data.y.assign(y.begin(), y.end());
        data.weights = weights;
        data.sigma = sigma;
        return fit(model, data, options);
    }

    Model model;
    std::vector<std::vector<double>> x, y;
    std::vector<double> weights, sigma;
    Options options;
    mutable Data data;  ///< its columns are set by run
};

inline const Estimate &at(const Result &result, std::string_view name)
{
    for (const auto *list : {&result.parameters, &result.derived})
        for (const Estimate &estimate : *list)
            if (estimate.name == name) return estimate;
    throw Error("no estimate is called " + std::string(name));
}

inline std::vector<double> values_of(const Result &result)
{
    std::vector<double> values;
    for (const Estimate &estimate : result.parameters) values.push_back(estimate.value);
    return values;
}

/// All notes in one text.
inline std::string notes_of(const Result &result)
{
    std::string text;
    for (const std::string &note : result.notes) text += note + "\n";
    return text;
}

}  // namespace curvebank::fit
