#include "bench/bare_loops.h"

#include <array>
#include <cmath>

namespace curvebank::bench {
namespace {

using std::cos, std::exp, std::log, std::pow, std::sin;

constexpr double pi = 3.141592653589793;
constexpr double sqrt2 = 1.414213562373;
constexpr double sqrt_half_pi = 1.253314137316;
constexpr double sqrt_2pi = 2.506628274631;

// A curve: its number of parameters and its two formulas, in which p is a copy that no output can change, so that
// the compiler may take out of the loop what is the same at every point.

struct ExpDec1 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] + p[2] * exp(-x / p[3]); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double A = p[2], t = p[3], E = exp(-x / t);
        dy[1] = 1;
        dy[2] = E;
        dy[3] = A * x * E / (t * t);
        return p[1] + A * E;
    }
};

struct ExpDec2 {
    static constexpr int size = 5;
    static double value(const double *p, double x) { return p[1] + p[2] * exp(-x / p[3]) + p[4] * exp(-x / p[5]); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double A1 = p[2], t1 = p[3], A2 = p[4], t2 = p[5];
        const double E1 = exp(-x / t1), E2 = exp(-x / t2);
        dy[1] = 1;
        dy[2] = E1;
        dy[3] = x / t1 * A1 * E1 / t1;
        dy[4] = E2;
        dy[5] = x / t2 * A2 * E2 / t2;
        return p[1] + A1 * E1 + A2 * E2;
    }
};

struct ExpAssoc1 {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return p[2] + p[3] * (1 - exp(-(x - p[1]) / p[4])); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double TD = p[1], A = p[3], t = p[4], E = exp(-(x - TD) / t);
        dy[1] = -A * E / t;
        dy[2] = 1;
        dy[3] = 1 - E;
        dy[4] = -A * (x - TD) * E / (t * t);
        return p[2] + A * (1 - E);
    }
};

struct Asymptotic1 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] - p[2] * pow(p[3], x); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double b = p[2], c = p[3], Q = pow(c, x);
        dy[1] = 1;
        dy[2] = -Q;
        dy[3] = -b * Q * x / c;
        return p[1] - b * Q;
    }
};

struct BoxLucas1 {
    static constexpr int size = 2;
    static double value(const double *p, double x) { return p[1] * (1 - exp(-p[2] * x)); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double a = p[1], E = exp(-p[2] * x);
        dy[1] = 1 - E;
        dy[2] = a * x * E;
        return a * (1 - E);
    }
};

struct Exp3P1 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] * exp(p[2] / (x + p[3])); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double a = p[1], D = x + p[3], t = p[2] / D, E = exp(t);
        dy[1] = E;
        dy[2] = a * E / D;
        dy[3] = -t * dy[2];
        return a * E;
    }
};

struct Boltzman {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return (p[1] - p[2]) / (exp((x - p[3]) / p[4]) + 1) + p[2]; }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double A1 = p[1], A2 = p[2], dx = p[4], t = (x - p[3]) / dx, e = exp(t), s = 1 / (e + 1);
        dy[1] = s;
        dy[2] = 1 - s;
        dy[3] = (A1 - A2) * s * (1 - s) / dx;
        dy[4] = dy[3] * t;
        return (A1 - A2) / (e + 1) + A2;
    }
};

struct Logistic {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return (p[1] - p[2]) / (pow(x / p[3], p[4]) + 1) + p[2]; }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double A1 = p[1], A2 = p[2], x0 = p[3], h = p[4];
        const double r = x / x0, s = 1 / (pow(r, h) + 1), a = (A1 - A2) * s;
        dy[1] = s;
        dy[2] = 1 - s;
        dy[3] = a * h * (1 - s) / x0;
        dy[4] = -log(r) * x0 * dy[3] / h;
        return a + A2;
    }
};

struct SLogistic1 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] / (exp(-p[3] * (x - p[2])) + 1); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double a = p[1], xc = p[2], k = p[3], e = exp(-k * (x - xc)), s = 1 / (e + 1), y = s * a,
                     v = y * s * e;
        dy[1] = s;
        dy[2] = -k * v;
        dy[3] = (x - xc) * v;
        return y;
    }
};

struct SGompertz {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] * exp(-exp(-p[3] * (x - p[2]))); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double a = p[1], xc = p[2], k = p[3], e = exp(-k * (x - xc)), E = exp(-e), y = E * a, v = y * e;
        dy[1] = E;
        dy[2] = -k * v;
        dy[3] = (x - xc) * v;
        return y;
    }
};

struct Hill {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] / (pow(p[2] / x, p[3]) + 1); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double Vmax = p[1], K = p[2], n = p[3], e = pow(K / x, n), s = 1 / (e + 1), y = s * Vmax;
        const double v = -e * y * s;
        dy[1] = s;
        dy[2] = n / K * v;
        dy[3] = log(K / x) * v;
        return y;
    }
};

