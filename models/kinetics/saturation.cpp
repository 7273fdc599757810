// Saturating curves: enzyme kinetics and its relatives of one and two variables, photosynthesis against irradiance.
//
// Every failure clears the chosen error variable and, in a derivative step, marks every entry of dy.

#include "frame/evaluation.h"
#include "numerics/differences.h"

namespace curvebank {

/// Enzyme kinetics (Michaelis and Menten, 1913).
///     y = Vm·X / (K + X)          p = (Vm, K)
/// The denominator must not be 0.
MODEL(MicMent)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Vm = p[1], K = p[2], X = x[1];
    const double D = X + K;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(error, y);
        y[1] = Vm * X / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 2);
    dy[1] = X / D;
    y[1] = Vm * dy[1];
    dy[2] = -y[1] / D;
    return 0;
}

/// Enzyme kinetics in their physical domain (Michaelis and Menten, 1913).
///     y = Vm·X / (K + X)          p = (Vm, K)
/// Refuses X < 0 and K <= 0, which lets a NaN through. X = 0 gives 0 and zero derivatives. Before it computes, the
/// model answers for what errno holds on entry, whatever the flags say: after a range error everything is 0 and
/// errno is reset, a domain error is a failure. A failure clears the chosen error variable. Derivatives only on
/// calls without EVAL_VALUE.
MODEL(MichaelisMenten)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double Vm = p[1], K = p[2], X = x[1];
    const bool refused = X < 0 || K <= 0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(error, y);
        if (X == 0) {
            y[1] = 0.0;
            return 0;
        }
        if (runtime.range_error()) return saturated(y, 0.0);
        if (runtime.domain_error()) return missing_value(error, y);
        y[1] = Vm * X / (X + K);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(error, y, dy, 1, 2);
    if (X == 0 || runtime.range_error()) {
        if (X != 0) runtime.clear();  // X = 0 is answered without a look at errno
        y[1] = 0.0;
        dy[1] = 0.0;
        dy[2] = 0.0;
        return 0;
    }
    if (runtime.domain_error()) return missing_values(error, y, dy, 1, 2);
    dy[1] = X / (X + K);
    y[1] = Vm * dy[1];
    dy[2] = -y[1] / (X + K);
    return 0;
}

/// Rectangular hyperbola in b·X that is defined only together with a power of a second ratio.
///     y = A·b·X / (1 + b·X)          p = (A, a, b, c, d)
/// Fails where 1 + a·X or 1 + b·X is 0, and where ((1 + a·X)·c/(1 + b·X))^d meets a domain error. That power enters
/// nothing else: a, c and d take part in these tests alone. A = 0 gives 0 without the power. The domain error is
/// looked for in errno, which a success leaves at 0; a failure clears the chosen error variable. Has a value only
/// and answers 0 to EVAL_INIT.
MODEL(MWChang)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double A = p[1], a = p[2], b = p[3], c = p[4], d = p[5], X = x[1];

    const double Da = 1 + a * X;
    if (Da == 0) return missing_value(error, y);
    const double Db = 1 + b * X;
    if (Db == 0) return missing_value(error, y);
    if (A == 0) {
        y[1] = 0.0;
        return 0;
    }
    static_cast<void>(guarded_pow(Da * c / Db, d));
    if (runtime.domain_error()) return missing_value(error, y);
    runtime.clear();
    y[1] = (Db - 1) * A / Db;
    return 0;
}

/// Saturation in one variable that a second one inhibits.
///     y = A·a·x1 / (1 + a·x1 + b·x2)          p = (a, b, A)
/// The denominator must not be 0, not even where a, A or x1 is; elsewhere such a zero gives 0. The second variable
/// is read from x[2] although the catalogue counts one. Has a value only and answers 0 to EVAL_INIT.
MODEL(BatesWatts)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], A = p[3], x1 = x[1], x2 = x[2];

    const double D = b * x2 + (a * x1 + 1);
    if (D == 0) return missing_value(error, y);
    y[1] = a == 0 || A == 0 || x1 == 0 ? 0.0 : A * a * x1 / D;
    return 0;
}

/// Power law in one variable times a straight line in a second.
///     y = x1^a · (b + c·x2)          p = (a, b, c)
/// Where the line is 0 the value is, without the power. Has a value only and answers 0 to EVAL_INIT.
MODEL(Cole)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], x1 = x[1], x2 = x[2];

    const double line = b + c * x2;
    if (line == 0) {
        y[1] = 0.0;
        return 0;
    }
    const double P = guarded_pow(x1, a);
    if (error.raised()) return missing_value(error, y);
    y[1] = P * line;
    return 0;
}

/// Photosynthesis against irradiance from an initial slope to a maximum (Jassby and Platt, 1976).
///     y = Pm·tanh(a·X/Pm)          p = (Pm, a)
/// A zero maximum fails; nothing else is tested. The value is written on derivative calls too.
MODEL(PIPlatt)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double Pm = p[1], a = p[2], X = x[1];

    if (Pm == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 2);
        return missing_value(error, y);
    }
    const double t = std::tanh(a * X / Pm);
    y[1] = Pm * t;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = t - (1 - t * t) * a * X / Pm;
    dy[2] = Pm * (1 - t * t) * X / Pm;
    return 0;
}

/// Photosynthesis with inhibition by strong light (Platt, Gallegos and Harrison, 1980).
///     y = Pm·(1 - exp(-a·X/Pm))·exp(-b·X/Pm)          p = (Pm, a, b)
/// A zero maximum fails; nothing else is tested, and an overflow passes. The value is written on derivative calls
/// too.
MODEL(PIPlatt2)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double Pm = p[1], a = p[2], b = p[3], X = x[1];

    if (Pm == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 3);
        return missing_value(error, y);
    }
    const double Ea = guarded_exp(-a * X / Pm);
    const double Eb = guarded_exp(-b * X / Pm);
    y[1] = Pm * (1 - Ea) * Eb;
    if (!(flags & EVAL_DERIVS)) return 0;

    // In weak light 1 - exp(-t) is about t and 1 - (1 + t)·exp(-t) about t²/2, both from terms near 1.
    const double t = a * X / Pm;
    double rise = 1 - Ea, curvature = 1 - Ea - Ea * a * X / Pm;
    if (std::fabs(t) < 1) {
        rise = t - numerics::expm1_beyond_linear(-t);
        curvature = Ea * numerics::expm1_beyond_linear(t);
    }
    dy[1] = (curvature + rise * b * X / Pm) * Eb;
    dy[2] = Ea * X * Eb;
    dy[3] = -rise * X * Eb;
    return 0;
}

/// Photosynthesis as exponential saturation (Webb, Newton and Starr, 1974).
///     y = Pm·(1 - exp(-a·X/Pm))          p = (Pm, a)
/// A zero maximum fails; nothing else is tested, and an overflow passes. The value is written on derivative calls
/// too.
MODEL(PIWebb)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double Pm = p[1], a = p[2], X = x[1];

    if (Pm == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 2);
        return missing_value(error, y);
    }
    const double E = guarded_exp(-a * X / Pm);
    y[1] = (1 - E) * Pm;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1 - E - E * a * X / Pm;
    dy[2] = E * X;
    return 0;
}

}  // namespace curvebank
