#include "numerics/error_function.h"

#include <cmath>

#include <boost/math/special_functions/erf.hpp>

#include "numerics/keep_errno.h"
#include "numerics/quiet_policy.h"

namespace curvebank::numerics {

double error_function(double t)
{
    const KeepErrno keep;
    if (std::isnan(t) || t == 0) return t;  // with its sign
    if (std::isinf(t)) return t > 0 ? 1.0 : -1.0;
    return static_cast<double>(boost::math::erf(static_cast<long double>(t), Quiet()));
}

}  // namespace curvebank::numerics
