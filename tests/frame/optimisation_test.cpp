// The library against the same sources compiled without optimisation: speed may not change a bit.

#include <doctest/doctest.h>

#include "tests/support/call.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using test::CallState;

TEST_CASE("the optimised library and the unoptimised one give the same bits")
{
    const platform::SharedLibrary plain(CURVEBANK_UNOPTIMISED_LIBRARY_FILE);
    const auto find = plain.function<ModelFunc (*)(const char *)>("get_funx");
    for (const auto &row : catalogue) {
        const ModelFunc model = test::model(row.name), plain_model = find(row.name);
        REQUIRE((plain_model && plain_model != model));
        test::Random random(20260103);
        for (int i = 0; i < 1000; ++i) {
            CallState call = random.call(row), plain_call = call;
            INFO(row.name << ", call " << i);
            call.run(model);
            plain_call.run(plain_model);
            CHECK(alike(call, plain_call));
        }
    }
}
