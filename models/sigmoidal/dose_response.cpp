// Dose-response and competition curves on a decimal logarithmic dose axis.
//
// Each runs its derivative step only on calls without EVAL_VALUE. A range error of a power is not a failure, except
// of BiDoseResp: the call succeeds with fixed results. The value step looks for errors in the chosen variable,
// where a domain error counts too, the derivative step for a range error in errno; both clear errno, never the
// caller's variable. An underflow that the runtime reports is a range error as well and gives the same results, on
// the far side of the curve.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double ln_10 = 2.302585093;
constexpr double least_slope = 1e-18;  // smaller slopes have no derivatives

}  // namespace

/// Dose-response curve with variable slope.
///     y = bottom + (top - bottom) / (1 + 10^((logx0 - X)·h))          p = (bottom, top, logx0, h)
/// A value call needs nParams >= 1, h other than 0 and bottom below top; the derivatives need |h| >= 1e-18 alone.
MODEL(Response1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double bottom = p[1], top = p[2], logx0 = p[3], h = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || h == 0 || bottom >= top) return missing_value(error, y);
        const double e = guarded_pow(10, (logx0 - X) * h);
        if (error.raised()) return saturated(y, bottom);
        y[1] = (top - bottom) / (e + 1) + bottom;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (std::fabs(h) < least_slope) return missing_value(error, y);
    const double e = guarded_pow(10, (logx0 - X) * h);
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;  // defined on the top, although the value is the bottom
        dy[3] = dy[4] = 0.0;
        return saturated(y, bottom);
    }
    const double s = 1 / (e + 1);
    dy[2] = s;
    dy[1] = 1 - s;
    y[1] = (top - bottom) * s + bottom;
    dy[3] = -(top - bottom) * dy[1] * dy[2] * h * ln_10;
    dy[4] = -(top - bottom) * dy[1] * dy[2] * (logx0 - X) * ln_10;
    return 0;
}

/// Bell-shaped dose-response curve.
///     y = bottom + (top1 - bottom) / (1 + 10^((X - logx1)·h1)) + (top2 - bottom) / (1 + 10^((logx2 - X)·h2))
///     p = (bottom, top1, top2, logx1, logx2, h1, h2)
/// A value call needs nParams >= 1 and a bottom not above either top; the derivative step tests no parameter.
MODEL(Response2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double bottom = p[1], top1 = p[2], top2 = p[3], logx1 = p[4], logx2 = p[5], h1 = p[6], h2 = p[7];
    const double X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || bottom > top1 || bottom > top2) return missing_value(error, y);
        const double e1 = guarded_pow(10, (X - logx1) * h1);
        const double e2 = guarded_pow(10, (logx2 - X) * h2);
        if (error.raised()) return saturated(y, top2 + top1);
        const double s1 = 1 / (e1 + 1), s2 = 1 / (e2 + 1);
        y[1] = (top2 - bottom) * s2 + (top1 - bottom) * s1 + bottom;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e1 = guarded_pow(10, (X - logx1) * h1);
    const double e2 = guarded_pow(10, (logx2 - X) * h2);
    if (runtime.range_error()) {
        dy[1] = 1.0;  // fixed values from here to dy[7], which are no limits of the derivatives
        dy[2] = dy[3] = 0.0;
        dy[4] = dy[5] = 1.0;
        dy[6] = -1.0;
        dy[7] = 1.0;
        return saturated(y, top1 + top2);
    }
    const double s1 = 1 / (e1 + 1), s2 = 1 / (e2 + 1);
    dy[1] = 1 - s1 - s2;
    dy[2] = s1;
    dy[3] = s2;
    dy[4] = (top1 - bottom) * s1 * s1 * h1 * ln_10 * e1;
    dy[5] = -(top2 - bottom) * s2 * s2 * h2 * ln_10 * e2;
    dy[6] = -(top1 - bottom) * s1 * s1 * (X - logx1) * ln_10 * e1;
    dy[7] = -(top2 - bottom) * s2 * s2 * (logx2 - X) * ln_10 * e2;
    y[1] = (top2 - bottom) * s2 + (top1 - bottom) * s1 + bottom;
    return 0;
}

