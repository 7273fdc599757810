// Placeholders: models that only keep their places in the catalogue. They compute and write nothing; what they
// answer differs.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

/// What some of them answer: they fail every evaluation.
int32_t not_computed(int16_t flags)
{
    if (flags & EVAL_INIT) return 0;
    return flags & (EVAL_VALUE | EVAL_DERIVS) ? 1 : 0;
}

}  // namespace

/// Placeholder for Belehradek by expected-value parameters.
MODEL(BelehradekEVP)
{
    return not_computed(flags);
}

/// Placeholder for Chapman by expected-value parameters, first form.
MODEL(ChapmanEVP1)
{
    return not_computed(flags);
}

/// Placeholder for Chapman by expected-value parameters, second form.
MODEL(ChapmanEVP2)
{
    return not_computed(flags);
}

/// Placeholder for Chapman by expected-value parameters, third form.
MODEL(ChapmanEVP3)
{
    return not_computed(flags);
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(RationalEVP)
{
    return flags & EVAL_INIT ? 1 : 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(Rational4P)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(BentHyperblSmp)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(LangmuirTS1)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(LangmuirTS2)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(ExpCSum1)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(ExpCSum2)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, computes and writes nothing.
MODEL(ExpCSumEVP)
{
    return 0;
}

/// Placeholder: keeps its place in the catalogue, succeeds on every call and writes nothing.
MODEL(Prunty)
{
    return 0;
}

}  // namespace curvebank
