// Compares two builds of the library: the same calls to both, and every bit that comes out.
//
//     compare_builds OLD NEW [--calls N] [--model NAME] [--first I] [--seed S] [--threads T]
//
// Every model is called N times, a million unless told otherwise, with random and special arguments and such near
// its sample, all flags, and counts of its own and others. A call depends on the seed, the model's name and its
// number alone, so that --first and --calls repeat any of them. Compared are the result, both error variables and
// every entry within reach with a few beyond it, written or not; any NaN equals any other. Prints a line for each
// model that differs, its first such call and the totals; the exit code is 1 where anything differs and 2 where
// nothing could be compared.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "curvebank/exports.h"
#include "platform/names.h"
#include "platform/shared_library.h"
#include "reference/reference.h"
#include "tests/support/extents.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using test::CallState;
using test::Extents;

namespace {

struct Options {
    std::string old_file, new_file, model;
    uint64_t calls = 1000000, first = 0, seed = 20260107,
             threads = std::max(1u, std::thread::hardware_concurrency());
};

Options read_options(const std::vector<std::string> &arguments)
{
    if (arguments.size() < 2 || arguments.size() % 2 != 0)
        throw std::runtime_error(
            "usage: compare_builds OLD NEW [--calls N] [--model NAME] [--first I] [--seed S] [--threads T]");
    Options options;
    options.old_file = arguments[0];
    options.new_file = arguments[1];
    for (size_t i = 2; i < arguments.size(); i += 2) {
        const std::string &name = arguments[i], &value = arguments[i + 1];
        if (name == "--model")
            options.model = value;
        else if (name == "--calls")
            options.calls = std::stoull(value);
        else if (name == "--first")
            options.first = std::stoull(value);
        else if (name == "--seed")
            options.seed = std::stoull(value);
        else if (name == "--threads")
            options.threads = std::stoull(value);
        else
            throw std::runtime_error("no option " + name);
    }
    return options;
}

/// A library that is looked at through its exports alone.
class Build {
public:
    explicit Build(const std::string &file)
        : library_(std::filesystem::absolute(file).make_preferred().string()),
          find_(library_.function<GetFunc>("Get_Func"))
    {
        if (!find_) throw std::runtime_error(file + " exports no Get_Func");
    }

    /// The model by its catalogue name with the counts of the catalogue; its function is null where there is none.
    ModelCatalogEntry find(const char *name) const
    {
        ModelCatalogEntry row{0, 0, 0, 0, name, nullptr};
        row.function = find_(name, &row.nIndep, &row.nDep, &row.nParams, &row.reserved);
        return row;
    }

    /// The same by its export name, with the counts of the reference.
    ModelCatalogEntry exported(const char *name) const
    {
        const auto parameters = static_cast<uint16_t>(reference::find(name)->parameters.size());
        return {1, 1, parameters, 0, name, library_.function<ModelFunc>(name)};
    }

private:
    using GetFunc = ModelFunc (*)(const char *, uint16_t *, uint16_t *, uint16_t *, uint16_t *);