struct Gauss {
    static constexpr int size = 4;
    static double value(const double *p, double x)
    {
        const double t = (x - p[2]) / p[3];
        return p[1] + p[4] / (p[3] * sqrt_half_pi) * exp(-2 * t * t);
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double xc = p[2], w = p[3], A = p[4];
        const double u = (x - xc) * sqrt2 / w, u2 = u * u, g = exp(-u2) / (w * sqrt_half_pi);
        dy[1] = 1;
        dy[2] = 2 * sqrt2 * A * u * g / w;
        dy[3] = (2 * u2 - 1) * A * g / w;
        dy[4] = g;
        return p[1] + g * A;
    }
};

struct Lorentz {
    static constexpr int size = 4;
    static double value(const double *p, double x)
    {
        const double d = x - p[2], w = p[3];
        return p[1] + 2 * p[4] / pi * (w / (4 * d * d + w * w));
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double w = p[3], A = p[4], u = 2 * (x - p[2]) / w, L = 2 / ((u * u + 1) * (w * pi)), y = L * A;
        dy[1] = 1;
        dy[2] = u * 2 * pi * y * L;
        dy[3] = (w * pi * u * u * L - 1) * y / w;
        dy[4] = L;
        return p[1] + y;
    }
};

struct Extreme {
    static constexpr int size = 4;
    static double value(const double *p, double x)
    {
        const double z = (x - p[2]) / p[3];
        return p[1] + p[4] * exp(1 - exp(-z) - z);
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double w = p[3], z = (x - p[2]) / w, e = exp(-z), E = exp(1 - e - z), h = p[4] * E;
        dy[1] = 1;
        dy[2] = h * (1 - e) / w;
        dy[3] = dy[2] * z;
        dy[4] = E;
        return p[1] + h;
    }
};

struct LogNormal {
    static constexpr int size = 4;
    static double value(const double *p, double x)
    {
        const double w = p[3], L = (log(x) - log(p[2])) / (w * sqrt2);
        return p[1] + p[4] / (w * x * sqrt_2pi) * exp(-L * L);
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double xc = p[2], w = p[3], A = p[4];
        const double L = (log(x) - log(xc)) / w, e = exp(-L * L * 0.5), q = 1 / (x * w * sqrt_2pi);
        dy[1] = 1;
        dy[2] = A / w * e * L / xc * q;
        dy[3] = A / w * e * L * L * q;
        dy[4] = e * q;
        return p[1] + e * q * A;
    }
};

struct Parabola {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return (p[3] * x + p[2]) * x + p[1]; }
    static double derivatives(const double *p, double x, double *dy)
    {
        dy[1] = 1;
        dy[2] = x;
        dy[3] = x * x;
        return value(p, x);
    }
};

struct Allometric1 {
    static constexpr int size = 2;
    static double value(const double *p, double x) { return p[1] * pow(x, p[2]); }
    static double derivatives(const double *p, double x, double *dy)
    {
        dy[1] = pow(x, p[2]);
        const double y = p[1] * dy[1];
        dy[2] = log(x) * y;
        return y;
    }
};

struct Hyperbl {
    static constexpr int size = 2;
    static double value(const double *p, double x) { return p[1] * x / (x + p[2]); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double D = x + p[2];
        dy[1] = x / D;
        const double y = p[1] * dy[1];
        dy[2] = -y / D;
        return y;
    }
};

struct LangmuirEXT1 {
    static constexpr int size = 3;
    static double value(const double *p, double x)
    {
        const double P = pow(x, 1 - p[3]);
        return p[1] * p[2] * P / (1 + p[2] * P);
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double K = p[2], P = pow(x, 1 - p[3]), q = K * P / (1 + K * P), y = p[1] * q;
        dy[1] = q;
        dy[2] = (1 - q) * y / K;
        dy[3] = -log(x) * (1 - q) * y;
        return y;
    }
};

struct Bradley {
    static constexpr int size = 2;
    static double value(const double *p, double x) { return p[1] * log(-p[2] * log(x)); }
    static double derivatives(const double *p, double x, double *dy)
    {
        dy[1] = log(-p[2] * log(x));
        dy[2] = p[1] / p[2];
        return p[1] * dy[1];
    }
};

struct Log3P1 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return p[1] - p[2] * log(x + p[3]); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double d = x + p[3];
        dy[1] = 1;
        dy[2] = -log(d);
        dy[3] = -p[2] / d;
        return p[1] + dy[2] * p[2];
    }
};

