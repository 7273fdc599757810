// How far a call may go in its arrays: the last entry of p, x, y and dy that the contract gives it.

#pragma once

#include <algorithm>
#include <cstring>

#include "catalogue/catalogue.h"

namespace curvebank::test {

struct Extents {
    int p, x, y, dy;
};

/// The terms of a call: (nParams - first) / size, each with `size` parameters of its own.
struct Terms {
    const char *model;
    int first, size;
    int stride;    ///< from term to term in p and dy
    int rest = 1;  ///< entries besides: the offset, and the width or angle that two neighbours share
};

/// The models of repeated terms that write the share of each term into y[2], y[3], ...
constexpr Terms models_of_terms[] = {
    {"Asym2Sig", 1, 3, 5},       {"Beta", 1, 5, 5},
    {"BiGaussian", 0, 5, 5},     {"CCE", 1, 8, 8},
    {"Chebyshev2D", 0, 5, 5},    {"Cosine", 0, 5, 5},
    {"DoseResp", 0, 5, 5},       {"ECS", 1, 5, 5},
    {"Exponential2D", 0, 3, 3},  {"Extreme", 1, 3, 3},
    {"Extreme2D", 0, 5, 5},      {"ExtremeCum", 0, 7, 7},
    {"Fourier2D", 1, 6, 6},      {"GCAS", 1, 3, 5},
    {"Gauss", 1, 3, 3},          {"Gauss2D", 1, 5, 5},
    {"GaussAmp", 1, 3, 3},       {"GaussCum", 0, 5, 5},
    {"GaussLog", 1, 5, 5},       {"GaussMod", 1, 4, 4},
    {"Gaussian", 1, 3, 4},       {"Gaussian2D", 1, 5, 5, 2},
    {"Giddings", 1, 3, 3},       {"InvsPoly", 1, 6, 6},
    {"Langevin", 1, 2, 2},       {"LangevinMod", 1, 2, 2, 2},
    {"LogNormal", 1, 3, 3},      {"LogNormal2D", 0, 7, 7},
    {"LogistPK", 1, 3, 3},       {"LogisticCum", 0, 5, 5},
    {"LogisticPeak", 0, 4, 4},   {"Lorentz", 1, 3, 3},
    {"Lorentz2D", 1, 5, 5},      {"Parabola2D", 1, 4, 4},
    {"Poly2D", 1, 5, 5},         {"Polynomial2D", 0, 10, 10},
    {"Power2D", 0, 5, 5},        {"PsdVoigt1", 1, 4, 4},
    {"PsdVoigt2", 1, 5, 5},      {"Rational2D", 1, 9, 9},
    {"RationalTaylor", 1, 9, 9}, {"SchulzFlory", 1, 3, 3},
    {"Voigt2D", 1, 6, 6},        {"Voigt5", 1, 4, 4},
    {"Weibull3", 1, 4, 4},
};

struct Reach {
    const char *model;
    int last;  ///< the last entry
};

/// The models through given points, which use more entries of p and dy than their count.
constexpr Reach longer_than_counted[] = {
    {"BlNeldEVP", 5},      {"BoxLucas1EVP", 3},     {"Exp2PEVP", 4},         {"Exponent2EVP", 2},
    {"Exponent3EVP", 2},   {"ExponentEVP", 2},      {"Freundlich3PEVP1", 4}, {"Freundlich3PEVP2", 5},
    {"FreundlichEVP", 4},  {"FreundlichEXTEVP", 4}, {"HarrisEVP", 5},        {"HyperbolaEVP", 4},
    {"Log2P1EVP", 3},      {"Log2P2EVP", 4},        {"LogarithmEVP", 2},     {"ParetoEVP", 2},
    {"PowerEVP", 2},       {"Ratkowsky2P1EVP", 3},  {"Ratkowsky2P2EVP", 3},  {"Ratkowsky2P3EVP", 3},
    {"Reciprocal0EVP", 2}, {"Reciprocal1EVP", 2},   {"ReciprocalEVP", 4},
};

/// The models of one term that write its share into y[2].
constexpr const char *one_share[] = {"Goldman", "Laplace", "Poisson", "Weibull"};

inline Extents extents(const ModelCatalogEntry &row, int nParams)
{
    const auto is = [&](const char *name) { return std::strcmp(row.name, name) == 0; };
    const int all = std::max<int>(row.nParams, nParams);
    Extents end = {all, row.nIndep, row.nDep, all};
    for (const Terms &of : models_of_terms) {
        if (!is(of.model)) continue;
        const int terms = std::max(0, (nParams - of.first) / of.size);
        end.y = 1 + terms;
        end.p = end.dy = std::max(all, of.rest + of.stride * terms);
        // It looks at the width of the peak after the last one, and may mark that peak's derivatives.
        if (is("Lorentz")) {
            end.p = std::max(all, 3 + 3 * terms);
            end.dy = std::max(all, 4 + 3 * terms);
        }
    }
    for (const Reach &reach : longer_than_counted)
        if (is(reach.model)) end.p = end.dy = std::max(all, reach.last);
    for (const char *name : one_share)
        if (is(name)) end.y = 2;
    if (is("BatesWatts")) end.x = 2;
    return end;
}

}  // namespace curvebank::test