    platform::SharedLibrary library_;
    GetFunc find_;
};

struct Pair {
    ModelCatalogEntry before, after;
};

std::vector<Pair> models(const Build &before, const Build &after)
{
    std::vector<Pair> pairs;
    for (const auto &row : catalogue) pairs.push_back({before.find(row.name), after.find(row.name)});
#define EXPORT(name, ordinal, catalogue_name) \
    if (*catalogue_name == '\0') pairs.push_back({before.exported(#name), after.exported(#name)});
    CURVEBANK_EXPORTED_MODELS(EXPORT)
#undef EXPORT
    return pairs;
}

/// Calls of one model to both builds. The arrays are kept from call to call, and only what is within reach and the
/// guard beyond it is renewed and compared.
class Comparison {
public:
    Comparison(const Pair &models, uint64_t seed)
        : models_(models), about_(*reference::find(models.before.name)), reach_(models.before), seed_(seed)
    {
        for (const char *c = models.before.name; *c; ++c) seed_ = seed_ * 31 + static_cast<unsigned char>(*c);
    }

    /// Makes that call and says whether both builds ended alike.
    bool alike(uint64_t number)
    {
        draw(number, before_);
        std::fill_n(before_.p.begin() + end_.p + 1, test::guard, test::untouched);
        std::fill_n(before_.x.begin() + end_.x + 1, test::guard, test::untouched);
        std::fill_n(before_.y.begin(), end_.y + 1 + test::guard, test::untouched);
        std::fill_n(before_.dy.begin(), end_.dy + 1 + test::guard, test::untouched);
        copy_reach(before_, after_);
        run(models_.before.function, before_);
        run(models_.after.function, after_);
        return before_.result == after_.result && before_.runtime_code == after_.runtime_code &&
               before_.caller_code == after_.caller_code && equal(before_.p, after_.p, end_.p) &&
               equal(before_.x, after_.x, end_.x) && equal(before_.y, after_.y, end_.y) &&
               equal(before_.dy, after_.dy, end_.dy);
    }

    /// The call just made, in full: what went in and what differs.
    std::string description(uint64_t number)
    {
        CallState call;
        draw(number, call);
        std::ostringstream text;
        text << std::hexfloat << "    flags " << call.flags << ", nParams " << call.nParams << ", errno "
             << call.runtime_code << ", *perr " << call.caller_code;
        const auto list = [&text](const char *name, const CallState::Array &values, int last) {
            text << "\n    " << name << " =";
            for (int i = 1; i <= last; ++i) text << ' ' << values[static_cast<size_t>(i)];
        };
        const auto code = [&text](const char *name, int32_t a, int32_t b) {
            if (a != b) text << "\n    " << name << ": " << a << ", now " << b;
        };
        const auto entries = [&text](const char *name, const CallState::Array &a, const CallState::Array &b,
                                     int last) {
            for (size_t i = 0; i <= static_cast<size_t>(last + test::guard); ++i)
                if (!same_number(a[i], b[i]))
                    text << "\n    " << name << '[' << i << "]: " << a[i] << ", now " << b[i];
        };
        list("x", call.x, end_.x);
        list("p", call.p, end_.p);
        code("result", before_.result, after_.result);
        code("errno", before_.runtime_code, after_.runtime_code);
        code("*perr", before_.caller_code, after_.caller_code);
        entries("p", before_.p, after_.p, end_.p);
        entries("x", before_.x, after_.x, end_.x);
        entries("y", before_.y, after_.y, end_.y);
        entries("dy", before_.dy, after_.dy, end_.dy);
        return text.str() + '\n';
    }

private:
    /// What goes into the call of that number.
    void draw(uint64_t number, CallState &call)
    {
        test::Random random(seed_ ^ number * 0xd6e8feb86659fd93);
        random.request(models_.before, call);
        end_ = reach_.of(call.nParams);
        random.arguments(call, static_cast<size_t>(end_.p), static_cast<size_t>(end_.x));
        if (random.below(3) == 0) move_to_sample(random, call);
    }

    /// Moves most of the arguments to where the model is well behaved.
    void move_to_sample(test::Random &random, CallState &call) const
    {
        const auto sample = about_.sample_parameters;
        for (size_t i = 0; i < std::min(sample.size(), static_cast<size_t>(end_.p)); ++i)
            if (random.below(8)) call.p[i + 1] = sample[i] * (0.5 + random.fraction());
        for (size_t i = 0; i < about_.sample_ranges.size(); ++i) {
            const auto [low, high] = about_.sample_ranges[i];
            if (random.below(8)) call.x[i + 1] = low + (high - low) * random.fraction();
        }
    }

    void copy_reach(const CallState &from, CallState &to) const
    {
        to.flags = from.flags;
        to.nParams = from.nParams;
        to.runtime_code = from.runtime_code;
        to.caller_code = from.caller_code;
        std::copy_n(from.p.begin(), end_.p + 1 + test::guard, to.p.begin());
        std::copy_n(from.x.begin(), end_.x + 1 + test::guard, to.x.begin());
        std::copy_n(from.y.begin(), end_.y + 1 + test::guard, to.y.begin());
        std::copy_n(from.dy.begin(), end_.dy + 1 + test::guard, to.dy.begin());
    }

    /// The caller's error variable is there even where it may not be used: a build that does shows it.
    static void run(ModelFunc model, CallState &state)
    {
        errno = state.runtime_code;
        state.result = model(state.flags, &state.caller_code, state.nParams, nullptr, 0, state.p.data(), nullptr,
                             state.x.data(), state.y.data(), state.dy.data());
        state.runtime_code = errno;
    }

    static bool same_number(double a, double b)
    {
        return test::same_bits(a, b) || (std::isnan(a) && std::isnan(b));
    }

    static bool equal(const CallState::Array &a, const CallState::Array &b, int last)
    {
        const auto count = static_cast<size_t>(last + 1 + test::guard);
        return std::memcmp(a.data(), b.data(), count * sizeof a[0]) == 0 ||
               std::equal(a.data(), a.data() + count, b.data(), same_number);
    }

    const Pair &models_;
    const reference::ModelReference &about_;
    test::Reach reach_;
    uint64_t seed_;
    Extents end_{};
    CallState before_, after_;
};

/// What one model came to: the calls that differ, and what is to be printed of them.
struct Outcome {
    uint64_t calls = 0, differing = 0;
    std::string text;
};

Outcome compare(const Pair &models, const Options &options)
{
    const auto &[before, after] = models;
    if (!before.function || !after.function)
        return {0, 1, std::string(before.name) + ": only in one of the builds\n"};
    if (before.nIndep != after.nIndep || before.nDep != after.nDep || before.nParams != after.nParams ||
        before.reserved != after.reserved)
        return {0, 1, std::string(before.name) + ": other counts in the catalogue\n"};

    Outcome outcome;
    std::ostringstream first;
    Comparison comparison(models, options.seed);
    for (uint64_t i = options.first; i < options.first + options.calls; ++i, ++outcome.calls)
        if (!comparison.alike(i) && outcome.differing++ == 0)
            first << "call " << i << " with seed " << options.seed << '\n' << comparison.description(i);
    if (outcome.differing == 0) return outcome;
    std::ostringstream text;
    text << before.name << ": " << outcome.differing << " of " << outcome.calls << " calls differ, first "
         << first.str();
    outcome.text = text.str();
    return outcome;
}

std::vector<Outcome> compare_all(const std::vector<Pair> &pairs, const Options &options)
{
    std::vector<Outcome> outcomes(pairs.size());
    std::atomic<size_t> next = 0;
    std::vector<std::thread> threads;
    for (uint64_t t = 0; t < options.threads; ++t)
        threads.emplace_back([&] {
            for (size_t i; (i = next++) < pairs.size();) outcomes[i] = compare(pairs[i], options);
        });
    for (std::thread &thread : threads) thread.join();
    return outcomes;
}

int run(const Options &options)
{
    const auto start = std::chrono::steady_clock::now();
    const Build before(options.old_file), after(options.new_file);
    std::vector<Pair> pairs = models(before, after);
    if (!options.model.empty())
        std::erase_if(
            pairs, [&](const Pair &pair) { return !platform::same_name(pair.before.name, options.model.c_str()); });
    if (pairs.empty()) throw std::runtime_error("no model " + options.model);
    if (std::all_of(pairs.begin(), pairs.end(),
                    [](const Pair &pair) { return pair.before.function == pair.after.function; }))
        throw std::runtime_error("both files are the same library");

    uint64_t calls = 0, differing_calls = 0, differing_models = 0;
    for (const Outcome &outcome : compare_all(pairs, options)) {
        std::cout << outcome.text;
        calls += outcome.calls;
        differing_calls += outcome.differing;
        differing_models += outcome.differing > 0;
    }
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    std::cout << pairs.size() << " models, " << calls << " calls: " << differing_calls << " differences in "
              << differing_models << " models (seed " << options.seed << ", " << elapsed.count() << " s)\n";
    return differing_calls > 0;
}

}  // namespace

int main(int argc, char **argv)
{
    try {
        return run(read_options({argv + 1, argv + argc}));
    } catch (const std::exception &error) {
        std::cerr << "compare_builds: " << error.what() << '\n';
        return 2;
    }
}