struct Rational0 {
    static constexpr int size = 3;
    static double value(const double *p, double x) { return (p[3] * x + p[2]) / (p[1] * x + 1); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double r = 1 / (p[1] * x + 1);
        dy[2] = r;
        dy[3] = r * x;
        const double y = dy[3] * p[3] + r * p[2];
        dy[1] = -y * dy[3];
        return y;
    }
};

struct Sine {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return p[1] + sin((x - p[2]) * pi / p[3]) * p[4]; }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double xc = p[2], w = p[3], A = p[4], a = (x - xc) * pi / w, s = sin(a);
        dy[1] = 1;
        dy[2] = cos(a) * -A * pi / w;
        dy[3] = (x - xc) * dy[2] / w;
        dy[4] = s;
        return p[1] + s * A;
    }
};

struct SineDamp {
    static constexpr int size = 5;
    static double value(const double *p, double x)
    {
        return p[1] + p[5] * exp(-x / p[4]) * sin((x - p[2]) * pi / p[3]);
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double xc = p[2], w = p[3], t0 = p[4], A = p[5], e = exp(-x / t0), a = (x - xc) * pi / w;
        dy[1] = 1;
        dy[2] = cos(a) * -A * e * pi / w;
        dy[3] = (x - xc) * dy[2] / w;
        dy[5] = sin(a) * e;
        dy[4] = dy[5] * A * x / t0 / t0;
        return p[1] + dy[5] * A;
    }
};

struct CompInhib {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return x * p[1] / ((p[4] / p[3] + 1) * p[2] + x); }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double Vmax = p[1], Km = p[2], Ki = p[3], I = p[4];
        const double q = (x + Km) * Ki + Km * I, w = x * Vmax / (q * q);
        dy[1] = x * Ki / q;
        dy[2] = -(Ki + I) * Ki * w;
        dy[3] = Km * I * w;
        dy[4] = -Ki * Km * w;
        return x * Vmax / ((I / Ki + 1) * Km + x);
    }
};

struct Cross {
    static constexpr int size = 4;
    static double value(const double *p, double x) { return (p[1] - p[2]) / (pow(x * p[3], p[4]) + 1) + p[2]; }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double a = p[1] - p[2], t = p[3], m = p[4], P = pow(x * t, m), D = P + 1;
        dy[1] = 1 / D;
        dy[2] = 1 - 1 / D;
        dy[3] = pow(x * t, m - 1) * -a * m * x / (D * D);
        dy[4] = P * log(x * t) * -a / (D * D);
        return a / D + p[2];
    }
};

struct Carreau {
    static constexpr int size = 5;
    static double value(const double *p, double x)
    {
        return pow(pow(x * p[3], p[4]) + 1, (p[5] - 1) / p[4]) * (p[1] - p[2]) + p[2];
    }
    static double derivatives(const double *p, double x, double *dy)
    {
        const double r = p[1] - p[2], t = p[3], a = p[4], n = p[5], P = pow(x * t, a), B = P + 1, e = (n - 1) / a;
        const double G = pow(B, e), lnB = log(B);
        dy[1] = G;
        dy[2] = 1 - G;
        dy[3] = pow(B, e - 1) * r * (n - 1) * pow(x * t, a - 1) * x;
        dy[4] = G * r * e * (P * log(x * t) / B - lnB / a);
        dy[5] = G * r * lnB / a;
        return G * r + p[2];
    }
};

struct Plane {
    static constexpr int size = 3;
    static double value(const double *p, double x, double y) { return p[2] * x + p[1] + p[3] * y; }
    static double derivatives(const double *p, double x, double y, double *dy)
    {
        dy[1] = 1;
        dy[2] = x;
        dy[3] = y;
        return value(p, x, y);
    }
};

struct Gauss2D {
    static constexpr int size = 6;
    static double value(const double *p, double x, double y)
    {
        const double u = (x - p[3]) / p[4], v = (y - p[5]) / p[6];
        return p[1] + p[2] * exp(-0.5 * (u * u) - 0.5 * (v * v));
    }
    static double derivatives(const double *p, double x, double y, double *dy)
    {
        const double A = p[2], xc = p[3], w1 = p[4], yc = p[5], w2 = p[6];
        const double u = (x - xc) / w1, v = (y - yc) / w2, u2 = u * u, v2 = v * v, e = exp(-0.5 * u2 - 0.5 * v2);
        dy[1] = 1;
        dy[2] = e;
        dy[3] = e * A * u / w1;
        dy[4] = e * A * u2 / w1;
        dy[5] = e * A * v / w2;
        dy[6] = e * A * v2 / w2;
        return p[1] + A * e;
    }
};

