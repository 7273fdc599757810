// Many threads at a time, each with arrays of its own: every call must end as it does alone.

#include <atomic>
#include <thread>
#include <vector>

#include <doctest/doctest.h>

#include "tests/support/call.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using test::CallState;

TEST_CASE("threads that call the same models at the same time do not see each other")
{
    constexpr int threads = 8, calls = 200;
    struct Expected {
        ModelFunc model;
        CallState before, after;
    };
    std::vector<Expected> all;
    test::Random random(20260104);
    for (const auto &row : catalogue) {
        const ModelFunc model = test::model(row.name);
        for (int i = 0; i < calls; ++i) {
            CallState call = random.call(row);
            const CallState before = call;
            call.run(model);
            all.push_back({model, before, call});
        }
    }

    std::atomic<int> differences = 0;
    std::vector<std::thread> running;
    for (size_t t = 0; t < threads; ++t)
        running.emplace_back([&, t] {
            // Each thread begins elsewhere, so that different models run side by side, and the same ones too.
            for (size_t i = 0; i < all.size(); ++i) {
                const Expected &expected = all[(i + t / 2 * all.size() / threads) % all.size()];
                CallState call = expected.before;
                call.run(expected.model);
                if (!same(call, expected.after)) ++differences;
            }
        });
    for (std::thread &thread : running) thread.join();
    CHECK(differences == 0);
}
