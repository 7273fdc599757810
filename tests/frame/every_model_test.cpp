// What the contract promises of every model alike, tried on random calls with special numbers among them.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <string>

#include <doctest/doctest.h>

#include "frame/catalogue.h"
#include "tests/support/call.h"

using namespace curvebank;

namespace {

constexpr size_t room = 64;
constexpr int longest = 36;  // parameters in a call: several repeats of any term, with room for what is read beyond
using Array = std::array<double, room>;

struct Random {
    std::mt19937_64 bits{20260101};

    template <class T, size_t N>
    T one_of(const T (&values)[N])
    {
        return values[bits() % N];
    }

    double number()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        static const double special[] = {
            0.0,     -0.0,     1,         -1,           2,     1e300,  -1e300, 1e-300,       5e-324,
            -1e-308, infinity, -infinity, std::nan(""), 300.0, -300.0, 700.0,  MISSING_VALUE};
        const double u = static_cast<double>(bits() >> 11) * 0x1p-53;
        switch (bits() % 3) {
            case 0:
                return one_of(special);
            case 1:
                return 5 * u;
            default:
                return (u - 0.5) * std::pow(10.0, static_cast<double>(bits() % 12) - 4);
        }
    }
};

/// A call's arguments and everything that it can change.
struct State {
    int flags = 0, nParams = 0;
    Array p{}, x{}, y{}, dy{};
    int32_t result = 0, runtime_code = 0, caller_code = 0;

    /// Without EVAL_USE_ERRPTR the caller's error variable is an address that cannot be read.
    void run(ModelFunc model)
    {
        auto *const unreadable = reinterpret_cast<int32_t *>(uintptr_t{16});
        errno = runtime_code;
        result = model(static_cast<int16_t>(flags), flags & EVAL_USE_ERRPTR ? &caller_code : unreadable,
                       static_cast<int16_t>(nParams), nullptr, 0, p.data(), nullptr, x.data(), y.data(), dy.data());
        runtime_code = errno;
    }
};

bool same(const Array &a, const Array &b)
{
    return std::memcmp(a.data(), b.data(), sizeof a) == 0;
}

bool untouched(const Array &a, size_t first, size_t end = room)
{
    return std::all_of(a.begin() + static_cast<long>(first), a.begin() + static_cast<long>(end),
                       [](double v) { return test::same_bits(v, test::untouched); });
}

/// What of the contract a call broke, or an empty text.
std::string fault(const ModelCatalogEntry &row, const State &before, const State &after)
{
    const std::string name = row.name;
    const bool query = after.result == QUERY_REPLY || after.result == QUERY_MASK;
    if (query ? !(before.flags & EVAL_QUERY) : after.result != 0 && after.result != 1) return "result";
    if (!(before.flags & EVAL_USE_ERRPTR) && after.caller_code != before.caller_code) return "caller's variable";
    if (query && !(untouched(after.y, 0) && untouched(after.dy, 1))) return "query";
    if (!query && !untouched(after.dy, 0, 1)) return "dy[0]";
    if (!untouched(after.y, 0, 1)) return "y[0]";
    if (!(before.flags & EVAL_DERIVS) && !untouched(after.dy, 1) && name != "errtest")
        return "dy without EVAL_DERIVS";

    // Gaussian steps by four through blocks that it counts by three.
    const size_t reach = static_cast<size_t>(std::max<int>(before.nParams, row.nParams)) * 4 / 3 + 4;
    if (!untouched(after.dy, reach)) return "dy beyond the parameters";
    Array marked = before.x;
    if (after.result == 1 && row.nIndep > 1 && test::is_missing(after.x[2])) marked[2] = MISSING_VALUE;
    if (!same(marked, after.x)) return "x";
    return "";
}

const std::set<std::string> answers_0_to_init = {
    "Asym2Sig",       "BatesWatts", "BelehradekEVP",   "BentHyperblSmp",   "Beta",        "BiGaussian",
    "BlNeldEVP",      "CCE",        "ChapmanEVP1",     "ChapmanEVP2",      "ChapmanEVP3", "Circle",
    "Cole",           "ECS",        "Ellipse",         "ExpCSum1",         "ExpCSum2",    "ExpCSumEVP",
    "ExpGrow3Dec2",   "ExpGrowDec", "ExtremeCum",      "Freundlich3PEVP2", "GCAS",        "GaussCum",
    "GaussLog",       "GaussMod",   "GaussianLorentz", "Giddings",         "Goldman",     "Gumbel",
    "HarrisEVP",      "Helix",      "HillBurk",        "Kinetic",          "LangmuirTS1", "LangmuirTS2",
    "Laplace",        "Line3",      "LineExp",         "LogNormal2D",      "LogistPK",    "LogisticPeak",
    "MWChang",        "PearsonIV",  "PearsonVII",      "PlaneMod",         "Poisson",     "PolyCtr5",
    "Power2D",        "Prunty",     "PsdVoigt1",       "PsdVoigt2",        "Rational2D",  "Rational4P",
    "RationalTaylor", "Voigt5",     "Weibull",         "Weibull3",
};

