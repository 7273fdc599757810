// Circle, ellipse and plane as equations in two or three variables: the value is the residual, 0 for a point on the
// curve or the plane.
//
// All have values only: without EVAL_VALUE, as with EVAL_INIT, they do nothing and answer 0. No parameter is
// tested; a zero radius gives what the arithmetic gives. An error code found after the residual, from this call or
// from before it, makes the residual missing and nothing else: the call succeeds, and the code stays where it is,
// so that a single stale code makes every later point missing until the host clears it.

#include "frame/evaluation.h"

namespace curvebank {

/// Circle.
///     y = ((X - xc)/r)² + ((Y - yc)/r)² - 1          p = (xc, yc, r)
MODEL(Circle)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], yc = p[2], r = p[3], X = x[1], Y = x[2];

    const double u = (X - xc) / r, v = (Y - yc) / r;
    y[1] = u * u + v * v - 1;
    if (error.raised()) y[1] = MISSING_VALUE;
    return 0;
}

/// Ellipse with axes along X and Y.
///     y = ((X - xc)/a)² + ((Y - yc)/b)² - 1          p = (xc, yc, a, b)
MODEL(Ellipse)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], yc = p[2], a = p[3], b = p[4], X = x[1], Y = x[2];

    const double u = (X - xc) / a, v = (Y - yc) / b;
    y[1] = u * u + v * v - 1;
    if (error.raised()) y[1] = MISSING_VALUE;
    return 0;
}

/// Plane in Hesse's normal form; the unit normal has the polar angle θ and the azimuth φ.
///     y = sin θ·cos φ·X + sin θ·sin φ·Y + cos θ·Z + d          p = (θ, φ, d)
/// An infinite angle is a domain error.
MODEL(PlaneMod)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double theta = p[1], phi = p[2], d = p[3], X = x[1], Y = x[2], Z = x[3];

    const double sin_theta = std::sin(theta), sin_phi = std::sin(phi);
    const double cos_phi = std::cos(phi), cos_theta = std::cos(theta);
    y[1] = sin_theta * cos_phi * X + sin_theta * sin_phi * Y + cos_theta * Z + d;
    if (error.raised()) y[1] = MISSING_VALUE;
    return 0;
}

}  // namespace curvebank
