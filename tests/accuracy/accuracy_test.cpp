// The digits of derivatives where their terms nearly cancel.

#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/domain.h"
#include "tests/support/exact.h"

using namespace curvebank;

namespace {

/// The derivatives of a model at a point, beside exact ones.
class Point {
public:
    explicit Point(const char *name)
        : exact(*reference::find(name)), evaluator_(test::evaluator(*reference::find(name)))
    {
    }

    void compute(const std::vector<double> &p, double x)
    {
        derivatives.clear();
        for (const auto &column : evaluator_.derivatives(p, {{x}})) derivatives.push_back(column[0]);
        std::vector<double> point = p;
        point.push_back(x);
        exact.compute(point);
    }

    test::ExactModel exact;
    std::vector<double> derivatives;

private:
    program::Evaluator evaluator_;
};

}  // namespace

TEST_CASE("derivatives keep their digits where they are differences of nearly equal terms")
{
    struct Case {
        const char *model;
        std::vector<double> p;
        double x;
    };
    const Case cases[] = {
        {"HarrisEVP", {1e-11, 3.34, 1.86, -4.90, -1.16}, 1.13},   // the value near yb
        {"HarrisEVP", {0.7, 3, 20, 3.0000001, 1e-5}, 0.7000001},  // y nearly constant, powers nearly equal
        {"BlNeldEVP", {1, 2, 9, 2.00000001, 1e-6}, 8.9999999},    // the two points nearly of one height
        {"Freundlich3PEVP1", {3, 1, 2, 1e-7}, 3.0000001},         // an exponent near 0
        {"Freundlich3PEVP2", {-1e6, 1, 2, 5, 2.0001}, 4.99999},   // a baseline far below
        {"FreundlichEXTEVP", {7, 1, 0.5, 0.001}, 7.000001},       // next to the given point
        {"Nelder", {1e-3, 1e-6, 2, 1e-9}, 0.5},                   // the linear term of the denominator alone
        {"PIPlatt2", {20, 0.4, 1e-9}, 1e-5},                      // weak light
    };
    for (const Case &at : cases) {
        CAPTURE(std::string(at.model));
        Point point(at.model);
        point.compute(at.p, at.x);
        for (size_t i = 0; i < at.p.size(); ++i) {
            CAPTURE(i + 1);
            CHECK(point.exact.error(point.derivatives[i], i + 1) <= 50);
        }
    }
}

TEST_CASE("derivatives of free form are good to 1e-13 of their condition, near coincidences too")
{
    const char *const models[] = {
        "Belehradek",       "BlNeld",          "BlNeldEVP",
        "BlNeldSmp",        "Bradley",         "Freundlich3PEVP1",
        "Freundlich3PEVP2", "Freundlich3PMod", "FreundlichEVP",
        "FreundlichEXTEVP", "Gunary",          "HarrisEVP",
        "Holliday1",        "LangmuirEXT2",    "MichaelisMenten",
        "Nelder",           "PIPlatt2",        "Shah",
        "YldFert1",
    };
    for (const char *name : models) {
        const reference::ModelReference &about = *reference::find(name);
        CAPTURE(about.name);
        test::Domain domain(about);
        Point point(name);
        int counted = 0;
        for (int repeat = 0; repeat < 400; ++repeat) {
            std::vector<double> p = domain.parameters(3);
            double x = domain.place(p)[0];
            domain.coincide(p, x);
            point.compute(p, x);
            CAPTURE(p);
            CAPTURE(x);
            for (size_t i = 0; i < p.size(); ++i) {
                if (!std::isfinite(point.derivatives[i]) || !point.exact.counts(i + 1)) continue;
                ++counted;
                CHECK_MESSAGE(point.exact.error(point.derivatives[i], i + 1) <= 450,
                              "dy[" << i + 1 << "] = " << point.derivatives[i] << ", exact "
                                    << static_cast<double>(point.exact.results[i + 1]));
            }
        }
        CHECK(counted > 200);
    }
}

TEST_CASE("formulas that are said to agree with the library do")
{
    for (const reference::ModelReference &about : reference::models) {
        if (about.placeholder || !about.formula_agrees) continue;
        CAPTURE(about.name);
        test::Domain domain(about);
        program::Evaluator model = test::evaluator(about);
        const auto formulas = test::outputs(about);
        const size_t values = about.second.empty() ? 1 : 2, points = 20;
        formula::Evaluator<double> formula(
            {formulas.begin(), formulas.begin() + static_cast<std::ptrdiff_t>(values)}, test::inputs(about));
        for (int repeat = 0; repeat < 20; ++repeat) {
            const std::vector<double> p = domain.parameters(0.2);
            program::Columns x(about.sample_ranges.size());
            for (size_t k = 0; k < points; ++k) {
                const std::vector<double> at = domain.place(p);
                for (size_t i = 0; i < x.size(); ++i) x[i].push_back(at[i]);
            }
            std::vector<double> own(values);
            const program::Columns y = model.values(p, x);
            double size = 0;
            for (const auto &column : y)
                for (const double value : column)
                    if (std::isfinite(value)) size = std::fmax(size, std::fabs(value));
            for (size_t k = 0; k < points; ++k) {
                std::vector<double> point = p;
                for (const auto &column : x) point.push_back(column[k]);
                formula(point, own);
                for (size_t i = 0; i < values; ++i)
                    if (std::isfinite(y[i][k]))
                        CHECK(std::fabs(own[i] - y[i][k]) <= 1e-11 * size);
            }
        }
    }
}