/// Biphasic dose-response curve, f being the share of the first phase.
///     y = bottom + (top - bottom)·(f / (1 + 10^((logx1 - X)·h1)) + (1 - f) / (1 + 10^((logx2 - X)·h2)))
///     p = (bottom, top, logx1, logx2, h1, h2, f)
/// No parameter is tested, and an error of either power fails in both steps; the derivatives stay unwritten then.
MODEL(BiDoseResp)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double bottom = p[1], top = p[2], logx1 = p[3], logx2 = p[4], h1 = p[5], h2 = p[6], f = p[7];
    const double X = x[1];

    if (flags & EVAL_VALUE) {
        const double e1 = guarded_pow(10, (logx1 - X) * h1);
        if (error.raised()) return missing_value(error, y);
        const double e2 = guarded_pow(10, (logx2 - X) * h2);
        if (error.raised()) return missing_value(error, y);
        y[1] = ((1 - f) / (e2 + 1) + f / (e1 + 1)) * (top - bottom) + bottom;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E1 = guarded_pow(10, (logx1 - X) * h1) + 1;
    if (error.raised()) return missing_value(error, y);
    const double E2 = guarded_pow(10, (logx2 - X) * h2) + 1;
    if (error.raised()) return missing_value(error, y);
    const double F = (1 - f) / E2 + f / E1;
    dy[2] = F;
    dy[1] = 1 - F;
    dy[7] = (1 / E1 - 1 / E2) * (top - bottom);
    dy[3] = (1 - E1) * (top - bottom) * h1 * f * ln_10 / (E1 * E1);
    dy[4] = (1 - E2) * (top - bottom) * h2 * (1 - f) * ln_10 / (E2 * E2);
    dy[5] = (logx1 - X) * dy[3] / h1;
    dy[6] = (logx2 - X) * dy[4] / h2;
    y[1] = F * (top - bottom) + bottom;
    return 0;
}

/// Competition for one class of sites.
///     y = bottom + (top - bottom) / (1 + 10^(X - logx0))          p = (top, bottom, logx0)
/// A value call needs nParams >= 1.
MODEL(Competition1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double top = p[1], bottom = p[2], logx0 = p[3];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        const double e = guarded_pow(10, x[1] - logx0);
        if (error.raised()) return saturated(y, bottom);
        y[1] = (top - bottom) / (e + 1) + bottom;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_pow(10, x[1] - logx0);
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        dy[3] = 0.0;
        return saturated(y, bottom);
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    dy[2] = 1 - s;
    y[1] = (top - bottom) / (e + 1) + bottom;
    dy[3] = (top - bottom) * s * (1 - s) * ln_10;
    return 0;
}

/// Competition for two classes of sites, f being the share of the first.
///     y = bottom + (top - bottom)·(f / (1 + 10^(X - logx1)) + (1 - f) / (1 + 10^(X - logx2)))
///     p = (top, bottom, logx1, logx2, f)
/// A value call needs nParams >= 1. Queries are answered before EVAL_INIT.
MODEL(Competition2)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double top = p[1], bottom = p[2], logx1 = p[3], logx2 = p[4], f = p[5], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        const double e1 = guarded_pow(10, X - logx1);
        const double e2 = guarded_pow(10, X - logx2);
        if (error.raised()) return saturated(y, bottom);
        y[1] = (f / (e1 + 1) + (1 - f) / (e2 + 1)) * (top - bottom) + bottom;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e1 = guarded_pow(10, X - logx1);
    const double e2 = guarded_pow(10, X - logx2);
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        dy[3] = dy[4] = dy[5] = 0.0;
        return saturated(y, bottom);
    }
    const double F = f / (e1 + 1) + (1 - f) / (e2 + 1);
    dy[1] = F;
    dy[2] = 1 - F;
    y[1] = F * (top - bottom) + bottom;
    dy[3] = (top - bottom) * f * (1 - 1 / (e1 + 1)) * ln_10 / (e1 + 1);
    dy[4] = (top - bottom) * (1 - f) * (1 - 1 / (e2 + 1)) * ln_10 / (e2 + 1);
    dy[5] = (top - bottom) * (1 / (e1 + 1) - 1 / (e2 + 1));
    return 0;
}

}  // namespace curvebank
