// Fits a formula, and a quantity derived from its parameters, through the C++ interface.
#include <cstdio>

#include <curvebank/fit/fit.h>

using namespace curvebank::fit;

int main()
try {
    const std::vector<double> t = {0, 1, 2, 3, 4, 5, 6}, y = {9.1, 6.4, 4.8, 3.9, 2.9, 2.5, 2.1};
    Options options;
    options.start = {{"a", 8}, {"b", 0.5}};
    options.lower = {{"b", 0}};
    options.derived = {{"t_half", "ln(2)/b"}};
    const Result result = fit(Model::formula("a*exp(-b*t) + c", {"t"}), {.x = {t}, .y = {y}}, options);
    std::printf("%s\n", word(result.verdict).data());
    for (const auto *estimates : {&result.parameters, &result.derived})
        for (const Estimate &e : *estimates)
            std::printf("%s = %.5g +- %.2g\n", e.name.c_str(), e.value, e.standard_error);
} catch (const Error &error) {
    return std::fprintf(stderr, "%s\n", error.what()), 1;
}
