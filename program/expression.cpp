#include "program/expression.h"

#include <cmath>

#include <muParser.h>
#include <boost/math/special_functions/bessel.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "numerics/quiet_policy.h"
#include "platform/error.h"

namespace curvebank::program {
namespace {

double gammap(double a, double z)
{
    return boost::math::gamma_p(a, z, numerics::Quiet());
}

double besseli1(double t)
{
    return boost::math::cyl_bessel_i(1, t, numerics::Quiet());
}

}  // namespace

struct Expression::Parser {
    mu::Parser parser;
    std::map<std::string, double> variables;  // the parser keeps their addresses
};

Expression::Expression(const std::string &text) : parser_(std::make_unique<Parser>())
{
    mu::Parser &parser = parser_->parser;
    parser.DefineFun("erf", static_cast<double (*)(double)>(std::erf));
    parser.DefineFun("floor", static_cast<double (*)(double)>(std::floor));
    parser.DefineFun("gamma", static_cast<double (*)(double)>(std::tgamma));
    parser.DefineFun("gammap", gammap);
    parser.DefineFun("besseli1", besseli1);
    parser.DefineFun("lgamma", static_cast<double (*)(double)>(std::lgamma));
    parser.DefineConst("pi", 3.141592653589793);
    try {
        parser.SetExpr(text);
        const mu::varmap_type used = parser.GetUsedVar();  // a copy: defining a variable renews the parser's own
        for (const auto &[name, address] : used) parser.DefineVar(name, &parser_->variables[name]);
        parser.Eval();
    } catch (const mu::ParserError &error) {
        throw Error("cannot read the expression " + text + ": " + error.GetMsg());
    }
}

Expression::~Expression() = default;

double Expression::operator()(const std::map<std::string, double> &variables) const
{
    for (auto &[name, value] : parser_->variables) {
        const auto given = variables.find(name);
        if (given == variables.end()) throw Error("the expression has an unknown name: " + name);
        value = given->second;
    }
    return parser_->parser.Eval();
}

}  // namespace curvebank::program
