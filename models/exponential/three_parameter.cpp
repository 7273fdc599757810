// Exponentials of three parameters: of a hyperbola and of a parabola.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double value_limit = 1.2345e300;  // values from here on count as missing; a NaN does not

}  // namespace

/// Exponential of a hyperbola, with amplitude.
///     y = a·exp(b/(X + c))          p = (a, b, c)
/// X + c must not be 0; where it is, a derivative call also marks dy[1..3].
/// Source: Meyer, 1970 (thermistor resistance against temperature).
MODEL(Exp3P1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3];
    const double D = x[1] + c;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(error, y);
        y[1] = a * guarded_exp(b / D);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 3);
    const double t = b / D;
    const double E = guarded_exp(t);
    if (error.raised()) return missing_value(error, y);
    dy[1] = E;
    dy[2] = a * E / D;
    dy[3] = -t * dy[2];
    y[1] = a * E;
    return 0;
}

/// Exponential of a hyperbola with offset.
///     y = exp(a + b/(X + c))          p = (a, b, c)
/// X + c must not be 0. The value step looks at the error variable and has no limit; the derivative step has the
/// limit, beyond which it marks dy[1..3] too, and does not look at the error variable.
/// Source: Antoine, 1888 (vapour pressure against temperature).
MODEL(Exp3P1Md)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3];
    const double D = x[1] + c;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(error, y);
        y[1] = guarded_exp(a + b / D);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_value(error, y);
    const double t = b / D;
    y[1] = guarded_exp(a + t);
    if (std::fabs(y[1]) >= value_limit) return missing_values(error, y, dy, 1, 3);
    dy[1] = y[1];
    dy[2] = y[1] / D;
    dy[3] = -t * dy[2];
    return 0;
}

/// Exponential of a parabola.
///     y = exp(a + b·X + c·X²)          p = (a, b, c)
/// Both steps look at the error variable and have the limit.
MODEL(Exp3P2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_exp(a + b * X + c * (X * X));
        if (error.raised()) return missing_value(error, y);
        if (std::fabs(y[1]) >= value_limit) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = guarded_exp(a + b * X + c * (X * X));
    if (error.raised()) return missing_value(error, y);
    if (std::fabs(y[1]) >= value_limit) return missing_value(error, y);
    dy[1] = y[1];
    dy[2] = y[1] * X;
    dy[3] = y[1] * (X * X);
    return 0;
}

}  // namespace curvebank
