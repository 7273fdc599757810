// What the contract promises of every model alike, tried on random calls with special numbers among them.

#include <algorithm>
#include <cstring>
#include <utility>

#include <doctest/doctest.h>

#include "reference/reference.h"
#include "tests/support/call.h"
#include "tests/support/contract.h"
#include "tests/support/extents.h"
#include "tests/support/guard_pages.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using reference::BothSteps;
using reference::InitCalls;
using reference::Queries;
using test::CallState;

namespace {

constexpr int calls = 1000;  // of every model

/// Arrays between closed pages: a model that goes where the contract does not let it stops the test.
class GuardedArrays {
public:
    /// The call in arrays that end where the contract ends them.
    CallState ending(ModelFunc model, CallState state, const test::Extents &end)
    {
        const auto before_end = [](const test::GuardPages &pages, int last) {
            return reinterpret_cast<double *>(pages.end()) - (last + 1);
        };
        run(model, state, 0, end, before_end(p_, end.p), before_end(x_, end.x), before_end(y_, end.y),
            before_end(dy_, end.dy));
        return state;
    }

    /// The call in arrays of which element 0 is closed, but for the dy of a query.
    CallState beginning(ModelFunc model, CallState state, const test::Extents &end)
    {
        const auto first = [](const test::GuardPages &pages) { return reinterpret_cast<double *>(pages.begin()); };
        const int query = state.flags & EVAL_QUERY ? 1 : 0;
        run(model, state, 1, end, first(p_) - 1, first(x_) - 1, first(y_) - 1, first(dy_) - 1 + query);
        return state;
    }

private:
    static void run(ModelFunc model, CallState &state, int first, const test::Extents &end, double *p, double *x,
                    double *y, double *dy)
    {
        const auto copy = [first](const double *from, int last, double *to) {
            std::copy(from + first, from + last + 1, to + first);
        };
        copy(state.p.data(), end.p, p);
        copy(state.x.data(), end.x, x);
        copy(state.y.data(), end.y, y);
        copy(state.dy.data(), end.dy, dy);
        if (state.flags & EVAL_QUERY) dy[0] = state.dy[0];
        state.run(model, p, x, y, dy);
        copy(p, end.p, state.p.data());
        copy(x, end.x, state.x.data());
        copy(y, end.y, state.y.data());
        copy(dy, end.dy, state.dy.data());
        if (state.flags & EVAL_QUERY) state.dy[0] = dy[0];
    }

    static constexpr size_t bytes = sizeof(CallState::Array);
    test::GuardPages p_{bytes}, x_{bytes}, y_{bytes}, dy_{bytes};
};

/// What the reference says of a row of the catalogue.
const reference::ModelReference &about(const ModelCatalogEntry &row)
{
    return *reference::find(row.name);
}

}  // namespace

TEST_SUITE("every model")
{
    TEST_CASE("a call stays within its arrays, changes its outputs and its error variable only, and is repeatable")
    {
        for (const auto &row : catalogue) {
            SUBCASE(row.name)  // whose name is told when the model touches a closed page
            {
                const ModelFunc model = test::model(row.name);
                const test::Reach reach(row);
                GuardedArrays arrays;
                test::Random random(20260101);
                for (int i = 0; i < calls; ++i) {
                    const CallState before = random.call(row);
                    INFO("flags " << before.flags << ", nParams " << before.nParams);
                    const test::Extents end = reach.of(before.nParams);
                    const CallState after = arrays.ending(model, before, end);
                    CHECK(test::fault(row, reach.about(), before, after) == "");
                    CHECK(same(after, arrays.beginning(model, before, end)));
                }
            }
        }
    }

    TEST_CASE("a call for value and derivatives does what the calls for each of them do")
    {
        for (const auto &row : catalogue) {
            const ModelFunc model = test::model(row.name);
            const BothSteps does = about(row).both;
            test::Random random(20260102);
            for (int i = 0; i < calls; ++i) {
                CallState both = random.call(row);
                INFO(row.name << ", call " << i);
                both.flags = static_cast<int16_t>((both.flags & EVAL_USE_ERRPTR) | EVAL_VALUE | EVAL_DERIVS);
                CallState value = both, derivatives = both;
                value.flags ^= EVAL_DERIVS;
                derivatives.flags ^= EVAL_VALUE;
                both.run(model);
                value.run(model);
                CallState steps = value;
                if (value.result == 0) {
                    steps.flags = derivatives.flags;
                    steps.run(model);
                }
                derivatives.run(model);
                if (does == BothSteps::value_alone) CHECK(alike(both, value));
                if (does == BothSteps::one_step) CHECK(alike(both, derivatives));
                if (does == BothSteps::one_after_the_other) CHECK(alike(both, steps));
                if (does == BothSteps::may_end_with_value) CHECK((alike(both, steps) || alike(both, value)));
            }
        }
    }

    TEST_CASE("initialisation calls and queries answer as hosts know each model, and write nothing else")
    {
        for (const auto &row : catalogue) {
            CAPTURE(row.name);
            const auto [init, query] = std::pair(about(row).init, about(row).query);
            const bool evaluates = init == InitCalls::evaluates;  // and answers 0, because that succeeds here
            test::Call call(row.name, {1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5},
                            {0.7, 0.7, 0.7});
            call.nParams = static_cast<int16_t>(row.nParams);
            for (int steps = 0; steps < 8; steps += 2) {  // alone, with either step, with both
                CHECK(call.run(EVAL_INIT | steps, 11) == (evaluates || init == InitCalls::answers_0 ? 0 : 1));
                CHECK((evaluates || (call.nothing_written() && call.runtime_code == 11)));
            }
            const int result = call.run(EVAL_QUERY | EVAL_INIT | EVAL_VALUE | EVAL_DERIVS, 34, 33);
            CHECK((result == QUERY_REPLY) == (query == Queries::status));
            CHECK((result == QUERY_MASK) == (query == Queries::mask));
            if (query == Queries::none) continue;
            CHECK((call.dy_untouched(1) && test::same_bits(call.y[1], test::untouched)));
            CHECK((call.runtime_code == 34 && call.caller_code == 33));
            if (result == QUERY_REPLY) CHECK(std::memcmp(call.dy.data(), "\0\0\0\0", 4) == 0);
        }
    }
}
