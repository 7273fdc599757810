// Where a fit's numbers come from: a curve over blocks of points.

#pragma once

#include <cstddef>
#include <memory>

namespace curvebank::fit {

/// Immutable; every thread brings a memory of its own.
class Source {
public:
    struct Memory {
        virtual ~Memory() = default;
    };

    virtual ~Source() = default;
    virtual std::unique_ptr<Memory> memory() const = 0;

    virtual void set_parameters(Memory &memory, const double *parameters) const = 0;

    /// The values of output k at count <= block_rows points into value[k], and where jacobian is not null its
    /// derivative with respect to parameter j into jacobian[k * parameters + j], unless that is null. NaN where there is
    /// none. x[i] is the column of variable i.
    virtual void run(Memory &memory, const double *const *x, size_t count, double *const *value,
                     double *const *jacobian) const = 0;
};

/// One point of a curve in extended precision.
class ExtendedSource {
public:
    struct Memory {
        virtual ~Memory() = default;
    };

    virtual ~ExtendedSource() = default;
    virtual std::unique_ptr<Memory> memory() const = 0;
    virtual void set_parameters(Memory &memory, const long double *parameters) const = 0;
    /// As Source::run; jacobian[k * parameters + j] are numbers here.
    virtual void run(Memory &memory, const double *x, long double *value, long double *jacobian) const = 0;
};

}  // namespace curvebank::fit