struct Lorentz2D {
    static constexpr int size = 6;
    static double value(const double *p, double x, double y)
    {
        const double u = (x - p[3]) / p[4], v = (y - p[5]) / p[6];
        return p[1] + p[2] / (1 + u * u) / (1 + v * v);
    }
    static double derivatives(const double *p, double x, double y, double *dy)
    {
        const double A = p[2], xc = p[3], w1 = p[4], yc = p[5], w2 = p[6];
        const double u = (x - xc) / w1, v = (y - yc) / w2, u2 = u * u, v2 = v * v, R = 1 / ((1 + u2) * (1 + v2));
        dy[1] = 1;
        dy[2] = R;
        dy[3] = 2 * A * R / (1 + u2) * u / w1;
        dy[4] = 2 * A * R / (1 + u2) * u2 / w1;
        dy[5] = 2 * A * R / (1 + v2) * v / w2;
        dy[6] = 2 * A * R / (1 + v2) * v2 / w2;
        return p[1] + A * R;
    }
};

struct Circle {
    static constexpr int size = 3;
    static double value(const double *p, double x, double y)
    {
        const double u = (x - p[1]) / p[3], v = (y - p[2]) / p[3];
        return u * u + v * v - 1;
    }
};

/// y as the first output; the second is y[2] of the model.
struct Helix {
    static constexpr int size = 5;
    static double value(const double *p, double x, double *second)
    {
        const double angle = p[4] * x + p[5];
        *second = p[2] + p[3] * sin(angle);
        return p[1] + p[3] * cos(angle);
    }
};

template <class Curve>
std::array<double, Curve::size + 1> copy(const double *p)
{
    std::array<double, Curve::size + 1> own;
    for (size_t i = 0; i < own.size(); ++i) own[i] = p[i];
    return own;
}

template <class Curve>
void value_loop(const double *p, const double *x, double *y, double *, size_t points)
{
    const auto own = copy<Curve>(p);
    for (size_t i = 0; i < points; ++i, x += stride, y += stride) {
        if constexpr (requires { Curve::value(p, 0.0, y); })
            y[1] = Curve::value(own.data(), x[1], y + 2);
        else if constexpr (requires { Curve::value(p, 0.0, 0.0); })
            y[1] = Curve::value(own.data(), x[1], x[2]);
        else
            y[1] = Curve::value(own.data(), x[1]);
    }
}

template <class Curve>
void derivatives_loop(const double *p, const double *x, double *y, double *dy, size_t points)
{
    const auto own = copy<Curve>(p);
    for (size_t i = 0; i < points; ++i, x += stride, y += stride, dy += stride) {
        if constexpr (requires { Curve::derivatives(p, 0.0, 0.0, dy); })
            y[1] = Curve::derivatives(own.data(), x[1], x[2], dy);
        else
            y[1] = Curve::derivatives(own.data(), x[1], dy);
    }
}

template <class Curve>
BareLoop loop(const char *name)
{
    BareLoop::Function derivatives = nullptr;
    if constexpr (requires { &Curve::derivatives; }) derivatives = derivatives_loop<Curve>;
    return {name, value_loop<Curve>, derivatives};
}

}  // namespace

const std::vector<BareLoop> &bare_loops()
{
    static const std::vector<BareLoop> all = {
        loop<ExpDec1>("ExpDec1"),
        loop<ExpDec2>("ExpDec2"),
        loop<ExpAssoc1>("ExpAssoc1"),
        loop<Asymptotic1>("Asymptotic1"),
        loop<BoxLucas1>("BoxLucas1"),
        loop<Exp3P1>("Exp3P1"),
        loop<Boltzman>("Boltzman"),
        loop<Logistic>("Logistic"),
        loop<SLogistic1>("SLogistic1"),
        loop<SGompertz>("SGompertz"),
        loop<Hill>("Hill"),
        loop<Gauss>("Gauss"),
        loop<Lorentz>("Lorentz"),
        loop<Extreme>("Extreme"),
        loop<LogNormal>("LogNormal"),
        loop<Parabola>("Parabola"),
        loop<Allometric1>("Allometric1"),
        loop<Hyperbl>("Hyperbl"),
        loop<LangmuirEXT1>("LangmuirEXT1"),
        loop<Bradley>("Bradley"),
        loop<Log3P1>("Log3P1"),
        loop<Rational0>("Rational0"),
        loop<Sine>("Sine"),
        loop<SineDamp>("SineDamp"),
        loop<CompInhib>("CompInhib"),
        loop<Cross>("Cross"),
        loop<Carreau>("Carreau"),
        loop<Plane>("Plane"),
        loop<Gauss2D>("Gauss2D"),
        loop<Lorentz2D>("Lorentz2D"),
        loop<Circle>("Circle"),
        loop<Helix>("Helix"),
    };
    return all;
}

}  // namespace curvebank::bench
