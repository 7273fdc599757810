// The data of a fit, block by block, in place.

#pragma once

#include <vector>

#include "curvebank/fit/fit.h"
#include "fit/kernels.h"

namespace curvebank::fit {

class Points {
public:
    /// Throws Error: lengths that differ, numbers that are not finite where these are not to be skipped, weights that
    /// are not positive.
    Points(const Data &data, size_t variables, size_t outputs, bool implicit);

    size_t total() const { return total_; }
    size_t used() const { return total_ - left_out_; }
    size_t left_out() const { return left_out_; }
    size_t blocks() const { return (total_ + block_rows - 1) / block_rows; }
    size_t variables() const { return data_.x.size(); }
    size_t outputs() const { return outputs_; }
    bool weighted() const { return !data_.weights.empty() || !data_.sigma.empty(); }

    /// A block: pointers into the data, or into its own columns where points of it are left out.
    struct Block {
        size_t count = 0;
        std::vector<const double *> x, y;  ///< y of an output is null for an implicit model
        const double *weight = nullptr;    ///< square roots of the weights in units of weight_unit, or null for all 1
        std::vector<double> columns;       ///< memory of its own
    };
    void load(size_t number, Block &block) const;

    /// Calls visit with the variables (one number each) of a few points, spread over all.
    template <typename Visit>
    void visit_some(size_t some, const Visit &visit) const
    {
        std::vector<const double *> x(data_.x.size());
        for (size_t k = 0; k < some; ++k) {
            const size_t point = (total_ - 1) * k / (some - 1);
            if (left_out_ > 0 && !usable(point)) continue;
            for (size_t i = 0; i < x.size(); ++i) x[i] = &data_.x[i][point];
            visit(x.data());
        }
    }

    /// sqrt(sum of weight * (y/unit)^2), in units of the weights as handed out.
    double norm_of_y(double unit) const;

    /// The same of y less its weighted mean, each output's own; the square.
    double squares_about_mean(double unit) const;

    double largest_y() const { return largest_y_; }
    double weight_unit() const { return weight_unit_; }  ///< square roots of weights are divided by it

    /// The points first, first + stride ... as data of their own.
    struct Sample {
        std::vector<std::vector<double>> x, y;
        std::vector<double> weights;
        Data data() const;
    };
    Sample sample(size_t count) const;

private:
    bool usable(size_t point) const;
    double root_weight(size_t point) const;

    const Data &data_;
    size_t outputs_, total_ = 0, left_out_ = 0;
    double largest_y_ = 0, weight_unit_ = 1;
    std::vector<bool> gaps_;  ///< blocks with points that are left out
};

}  // namespace curvebank::fit
