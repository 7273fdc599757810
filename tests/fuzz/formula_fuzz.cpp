// Texts as formulas: an error that points into the text, or a formula that prints and reads as itself and that can
// be differentiated and evaluated.

#include <cstdio>
#include <cstdlib>

#include "formula/evaluate.h"

using namespace curvebank::formula;

namespace {

void require(bool holds, const char *what)
{
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool same(const Formula &a, const Formula &b)
{
    if (a.graph().nodes() != b.graph().nodes() || a.root() != b.root()) return false;
    for (const Node &node : a.graph().nodes())
        if (operand_count(node.operation) == 0 && a.graph().text(node) != b.graph().text(node)) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    try {
        const Formula formula = Formula::parse(text);
        const std::string printed = formula.text();
        require(same(Formula::parse(printed), formula), printed.c_str());
        require(!formula.latex().empty() && !formula.mathml().empty(), "printed as nothing");

        const std::vector<std::string> names = formula.names();
        require(formula.linear_in(names).size() <= names.size(), "more names than there are");
        std::vector<Formula> all{formula};
        try {
            all = formula.with_derivatives(names);
        } catch (const FormulaError &) {  // a function without derivative
        }
        for (const double value : {0.7, 0.0, -1e300}) {
            std::vector<double> values(names.size(), value), results(all.size());
            Evaluator<double>(all, names)(values, results);
        }
    } catch (const FormulaError &error) {
        require(error.column() >= 1 && error.column() <= size + 1, error.what());
    }
    return 0;
}