const std::map<std::string, int32_t> query_replies = {
    {"Asym2Sig", QUERY_REPLY},     {"BiGaussian", QUERY_REPLY}, {"CCE", QUERY_REPLY},
    {"Competition2", QUERY_REPLY}, {"ECS", QUERY_REPLY},        {"GCAS", QUERY_REPLY},
    {"GaussAmp", QUERY_REPLY},     {"GaussMod", QUERY_REPLY},   {"Gaussian", QUERY_REPLY},
    {"InvsPoly", QUERY_MASK},      {"Lanczos3", QUERY_REPLY},   {"LogNormal", QUERY_REPLY},
    {"Lorentz", QUERY_REPLY},      {"PearsonIV", QUERY_MASK},   {"PearsonVII", QUERY_MASK},
    {"PsdVoigt1", QUERY_REPLY},    {"PsdVoigt2", QUERY_REPLY},  {"Pulse", QUERY_REPLY},
    {"Sine", QUERY_REPLY},         {"SineDamp", QUERY_REPLY},   {"SineSqr", QUERY_REPLY},
    {"Voigt5", QUERY_REPLY},       {"Weibull3", QUERY_REPLY},
};

}  // namespace

TEST_SUITE("every model")
{
    TEST_CASE("a call changes its outputs and its error variable only, and the next one gives the same bits")
    {
        Random random;
        for (const auto &row : catalogue) {
            const std::string name = row.name;
            const ModelFunc model = test::model(row.name);
            for (int i = 0; i < 1000; ++i) {
                State before;
                before.flags = static_cast<int>(random.bits() % 32);
                if (i % 4) before.flags &= ~(EVAL_INIT | EVAL_QUERY);
                before.nParams = i % 3 ? row.nParams : static_cast<int>(random.bits() % longest) - 2;
                for (double &value : before.p) value = random.number();
                for (double &value : before.x) value = random.number();
                if (i % 5 == 0) before.x[1] = before.p[1 + random.bits() % 4];
                before.y.fill(test::untouched);
                before.dy.fill(test::untouched);
                before.runtime_code = random.one_of({0, 0, 0, 33, 34, 11});
                before.caller_code = random.one_of({0, 0, 0, 33, 34, 7});

                State once = before, again = before;
                once.run(model);
                again.run(model);
                CAPTURE(name);
                CAPTURE(before.flags);
                CAPTURE(before.nParams);
                CHECK(fault(row, before, once) == "");
                CHECK(same(once.p, before.p));
                CHECK((same(once.x, again.x) && same(once.y, again.y) && same(once.dy, again.dy)));
                CHECK((once.result == again.result && once.runtime_code == again.runtime_code &&
                       once.caller_code == again.caller_code));
            }
        }
    }

    TEST_CASE("initialisation calls and queries answer as hosts know each model, and write nothing else")
    {
        for (const auto &row : catalogue) {
            const std::string name = row.name;
            CAPTURE(name);
            test::Call call(name, {1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5, 1.5}, {0.7, 0.7, 0.7});
            call.nParams = static_cast<int16_t>(row.nParams);
            // These two know no initialisation call: they evaluate, and answer 0 to it because that succeeds here.
            const bool evaluates = name == "ExpGrowDec" || name == "ExpGrow3Dec2";
            for (int steps = 0; steps < 8; steps += 2) {  // alone, with either step, with both
                CHECK(call.run(EVAL_INIT | steps, 11) == (answers_0_to_init.contains(name) ? 0 : 1));
                CHECK((evaluates || (call.nothing_written() && call.runtime_code == 11)));
            }
            const auto reply = query_replies.find(name);
            const int result = call.run(EVAL_QUERY | EVAL_INIT | EVAL_VALUE | EVAL_DERIVS, 34, 33);
            CHECK((result == QUERY_REPLY || result == QUERY_MASK) == (reply != query_replies.end()));
            if (reply == query_replies.end()) continue;
            CHECK((result == reply->second && call.dy_untouched(1) && test::same_bits(call.y[1], test::untouched)));
            CHECK((call.runtime_code == 34 && call.caller_code == 33));
            if (result == QUERY_REPLY) CHECK(std::memcmp(call.dy.data(), "\0\0\0\0", 4) == 0);
        }
    }
}
