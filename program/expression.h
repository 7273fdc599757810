// Formulas as text, evaluated.

#pragma once

#include <map>
#include <memory>
#include <string>

namespace curvebank::program {

/// An expression of named variables. Besides the parser's own functions it knows besseli1 (the modified Bessel
/// function I1), erf, floor, gamma, gammap (the regularised lower incomplete gamma function), lgamma and pi. Throws
/// Error where the text cannot be understood.
class Expression {
public:
    explicit Expression(const std::string &text);
    ~Expression();

    /// The value for these variables, which must include all that the expression names.
    double operator()(const std::map<std::string, double> &variables) const;

private:
    struct Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace curvebank::program
