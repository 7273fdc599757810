// Rates of an enzyme reaction under an inhibitor, X being the concentration of the substrate.
//
// All compute the value on derivative calls too, and make no error test: a code from before the call stays in the
// error variable unless the call fails. Rate constants are refused where they are <= 0, which lets a NaN through. A
// derivative step that fails marks all entries that it has not computed.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

/// Leaves a call whose denominator is 0 and whose outputs are marked already. It is errno that is reset, whichever
/// error variable the call chose.
int32_t zero_denominator()
{
    ErrorVariable::runtime().clear();
    return 1;
}

}  // namespace

/// Competitive inhibition: the inhibitor binds to the free enzyme.
///     y = Vmax·X / (Km·(1 + I/Ki) + X)          p = (Vmax, Km, Ki, I)
/// y is marked missing at once, also by a call that asks for nothing. Vmax, Km and Ki must be positive. A
/// denominator of 0 in the derivative step leaves the value as computed.
MODEL(CompInhib)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Vmax = p[1], Km = p[2], Ki = p[3], I = p[4], S = x[1];

    y[1] = MISSING_VALUE;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    if (Vmax <= 0 || Km <= 0 || Ki <= 0) return missing_value(error, y);
    const double D = (I / Ki + 1) * Km + S;
    if (D == 0) return zero_denominator();
    y[1] = S * Vmax / D;
    if (!(flags & EVAL_DERIVS)) return 0;

    mark_missing(dy, 1, 4);
    const double q = (S + Km) * Ki + Km * I;
    if (q == 0) return zero_denominator();
    const double w = S * Vmax / (q * q);
    dy[1] = S * Ki / q;
    dy[2] = -(Ki + I) * Ki * w;
    dy[3] = Km * I * w;
    dy[4] = -Ki * Km * w;
    return 0;
}

/// Uncompetitive inhibition: the inhibitor binds to the enzyme with its substrate.
///     y = Vmax·X / ((Km/(1 + I/Ki) + X)·(1 + I/Ki))          p = (Vmax, Km, Ki, I)
/// Marks and tests as CompInhib, but the value needs only 1 + I/Ki other than 0, not the whole denominator.
MODEL(UncompInhib)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Vmax = p[1], Km = p[2], Ki = p[3], I = p[4], S = x[1];

    y[1] = MISSING_VALUE;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    if (Vmax <= 0 || Km <= 0 || Ki <= 0) return missing_value(error, y);
    const double F = I / Ki + 1;
    if (F == 0) return zero_denominator();
    y[1] = S * Vmax / ((Km / F + S) * F);
    if (!(flags & EVAL_DERIVS)) return 0;

    mark_missing(dy, 1, 4);
    const double q = (S + Km) * Ki + S * I;
    if (q == 0) return zero_denominator();
    dy[1] = S * Ki / q;
    dy[2] = -(Ki * Ki * Vmax * S) / (q * q);
    dy[3] = Vmax * I * S * S / (q * q);
    dy[4] = -(Vmax * Ki * S * S) / (q * q);
    return 0;
}

/// Noncompetitive inhibition: the inhibitor binds to the enzyme with and without its substrate alike.
///     y = Vmax·X / ((X + Km)·(1 + I/Ki))          p = (Vmax, Km, Ki, I)
/// Marks and tests as CompInhib, each factor of the denominator on its own. Ki + I is 0 only where 1 + I/Ki is, so
/// the derivative step has nothing left to refuse.
MODEL(NoncompInhib)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Vmax = p[1], Km = p[2], Ki = p[3], I = p[4], S = x[1];

    y[1] = MISSING_VALUE;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    if (Vmax <= 0 || Km <= 0 || Ki <= 0) return missing_value(error, y);
    const double F = I / Ki + 1, b = S + Km;
    if (F == 0 || b == 0) return zero_denominator();
    y[1] = S * Vmax / (b * F);
    if (!(flags & EVAL_DERIVS)) return 0;

    const double a = Ki + I, u = b * a;
    dy[1] = S * Ki / u;
    dy[2] = -Ki * Vmax * S / (u * b);
    dy[3] = Vmax * I * S / (u * a);
    dy[4] = -Ki * Vmax * S / (u * a);
    return 0;
}

/// Mixed inhibition: the inhibitor binds with constant Ki to the free enzyme, with alpha·Ki to the enzyme with its
/// substrate.
///     y = Vmax·X / ((Km·(1 + I/Ki)/(1 + I/(alpha·Ki)) + X)·(1 + I/(alpha·Ki)))
///     p = (Vmax, Km, Ki, alpha, I)
/// Km and Ki must be positive, alpha·Ki and 1 + I/(alpha·Ki) other than 0; Vmax may be anything. A denominator of 0
/// in the derivative step costs the value too.
MODEL(MixedModelInhib)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double Vmax = p[1], Km = p[2], Ki = p[3], alpha = p[4], I = p[5], S = x[1];

    if (Km <= 0 || Ki <= 0 || alpha * Ki == 0) return missing_value(error, y);
    const double G = I / (alpha * Ki) + 1;
    if (G == 0) return missing_value(error, y);
    y[1] = S * Vmax / (((I / Ki + 1) * Km / G + S) * G);
    if (!(flags & EVAL_DERIVS)) return 0;

    const double q = (I + Ki) * alpha * Km + S * I + S * alpha * Ki;
    if (q == 0) return missing_values(error, y, dy, 1, 5);
    const double v = q * q;
    dy[1] = S * alpha * Ki / q;
    dy[2] = -alpha * alpha * Ki * (I + Ki) * Vmax * S / v;
    dy[3] = I * alpha * Vmax * S * (alpha * Km + S) / v;
    dy[4] = I * Ki * Vmax * S * S / v;
    dy[5] = -alpha * Ki * Vmax * S * (alpha * Km + S) / v;
    return 0;
}

/// Inhibition by the substrate itself (Haldane, 1930).
///     y = Vmax·X / (Km + X + X²/Ki)          p = (Vmax, Km, Ki)
/// Vmax, Km and Ki must be positive. The derivative step has two forms of the denominator, either of which may
/// round to 0 alone; it fails at the first that does, and that costs the value too.
MODEL(SubstrateInhib)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double Vmax = p[1], Km = p[2], Ki = p[3], S = x[1];

    if (Vmax <= 0 || Km <= 0 || Ki <= 0) return missing_value(error, y);
    const double D = (S / Ki + 1) * S + Km;
    if (D == 0) return missing_value(error, y);
    y[1] = S * Vmax / D;
    if (!(flags & EVAL_DERIVS)) return 0;

    const double D1 = (S + Km) * Ki + S * S;
    if (D1 == 0) return missing_values(error, y, dy, 1, 3);
    dy[1] = S * Ki / D1;
    const double D2 = (S + Ki) * S / Ki + Km;
    if (D2 == 0) return missing_values(error, y, dy, 2, 3);
    dy[2] = -Vmax * S / (D2 * D2);
    dy[3] = S * Vmax * S * S / (D1 * D1);
    return 0;
}

}  // namespace curvebank
