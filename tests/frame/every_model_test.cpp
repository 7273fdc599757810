// What the contract promises of every model alike, tried on random calls with special numbers among them.

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include <doctest/doctest.h>

#include "tests/support/call.h"
#include "tests/support/contract.h"
#include "tests/support/extents.h"
#include "tests/support/guard_pages.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using test::CallState;

namespace {

constexpr int calls = 1000;  // of every model

using Names = std::set<std::string>;

Names names(const char *separated_by_blanks)
{
    std::istringstream words(separated_by_blanks);
    return {std::istream_iterator<std::string>(words), {}};
}

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

/// The models of which a call for value and derivatives gives the value alone.
const Names value_alone = names(
    "Asym2Sig Asymptotic4 BET BETMod Belehradek Beta BiDoseResp Binding1 Binding2 BlNeld BlNeldEVP BlNeldSmp "
    "BoltzIV Boltzman Bradley CCE Chapman Competition1 Competition2 DoubleBoltzmann ECS Exp1P4Md Exp2P Exp2PEVP "
    "ExpGrowth Extreme Freundlich Freundlich3P Freundlich3PEVP1 Freundlich3PEVP2 FreundlichEVP FreundlichEXT "
    "FreundlichEXTEVP FreundlichMod1 GCAS GaussAmp GaussMod Giddings Goldman Gumbel Gunary Harris HarrisEVP "
    "Holliday1 HyperbolaEVP HyperbolaGen HyperbolaMod LangmuirEXT1 LangmuirEXT2 Laplace LineMod Log2P1 "
    "Log2P1EVP Log2P2 Log2P2EVP Log3P1 LogNormal Logarithm LogarithmEVP LogistPK Logistic Logistic5 "
    "MichaelisMenten Pareto Pareto2 ParetoEVP Poisson Pow2P1 Pow2P2 Pow2P3 Power PowerEVP PsdVoigt1 PsdVoigt2 "
    "Rational0 Rational1 Rational2 Rational3 Rational4 Ratkowsky2P1EVP Ratkowsky2P2EVP Ratkowsky2P3EVP Rayleigh "
    "Reciprocal Reciprocal0 Reciprocal0EVP Reciprocal1 Reciprocal1EVP ReciprocalEVP ReciprocalMod RectHyperbola "
    "Response1 Response2 SLogistic1 SLogistic2 SLogistic3 SchulzFlory Slogistic4 TimePow Voigt5 Weibull "
    "asymptgauss errtest");

/// Those that compute value and derivatives in one step, with the tests and the missing marks of both.
const Names one_step = names(
    "BiHill Bingham Carreau ExpAssoc1 ExpAssoc2 ExpAssocDelay1 ExpAssocDelay2 ExpGrow3Dec2 ExpGrowDec Gaussian "
    "MYEGA PIPlatt PIPlatt2 PIWebb Rational5 VFT Voigt2DMod");

/// Those whose value step ends the call where it needs no exponential or power; otherwise it goes on, as in most
/// models, to the derivative step.
const Names may_end_with_value = names(
    "Asymptotic2 Asymptotic5 Asymptotic7 BoxLucas1EVP BoxLucas2 Exp1P3 Hill Hill1 Richards SGompertz SWeibull2");

/// Their derivative step tests the width after that of the last peak when the value step went before.
const Names looks_at_another_term = names("LangevinMod Lorentz");

const Names answers_0_to_init = names(
    "Asym2Sig BatesWatts BelehradekEVP BentHyperblSmp Beta BiGaussian BlNeldEVP CCE ChapmanEVP1 ChapmanEVP2 "
    "ChapmanEVP3 Circle Cole ECS Ellipse ExpCSum1 ExpCSum2 ExpCSumEVP ExpGrow3Dec2 ExpGrowDec ExtremeCum "
    "Freundlich3PEVP2 GCAS GaussCum GaussLog GaussMod GaussianLorentz Giddings Goldman Gumbel HarrisEVP Helix "
    "HillBurk Kinetic LangmuirTS1 LangmuirTS2 Laplace Line3 LineExp LogNormal2D LogistPK LogisticPeak MWChang "
    "PearsonIV PearsonVII PlaneMod Poisson PolyCtr5 Power2D Prunty PsdVoigt1 PsdVoigt2 Rational2D Rational4P "
    "RationalTaylor Voigt5 Weibull Weibull3");

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
    TEST_CASE("a call stays within its arrays, changes its outputs and its error variable only, and is repeatable")
    {
        for (const auto &row : catalogue) {
            SUBCASE(row.name)  // whose name is told when the model touches a closed page
            {
                const ModelFunc model = test::model(row.name);
                GuardedArrays arrays;
                test::Random random(20260101);
                for (int i = 0; i < calls; ++i) {
                    const CallState before = random.call(row);
                    INFO("flags " << before.flags << ", nParams " << before.nParams);
                    const test::Extents end = test::extents(row, before.nParams);
                    const CallState after = arrays.ending(model, before, end);
                    CHECK(test::fault(row, before, after) == "");
                    CHECK(same(after, arrays.beginning(model, before, end)));
                }
            }
        }
    }

    TEST_CASE("a call for value and derivatives does what the calls for each of them do")
    {
        for (const auto &row : catalogue) {
            const std::string name = row.name;
            const ModelFunc model = test::model(row.name);
            test::Random random(20260102);
            for (int i = 0; i < calls; ++i) {
                CallState both = random.call(row);
                INFO(name << ", call " << i);
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
                if (value_alone.contains(name)) {
                    CHECK(alike(both, value));
                } else if (one_step.contains(name)) {
                    derivatives.run(model);
                    CHECK(alike(both, derivatives));
                } else if (may_end_with_value.contains(name)) {
                    CHECK((alike(both, steps) || alike(both, value)));
                } else if (!looks_at_another_term.contains(name)) {
                    CHECK(alike(both, steps));
                }
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

    TEST_CASE("the placeholders write nothing, whatever they are asked for")
    {
        const Names fail_evaluations = names("BelehradekEVP ChapmanEVP1 ChapmanEVP2 ChapmanEVP3");
        Names placeholders = names(
            "BentHyperblSmp ExpCSum1 ExpCSum2 ExpCSumEVP LangmuirTS1 LangmuirTS2 Prunty Rational4P RationalEVP");
        placeholders.insert(fail_evaluations.begin(), fail_evaluations.end());
        for (const std::string &name : placeholders)
            for (int flags = 0; flags < 32; ++flags) {
                test::Call call(name, {1, 2, 3, 4}, {1});
                const bool fails = flags & EVAL_INIT
                                       ? name == "RationalEVP"
                                       : (flags & (EVAL_VALUE | EVAL_DERIVS)) && fail_evaluations.contains(name);
                INFO(name << ", flags " << flags);
                CHECK(call.run(flags, 34, 33) == (fails ? 1 : 0));
                CHECK((call.nothing_written() && call.runtime_code == 34 && call.caller_code == 33));
            }
    }
}
