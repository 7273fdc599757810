// How the library calls Boost.Math: in long double, and with a policy that neither throws nor sets errno.

#pragma once

#include <boost/math/policies/policy.hpp>

namespace curvebank::numerics {

namespace policies = boost::math::policies;

/// An error gives the value that the function has in IEEE arithmetic: an infinity, 0 or NaN.
using Quiet = policies::policy<
    policies::domain_error<policies::ignore_error>, policies::pole_error<policies::ignore_error>,
    policies::overflow_error<policies::ignore_error>, policies::underflow_error<policies::ignore_error>,
    policies::denorm_error<policies::ignore_error>, policies::rounding_error<policies::ignore_error>,
    policies::evaluation_error<policies::ignore_error>,
    policies::indeterminate_result_error<policies::ignore_error>>;

}  // namespace curvebank::numerics
