#include <string>

#include <doctest/doctest.h>

#include "reference/reference.h"
#include "tests/support/call.h"

using namespace curvebank;

TEST_CASE("the placeholders write nothing, whatever they are asked for")
{
    int placeholders = 0, failing = 0;
    for (const reference::ModelReference &about : reference::models) {
        if (!about.placeholder) continue;
        ++placeholders;
        const std::string name(about.name);
        const bool fails_evaluations = name.starts_with("Chapman") || name == "BelehradekEVP";
        failing += fails_evaluations;
        for (int flags = 0; flags < 32; ++flags) {
            test::Call call(name, {1, 2, 3, 4}, {1});
            const bool fails = flags & EVAL_INIT ? about.init == reference::InitCalls::answers_1
                                                 : (flags & (EVAL_VALUE | EVAL_DERIVS)) && fails_evaluations;
            INFO(name << ", flags " << flags);
            CHECK(call.run(flags, 34, 33) == (fails ? 1 : 0));
            CHECK((call.nothing_written() && call.runtime_code == 34 && call.caller_code == 33));
        }
    }
    CHECK((placeholders > failing && failing > 0));
}
